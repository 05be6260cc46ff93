"""From the event of a stick that is mounted to its pop-up: the daemon as it is shipped beside the least
program that shows the same pop-up.
"""

import time

from frame.figures import ratio_at_most, timed
from frame.registry import measure
from frame.surroundings import alternate
from stages.screen import screen
from stages.sticks import on_a_machine_of_its_own

RUNS = 31  # a few milliseconds each
FIRST_EVENT = 31  # seconds after its start the daemon takes events
QUESTION = "New device connected"


def once(stick, shown, sender):
    """Milliseconds from the event to the arrival of the pop-up at the notification server."""
    began = stick.come()
    asked = shown.next(sender, QUESTION)
    stick.go()
    shown.settle()
    return (asked - began) / 1e6


@measure("plug", "uevent of a mounted stick to the pop-up", limit=180)
def plug(bench):
    """Each program has a machine of its own, with the same stick, and both have the same screen."""
    daemon = bench.program("src/portmeld")
    floor = bench.program("bench/floors/popup-floor")
    with bench.bus() as session, bench.bus() as system, screen(bench, session) as shown:
        buses = {"DBUS_SESSION_BUS_ADDRESS": session, "DBUS_SYSTEM_BUS_ADDRESS": system}
        with on_a_machine_of_its_own(bench, [daemon], **buses) as (_, stick):
            with on_a_machine_of_its_own(bench, [floor], **buses) as (floor_process, floor_stick):
                floor_process.stdout.readline()
                time.sleep(FIRST_EVENT)
                for each in (stick, floor_stick):
                    each.mount()
                    each.plug_in()
                    each.go()
                shown.settle(2)
                ours, floors = alternate(
                    lambda: once(stick, shown, "portmeld"),
                    lambda: once(floor_stick, shown, "popup-floor"),
                    runs=RUNS,
                )
    title = "uevent of a mounted stick to Notify at the server"
    note = f"umockdev, a real mount, from the sending of the event; medians of {RUNS} alternating runs"
    yield timed(title, ours, floors, "ms", "libgudev + GDBus", ratio_at_most(1.25), note)
