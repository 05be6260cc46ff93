"""What the tests of launching stand on: peers on the bus that record calls, programs that record how
they were started, and desktop entries that name them."""

import json
import os
import pathlib
import select
import sys
import time

import child
import pytest
from private_bus import PrivateBus

SERVICE_MANAGER = """<node><interface name='org.freedesktop.systemd1.Manager'>
  <method name='StartTransientUnit'>
    <arg type='s' direction='in'/><arg type='s' direction='in'/>
    <arg type='a(sv)' direction='in'/><arg type='a(sa(sv))' direction='in'/>
    <arg type='o' direction='out'/>
  </method></interface></node>"""

APPLICATION = """<node><interface name='org.freedesktop.Application'>
  <method name='Open'>
    <arg type='as' direction='in'/><arg type='a{sv}' direction='in'/>
  </method>
  <method name='ActivateAction'>
    <arg type='s' direction='in'/><arg type='av' direction='in'/><arg type='a{sv}' direction='in'/>
  </method></interface></node>"""

NOTIFICATIONS = """<node><interface name='org.freedesktop.Notifications'>
  <method name='Notify'>
    <arg type='s' direction='in'/><arg type='u' direction='in'/><arg type='s' direction='in'/>
    <arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='as' direction='in'/>
    <arg type='a{sv}' direction='in'/><arg type='i' direction='in'/><arg type='u' direction='out'/>
  </method></interface></node>"""

# Tells through a FIFO how it was started; the last line of a fake application.
RECORDING_PROGRAM = """#!{python} -IS
import json, os, sys
# Without blocking: a test that did not expect this program may have ended meanwhile.
fifo = os.open({fifo!r}, os.O_WRONLY | os.O_NONBLOCK)
os.set_blocking(fifo, True)
with os.fdopen(fifo, "w") as file:
    file.write(json.dumps({{
        "program": {name!r},
        "arguments": sys.argv[1:],
        "environment": dict(os.environ),
        "folder": os.getcwd(),
        "input": os.readlink("/proc/self/fd/0"),
        "process": os.getpid(),
        "session": os.getsid(0),
    }}) + "\\n")
sys.exit({status})
"""


class Peer(child.Child):
    """Somebody on a bus; application_peer.py says what he can do."""

    def __init__(self, bus):
        script = pathlib.Path(__file__).with_name("application_peer.py")
        super().__init__([sys.executable, str(script), bus.address])

    def order(self, verb, what):
        """Gives one order and waits until it was followed."""
        self.send(json.dumps({verb: what}))
        self.take(lambda news: verb in news)

    def own(self, name):
        """Owns a name."""
        self.order("own", name)

    def disown(self, name):
        """Gives a name back."""
        self.order("disown", name)

    def be_service_manager(self, error=None, answers=True):
        """Plays the user's service manager."""
        self.order(
            "serve",
            {
                "path": "/org/freedesktop/systemd1",
                "interface": SERVICE_MANAGER,
                "reply": ["(o)", ["/org/freedesktop/systemd1/job/1"]] if answers else None,
                "error": error,
            },
        )
        self.own("org.freedesktop.systemd1")

    def be_application(self, name, path, answers=True):
        """Plays a running application."""
        self.order(
            "serve",
            {"path": path, "interface": APPLICATION, "reply": ["()", []] if answers else None},
        )
        self.own(name)

    def be_notification_server(self):
        """Plays a notification server."""
        self.order(
            "serve",
            {
                "path": "/org/freedesktop/Notifications",
                "interface": NOTIFICATIONS,
                "reply": ["(u)", [1]],
            },
        )
        self.own("org.freedesktop.Notifications")

    def call(self):
        """Waits for the next call and returns it."""
        return self.take(lambda news: "call" in news)["call"]

    def unit(self):
        """Waits for the next unit: its name, its properties, and its launch data."""
        name, mode, properties, others = self.call()["arguments"]
        assert (mode, others) == ("fail", [])
        properties = dict(properties)
        [variable] = properties.pop("Environment")
        key, _, data = variable.partition("=")
        assert key == "PORTMELD_LAUNCH_DATA"
        return name, properties, json.loads(data)

    def calls_so_far(self):
        """The calls that came and were not taken; what was sent to it before is among them when
        whoever sent it had an answer since."""
        with self._changed:
            return [news["call"] for news in self._answers if "call" in news]


