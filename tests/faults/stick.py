"""The stick that is plugged in: one photo, and a folder that does not open before it is told to, so that the
daemon's search for media can be held up in the middle."""

import os
import time

import child
from programs import built
from stage_helpers import PHOTO, source

NAME = "fat32"
NODE = "/dev/sda1"
TITLE = "QEMU USB HARDDRIVE"


class Stick:
    """The files of a stick, as the daemon with these mounts sees them."""

    def __init__(self, folder):
        self._gate = folder / "gate-pipe"  # a link to the pipe of the last mount
        self._folder = folder
        self._count = 0
        self._held = None

    def environment(self, preloaded):
        """What a program needs to stand at the gate, beside the libraries that are preloaded anyway."""
        libraries = [built("linux", "libstubborn-disk.so"), *preloaded]
        return {
            "LD_PRELOAD": ":".join(map(str, libraries)),
            "PORTMELD_TEST_GATE": str(self._gate),
        }

    def mount(self, mounts):
        """Mounts it, with everything on it from the first moment; returns where."""
        self._count += 1
        files = self._folder / f"files-{self._count}"
        point = self._folder / f"stick-{self._count}"
        for place in (files, point):
            place.mkdir()
        # One for each, so that nobody who still waits at the last one is taken for a new search.
        self._gate.unlink(missing_ok=True)
        os.mkfifo(self._pipe(self._count))
        self._gate.symlink_to(self._pipe(self._count))
        # A table of its own says what is mounted; an overlay may be called after any device.
        mounts.run("mount", "-t", "tmpfs", "files", str(files))
        mounts.run("mkdir", "-p", f"{files}/photo", f"{files}/rest/gate")
        mounts.run("cp", str(source(PHOTO)), f"{files}/photo/holiday.jpg")
        layers = f"lowerdir={files}/photo:{files}/rest"
        mounts.run("mount", "-t", "overlay", NODE, "-o", layers, str(point))
        return str(point)

    @staticmethod
    def unmount(mounts, point):
        """Takes it away, whoever is still busy with it."""
        mounts.run("umount", "-l", point)

    def wait_until_searched(self):
        """Waits until a search for media stands at the gate, which is held shut from then on."""
        end = time.monotonic() + child.LIMIT
        while self._held is None:
            try:
                self._held = os.open(self._gate, os.O_WRONLY | os.O_NONBLOCK)
            except OSError:
                assert time.monotonic() < end, "the stick is not searched for media"
                time.sleep(0.005)

    def open_gate(self):
        """Lets the search go on, if there is one."""
        if self._held is not None:
            os.close(self._held)
            self._held = None

    def close(self):
        """Lets everybody through who still waits."""
        self.open_gate()
        for number in range(1, self._count + 1):
            os.close(os.open(self._pipe(number), os.O_RDWR | os.O_NONBLOCK))

    def _pipe(self, number):
        return self._folder / f"gate-pipe-{number}"
