"""What every test of the bus stands on: a bus of its own, the daemon on it, and clients.

A test ends well only if the daemon, asked to, ended in an orderly way with status 0 and did nothing
against the platform's contract. What the daemon printed is shown when a test fails.
"""

import daemon as daemon_module
import pytest
from client import ClientProcess


@pytest.fixture
def bus(start_bus):
    """The bus that the daemon takes for the system bus."""
    return start_bus()


@pytest.fixture
def start_daemon(bus, tmp_path, request):
    """Starts a daemon, by default on the bus and with the installed interface description."""
    request.node.daemons = []
    unchanged = daemon_module.interface_description()

    def start(description=unchanged, bus_address=bus.address, arguments=()):
        folder = tmp_path / f"tv{len(request.node.daemons)}"
        daemon = daemon_module.Daemon(folder, bus_address, description, arguments)
        request.node.daemons.append(daemon)
        return daemon

    yield start
    try:
        for daemon in request.node.daemons:
            daemon.finish()
    finally:
        for daemon in request.node.daemons:
            daemon.kill()


@pytest.fixture
def new_daemon(start_daemon):
    """A daemon that has just got its name; it takes no USB event yet."""
    daemon = start_daemon()
    daemon.wait_for_name()
    return daemon


@pytest.fixture
def daemon(new_daemon):
    """A daemon that works: it owns its name and takes USB events."""
    new_daemon.start_up()
    return new_daemon


@pytest.fixture
def start_clients(bus):
    """Starts a process with some clients on the bus (or another) and returns the clients."""
    processes = []

    def start(count, bus_address=bus.address):
        processes.append(ClientProcess(bus_address, count))
        return processes[-1].clients

    yield start
    for process in processes:
        process.close_input()
        process.kill()


@pytest.fixture
def start_client(start_clients):
    """Starts a client in a process of its own."""
    return lambda **options: start_clients(1, **options)[0]


@pytest.fixture
def client(start_client):
    """A client of the daemon."""
    return start_client()


@pytest.fixture
def other(start_client):
    """Another client, in another process."""
    return start_client()


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item):
    """Adds what the daemons printed to the report of a failed test."""
    report = (yield).get_result()
    if report.failed:
        for number, daemon in enumerate(getattr(item, "daemons", [])):
            lines = "\n".join(daemon.error_lines()[-200:])
            report.sections.append((f"daemon {number}: the end of its log", lines))