class Programs:
    """A folder of programs that record how they were started, and tell it here."""

    def __init__(self, folder):
        self.folder = folder
        folder.mkdir()
        self._fifo = folder / "fifo"
        os.mkfifo(self._fifo)
        # Open for writing too: the end of one program is not the end of the news.
        self._descriptor = os.open(self._fifo, os.O_RDWR | os.O_NONBLOCK)
        self._bytes = b""

    def make(self, name, status=0):
        """Makes a program that ends with this status; returns its path."""
        program = self.folder / name
        program.write_text(
            RECORDING_PROGRAM.format(
                python=sys.executable, fifo=str(self._fifo), name=name, status=status
            )
        )
        program.chmod(0o755)
        return program

    def started(self):
        """Waits for the next program that was started and returns what it told."""
        end = time.monotonic() + child.LIMIT
        while b"\n" not in self._bytes:
            readable, _, _ = select.select([self._descriptor], [], [], end - time.monotonic())
            assert readable, "no program was started"
            self._bytes += os.read(self._descriptor, 65536)
        line, _, self._bytes = self._bytes.partition(b"\n")
        return json.loads(line)

    def nothing_started(self):
        """Whether no program has told anything until now."""
        readable, _, _ = select.select([self._descriptor], [], [], 0)
        return not readable and not self._bytes

    def close(self):
        """Lets go of the FIFO."""
        os.close(self._descriptor)


class ActivatingBus(PrivateBus):
    """A bus that starts owners of names, as its service files say."""

    def __init__(self, folder, service_folder):
        self._service_folder = service_folder
        super().__init__(folder)

    def start(self):
        """Starts the bus with the folder of service files."""
        text = self._configuration.read_text()
        if "<servicedir>" not in text:
            place = f"<servicedir>{self._service_folder}</servicedir>\n</busconfig>"
            self._configuration.write_text(text.replace("</busconfig>", place))
        super().start()


def write_entry(root, application, place="data", **keys):
    """Installs a desktop entry where the program under test looks for it."""
    file = root.parent / place / "applications" / f"{application}.desktop"
    file.parent.mkdir(parents=True, exist_ok=True)
    keys = {"Type": "Application", "Name": "An application", **keys}
    lines = [f"{key}={value}" for key, value in keys.items()]
    file.write_text("\n".join(["[Desktop Entry]", *lines, ""]))


# ---- fixtures, and what every test of launching does


@pytest.fixture
def bus(start_bus):
    """The user's message bus."""
    return start_bus()


@pytest.fixture
def peer(bus):
    """Starts somebody on the user's bus."""
    peers = []

    def start():
        peers.append(Peer(bus))
        return peers[-1]

    yield start
    for each in peers:
        each.kill()


@pytest.fixture
def manager(peer):
    """The user's service manager."""
    somebody = peer()
    somebody.be_service_manager()
    return somebody


@pytest.fixture
def programs(tmp_path):
    """The folder of the machine's programs."""
    folder = Programs(tmp_path / "programs")
    yield folder
    folder.close()


@pytest.fixture
def start(probe, bus, programs):
    """Starts a probe that is connected to the user's bus, or another, and finds the programs."""

    def begin(session_bus=bus, env=None, wrapper=()):
        path = f"{programs.folder}:{os.environ['PATH']}"
        env = {"PATH": path, **(env or {})}
        started = probe(session_bus=session_bus, env=env, wrapper=wrapper)
        if session_bus is not None:
            started.call("watch-session-bus")
            started.event("session-bus", connected=True)
        return started

    return begin


def request(probe, application, *data):
    """A launch request with these keys and values."""
    handle = probe.call("app-create")
    assert probe.call("app-id", handle, application) == 0
    for key, value in data:
        assert probe.call("app-data", handle, key, value) == 0
    return handle


def launch(probe, application, *data):
    """Sends a launch request with these keys and values; returns the answer."""
    handle = request(probe, application, *data)
    taken = probe.call("app-send", handle)
    assert probe.call("app-destroy", handle) == 0
    return taken


def complaints(probe):
    """What the log says of launches until now."""
    probe.call("settle")
    # Errors and answers are read side by side: what stands before the mark has been read with it.
    mark = f"mark {len(probe.error_lines())}"
    probe.call("app-mark", mark)
    probe.wait_for_error_line(mark)
    return [line for line in probe.error_lines() if "launch" in line]
