"""What tests of notifications stand on: a server, a bus of a special kind, a probe between."""

import contextlib
import json
import os
import pathlib
import signal
import subprocess
import sys
import time

import pytest
from child import LIMIT, Child
from private_bus import CONFIGURATION, PrivateBus

NAME = "org.freedesktop.Notifications"
PEER = pathlib.Path(__file__).with_name("notification_peer.py")


class NotificationServer(Child):
    """The server of notification_peer.py as a process; see there for the options and orders."""

    def __init__(self, bus, capabilities=("actions", "body"), **options):
        options["capabilities"] = capabilities and list(capabilities)
        super().__init__([sys.executable, str(PEER), bus.address, json.dumps(options)])
        self.take(lambda line: "unique_name" in line)

    def order(self, *words):
        """Gives an order and waits until it is done."""
        self.send(json.dumps(words))
        self.take(lambda line: line.get("done") == words[0])

    def next(self, method, **wanted):
        """Waits for the next call of a method, with these arguments, and returns it."""
        return self.take(
            lambda line: line.get("call") == method
            and all(line.get(member) == value for member, value in wanted.items())
        )

    def calls_so_far(self, method):
        """Takes the calls of a method that came until now."""
        self.order("settle")
        with self._changed:
            found = [line for line in self._answers if line.get("call") == method]
            self._answers[:] = [line for line in self._answers if line.get("call") != method]
        return found

    def stop(self):
        """Hangs, as a program that was stopped, until go_on()."""
        os.kill(self.process.pid, signal.SIGSTOP)

    def go_on(self):
        """Is itself again."""
        os.kill(self.process.pid, signal.SIGCONT)


class OtherBus(PrivateBus):
    """A bus that listens elsewhere, or can start a notification server: `command` by its words."""

    def __init__(self, folder, listen=None, command=None):
        self._listen = listen
        self._command = command
        super().__init__(folder)

    def start(self):
        services = self._configuration.parent / "services"
        services.mkdir(exist_ok=True)
        if self._command:
            self._write_service()
        self.address = self._listen or self.address
        text = CONFIGURATION.format(address=self.address, own="allow")
        self._configuration.write_text(
            text.replace(
                "</busconfig>", f"<servicedir>{services}</servicedir>\n</busconfig>"
            )
        )
        super().start()

    def install(self, command):
        """Lets the running bus start a server from now on."""
        self._command = command
        self._write_service()
        self.tell_of_services()

    def tell_of_services(self):
        """Has the bus read its services again, and tell everybody."""
        driver = "org.freedesktop.DBus"
        subprocess.run(
            ["gdbus", "call", "--address", self.address, "--dest", driver]
            + ["--object-path", "/org/freedesktop/DBus", "--method", f"{driver}.ReloadConfig"],
            check=True,
            stdout=subprocess.DEVNULL,
        )

    def _write_service(self):
        services = self._configuration.parent / "services"
        (services / f"{NAME}.service").write_text(
            f"[D-BUS Service]\nName={NAME}\nExec={self._command}\n"
        )

    def crash(self):
        """Ends the bus before it can tell anybody."""
        self.kill()


class Stage:
    """A bus, servers on it, and one probe that uses the notification service."""

    def __init__(self, probe):
        self._start_probe = probe
        self._servers = []
        self.bus = None
        self.probe = None

    def server(self, *arguments, **options):
        """Starts a server; a second one waits until the first has gone."""
        self._servers.append(NotificationServer(self.bus, *arguments, **options))
        return self._servers[-1]

    def begin(self, bus):
        """Starts the probe, which uses the service, but may not have found the bus yet."""
        self.bus = bus
        self.probe = self._start_probe(session_bus=bus)
        assert self.probe.call("notification-init") == 0
        assert self.probe.call("notification-register") == 0
        self.probe.call("watch-bus")
        return self.probe

    def with_server(self, bus, *arguments, **options):
        """Starts a server, then the probe, which knows the server at the return."""
        self.bus = bus
        server = self.server(*arguments, **options)
        self.begin(bus)
        self.probe.event("bus-connected")
        server.next("GetCapabilities")
        self.pass_bus()
        return server

    def show(self, **values):
        """Asks for a pop-up; returns what the service said. By default it offers to browse."""
        record = {
            "sender": "portmeld",
            "type": 1,
            "timeout": 30,
            "title": "Stick",
            "body": "Browse?",
            "buttons": 2,
            "first": "Browse",
            "second": "Cancel",
            **values,
        }
        words = [f"{name}={value}" for name, value in record.items() if value is not None]
        return self.probe.call("notification-show", *words)

    def show_removal(self, **values):
        """Asks for a removal notice."""
        return self.show(**{"type": 2, "timeout": 3, "buttons": 0, **values})

    def show_until_taken(self, **values):
        """Asks for a pop-up until it is taken, for want of an event that says when it would be."""
        end = time.monotonic() + LIMIT
        while self.show(**values) != 0:
            assert time.monotonic() < end

    def shown(self, server, **values):
        """Shows a pop-up and returns the server's view of it, when the service knows its id."""
        assert self.show(**values) == 0
        popup = server.next("Notify")
        self.pass_bus()
        return popup

    def pass_bus(self):
        """Waits until what passed the bus before this call has arrived at the probe."""
        self.probe.call("ask-bus")
        self.probe.event("bus-answered")

    def news(self):
        """Takes the callbacks that came until now."""
        self.pass_bus()
        return self.probe.events_so_far()

    def losses(self):
        """What the service had to say in the log so far."""
        return [line for line in self.probe.error_lines() if "pop-up" in line]

    def lost(self, cause):
        """Waits until a pop-up was hidden because it was lost, and the log says why in one line."""
        self.probe.event("hidden")
        self.probe.wait_for_error_line("a pop-up is lost: ")
        (line,) = self.losses()
        assert cause in line

    def finish(self):
        """Ends the servers."""
        for server in self._servers:
            # One that was stopped by its test cannot be ended otherwise.
            with contextlib.suppress(ProcessLookupError):
                server.go_on()
            server.kill()


@pytest.fixture
def stage(probe):
    """A stage whose servers end with the test."""
    made = Stage(probe)
    yield made
    made.finish()


@pytest.fixture
def start_other_bus(tmp_path):
    """Starts a bus of OtherBus, with its arguments."""
    buses = []

    def start(**options):
        buses.append(OtherBus(tmp_path / "other-bus", **options))
        return buses[-1]

    yield start
    for bus in buses:
        bus.stop()
