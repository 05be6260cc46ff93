"""Standby, wake-up and power-off, as logind tells them on the system bus."""

import time

import pytest
from gi.repository import Gio, GLib

NAME = "org.freedesktop.login1"
PATH = "/org/freedesktop/login1"
INTERFACE = "org.freedesktop.login1.Manager"
DRIVER = ("org.freedesktop.DBus", "/org/freedesktop/DBus")

STANDBY, NORMAL = 2, 0
REALLY_OFF = 0x40000000

LIMIT = 60  # seconds


class Peer:
    """Somebody on the bus: logind, when it owns the name."""

    def __init__(self, bus):
        self.connection = Gio.DBusConnection.new_for_address_sync(
            bus.address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None,
            None,
        )

    def _driver(self, interface, method, parameters=None):
        return self.connection.call_sync(
            *DRIVER, interface, method, parameters, None, Gio.DBusCallFlags.NONE, -1, None
        ).unpack()

    def own(self):
        (result,) = self._driver(DRIVER[0], "RequestName", GLib.Variant("(su)", (NAME, 4)))
        assert result == 1

    def release(self):
        self._driver(DRIVER[0], "ReleaseName", GLib.Variant("(s)", (NAME,)))

    def names(self):
        (names,) = self._driver(DRIVER[0], "ListNames")
        return names

    def heard_by_somebody(self):
        """Whether anybody on the bus listens to the shutdowns of this peer."""
        (rules,) = self._driver("org.freedesktop.DBus.Debug.Stats", "GetAllMatchRules")
        own = self.connection.get_unique_name()
        return any(
            "PrepareForShutdown" in rule and own in rule for each in rules.values() for rule in each
        )

    def wait_until(self, heard):
        """Waits until somebody listens, or nobody does; the bus tells nobody of that by itself."""
        end = time.monotonic() + LIMIT
        while self.heard_by_somebody() != heard:
            assert time.monotonic() < end, f"heard: {not heard}"
            time.sleep(0.01)

    def emit(self, signal, parameters, destination=None, path=PATH):
        self.connection.emit_signal(destination, path, INTERFACE, signal, parameters)
        self.connection.flush_sync(None)

    def prepare_for(self, what, begins):
        self.emit(f"PrepareFor{what}", GLib.Variant("(b)", (begins,)))


@pytest.fixture
def bus(start_bus):
    """The system bus."""
    return start_bus()


@pytest.fixture
def logind(bus):
    """logind, as far as it matters here."""
    peer = Peer(bus)
    peer.own()
    yield peer
    peer.connection.close_sync(None)


@pytest.fixture
def one(probe, bus):
    """A probe on the system bus that subscribes to everything, in no special order."""
    subscribed = probe(system_bus=bus)
    for notice in ["wake-up", "state", "power-off"]:
        assert subscribed.call("subscribe-power", notice) == 0
    return subscribed


def told(probe, *notices):
    """Waits for just these notices, in this order."""
    for notice, value in notices:
        event = probe.event("power")
        assert (event["notice"], event["value"]) == (notice, value)
    assert probe.events_so_far() == []


def test_going_to_sleep_is_standby_and_then_power_off(one, logind):
    logind.wait_until(heard=True)
    logind.prepare_for("Sleep", True)
    told(one, ("state", STANDBY), ("power-off", REALLY_OFF))


def test_waking_up_is_a_wake_up_and_then_the_normal_state(one, logind):
    logind.wait_until(heard=True)
    logind.prepare_for("Sleep", False)
    told(one, ("wake-up", 1), ("state", NORMAL))


def test_a_shutdown_is_power_off(one, logind):
    logind.wait_until(heard=True)
    logind.prepare_for("Shutdown", True)
    told(one, ("power-off", REALLY_OFF))


def test_a_shutdown_that_is_called_off_is_a_wake_up(one, logind):
    logind.wait_until(heard=True)
    logind.prepare_for("Shutdown", False)
    told(one, ("wake-up", 1))


