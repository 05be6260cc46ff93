#!/usr/bin/python3
"""Prints what memory the idle daemon of a 32-bit build uses, on a bus of its own, under an emulator.

The emulator keeps the daemon's 4 GiB of addresses in one piece of its own, so that the kernel's account of
those pages is the daemon's, page for page; the emulator's own memory lies elsewhere and is left out.
"private" is what the daemon has written to and shares with nobody, "resident" adds the pages of programs and
libraries that it reads. Not in it: page tables and sockets. Usage: cross_memory.py EMULATOR PROGRAM PROJECT
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

NAME = "com.norvane.portmeld"
FIRST = 0x100000000000
SPAN = 1 << 32
TIME_LIMIT = 120  # seconds
SETTLING = 10  # seconds; nothing begins later before the daemon takes its first event

MAPPING = re.compile(r"([0-9a-f]+)-([0-9a-f]+) ")


def owns_its_name(address):
    """Whether the daemon is on the bus."""
    done = subprocess.run(
        ["dbus-send", f"--bus={address}", "--print-reply", "--dest=org.freedesktop.DBus"]
        + ["/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner", f"string:{NAME}"],
        capture_output=True,
        text=True,
        timeout=TIME_LIMIT,
        check=True,
    )
    return "boolean true" in done.stdout


def memory(process):
    """The account of the emulated program's pages: {kind: KiB}."""
    counts = {"Rss": 0, "Private_Dirty": 0}
    inside = False
    for line in pathlib.Path(f"/proc/{process}/smaps").read_text().splitlines():
        mapping = MAPPING.match(line)
        if mapping:
            inside = FIRST <= int(mapping[1], 16) < FIRST + SPAN
            continue
        kind, _, rest = line.partition(":")
        if inside and kind in counts:
            counts[kind] += int(rest.split()[0])
    return counts


def idle_daemon(emulator, program, project, folder):
    """Runs the daemon until it is idle, and tells its account."""
    sys.path.insert(0, str(project / "tests" / "support"))
    from private_bus import PrivateBus

    machine = folder / "machine"
    beside = machine / "root" / "usr" / "bin"
    beside.mkdir(parents=True)
    shutil.copy(project / "res" / "portmeld.interface.xml", beside)
    bus = PrivateBus(folder / "bus")
    try:
        daemon = subprocess.Popen(
            [emulator, "-B", hex(FIRST), str(program)],
            cwd=machine,
            env={**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": bus.address},
        )
        try:
            end = time.monotonic() + TIME_LIMIT
            while not owns_its_name(bus.address):
                assert time.monotonic() < end, "the daemon does not own its name"
                time.sleep(0.2)
            time.sleep(SETTLING)
            assert daemon.poll() is None, "the daemon ended"
            return memory(daemon.pid)
        finally:
            daemon.kill()
            daemon.wait()
    finally:
        bus.stop()


def main(arguments):
    """Returns the exit status."""
    emulator, program, project = arguments[0], *map(pathlib.Path, arguments[1:])
    with tempfile.TemporaryDirectory() as folder:
        counts = idle_daemon(emulator, program, project, pathlib.Path(folder))
    assert 0 < counts["Private_Dirty"] < counts["Rss"], f"not to be believed: {counts}"
    print(f"idle daemon: private {counts['Private_Dirty']} KiB, resident {counts['Rss']} KiB")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
