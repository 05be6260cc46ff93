"""A viewer's machine for whole roads: the daemon on it, his notification server, his service manager, and a
client of the bus."""

import os
import pathlib
import time

import child
import pytest
from application_helpers import Peer, write_entry
from client import ClientProcess
from machine import Mounts
from notification_helpers import NotificationServer

PHOTO = pathlib.Path("workbench", "samples", "one-photo", "chelsea.jpg")


class Stage:
    """A viewer's machine: the daemon, his notification server, his service manager, and a client."""

    def __init__(self, daemon, screen, manager, client, folder):
        self.daemon = daemon
        self.screen = screen
        self.manager = manager
        self.client = client
        self.mounts = Mounts(daemon.process.pid, folder)

    def popup(self):
        """The next pop-up that is shown."""
        return self.screen.next("Notify")

    def press(self, popup, button):
        """Presses a button of a pop-up."""
        self.screen.order("press", popup["id"], popup["actions"][2 * button])

    def wait_for_news(self):
        """The next signals that the client hears, once there are any."""
        return self._wait_for(self.client.news)

    def wait_for_count(self, count):
        """Waits until the daemon counts this many devices."""
        self._wait_for(lambda: self.client.call("GetDeviceCount", 7, -1) == [count])

    @staticmethod
    def _wait_for(ask):
        """Asks the daemon again and again, which answers at once, until it has something to say."""
        end = time.monotonic() + child.LIMIT
        while not (answer := ask()):
            assert time.monotonic() < end, f"waited {child.LIMIT} s in vain"
        return answer

    def plug_mounted(self, machine, name="fat32", files=()):
        """Plugs in a stick that is mounted, with these files on it; returns where."""
        point = self.mounts.mount("/dev/sda1")
        for source, target in files:
            self.mounts.run("cp", str(source), f"{point}/{target}")
        machine.plug(name)
        return point

    def launched(self):
        """The next application that is started: its id and what it was given."""
        unit, _, data = self.manager.unit()
        return unit.removeprefix("app-").rsplit("-", 1)[0], data


@pytest.fixture
def start_client():
    """Starts a client of the daemon."""
    processes = []

    def start(bus):
        processes.append(ClientProcess(bus.address))
        return processes[-1].clients[0]

    yield start
    for process in processes:
        process.close_input()
        process.kill()


@pytest.fixture
def buses(start_bus):
    """The session's bus and the system's."""
    return start_bus(), start_bus()


@pytest.fixture
def stage(buses, root, start_daemon, start_client, tmp_path):
    """Everything is there, and the daemon takes events."""
    session, system = buses
    for application in ("org.quillon.folian", "org.norvane.picreel", "org.norvane.lumet"):
        write_entry(root, application, Exec="/bin/true")
    screen = NotificationServer(session)
    manager = Peer(session)
    manager.be_service_manager()
    client = start_client(system)
    daemon = start_daemon(session, system)
    daemon.wait_for_error_line("com.norvane.portmeld NameAcquired.")
    client.call("Connect", "test", 1)
    daemon.wait_until_it_takes_events()
    yield Stage(daemon, screen, manager, client, tmp_path)
    for each in (screen, manager):
        if each.process.poll() is None:
            each.close_input()
        each.kill()


def source(name):
    """A file of the project."""
    return pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"]) / name
