"""A machine with one recorded USB stick, for a program that is to be measured on it: umockdev plays its
events back, and its mounts are real, in a mount namespace that the program has to itself.
"""

import contextlib
import json
import os
import pathlib
import sys

from frame.figures import CannotRun
from frame.surroundings import PROJECT

sys.path.append(str(PROJECT / "tests" / "linux"))

import child  # noqa: E402  pylint: disable=wrong-import-position
import machine  # noqa: E402  pylint: disable=wrong-import-position

HERE = pathlib.Path(__file__).resolve().parent
RECORDING = "fat32"
NODE = "/dev/sda1"


class Stick:
    """The stick in the machine of one program, not plugged in yet."""

    def __init__(self, ports, process, folder):
        self._ports = ports
        self._process = process
        self._point = folder / "mounted"
        self._point.mkdir()
        self._mounting = None
        self._disk = self._partition = None

    def plug_in(self):
        """Plays back how it came."""
        self._ports.plug(RECORDING)
        self._disk, self._partition = (self._ports.path_of(name) for name in ("sda", "sda1"))
        # A partition that goes from a disk without a medium does not come back: its removal is told at once.
        self._ports.set_attribute(self._disk, "size", "0")

    def come(self):
        """The partition's event alone, when everything above it is there; returns when."""
        return self._ports.tell(self._partition, "add")

    def go(self):
        """The partition is pulled; returns when."""
        return self._ports.tell(self._partition, "remove")

    def mount(self):
        """Mounts it for the program, which must have its own mounts by now; returns when mount(2) was called,
        in nanoseconds of the monotonic clock."""
        return self._order("mount", NODE, str(self._point))

    def unmount(self):
        """Returns when umount2(2) was called."""
        return self._order("umount", str(self._point))

    def close(self):
        """Nobody mounts it any more; what is mounted goes with the program."""
        if self._mounting is not None:
            self._mounting.close_input()
            self._mounting.kill()

    def _order(self, *words):
        if self._mounting is None:
            enter = ["nsenter", "-t", str(self._process.pid), "-m"]
            if os.geteuid() != 0:
                enter += ["-U", "--preserve-credentials"]
            script = str(HERE / "mounting_process.py")
            self._mounting = child.Child([*enter, "/usr/bin/python3", script])
        self._mounting.send(json.dumps(words))
        return self._mounting.take()


@contextlib.contextmanager
def on_a_machine_of_its_own(bench, command, **environment):
    """Runs a program on a new machine; gives (process with pipes, stick that is not plugged in yet)."""
    bench.need("unshare", "nsenter")
    if f" {NODE} " in pathlib.Path("/proc/self/mountinfo").read_text():
        raise CannotRun(f"{NODE} is mounted on this machine, and the recorded stick is called so too")
    with contextlib.ExitStack() as stack:
        folder = stack.enter_context(bench.folder())
        ports = machine.Machine()
        stack.callback(ports.close)
        surroundings = bench.environment(None, **{**ports.environment(), **environment})
        process = stack.enter_context(bench.running([*ports.wrapper(), *command], surroundings))
        stick = Stick(ports, process, folder)
        stack.callback(stick.close)
        yield process, stick
