"""A machine with a service manager: the packages are installed, and a real systemd runs as its first
process, in namespaces and a control group of its own. It needs root.
"""

import os
import pathlib
import select
import signal
import socket

import child
from installed import Machine

BOOT = pathlib.Path(__file__).with_name("boot.sh")
TARGET = "trial.target"
CONTROL_GROUPS = pathlib.Path("/sys/fs/cgroup")


class ControlGroup:
    """A control group of the machine's own, in every hierarchy that systemd keeps one in."""

    def __init__(self, name):
        unified = (CONTROL_GROUPS / "cgroup.controllers").exists()
        hierarchies = [""] if unified else ["systemd", "unified"]
        self.folders = [CONTROL_GROUPS / hierarchy / name for hierarchy in hierarchies]

    def enter(self):
        """Moves the calling process into it."""
        for folder in self.folders:
            folder.mkdir(exist_ok=True)
            (folder / "cgroup.procs").write_text("0")

    def remove(self):
        """Removes it; its processes must have ended."""
        for folder in self.folders:
            for path, _, _ in os.walk(folder, topdown=False):
                os.rmdir(path)


def became_ready(notices, keeper):
    """Waits until a service manager tells that its start is complete, or has ended."""
    end = os.pidfd_open(keeper.process.pid)
    try:
        while True:
            came, _, _ = select.select([notices, end], [], [], child.LIMIT)
            if notices not in came:
                return False
            if b"READY=1" in notices.recv(4096):
                return True
    finally:
        os.close(end)


class Booted(Machine):
    """Such a machine, whose start is complete."""

    def __init__(self, stage):
        assert os.geteuid() == 0, (
            "this test starts a service manager in namespaces of its own: run it as root, for example "
            "sudo ./dev test packaging"
        )
        name = f"portmeld-test-{os.getpid()}"
        self._group = ControlGroup(name)
        separate = ("--mount", "--pid", "--fork", "--kill-child", "--ipc", "--uts", "--cgroup")
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as ready:
            ready.bind(f"\0{name}")
            keeper = child.Child(
                ["unshare", *separate, "--propagation", "private", "--", BOOT, stage, TARGET],
                env={"PATH": os.environ["PATH"], "NOTIFY_SOCKET": f"@{name}"},
                preexec_fn=self._group.enter,
            )
            if not became_ready(ready, keeper):
                self._end(keeper)
                raise AssertionError("\n".join(keeper.error_lines()))
        children = f"/proc/{keeper.process.pid}/task/{keeper.process.pid}/children"
        self._first = int(pathlib.Path(children).read_text())
        enter = ("--mount", "--pid", "--ipc", "--uts", "--cgroup")
        super().__init__(keeper, self._first, enter)

    def close(self):
        # With the first process all others end, before its end is known.
        os.kill(self._first, signal.SIGKILL)
        self._end(self._keeper)

    def _end(self, keeper):
        keeper.wait_for_end()
        keeper.kill()
        self._group.remove()

    def property(self, unit, name):
        """What the service manager tells of a unit."""
        return self.succeed("root", "systemctl", "show", "--value", "-p", name, unit).strip()
