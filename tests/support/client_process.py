#!/usr/bin/python3
"""Clients of the bus, as a process of their own. Usage: client_process.py ADDRESS COUNT

Makes COUNT connections to the bus and prints their unique names, one JSON list. Then it takes one
JSON object a line: "peer" is the connection, by number, and one of these says what to do:

  "send"   a method call, without a look at what comes of it; prints {"peer", "sent": serial}
  "call"   a method call as the bus library makes it, with a time limit in milliseconds ("limit");
           prints {"peer", "result": [...]}, or {"peer", "failure": "..."}: "timed-out" or what else
  "close"  leave the bus; prints {"peer", "closed": true}

Every message that comes in is printed too, {"peer", "message": {...}}, in the order in which the
bus delivered it.
"""

import json
import sys
import threading

from gi.repository import Gio, GLib

TYPES = {
    Gio.DBusMessageType.METHOD_CALL: "call",
    Gio.DBusMessageType.METHOD_RETURN: "return",
    Gio.DBusMessageType.ERROR: "error",
    Gio.DBusMessageType.SIGNAL: "signal",
}

printing = threading.Lock()


def say(value):
    """Prints one line; from whichever thread."""
    with printing:
        print(json.dumps(value), flush=True)


def failure_of(error):
    """What a failed call failed of."""
    timed_out = error.matches(Gio.io_error_quark(), Gio.IOErrorEnum.TIMED_OUT)
    return "timed-out" if timed_out else error.message


class Peer:
    """One connection."""

    def __init__(self, number, address):
        self.number = number
        self.connection = Gio.DBusConnection.new_for_address_sync(
            address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None,
            None,
        )
        self.connection.add_filter(self._filter, None)

    def send(self, to):
        """Sends a method call and tells its serial."""
        message = Gio.DBusMessage.new_method_call(
            to["destination"], to["path"], to["interface"], to["member"]
        )
        if to["signature"] != "()":
            message.set_body(GLib.Variant(to["signature"], tuple(to["arguments"])))
        if to.get("no_reply"):
            message.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
        _, serial = self.connection.send_message(message, Gio.DBusSendMessageFlags.NONE)
        say({"peer": self.number, "sent": serial})

    def call(self, to):
        """Calls a method and tells the result."""
        self.connection.call(
            to["destination"],
            to["path"],
            to["interface"],
            to["member"],
            GLib.Variant(to["signature"], tuple(to["arguments"])),
            None,
            Gio.DBusCallFlags.NONE,
            to["limit"],
            None,
            self._called,
        )

    def close(self, _):
        """Leaves the bus."""
        self.connection.close_sync(None)
        say({"peer": self.number, "closed": True})

    def _called(self, connection, result):
        try:
            say({"peer": self.number, "result": connection.call_finish(result).unpack()})
        except GLib.Error as error:
            say({"peer": self.number, "failure": failure_of(error)})

    def _filter(self, _connection, message, incoming, _data):
        if not incoming:
            return message
        body = message.get_body()
        told = {
            "type": TYPES[message.get_message_type()],
            "sender": message.get_sender(),
            "destination": message.get_destination(),
            "path": message.get_path(),
            "interface": message.get_interface(),
            "member": message.get_member(),
            "serial": message.get_serial(),
            "reply_to": message.get_reply_serial(),
            "error": message.get_error_name(),
            "signature": message.get_signature(),
            "body": body.unpack() if body else [],
        }
        say({"peer": self.number, "message": told})
        # These clients serve nothing, and who watches the bus must not answer calls to others.
        return None if told["type"] == "call" else message


def main(address, count):
    """Serves standard input until its end."""
    peers = [Peer(number, address) for number in range(count)]
    say([peer.connection.get_unique_name() for peer in peers])
    loop = GLib.MainLoop()

    def readable(stream, _condition):
        line = stream.readline()
        if not line:
            loop.quit()
            return False
        order = json.loads(line)
        peer = peers[order["peer"]]
        for action in ("send", "call", "close"):
            if action in order:
                getattr(peer, action)(order[action])
        return True

    # Unbuffered, so that every line that is there is also seen by the main loop.
    stream = open(0, "rb", buffering=0, closefd=False)
    GLib.unix_fd_add_full(
        GLib.PRIORITY_DEFAULT,
        stream.fileno(),
        GLib.IOCondition.IN | GLib.IOCondition.HUP,
        lambda _fd, condition: readable(stream, condition),
    )
    loop.run()


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]))
