#!/usr/bin/python3
"""A notification server for tests. Usage: notification_peer.py ADDRESS OPTIONS

It does nothing by itself. It prints one JSON object for each call that it gets, {"call": METHOD,
...}, and obeys JSON orders, one a line, ["ORDER", ARGUMENT...], each answered with {"done": ORDER}.
OPTIONS is a JSON object:

  "capabilities"  what it says it can; null: it does not answer that question until told to
  "inhibited"     its property of that name; missing: it has none
  "keeps_ids"     false: a pop-up that replaces another gets an id of its own
  "gives_ids"     false: it gives none but 0
  "owns"          false: it owns no name, and is a stranger to whoever asks
"""

import json
import sys

from gi.repository import Gio, GLib

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"
PROPERTIES = "org.freedesktop.DBus.Properties"
NOTIFY = ("app", "replaces", "icon", "title", "body", "actions", "hints", "timeout")
INTERFACE = f"""
<node><interface name="{NAME}">
  <method name="GetCapabilities"><arg type="as" direction="out"/></method>
  <method name="Notify">
    {"".join(f'<arg type="{kind}" direction="in"/>' for kind in "s u s s s as a{sv} i".split())}
    <arg type="u" direction="out"/>
  </method>
  <method name="CloseNotification"><arg type="u" direction="in"/></method>
</interface>
<interface name="{PROPERTIES}">
  <method name="Get">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
  </method>
</interface></node>"""


def say(**members):
    """Prints one line."""
    print(json.dumps(members), flush=True)


class Server:
    """The server and its orders."""

    def __init__(self, address, options):
        self.options = options
        self.last_id = 0
        self.holding = False
        self.refusing = False
        self.held = []
        self.connection = Gio.DBusConnection.new_for_address_sync(
            address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None,
            None,
        )
        for interface in Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces:
            # One closure for methods only: properties are answered by hand, so that they can fail.
            self.connection.register_object(PATH, interface, self.called)
        if options.get("owns", True):
            self.own()

    def called(self, _connection, _sender, _path, _interface, method, arguments, invocation):
        """A method of the interface, or Get of the properties, was called."""
        arguments = arguments.unpack()
        if method == "GetCapabilities":
            if self.options["capabilities"] is None:
                self.held.append((invocation, None))
            else:
                self.tell_capabilities(invocation)
            self.pass_bus()
            say(call=method)
        elif method == "Notify":
            self.notify(arguments, invocation)
        elif method == "Get":
            self.get(invocation)
            self.pass_bus()
            say(call=method, property=arguments[1])
        else:
            say(call=method, id=arguments[0])
            invocation.return_value(None)

    def notify(self, arguments, invocation):
        """Gives the pop-up an id."""
        fields = dict(zip(NOTIFY, arguments))
        if self.refusing:
            say(call="Notify", **fields)
            invocation.return_dbus_error("org.example.Error.Full", "no room")
            return
        number = fields["replaces"] if self.options.get("keeps_ids", True) else 0
        if not number and self.options.get("gives_ids", True):
            self.last_id += 1
            number = self.last_id
        answer = GLib.Variant("(u)", (number,))
        if self.holding:
            self.held.append((invocation, answer))
        else:
            invocation.return_value(answer)
            self.pass_bus()
        say(call="Notify", id=number, **fields)

    def get(self, invocation):
        """Answers what a property is."""
        if "inhibited" in self.options:
            value = self.inhibited()
            invocation.return_value(GLib.Variant("(v)", (value,)))
        else:
            invocation.return_dbus_error(
                "org.freedesktop.DBus.Error.UnknownProperty", "no such property"
            )

    def inhibited(self):
        """The property's value."""
        value = self.options["inhibited"]
        return GLib.Variant("b" if isinstance(value, bool) else "s", value)

    def tell_capabilities(self, invocation):
        """Answers GetCapabilities."""
        invocation.return_value(GLib.Variant("(as)", (self.options["capabilities"],)))

    # ---- orders

    def settle(self):
        """Serves every call that the bus has taken so far."""
        self.pass_bus()
        while GLib.MainContext.default().iteration(False):
            pass

    def own(self):
        """Takes the name, or waits until it is free."""
        self.bus("RequestName", GLib.Variant("(su)", (NAME, 0)))

    def release(self):
        """Gives the name back."""
        self.bus("ReleaseName", GLib.Variant("(s)", (NAME,)))

    def hold(self):
        """Answers no Notify from now on."""
        self.holding = True

    def answer(self):
        """Gives all answers that were held back."""
        self.holding = False
        for invocation, value in self.held:
            if value is None:
                self.tell_capabilities(invocation)
            else:
                invocation.return_value(value)
        self.held = []
        self.pass_bus()

    def refuse(self):
        """Answers each Notify with an error from now on."""
        self.refusing = True

    def able(self, capabilities):
        """Can something else from now on."""
        self.options["capabilities"] = capabilities

    def press(self, number, key, passes=True):
        """Says that a button was pressed, also to a bus that hangs if the news need not pass it."""
        self.emit(NAME, "ActionInvoked", GLib.Variant("(us)", (number, key)), passes)

    def close(self, number, reason):
        """Says that a pop-up went."""
        self.emit(NAME, "NotificationClosed", GLib.Variant("(uu)", (number, reason)))

    def inhibit(self, value, tells=True):
        """Changes the property, with the new value in the signal or without."""
        self.options["inhibited"] = value
        changed = {"Inhibited": self.inhibited()} if tells else {}
        invalidated = [] if tells else ["Inhibited"]
        self.emit(
            PROPERTIES,
            "PropertiesChanged",
            GLib.Variant("(sa{sv}as)", (NAME, changed, invalidated)),
        )

    def emit(self, interface, name, arguments, passes=True):
        """Emits a signal; it has passed the bus at the return, or waits in its socket."""
        self.connection.emit_signal(None, PATH, interface, name, arguments)
        if passes:
            self.pass_bus()
        else:
            self.connection.flush_sync(None)

    def pass_bus(self):
        """Waits until what was sent before has passed the bus."""
        self.bus("GetId", None)

    def bus(self, method, arguments):
        """Calls a method of the bus itself."""
        self.connection.call_sync(
            "org.freedesktop.DBus",
            "/org/freedesktop/DBus",
            "org.freedesktop.DBus",
            method,
            arguments,
            None,
            Gio.DBusCallFlags.NONE,
            -1,
            None,
        )


def main(address, options):
    """Serves until standard input, or the bus, ends."""
    server = Server(address, json.loads(options))
    say(unique_name=server.connection.get_unique_name())
    loop = GLib.MainLoop()
    server.connection.connect("closed", lambda *_: loop.quit())

    def readable(_descriptor, _condition):
        line = orders.readline()
        if not line:
            loop.quit()
            return False
        name, *arguments = json.loads(line)
        getattr(server, name)(*arguments)
        say(done=name)
        return True

    # Unbuffered, so that every line that is there is also seen by the main loop.
    orders = open(0, "rb", buffering=0, closefd=False)
    GLib.unix_fd_add_full(
        GLib.PRIORITY_DEFAULT, 0, GLib.IOCondition.IN | GLib.IOCondition.HUP, readable
    )
    loop.run()


if __name__ == "__main__":
    main(*sys.argv[1:])
