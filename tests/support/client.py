"""The tests' hold on clients of the bus, which run in processes of their own.

A Client is one connection with its own unique name. It calls methods, and it tells which signals
came: news() first makes a round trip to the daemon, whose messages stay in order, so what it
returns is exactly what the daemon had sent to this client by then. An empty list means that nothing
was sent.
"""

import json
import pathlib

import child

NAME = "com.norvane.portmeld"
PATH = "/com/norvane/portmeld"
INTERFACE = "com.norvane.portmeld"
BUS = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")
SCRIPT = pathlib.Path(__file__).with_name("client_process.py")

# What the methods take.
ARGUMENTS = {
    "Connect": "(si)",
    "GetDeviceInfo": "(is)",
    "GetDeviceCount": "(ii)",
    "DisConnect": "(i)",
    "RequesAll": "(i)",
    "SetEnablePopUP": "(b)",
    "GetDeviceListByFsType": "(ii)",
    "LaunchPopup": "(s)",
    "SwitchToContent": "()",
    "SetPhotoBGMPlayList": "(sss)",
    "GetPhotoBGMPlayListItem": "(i)",
    "ClearPhotoBGMPlayList": "()",
}


class Refused(Exception):
    """A call was answered with an error."""

    def __init__(self, message):
        super().__init__(f"{message['error']}: {message['body']}")
        self.name = message["error"]
        self.sender = message["sender"]


def device_of(signal):
    """The device that a signal tells of; its text must be JSON to the letter."""
    assert signal["signature"] == "s"
    return json.loads(signal["body"][0])


