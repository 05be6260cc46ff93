"""The search for media on a stick, beside find(1) over the same folder. All files are in the kernel's
memory: what is compared is the way through them, not a disk.
"""

import contextlib
import subprocess
import time

from frame.figures import CannotRun, at_most, ratio_at_most, timed
from frame.registry import measure
from frame.surroundings import RUNS, alternate

FOLDERS = 2_000
FILES_EACH = 50

# What sticks without media hold; one name in ten has to be asked for in the machine's type database.
COMMON = "txt pdf doc docx xls xlsx ppt html xml log zip exe dll dat ini py json csv".split() + ["", "xyz"]
# Each of them has to be.
UNKNOWN = ["", "xyz", "old", "001", "list"]


@contextlib.contextmanager
def stick(bench, extensions):
    """A folder of 2,000 folders with 50 files each, of which none is media."""
    with bench.folder() as folder:
        for number in range(FOLDERS):
            part = folder / f"folder-{number // 50:02}" / f"part-{number % 50:02}"
            part.mkdir(parents=True)
            for file in range(FILES_EACH):
                extension = extensions[(number + file) % len(extensions)]
                (part / f"file-{file:03}{'.' if extension else ''}{extension}").touch()
        yield folder


def search(bench, folder, outcome):
    """Milliseconds of one content scan in a process that is there already."""
    word, nanoseconds = bench.run([bench.program("bench/programs/content-scan"), folder]).split()
    if word != outcome:
        raise CannotRun(f"the content scan said '{word}' instead of '{outcome}'")
    return int(nanoseconds) / 1e6


def milliseconds(command):
    """How long a program runs, its start and end included."""
    start = time.perf_counter()
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    return (time.perf_counter() - start) * 1e3


def beside_find(bench, folder):
    """The samples of both, as whole processes from start to end."""
    search(bench, folder, "none")
    return alternate(
        lambda: milliseconds([bench.program("bench/programs/content-scan"), str(folder)]),
        lambda: milliseconds(["find", str(folder)]),
    )


@measure("content-scan", "content scan of 100,000 files", limit=180)
def content_scan(bench):
    """Whole processes are compared, so that find's start does not count against it alone."""
    bench.need("find")
    with stick(bench, COMMON) as folder:
        ours, found = beside_find(bench, folder)
        note = "whole processes, warm; one name in ten is asked for in the machine's type database"
        title = "content scan: 100,000 files without media"
        yield timed(title, ours, found, "ms", "find", ratio_at_most(1.2), note)

        # Last, so that the file system does not tell them before the folders beside them.
        (folder / "first.jpg").touch()
        (folder / "second.jpg").touch()
        search(bench, folder, "several")
        ours, found = alternate(
            lambda: search(bench, folder, "several"), lambda: milliseconds(["find", str(folder)])
        )
        title = "content scan: second media file in the first folder of 100,000 files"
        note = "from the request to the result on the main loop, thread included; find walks all of it"
        yield timed(title, ours, found, "ms", "find", at_most(2), note)

    with stick(bench, UNKNOWN) as folder:
        ours, found = beside_find(bench, folder)
        note = f"no goal: the worst case, each name is asked for in the type database; medians of {RUNS}"
        title = "content scan: 100,000 files of unknown kinds"
        yield timed(title, ours, found, "ms", "find", None, note)
