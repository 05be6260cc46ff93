"""What the tests of portmeldctl stand on: the bus, the daemon and the clients of tests/bus, and the
program itself, which takes the test's bus for the system bus."""

import importlib.util
import pathlib
import sys

import private_bus
import pytest

BUS_TESTS = pathlib.Path(__file__).resolve().parents[1] / "bus"
sys.path.insert(0, str(BUS_TESTS))

_found = importlib.util.spec_from_file_location("bus_fixtures", BUS_TESTS / "conftest.py")
_fixtures = importlib.util.module_from_spec(_found)
_found.loader.exec_module(_fixtures)

bus = _fixtures.bus
start_daemon = _fixtures.start_daemon
new_daemon = _fixtures.new_daemon
daemon = _fixtures.daemon
start_clients = _fixtures.start_clients
start_client = _fixtures.start_client
client = _fixtures.client
pytest_runtest_makereport = _fixtures.pytest_runtest_makereport

# Only now, as it needs what tests/bus has.
import ctl_process  # noqa: E402  pylint: disable=wrong-import-position


@pytest.fixture
def ctl(tmp_path, bus):
    """Runs portmeldctl in a folder of its own, against the test's bus."""
    return ctl_process.Ctl(tmp_path, bus.address)


@pytest.fixture
def start_ctl(ctl):
    """Starts portmeldctl for commands that go on; what still runs at the end of the test is ended."""
    started = []

    def start(*arguments, **options):
        started.append(ctl_process.Running(ctl, arguments, **options))
        return started[-1]

    yield start
    for running in started:
        running.kill()


@pytest.fixture
def start_ruled_bus(tmp_path):
    """Starts a bus with rules of its own."""
    buses = []

    def start(rules=""):
        buses.append(private_bus.PrivateBus(tmp_path / f"ruled{len(buses)}", rules=rules))
        return buses[-1]

    yield start
    for each in buses:
        each.stop()


@pytest.fixture
def start_ruled_daemon(start_ruled_bus, start_daemon, ctl):
    """Starts a daemon on a bus with rules of its own, which portmeldctl takes for the system bus."""

    def start(rules):
        address = start_ruled_bus(rules).address
        ctl.environment["DBUS_SYSTEM_BUS_ADDRESS"] = address
        started = start_daemon(bus_address=address)
        started.wait_for_name()
        return started

    return start


@pytest.fixture
def fake_daemon(bus):
    """Starts what passes for the daemon and says what a test wants to hear."""
    started = []

    def start(*texts, address=bus.address, **options):
        started.append(ctl_process.FakeDaemon(address, texts, **options))
        return started[-1]

    yield start
    for fake in started:
        fake.kill()