class Client:
    """One connection of a client process."""

    def __init__(self, process, number, name):
        self._process = process
        self._number = number
        self._unread = []
        self.unique_name = name
        self.destination = NAME
        self.path = PATH
        self.interface = INTERFACE

    # ---- methods

    def call(self, member, *arguments, signature=None):
        """Calls a method of the daemon and returns what it replied, a list."""
        return self._values_of(self.send(member, *arguments, signature=signature))

    def send(self, member, *arguments, signature=None, no_reply=False):
        """Calls a method of the daemon without waiting; returns the call's serial."""
        return self.send_to(
            (self.destination, self.path, self.interface),
            member,
            *arguments,
            signature=signature or ARGUMENTS[member],
            no_reply=no_reply,
        )

    def call_with_limit(self, milliseconds, member, *arguments):
        """Calls as the bus library does, with a time limit; returns how that failed."""
        order = self._order(
            (self.destination, self.path, self.interface), member, ARGUMENTS[member], arguments
        )
        self._process.order(self._number, "call", {**order, "limit": milliseconds})
        return self._process.answer(self._number, "failure")

    def call_bus(self, member, *arguments, signature):
        """Calls a method of the bus itself."""
        return self._values_of(self.send_to(BUS, member, *arguments, signature=signature))

    def send_to(self, where, member, *arguments, signature, no_reply=False):
        """Calls a method of (destination, path, interface) without waiting; returns the serial."""
        order = self._order(where, member, signature, arguments)
        self._process.order(self._number, "send", {**order, "no_reply": no_reply})
        return self._process.answer(self._number, "sent")

    def reply_to(self, serial):
        """Waits for the reply to a call, or for the error."""
        return self.messages_until_reply(serial)[-1]

    def messages_until_reply(self, serial):
        """The daemon's signals up to the reply to a call, and that reply, in order of arrival.

        Only the reply is taken; the signals are news still.
        """
        place = self._place_of_reply(serial)
        while place is None:
            self._unread.append(self._process.answer(self._number, "message"))
            place = self._place_of_reply(serial)
        messages = self._unread[: place + 1]
        del self._unread[place]
        return [m for m in messages[:-1] if self._is_news(m)] + messages[-1:]

    def _values_of(self, serial):
        reply = self.reply_to(serial)
        if reply["type"] == "error":
            raise Refused(reply)
        return reply["body"]

    def _place_of_reply(self, serial):
        replies = (n for n, message in enumerate(self._unread) if message["reply_to"] == serial)
        return next(replies, None)

    def round_trip(self):
        """Waits until the daemon has handled every call so far and its answers are here.

        It asks for the object's properties, of which there are none: that takes the same way
        through the daemon's main loop as a call of its methods, which Ping, for one, does not.
        """
        where = (self.destination, self.path, "org.freedesktop.DBus.Properties")
        serial = self.send_to(where, "GetAll", self.interface, signature="(s)")
        reply = self.reply_to(serial)
        assert (reply["type"], reply["body"]) == ("return", [{}]), reply

    # ---- signals

    def signals(self):
        """The daemon's signals since the last look, as messages."""
        self.round_trip()
        found = [message for message in self._unread if self._is_news(message)]
        self._unread = [message for message in self._unread if not self._is_news(message)]
        return found

    def news(self):
        """The daemon's signals since the last look, as (name, device)."""
        return [(signal["member"], device_of(signal)) for signal in self.signals()]

    def actions(self):
        """The daemon's signals since the last look, as (name, action, device node)."""
        return [
            (name, device["Action"], device.get("DeviceName")) for name, device in self.news()
        ]

    def listen_to_everything(self):
        """Asks the bus for every signal that is not meant for somebody else alone."""
        self.call_bus("AddMatch", "type='signal'", signature="(s)")

    def _is_news(self, message):
        return message["type"] == "signal" and message["sender"] != BUS[0]

    # ---- the bus

    def owner_of(self, name):
        """The unique name behind a name, or None."""
        try:
            return self.call_bus("GetNameOwner", name, signature="(s)")[0]
        except Refused as refused:
            assert refused.name == "org.freedesktop.DBus.Error.NameHasNoOwner"
            return None

    def watch_the_bus(self):
        """Turns this client into a monitor, which sees every message of everybody."""
        where = (BUS[0], BUS[1], "org.freedesktop.DBus.Monitoring")
        reply = self.reply_to(self.send_to(where, "BecomeMonitor", [], 0, signature="(asu)"))
        assert reply["type"] == "return", reply

    def seen_until_reply(self, caller, serial):
        """What a monitor saw up to the reply to somebody's call, that included, in its order."""
        seen = []
        while not seen or (seen[-1]["destination"], seen[-1]["reply_to"]) != (
            caller.unique_name,
            serial,
        ):
            seen.append(self._process.answer(self._number, "message"))
        return seen

    def signals_seen_until_reply(self, caller, serial):
        """The daemon's signals that a monitor saw up to the reply to somebody's call."""
        seen = self.seen_until_reply(caller, serial)
        return [message for message in seen if self._is_news(message)]

    def wait_for_owner_change(self, name):
        """Waits until a name changes hands; returns (old owner, new owner)."""
        while True:
            for message in self._unread:
                if message["member"] == "NameOwnerChanged" and message["body"][0] == name:
                    self._unread.remove(message)
                    return tuple(message["body"][1:])
            self._unread.append(self._process.answer(self._number, "message"))

    def leave(self):
        """Leaves the bus without a word to the daemon."""
        self._process.order(self._number, "close", True)
        self._process.answer(self._number, "closed")

    def _order(self, where, member, signature, arguments):
        destination, path, interface = where
        return {
            "destination": destination,
            "path": path,
            "interface": interface,
            "member": member,
            "signature": signature,
            "arguments": arguments,
        }


class ClientProcess(child.Child):
    """A process with some clients; `program` is what starts it, when not the script as it lies here."""

    def __init__(self, address, count=1, program=("/usr/bin/python3", str(SCRIPT))):
        super().__init__([*program, address, str(count)])
        names = self.take(lambda answer: isinstance(answer, list))
        self.clients = [Client(self, number, name) for number, name in enumerate(names)]

    def order(self, peer, action, what):
        """Gives an order to one client."""
        self.send(json.dumps({"peer": peer, action: what}))

    def answer(self, peer, key):
        """Waits for what a client tells under a key."""
        return self.take(
            lambda answer: isinstance(answer, dict) and answer["peer"] == peer and key in answer
        )[key]
