#!/usr/bin/python3
"""Passes for the daemon on a bus: owns its name and answers what has an empty reply, after it has sent
texts as signals to whoever asks for devices: those before the first "next" the first time, those behind it
the second time, and so on; the last again and again. As an intruder it sends them from another connection,
which does not own the name.

Usage: fake_daemon_process.py INTERFACE-DESCRIPTION ADDRESS alone|intruder TEXT...
"""

import pathlib
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402  pylint: disable=wrong-import-position

SIGNALS = {"RequesAll": "mm_device_action", "GetDeviceListByFsType": "mm_device_get_list"}


def connect(address):
    """A connection of its own."""
    flags = (
        Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
        | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    )
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


def main(description, address, role, texts):
    """Serves until it is killed."""
    node = Gio.DBusNodeInfo.new_for_xml(pathlib.Path(description).read_text(encoding="utf-8"))
    interface = node.interfaces[0]
    daemon = connect(address)
    teller = connect(address) if role == "intruder" else daemon
    turns = [[]]
    for text in texts:
        if text == "next":
            turns.append([])
        else:
            turns[-1].append(text)

    def called(_connection, sender, path, _interface, method, _parameters, invocation):
        if method in SIGNALS:
            for text in turns[0] if len(turns) == 1 else turns.pop(0):
                signal = (path, interface.name, SIGNALS[method], GLib.Variant("(s)", (text,)))
                teller.emit_signal(sender, *signal)
        teller.flush_sync(None)
        invocation.return_value(None)

    daemon.register_object(node.path, interface, called, None, None)
    daemon.call_sync(
        "org.freedesktop.DBus",
        "/org/freedesktop/DBus",
        "org.freedesktop.DBus",
        "RequestName",
        GLib.Variant("(su)", (interface.name, 0)),
        None,
        Gio.DBusCallFlags.NONE,
        -1,
        None,
    )
    print("ready", flush=True)
    GLib.MainLoop().run()


if __name__ == "__main__":
    main(*sys.argv[1:4], sys.argv[4:])
