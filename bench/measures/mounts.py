"""How soon a mount is known: the kernel says that its table has changed, which must be read and compared."""

import time

from frame.figures import CannotRun, ratio_at_most, timed
from frame.registry import measure
from frame.surroundings import alternate
from stages.sticks import NODE, on_a_machine_of_its_own

RUNS = 31  # a fraction of a millisecond each
REST = 0.02  # seconds after a change, until nobody is busy with it any more


def expect(process, word):
    """The next line of a program, which begins with a word; what follows it."""
    line = process.stdout.readline()
    if not line.startswith(word):
        raise CannotRun(f"'{word}' was expected, and '{line.strip()}' was said")
    return line[len(word) :].strip()


def once(process, stick, word):
    """Microseconds from the call of mount(2) to what a program says of it."""
    mounted = stick.mount()
    seen = int(expect(process, word))
    time.sleep(REST)
    stick.unmount()
    time.sleep(REST)
    return (seen - mounted) / 1e3


@measure("mounts", "mount(2) to the mounted event", limit=120)
def mounts(bench):
    """Each program has a mount namespace of its own: no mount of the one is news to the other."""
    events = bench.program("bench/programs/mounted-events")
    floor = bench.program("bench/floors/mount-table-floor")
    with on_a_machine_of_its_own(bench, [events]) as (process, stick):
        with on_a_machine_of_its_own(bench, [floor, NODE]) as (floor_process, floor_stick):
            expect(process, "ready")
            expect(floor_process, "ready")
            stick.plug_in()
            expect(process, "added")
            ours, floors = alternate(
                lambda: once(process, stick, "mounted"),
                lambda: once(floor_process, floor_stick, ""),
                runs=RUNS,
            )
    title = "mount(2) to the mounted event"
    note = f"from the call of mount(2), in a private mount namespace; medians of {RUNS} alternating runs"
    yield timed(title, ours, floors, "µs", "own descriptor", ratio_at_most(1.5), note)
