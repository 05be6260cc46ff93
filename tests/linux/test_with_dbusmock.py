"""logind and a notification server as python-dbusmock plays them: peers that nobody here has written."""

import os
import subprocess
import sys
import time

import child
import pytest
from gi.repository import Gio, GLib

pytest_plugins = ["notification_helpers"]

LOGIND = ("org.freedesktop.login1", "/org/freedesktop/login1")
NOTIFICATIONS = ("org.freedesktop.Notifications", "/org/freedesktop/Notifications")
DRIVER = ("org.freedesktop.DBus", "/org/freedesktop/DBus")
MOCK = "org.freedesktop.DBus.Mock"

STANDBY, NORMAL, REALLY_OFF = 2, 0, 0x40000000


class Mock:
    """A template of python-dbusmock on a bus; at the return it owns its name."""

    def __init__(self, bus, kind, place, template, parameters):
        self._place = place
        self._connection = Gio.DBusConnection.new_for_address_sync(
            bus.address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None,
            None,
        )
        came = []
        self._connection.signal_subscribe(
            *(DRIVER[0], DRIVER[0], "NameOwnerChanged", DRIVER[1], place[0]),
            Gio.DBusSignalFlags.NONE,
            lambda *_: came.append(True),
        )
        # What was asked before is known to the bus before the mock can come.
        self.ask(DRIVER, DRIVER[0], "GetId")
        self.process = subprocess.Popen(
            [sys.executable, "-m", "dbusmock", f"--{kind}", "--template", template]
            + ["--parameters", parameters],
            env={**os.environ, f"DBUS_{kind.upper()}_BUS_ADDRESS": bus.address},
            stdout=subprocess.PIPE,
        )
        late = []
        GLib.timeout_add_seconds(child.LIMIT, lambda: late.append(True))
        while not came:
            GLib.MainContext.default().iteration(True)
            assert not late, f"{template} did not come"
        # The name comes first and the methods of the template after it, in one turn of its loop.
        self.ask(place, "org.freedesktop.DBus.Introspectable", "Introspect")

    def ask(self, place, interface, method, arguments=None):
        """Calls a method and returns its answer."""
        return self._connection.call_sync(
            *(*place, interface, method, arguments, None),
            Gio.DBusCallFlags.NONE,
            child.LIMIT * 1000,
            None,
        ).unpack()

    def emit(self, interface, signal, signature, *values):
        """Has the mock emit a signal."""
        arguments = [GLib.Variant(kind, value) for kind, value in zip(signature, values, strict=True)]
        self.ask(
            self._place,
            MOCK,
            "EmitSignal",
            GLib.Variant("(sssav)", (interface, signal, signature, arguments)),
        )

    def wait_for_listener(self):
        """Waits until somebody listens to this peer; the bus tells nobody of that by itself."""
        (owner,) = self.ask(DRIVER, DRIVER[0], "GetNameOwner", GLib.Variant("(s)", self._place[:1]))
        end = time.monotonic() + child.LIMIT
        rules = ()
        while not any(f"sender='{owner}'" in rule for each in rules for rule in each):
            assert time.monotonic() < end, f"nobody listens to {owner}"
            (by_listener,) = self.ask(DRIVER, "org.freedesktop.DBus.Debug.Stats", "GetAllMatchRules")
            rules = by_listener.values()

    def calls(self, method):
        """The arguments of all calls of a method so far."""
        (calls,) = self.ask(
            self._place, MOCK, "GetMethodCalls", GLib.Variant("(s)", (method,))
        )
        return [arguments for _, arguments in calls]

    def end(self):
        """Ends the mock."""
        self._connection.close_sync(None)
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()


@pytest.fixture
def mock():
    """Starts a mock, with the arguments of Mock."""
    mocks = []

    def start(*arguments):
        mocks.append(Mock(*arguments))
        return mocks[-1]

    yield start
    for each in mocks:
        each.end()


@pytest.mark.parametrize(
    "begins, notices",
    [
        (True, [("state", STANDBY), ("power-off", REALLY_OFF)]),
        (False, [("wake-up", 1), ("state", NORMAL)]),
    ],
    ids=["to sleep", "awake"],
)
def test_sleep_that_logind_announces_is_told(probe, start_bus, mock, begins, notices):
    bus = start_bus()
    logind = mock(bus, "system", LOGIND, "logind", "{}")
    one = probe(system_bus=bus)
    for notice in ("wake-up", "state", "power-off"):
        assert one.call("subscribe-power", notice) == 0
    logind.wait_for_listener()
    logind.emit("org.freedesktop.login1.Manager", "PrepareForSleep", "b", begins)
    for notice, value in notices:
        event = one.event("power")
        assert (event["notice"], event["value"]) == (notice, value)
    assert one.events_so_far() == []


def with_server(stage, bus, mock, capabilities):
    """A stage whose server is the mock's, which the service knows at the return."""
    server = mock(
        bus,
        "session",
        NOTIFICATIONS,
        "notification_daemon",
        f'{{"capabilities": "{capabilities}"}}',
    )
    stage.begin(bus)
    stage.probe.event("bus-connected")
    stage.pass_bus()
    return server


def shown(stage, server, **values):
    """Shows a pop-up; returns the arguments with which the server has it."""
    before = len(server.calls("Notify"))
    assert stage.show(**values) == 0
    while len(server.calls("Notify")) == before:
        stage.pass_bus()
    stage.pass_bus()
    return server.calls("Notify")[-1]


@pytest.mark.parametrize("button", [0, 1])
def test_a_button_that_a_server_with_actions_tells_of_is_told(stage, start_bus, mock, button):
    server = with_server(stage, start_bus(), mock, "body actions")
    actions = shown(stage, server)[5]
    assert actions[1::2] == ["Browse", "Cancel"]
    server.emit(NOTIFICATIONS[0], "ActionInvoked", "us", 1, actions[2 * button])
    assert stage.probe.event("button") == {"event": "button", "type": 1, "button": button}
    # The mock says of each pop-up that it is told to close that it has gone.
    assert stage.news() == []
    assert server.calls("CloseNotification") == [[1]]


def test_a_server_without_actions_is_given_none(stage, start_bus, mock):
    server = with_server(stage, start_bus(), mock, "body body-markup")
    arguments = shown(stage, server, body="<Browse?>")
    assert (arguments[4], arguments[5]) == ("&lt;Browse?&gt;", [])


def test_the_end_that_the_server_tells_of_is_told(stage, start_bus, mock):
    server = with_server(stage, start_bus(), mock, "body actions")
    shown(stage, server)
    server.emit(NOTIFICATIONS[0], "NotificationClosed", "uu", 1, 1)
    assert stage.probe.event("time-out")["type"] == 1
    assert shown(stage, server, type=2)[1] == 0
    server.emit(NOTIFICATIONS[0], "NotificationClosed", "uu", 2, 2)
    stage.probe.event("hidden")
    assert stage.news() == []
