"""From a stick to its pop-up with the kernel's own event, systemd-udevd and a real mount: the daemon where
udev has the stick mounted, beside udiskie, which has it mounted by UDisks2. UDisks2 runs in both cases.
"""

import contextlib
import pathlib
import statistics

from frame.figures import CannotRun, Figure, ratio_at_most, timed
from frame.registry import measure
from frame.surroundings import alternate
from stages.real_ports import GVFS_MONITOR, real_ports, settle, udisks, wait_for_name
from stages.screen import screen

RUNS = 11
WAITS = 9  # runs of more than two seconds each
# A partition that goes while its disk stays is told as removed after a second: until then it could come back.
HELD_BACK = 1.2
FIRST_EVENT = 31  # seconds after its start the daemon takes events


class Competition:
    """The machine, its screen and who is measured there."""

    def __init__(self, ports, shown):
        self._ports = ports
        self._shown = shown

    def once(self, name, stick, *titles):
        """Milliseconds from the partition to each of what one program says of it, in this order."""
        self._ports.only(name)
        settle()
        self._shown.settle()
        began = self._ports.ask("plug", stick)
        said = [self._shown.next(name, title) for title in titles]
        settle()
        self._ports.ask("pull", stick)
        settle(HELD_BACK)
        return [(at - began) / 1e6 for at in said]


@measure("real-plug", "stick to pop-up with real udevd and mount", limit=300)
def real_plug(bench):
    """The daemon's stick is nothing to UDisks2's clients, and theirs is no USB device to the daemon."""
    daemon = bench.program("src/portmeld")
    bench.need("udiskie", "gdbus")
    if not pathlib.Path(GVFS_MONITOR).is_file():
        raise CannotRun(f"{GVFS_MONITOR} is not installed")
    with contextlib.ExitStack() as stack:
        session, system = stack.enter_context(bench.bus()), stack.enter_context(bench.bus())
        buses = {"DBUS_SESSION_BUS_ADDRESS": session, "DBUS_SYSTEM_BUS_ADDRESS": system}
        shown = stack.enter_context(screen(bench, session))
        home = stack.enter_context(bench.folder())
        ports = stack.enter_context(real_ports(bench, buses))
        stack.enter_context(udisks(bench, ports, buses))
        stack.enter_context(ports.run([daemon], "portmeld"))
        stack.enter_context(ports.run([bench.program("bench/floors/popup-floor")], "popup-floor"))
        udiskie = ["udiskie", "--automount", "--notify", "--no-tray", "--no-file-manager"]
        stack.enter_context(ports.run(udiskie, "udiskie", HOME=str(home)))
        stack.enter_context(ports.run([GVFS_MONITOR], "gvfs", HOME=str(home)))
        wait_for_name(bench, buses, "org.gtk.vfs.UDisks2VolumeMonitor", "session")
        settle(FIRST_EVENT)
        competition = Competition(ports, shown)

        def ours():
            """The daemon's question."""
            return competition.once("portmeld", "bench-ours", "New device connected")[0]

        def theirs():
            """The floor's question, udiskie's two pop-ups, then GVfs' new volume."""
            said = competition.once("popup-floor", "bench-ours", "New device connected")
            said += competition.once("udiskie", "bench-peers", "Device added", "Device mounted")
            return said + competition.once("gvfs", "bench-peers", "VolumeAdded")

        samples, rows = alternate(ours, theirs, runs=RUNS)
        floor, added, mounted, volumes = zip(*rows)
        title = "stick to pop-up, mounted by a rule of udev"
        note = f"real udevd and mount: a loop device with USB laid over sysfs; medians of {RUNS} alternating runs"
        yield timed(title, samples, mounted, "ms", "udiskie with udisksd", ratio_at_most(1 / 3), note)
        title = "the same beside the least program"
        note = "no goal: what udevd and the mount take is in both"
        yield timed(title, samples, floor, "ms", "libgudev + GDBus", None, note)
        title = "the same beside udiskie's first pop-up"
        note = "no goal: udiskie tells of a device before it has it mounted"
        yield timed(title, samples, added, "ms", "udiskie with udisksd", None, note)
        title = "the same beside a new volume of GVfs"
        note = "no goal: GVfs tells its clients of a volume that is not mounted yet"
        yield timed(title, samples, volumes, "ms", "GVfs' volume monitor", None, note)

        slow = [
            competition.once("portmeld", "bench-asking", "New device connected")[0] for _ in range(WAITS)
        ]
        title = "stick to pop-up, mounted by UDisks2 at the daemon's wish"
        note = f"no goal: the daemon gives others two seconds to mount it first; median of {WAITS} runs"
        yield Figure(title, statistics.median(slow), "ms", note=note, samples={"ours": slow})
