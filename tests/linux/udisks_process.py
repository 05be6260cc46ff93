"""A stand-in for UDisks2 in a process of its own: tells of each Mount call on its standard output and answers
as it was told: udisks_process.py ADDRESS ANSWER, where the answer is "hang", "ok", an error as NAME=TEXT, or
"late": as if it did not know the device, twice, and then "ok".
The file systems that it knows are those of sda1, sda2, sdb1 and sda.
"""

import json
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402 (the version comes first)

INTERFACE = """<node><interface name="org.freedesktop.UDisks2.Filesystem">
<method name="Mount"><arg type="a{sv}" direction="in"/><arg type="s" direction="out"/></method>
</interface></node>"""
NODES = ("sda1", "sda2", "sdb1", "sda")

address, answer = sys.argv[1:]
waiting = []


def called(_connection, _sender, path, _interface, _method, parameters, invocation):
    print(json.dumps({"object": path, "options": parameters.unpack()[0]}), flush=True)
    if answer == "hang":
        waiting.append(invocation)
    elif answer == "late" and len(waiting) < 2:
        waiting.append(invocation)
        invocation.return_dbus_error("org.freedesktop.DBus.Error.UnknownMethod", "No such interface")
    elif answer in ("ok", "late"):
        invocation.return_value(GLib.Variant("(s)", ("/media/somewhere",)))
    else:
        name, text = answer.split("=", 1)
        invocation.return_dbus_error(name, text)


bus = Gio.DBusConnection.new_for_address_sync(
    address,
    Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
    None,
    None,
)
(interface,) = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces
for node in NODES:
    bus.register_object(f"/org/freedesktop/UDisks2/block_devices/{node}", interface, called, None, None)
loop = GLib.MainLoop()
Gio.bus_own_name_on_connection(
    bus,
    "org.freedesktop.UDisks2",
    Gio.BusNameOwnerFlags.NONE,
    lambda *_: print(json.dumps("ready"), flush=True),
    None,
)
GLib.io_add_watch(sys.stdin, GLib.IO_HUP, lambda *_: loop.quit())
loop.run()