def test_the_machine_itself_is_woken_before_the_daemon_is_told(one, logind):
    one.call("on-sleep")
    logind.wait_until(heard=True)
    logind.prepare_for("Sleep", False)
    told(one, ("machine", 0), ("wake-up", 1), ("state", NORMAL))


def test_the_machine_itself_goes_to_sleep_before_the_daemon_is_told(one, logind):
    one.call("on-sleep")
    logind.wait_until(heard=True)
    logind.prepare_for("Sleep", True)
    told(one, ("machine", 1), ("state", STANDBY), ("power-off", REALLY_OFF))


def test_the_machine_is_woken_without_any_subscription_until_it_forgets_it(probe, bus, logind):
    one = probe(system_bus=bus)
    number = one.call("on-sleep")
    logind.wait_until(heard=True)
    logind.prepare_for("Sleep", False)
    told(one, ("machine", 0))
    one.call("forget-sleep", number)
    logind.wait_until(heard=False)


def test_each_notice_is_ended_by_itself(one, logind):
    logind.wait_until(heard=True)
    assert one.call("unsubscribe-power", "wake-up") == 0
    logind.prepare_for("Sleep", False)
    told(one, ("state", NORMAL))
    assert one.call("unsubscribe-power", "state") == 0
    logind.prepare_for("Sleep", True)
    told(one, ("power-off", REALLY_OFF))
    assert one.call("unsubscribe-power", "power-off") == 0
    logind.wait_until(heard=False)


def test_what_is_not_subscribed_cannot_be_ended(probe):
    assert probe().call("unsubscribe-power", "state") != 0


def test_nobody_is_listened_to_until_somebody_subscribes(probe, bus, logind):
    one = probe(system_bus=bus)
    one.call("settle")
    assert len([name for name in logind.names() if name.startswith(":")]) == 1
    one.call("subscribe-power", "state")
    logind.wait_until(heard=True)
    one.call("unsubscribe-power", "state")
    logind.wait_until(heard=False)
    one.call("subscribe-power", "state")
    logind.wait_until(heard=True)
    logind.prepare_for("Sleep", True)
    told(one, ("state", STANDBY))


def test_a_subscription_can_be_ended_while_the_bus_is_being_connected(probe, bus, logind):
    one = probe(system_bus=bus)
    one.send("subscribe-power state\nunsubscribe-power state")
    assert [one.take()["result"] for _ in range(2)] == [0, 0]
    one.call("subscribe-power", "state")
    logind.wait_until(heard=True)


def test_a_logind_that_comes_later_and_is_replaced_is_found(one, bus):
    first, second = Peer(bus), Peer(bus)
    for peer in [first, second, first]:
        peer.own()
        peer.wait_until(heard=True)
        peer.prepare_for("Shutdown", True)
        told(one, ("power-off", REALLY_OFF))
        peer.release()
        peer.wait_until(heard=False)


def test_signals_of_others_do_not_count(one, logind, bus):
    stranger = Peer(bus)
    logind.wait_until(heard=True)
    names = [name for name in logind.names() if name.startswith(":")]
    for destination in [None, *names]:
        stranger.emit("PrepareForSleep", GLib.Variant("(b)", (True,)), destination)
    # Asking the bus afterwards: what it had to hand on before is on its way.
    stranger.names()
    logind.prepare_for("Shutdown", False)
    told(one, ("wake-up", 1))


def test_signals_in_another_form_do_not_count(one, logind):
    logind.wait_until(heard=True)
    logind.emit("PrepareForSleep", GLib.Variant("(s)", ("true",)))
    logind.emit("PrepareForSleep", None)
    logind.emit("PrepareForSleep", GLib.Variant("(b)", (True,)), path="/elsewhere")
    logind.emit("PrepareForAnything", GLib.Variant("(b)", (True,)))
    logind.prepare_for("Shutdown", False)
    told(one, ("wake-up", 1))


def test_without_a_bus_nothing_comes_and_nothing_fails(probe):
    one = probe()
    for notice in ["wake-up", "state", "power-off"]:
        assert one.call("subscribe-power", notice) == 0
    assert one.events_so_far() == []
    assert one.call("unsubscribe-power", "state") == 0
    assert one.error_lines() == []
