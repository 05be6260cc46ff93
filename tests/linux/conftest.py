"""What the tests of the Linux machine stand on: buses of their own, the probe, and the daemon.

A program under test works in a folder of its own, which it takes for the root of the file system, and
sees only the buses that the test gives it. It must end well when its input ends, and what it printed is
shown when a test fails.
"""

import os
import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

from machine import Machine  # noqa: E402 (the path comes first)
from programs import Daemon, Logind, Probe  # noqa: E402
from usb_helpers import Ports  # noqa: E402

NOWHERE = "unix:path=/nonexistent/bus"


@pytest.fixture
def root(tmp_path):
    """The folder that stands for "/" in the fixed paths of the program under test."""
    folder = tmp_path / "machine" / "root"
    folder.mkdir(parents=True)
    return folder


@pytest.fixture
def surroundings(root):
    """Makes the environment of a program: the buses it sees, and nothing of the person's own."""

    def make(session_bus=None, system_bus=None, env=None):
        kept = {
            name: value
            for name, value in os.environ.items()
            if name
            not in ("XDG_RUNTIME_DIR", "NOTIFY_SOCKET", "JOURNAL_STREAM", "INVOCATION_ID", "LANGUAGE")
        }
        # A sanitizer that opens its report under umockdev's library does so too early for that. It
        # writes to standard error instead, and its exit status fails the test.
        for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS"):
            if name in kept:
                options = kept[name].split(":")
                kept[name] = ":".join(o for o in options if not o.startswith("log_path="))
        return {
            **kept,
            "DBUS_SESSION_BUS_ADDRESS": session_bus.address if session_bus else NOWHERE,
            "DBUS_SYSTEM_BUS_ADDRESS": system_bus.address if system_bus else NOWHERE,
            "XDG_DATA_HOME": str(root.parent / "data-home"),
            "XDG_DATA_DIRS": str(root.parent / "data"),
            "XDG_CONFIG_HOME": str(root.parent / "config-home"),
            "XDG_CACHE_HOME": str(root.parent / "cache-home"),
            "HOME": str(root.parent),
            "G_DEBUG": "fatal-criticals",
            "LC_ALL": "C.UTF-8",
            **(env or {}),
        }

    return make


@pytest.fixture
def probe(start_bus, root, surroundings):  # the buses outlive the programs on them
    """Starts a probe: probe(session_bus=..., system_bus=..., env=..., wrapper=[...])."""
    probes = []

    def start(session_bus=None, system_bus=None, env=None, wrapper=()):
        probes.append(Probe(root.parent, surroundings(session_bus, system_bus, env), wrapper))
        return probes[-1]

    yield start
    try:
        for each in probes:
            each.finish()
    finally:
        for each in probes:
            each.kill()


@pytest.fixture
def machine():
    """A machine with USB ports, nothing plugged in."""
    made = Machine()
    yield made
    made.close()


@pytest.fixture
def start_ports(machine, probe, tmp_path):
    """Starts the USB library on the machine; a listener hears of everything unless told otherwise."""

    def start(listening=True, **surroundings):
        env = {**machine.environment(), **surroundings.pop("env", {})}
        ports = Ports(probe(env=env, wrapper=machine.wrapper(), **surroundings), tmp_path)
        if listening:
            ports.listen()
        return ports

    return start


@pytest.fixture
def ports(start_ports):
    """The USB library on the machine, started before anything is plugged in."""
    return start_ports()


@pytest.fixture
def start_logind():
    """Starts a logind on a bus: it tells of sleep and shutdown."""
    started = []

    def start(system_bus):
        started.append(Logind(system_bus))
        return started[-1]

    yield start
    for each in started:
        each.close()


def install(root):
    """Installs what the daemon needs below a folder, and has it write all its lines but the finest."""
    log_level = root / "var" / "lib" / "portmeld" / "db" / "portmeld" / "log_level"
    log_level.parent.mkdir(parents=True)
    log_level.write_text("info\n")
    resources = pathlib.Path(os.environ["PORTMELD_BUILD_DIR"]).resolve() / "res"
    assert (resources / "po" / "de").is_dir(), f"{resources} was not built"
    installed = root / "usr" / "apps" / "portmeld" / "res"
    for place, source in [
        (installed / "locale", resources / "po"),
        (installed / "images", resources / "images"),
        (root / "usr" / "bin" / "portmeld.interface.xml", resources / "portmeld.interface.xml"),
    ]:
        place.parent.mkdir(parents=True, exist_ok=True)
        place.symlink_to(source)


@pytest.fixture
def start_daemon(start_bus, root, surroundings, machine, request):
    """Starts the daemon on the machine; without a bus it finds none."""
    request.node.daemons = []
    install(root)

    def start(session_bus=None, system_bus=None, env=None):
        environment = surroundings(
            session_bus, system_bus, {**machine.environment(), **(env or {})}
        )
        request.node.daemons.append(Daemon(root.parent, environment, machine.wrapper()))
        return request.node.daemons[-1]

    yield start
    try:
        for each in request.node.daemons:
            each.finish()
    finally:
        for each in request.node.daemons:
            each.kill()


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item):
    """Adds what the daemons printed to the report of a failed test."""
    report = (yield).get_result()
    if report.failed:
        for number, daemon in enumerate(getattr(item, "daemons", [])):
            lines = "\n".join(daemon.error_lines()[-200:])
            report.sections.append((f"daemon {number}: the end of its log", lines))
