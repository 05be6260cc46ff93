"""A process on a message bus that plays whom a test needs: a service manager, an application, a
notification server. It owns names and serves objects as it is told and tells of every call.

Orders and news are lines of JSON on standard input and output: {"own": NAME}, {"disown": NAME} and
{"serve": {"path", "interface", "reply", "error"}}, each answered with itself; {"call": {...}} for each
method call. Usage: application_peer.py BUS-ADDRESS
"""

import json
import sys

from gi.repository import Gio, GLib


def tell(news):
    """Prints one line."""
    print(json.dumps(news), flush=True)


def plain(value):
    """Values as JSON can hold them."""
    return value.unpack() if isinstance(value, GLib.Variant) else value


class Peer:
    """One connection."""

    def __init__(self, address):
        self.connection = Gio.DBusConnection.new_for_address_sync(
            address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None,
            None,
        )
        self.unanswered = []

    def ask_bus(self, method, arguments):
        """Calls the bus itself."""
        return self.connection.call_sync(
            "org.freedesktop.DBus",
            "/org/freedesktop/DBus",
            "org.freedesktop.DBus",
            method,
            arguments,
            None,
            Gio.DBusCallFlags.NONE,
            -1,
            None,
        ).unpack()

    def own(self, name):
        """Owns a name at once."""
        assert self.ask_bus("RequestName", GLib.Variant("(su)", (name, 4))) == (1,)

    def disown(self, name):
        """Gives a name back."""
        assert self.ask_bus("ReleaseName", GLib.Variant("(s)", (name,))) == (1,)

    def serve(self, what):
        """Serves an object. It answers every call with "reply" (a signature and its values), with
        "error" (a name and a message), or with neither: never."""

        def called(_connection, _sender, path, interface, method, arguments, invocation):
            tell(
                {
                    "call": {
                        "path": path,
                        "interface": interface,
                        "method": method,
                        "signature": arguments.get_type_string(),
                        "arguments": arguments.unpack(),
                    }
                }
            )
            if what.get("error"):
                invocation.return_dbus_error(*what["error"])
            elif what.get("reply"):
                signature, values = what["reply"]
                invocation.return_value(GLib.Variant(signature, tuple(values)))
            else:
                self.unanswered.append(invocation)

        interface = Gio.DBusNodeInfo.new_for_xml(what["interface"]).interfaces[0]
        self.connection.register_object(what["path"], interface, called, None, None)


def main():
    """Follows orders until there are no more."""
    peer = Peer(sys.argv[1])
    loop = GLib.MainLoop()

    def readable(_channel, _condition):
        line = sys.stdin.readline()
        if not line:
            loop.quit()
            return False
        order = json.loads(line)
        for verb, what in order.items():
            getattr(peer, verb)(what)
        tell(order)
        return True

    # Unbuffered lines: each order is one line, and the next comes after its answer.
    GLib.io_add_watch(
        GLib.IOChannel.unix_new(0),
        GLib.PRIORITY_DEFAULT,
        GLib.IOCondition.IN | GLib.IOCondition.HUP,
        readable,
    )
    loop.run()


if __name__ == "__main__":
    main()
