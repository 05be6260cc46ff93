"""What the tests of the packages stand on: a machine on which they are installed, its buses, and the
daemon started by hand as the service manager would start it.
"""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

import installed  # noqa: E402 (the path comes first)
from buses import SessionBus, SystemBus  # noqa: E402
from child import Child  # noqa: E402
from client import SCRIPT, ClientProcess  # noqa: E402


@pytest.fixture(scope="session")
def stage(tmp_path_factory):
    """The content of the packages, unpacked."""
    return installed.unpack(tmp_path_factory.mktemp("stage"))


@pytest.fixture
def machine(stage):
    """A fresh machine on which the packages are installed."""
    made = installed.Installed(stage)
    yield made
    made.close()


@pytest.fixture
def start_system_bus(machine):
    """Starts the machine's system bus: of the distribution's kind, a "strict" or an "open" one."""
    buses = []

    def start(kind="stock"):
        buses.append(SystemBus(machine, kind))
        return buses[-1]

    yield start
    for bus in buses:
        bus.stop()


@pytest.fixture
def start_session_bus(machine):
    """Starts the session bus of a user, at the place where a session has it."""
    buses = []

    def start(user):
        buses.append(SessionBus(machine, user))
        return buses[-1]

    yield start
    for bus in buses:
        bus.stop()


@pytest.fixture
def start(machine):
    """Starts a program on the machine that is ended with the test: start(user, argument...)."""
    children = []

    def begin(user, *arguments, env=None):
        children.append(Child(machine.command(user, *arguments, env=env)))
        return children[-1]

    yield begin
    for each in children:
        each.kill()


@pytest.fixture
def start_daemon(machine, start):
    """Starts the daemon that is installed, for the kiosk; it tells everything that it does."""
    machine.home_of("kiosk")

    def begin():
        machine.succeed("root", "tee", "/var/lib/portmeld/db/portmeld/log_level", text="debug\n")
        return start("kiosk", "/usr/bin/portmeld")

    return begin


@pytest.fixture
def start_client(machine):
    """Makes a client of the system bus that is one of the machine's users."""
    script = machine.place(SCRIPT)
    processes = []

    def begin(user):
        program = machine.command(user, "/usr/bin/python3", script)
        processes.append(ClientProcess(installed.SYSTEM_BUS, program=program))
        return processes[-1].clients[0]

    yield begin
    for process in processes:
        process.close_input()
        process.kill()
