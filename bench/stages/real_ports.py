"""A machine with real_ports_process.py's sticks, and the programs that compete on it: of those that are to be
measured only one runs at a time, the others stand still.
"""

import contextlib
import json
import os
import pathlib
import signal
import subprocess
import time

from frame.figures import CannotRun
from frame.surroundings import COMMAND_LIMIT

HERE = pathlib.Path(__file__).resolve().parent
POLKIT = "org.freedesktop.PolicyKit1"
POLKITD = "/usr/lib/polkit-1/polkitd"
UDISKS = "/usr/libexec/udisks2/udisksd"
GVFS_MONITOR = "/usr/libexec/gvfs-udisks2-volume-monitor"
# Loop devices have no parent that udev would take for a device; what is laid over sysfs is to be believed.
BELIEVE_SYSFS = {"SYSTEMD_DEVICE_VERIFY_SYSFS": "0"}


class RealPorts:
    """The machine; programs are started on it by run()."""

    def __init__(self, bench, process, buses):
        self._bench = bench
        self._process = process
        self._buses = buses
        self._runners = {}

    def ask(self, order, stick):
        """Plugs or pulls a stick; returns when, in nanoseconds of the monotonic clock."""
        self._process.stdin.write(json.dumps([order, stick]) + "\n")
        self._process.stdin.flush()
        return int(self._process.stdout.readline() or 0)

    @contextlib.contextmanager
    def run(self, command, name=None, **environment):
        """Runs a program on the machine; one with a name can stand still."""
        enter = ["nsenter", "-t", str(self._process.pid), "-m", "-n"]
        surroundings = self._bench.environment(None, **{**self._buses, **BELIEVE_SYSFS, **environment})
        with self._bench.running([*enter, *command], surroundings) as process:
            if name:
                self._runners[name] = process
            try:
                yield process
            finally:
                if process.poll() is None:
                    process.send_signal(signal.SIGCONT)

    def only(self, name):
        """From now on only this one of the named programs runs."""
        for each, process in self._runners.items():
            if process.poll() is not None:
                raise CannotRun(f"{each} has ended with {process.returncode}")
            process.send_signal(signal.SIGCONT if each == name else signal.SIGSTOP)


@contextlib.contextmanager
def real_ports(bench, buses):
    """The machine. `buses` are the variables with the addresses of its buses."""
    bench.need("unshare", "nsenter", "losetup", "sfdisk", "mkfs.ext4")
    if os.geteuid() != 0:
        raise CannotRun("loop devices and udev's daemon are root's, and the benchmark does not run as root")
    stage = ["/usr/bin/python3", str(HERE / "real_ports_process.py")]
    process = subprocess.Popen(
        ["unshare", "-m", "-n", "--propagation", "private", *stage],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        text=True,
        env=bench.environment(None),
    )
    try:
        if not process.stdout.readline():
            raise CannotRun("the machine with loop devices did not start")
        yield RealPorts(bench, process, buses)
    finally:
        # It gives the loop devices back when its input ends.
        process.stdin.close()
        process.wait(COMMAND_LIMIT)
        process.stdout.close()


@contextlib.contextmanager
def udisks(bench, ports, buses):
    """UDisks2 on the machine, with polkit, which allows root everything."""
    for program in (UDISKS, POLKITD):
        if not pathlib.Path(program).is_file():
            raise CannotRun(f"{program} is not installed")
    with bench.running([POLKITD, "--no-debug"], bench.environment(None, **buses)):
        wait_for_name(bench, buses, POLKIT)
        with ports.run([UDISKS, "--no-debug"]):
            wait_for_name(bench, buses, "org.freedesktop.UDisks2")
            yield


def wait_for_name(bench, buses, name, bus="system", limit=30):
    """Waits until somebody owns a name on a bus."""
    command = ["gdbus", "wait", f"--{bus}", f"--timeout={limit}", name]
    bench.run(command, bench.environment(None, **buses))


def settle(seconds=0.3):
    """Lets whoever was woken do what he has to."""
    time.sleep(seconds)
