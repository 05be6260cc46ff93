"""The daemon as a process, as it is shipped: how soon it is there, and what it costs while nothing happens.
Beside it runs the least daemon that GDBus allows, with the same interface."""

import contextlib
import os
import pathlib
import re
import select
import socket
import subprocess
import time

from frame.figures import CannotRun, Figure, at_most, exactly, ratio_at_most, timed
from frame.registry import measure
from frame.surroundings import alternate

NAME = "com.norvane.portmeld"
SETTLED = 35  # seconds: the start-up timer runs after 30
FEED = 5  # seconds between two feeds of the watchdog
MINUTE = 60


def daemon(bench):
    """The command that starts the daemon."""
    if bench.image is None:
        raise CannotRun("the installed files of the daemon are not known (--image)")
    return [bench.program("src/portmeld")]


def floor(bench):
    """The command that starts the least daemon."""
    description = bench.image / "usr" / "bin" / "portmeld.interface.xml"
    return [bench.program("bench/floors/gdbus-daemon"), str(description)]


@measure("start", "exec to the bus name owned")
def start(bench):
    """A stopwatch of our own, since an interpreter's share would hide the ratio."""
    stopwatch = [bench.program("bench/programs/name-stopwatch"), NAME]
    with bench.bus() as address, bench.bus() as session:
        environment = bench.environment(address, DBUS_SESSION_BUS_ADDRESS=session)

        def milliseconds(command):
            return int(bench.run([*stopwatch, *command], environment)) / 1e6

        ours, peer = alternate(
            lambda: milliseconds(daemon(bench)), lambda: milliseconds(floor(bench)), runs=25
        )
    yield timed(
        "exec to the bus name owned", ours, peer, "ms", "minimal GDBus daemon", ratio_at_most(1.5)
    )


def undisturbed(command):
    """A command among mounts and uevents of its own: those of the machine would wake a daemon up."""
    kind = "-mn" if os.geteuid() == 0 else "-rmn"
    return ["unshare", kind, "--propagation", "private", *command]


class Running:
    """A process that is only watched."""

    def __init__(self, command, environment):
        self._process = subprocess.Popen(
            undisturbed(command), env=environment, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL
        )
        self._folder = pathlib.Path("/proc", str(self._process.pid))

    def close(self):
        """Ends it."""
        self._process.kill()
        self._process.wait()

    def switches(self):
        """How often its threads have gone to sleep so far: once for each time that they woke up."""
        total = 0
        for task in (self._folder / "task").iterdir():
            status = (task / "status").read_text()
            total += int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", status, re.M)[1])
        return total

    def megabytes(self, *kinds):
        """The sum of some lines of its memory's account."""
        account = (self._folder / "smaps_rollup").read_text()
        kilobytes = [int(re.search(rf"^{kind}:\s*(\d+)", account, re.M)[1]) for kind in kinds]
        return sum(kilobytes) * 1024 / 1e6


@contextlib.contextmanager
def watchdog(folder):
    """The service manager's end of the watchdog: a socket, in the environment's NOTIFY_SOCKET."""
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as listener:
        listener.bind(str(folder / "notify"))
        listener.setblocking(False)
        yield listener


def feeds(listener):
    """Takes what has arrived; how many feeds it were."""
    count = 0
    with contextlib.suppress(BlockingIOError):
        while True:
            count += b"WATCHDOG=1" in listener.recv(4096)
    return count


@measure("idle", "idle: memory and wake-ups", limit=SETTLED + MINUTE + 60)
def idle(bench):
    """One minute in which nothing happens, from half-way between two feeds."""
    bench.need("unshare")
    with contextlib.ExitStack() as ends:
        folder = ends.enter_context(bench.folder())
        listener = ends.enter_context(watchdog(folder))
        buses = [ends.enter_context(bench.bus()) for _ in range(2)]  # both own the same name
        session = {"DBUS_SESSION_BUS_ADDRESS": ends.enter_context(bench.bus())}
        environment = bench.environment(buses[0], NOTIFY_SOCKET=str(folder / "notify"), **session)
        ours = ends.enter_context(contextlib.closing(Running(daemon(bench), environment)))
        peer = ends.enter_context(
            contextlib.closing(Running(floor(bench), bench.environment(buses[1], **session)))
        )
        time.sleep(SETTLED)
        feeds(listener)
        if not select.select([listener], [], [], 3 * FEED)[0]:
            raise CannotRun("the watchdog is not fed")
        feeds(listener)
        time.sleep(FEED / 2)
        before = ours.switches(), peer.switches()
        time.sleep(MINUTE)
        wakes, floor_wakes = ours.switches() - before[0], peer.switches() - before[1]
        fed = feeds(listener)
        name = "minimal GDBus daemon"
        yield Figure(
            "idle: private memory",
            ours.megabytes("Private_Dirty"),
            "MB",
            peer.megabytes("Private_Dirty"),
            name,
            at_most(1.5),
            "memory of its own that it has written to; pages of files that nobody else has mapped now"
            f" come to {ours.megabytes('Private_Clean'):.2f} MB (floor"
            f" {peer.megabytes('Private_Clean'):.2f} MB)",
        )
        yield Figure(
            "idle: RSS", ours.megabytes("Rss"), "MB", peer.megabytes("Rss"), name, ratio_at_most(1.5)
        )
        yield Figure(
            "idle: wake-ups a minute",
            wakes,
            "",
            floor_wakes,
            name,
            exactly(MINUTE / FEED),
            f"of all threads; {fed} feeds of the watchdog arrived in that minute",
            # As many for other reasons would be no better.
            failure="" if fed == MINUTE // FEED else f"{fed} feeds of the watchdog arrived",
        )
