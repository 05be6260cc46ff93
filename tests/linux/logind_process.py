"""A stand-in for logind in a process of its own: sends the signal that each line on standard input names,
"PrepareForSleep true" for example, and answers with a line.
"""

import json
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402 (the version comes first)

bus = Gio.DBusConnection.new_for_address_sync(
    sys.argv[1],
    Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
    None,
    None,
)
reply = bus.call_sync(
    "org.freedesktop.DBus",
    "/org/freedesktop/DBus",
    "org.freedesktop.DBus",
    "RequestName",
    GLib.Variant("(su)", ("org.freedesktop.login1", 0)),
    None,
    Gio.DBusCallFlags.NONE,
    -1,
    None,
)
assert reply.unpack() == (1,)
print(json.dumps("ready"), flush=True)
for line in sys.stdin:
    signal, value = line.split()
    bus.emit_signal(
        None,
        "/org/freedesktop/login1",
        "org.freedesktop.login1.Manager",
        signal,
        GLib.Variant("(b)", (value == "true",)),
    )
    bus.flush_sync(None)
    print(json.dumps("sent"), flush=True)
