#!/usr/bin/python3
"""Owns a name and sends signals in its name. Usage: owner_process.py NAME PATH INTERFACE

Prints "owned" once it does. Then it takes unique names, one a line: to each it sends a signal, and the
same to everybody, and prints "sent" when the bus has dealt with both.
"""

import json
import sys

from gi.repository import Gio, GLib


def main(name, path, interface):
    """Serves standard input until its end."""
    bus = Gio.bus_get_sync(Gio.BusType.SYSTEM)

    def ask(method, arguments):
        where = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")
        return bus.call_sync(*where, method, arguments, None, Gio.DBusCallFlags.NONE, -1).unpack()

    assert ask("RequestName", GLib.Variant("(su)", (name, 0))) == (1,)
    print(json.dumps("owned"), flush=True)
    for line in sys.stdin:
        for destination in (line.strip(), None):
            told = GLib.Variant("(s)", ("{}",))
            bus.emit_signal(destination, path, interface, "mm_device_action", told)
        ask("GetId", None)
        print(json.dumps("sent"), flush=True)


if __name__ == "__main__":
    main(*sys.argv[1:])
