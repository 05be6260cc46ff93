"""What measures work with: the programs that were built, folders, private buses, callgrind, and runs in
turn. Everything that is started here is ended here, by its process id.
"""

import contextlib
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

from frame.figures import CannotRun

PROJECT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(PROJECT / "tests" / "support"))

import private_bus  # noqa: E402  pylint: disable=wrong-import-position

RUNS = 9  # of each side, where time is measured
COMMAND_LIMIT = 120  # seconds for one program


class Bench:
    """`build` is a build folder of the project, `image` the folder that its absolute paths lie in."""

    def __init__(self, build, image=None):
        self.build = pathlib.Path(build)
        self.image = pathlib.Path(image) if image else None

    def program(self, name):
        """The path of a program by its name in the build folder, "src/portmeld"."""
        path = self.build / name
        if not path.is_file():
            raise CannotRun(f"{name} was not built")
        return str(path)

    def need(self, *commands):
        """Fails the measure when one of these commands is not installed."""
        for command in commands:
            if shutil.which(command) is None:
                raise CannotRun(f"{command} is not installed")

    @contextlib.contextmanager
    def folder(self):
        """A fresh folder, gone afterwards."""
        with tempfile.TemporaryDirectory(prefix="portmeld-bench-") as name:
            yield pathlib.Path(name)

    @contextlib.contextmanager
    def bus(self):
        """The address of a message bus of its own that allows everything to all users."""
        self.need("dbus-daemon")
        with self.folder() as folder:
            folder.chmod(0o711)
            bus = private_bus.PrivateBus(folder / "bus", errors=subprocess.DEVNULL)
            try:
                yield bus.address
            finally:
                bus.stop()

    def environment(self, bus_address=None, **more):
        """The environment of a program: the given bus is its system bus, and there is no other."""
        inherited = {key: value for key, value in os.environ.items() if key not in ("LANGUAGE", "G_DEBUG")}
        return {
            **inherited,
            "LC_ALL": "C.UTF-8",
            "DBUS_SYSTEM_BUS_ADDRESS": bus_address or "unix:path=/nonexistent/system-bus",
            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent/session-bus",
            **more,
        }

    def run(self, command, environment=None, limit=COMMAND_LIMIT):
        """Runs a program to its end and returns what it printed; CannotRun when it fails."""
        done = subprocess.run(
            [str(word) for word in command],
            env=environment or self.environment(),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=limit,
            check=False,
        )
        if done.returncode != 0:
            last = (done.stderr.strip().splitlines() or ["it said nothing"])[-1]
            raise CannotRun(f"{pathlib.Path(command[0]).name} ended with {done.returncode}: {last}")
        return done.stdout

    def instructions(self, command, environment=None, limit=COMMAND_LIMIT, drive=None):
        """The instructions that a program executes between CALLGRIND_START_INSTRUMENTATION and
        CALLGRIND_STOP_INSTRUMENTATION (<valgrind/callgrind.h>), in all of its threads. `drive`, given
        the running process with pipes for its input and output, does something with it meanwhile."""
        self.need("valgrind")
        with self.folder() as folder:
            wrapped = [
                "valgrind",
                "--tool=callgrind",
                "--instr-atstart=no",
                f"--callgrind-out-file={folder}/out",
                *[str(word) for word in command],
            ]
            if drive is None:
                self.run(wrapped, environment, limit)
            else:
                with self.running(wrapped, environment) as process:
                    drive(process)
                    process.stdin.close()
                    if process.wait(limit) != 0:
                        raise CannotRun(f"{wrapped[4]} ended with {process.returncode}")
            return total_instructions((folder / "out").read_text())

    @contextlib.contextmanager
    def running(self, command, environment=None):
        """A process that runs meanwhile, with pipes for its input and output; killed afterwards."""
        process = subprocess.Popen(
            [str(word) for word in command],
            env=environment or self.environment(),
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
        )
        try:
            yield process
        finally:
            if process.poll() is None:
                process.kill()
            process.wait(COMMAND_LIMIT)
            with contextlib.suppress(BrokenPipeError):
                process.stdin.close()
            process.stdout.close()


def total_instructions(text):
    """The total of a callgrind file. (Its "summary" line is 0 when counting did not go on to the end.)"""
    found = re.search(r"^totals: (\d+)", text, re.MULTILINE)
    if not found or found[1] == "0":
        raise CannotRun("callgrind counted nothing")
    return int(found[1])


def median_of(times, count):
    """The median of some runs of a count: threads that take turns differently count a little differently."""
    return statistics.median(count() for _ in range(times))


def alternate(ours, peer, runs=RUNS):
    """The samples of two functions run in turn - ours, peer, ours, peer - after a run of each that
    warms the caches and does not count."""
    ours()
    peer()
    samples = [(ours(), peer()) for _ in range(runs)]
    return [pair[0] for pair in samples], [pair[1] for pair in samples]
