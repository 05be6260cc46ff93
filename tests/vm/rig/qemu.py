"""The emulator: a process, its control protocol (QMP), and its state as files."""

import pathlib
import shutil
import subprocess
import tempfile
import time

from channel import Channel, Silent

# Ports that lead into the guest, each a socket of the same name in the machine's folder.
GUEST_PORTS = ("agent", "events", "screen", "clients")

# What is not on this machine need not be emulated, nor looked for by the kernel.
MACHINE = "q35,hpet=off,sata=off,smbus=off,vmport=off"
KERNEL_OPTIONS = (
    "console=ttyS0 root=/dev/vda panic=-1 quiet loglevel=4 mitigations=off nokaslr audit=0 "
    "apparmor=0 selinux=0 systemd.show_status=0 random.trust_cpu=1 tsc=reliable"
)


class Refused(Exception):
    """QEMU did not do what it was asked."""


class Qemu:
    """A machine that stands still until cont() or resume() is called.

    `image` is the folder of the guest's kernel and disk; `disk` is what the machine's disk is laid over,
    so that nothing that the guest writes stays. `incoming`: its memory will be that of a saved one.
    """

    def __init__(self, image, disk, incoming=False):
        # The paths of sockets are short; the folder of a test run need not be.
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="portmeld-vm-", dir="/tmp"))
        self.overlay("root.qcow2", disk)
        self._events = []
        with open(self.folder / "qemu.log", "wb") as log:
            self._process = subprocess.Popen(
                # No emulator outlives its test run, and it gives way to others.
                ["setpriv", "--pdeathsig", "KILL", "nice", "-n", "5"]
                + self._arguments(image, incoming),
                stdin=subprocess.DEVNULL,
                stdout=log,
                stderr=log,
            )
        try:
            self._control = Channel(str(self.folder / "qmp"))
            self._control.hear(30)
            self.ask("qmp_capabilities")
        except Silent as silent:
            said = (self.folder / "qemu.log").read_text(errors="replace")
            self.stop()
            raise Refused(f"QEMU does not start: {silent}\n{said}") from silent

    def _arguments(self, image, incoming):
        folder = self.folder
        # As slow as emulation is, the plainest processor is the quickest.
        arguments = ["qemu-system-x86_64", "-M", MACHINE, "-cpu", "qemu64"]
        arguments += ["-accel", "tcg,thread=multi", "-smp", "2", "-m", "768"]
        arguments += ["-nodefaults", "-no-user-config", "-display", "none", "-nic", "none", "-S"]
        arguments += ["-kernel", f"{image}/vmlinux", "-initrd", f"{image}/initrd.img"]
        arguments += ["-append", KERNEL_OPTIONS, "-serial", f"file:{folder}/console"]
        arguments += ["-qmp", f"unix:{folder}/qmp,server=on,wait=off"]
        drive = f"file={folder}/root.qcow2,if=none,id=root,format=qcow2,cache=unsafe"
        arguments += ["-drive", drive, "-device", "virtio-blk-pci,drive=root"]
        arguments += ["-device", "virtio-rng-pci", "-device", "virtio-serial-pci"]
        for name in GUEST_PORTS:
            socket = f"socket,id={name},path={folder}/{name},server=on,wait=off"
            arguments += ["-chardev", socket]
            arguments += ["-device", f"virtserialport,chardev={name},name={name}"]
        # Eight ports of USB 2 and eight of USB 3.
        arguments += ["-device", "qemu-xhci,id=xhci,p2=8,p3=8"]
        if incoming:
            arguments += ["-incoming", "defer"]
        return arguments

    def overlay(self, name, below):
        """A file in the machine's folder that takes the writes to an image, and leaves that as it is."""
        kind = "qcow2" if str(below).endswith(".qcow2") else "raw"
        path = self.folder / name
        subprocess.run(
            ["qemu-img", "create", "-q", "-f", "qcow2", "-F", kind, "-b", str(below), str(path)],
            check=True,
        )
        return path

    # ---- control

    def ask(self, command, **arguments):
        """Runs a command of QMP; "_" in its arguments' names stands for "-"."""
        named = {name.replace("_", "-"): value for name, value in arguments.items()}
        return self.ask_plainly(command, named)

    def ask_plainly(self, command, arguments):
        """Runs a command of QMP with arguments of exactly these names."""
        self._control.say({"execute": command, "arguments": arguments})
        while True:
            said = self._control.hear(30)
            if "event" in said:
                self._events.append(said)
            elif "error" in said:
                raise Refused(f"{command}: {said['error']['desc']}")
            else:
                return said.get("return")

    def wait_for(self, event, seconds=30, **data):
        """Waits for an event of QMP with these data, which is taken."""
        end = time.monotonic() + seconds
        while True:
            for said in self._events:
                if said["event"] == event and data.items() <= said.get("data", {}).items():
                    self._events.remove(said)
                    return
            self._events.append(self._control.hear(end - time.monotonic()))

    # ---- state

    def run(self):
        """Lets the machine run."""
        self.ask("cont")

    def resume(self, saved):
        """Lets the machine run on where another was saved."""
        self.ask("migrate-incoming", uri=f"exec:cat '{saved}/memory'")
        while self.ask("query-status")["status"] in ("inmigrate", "restore-vm"):
            time.sleep(0.02)
        self.ask("cont")

    def save(self, folder):
        """Stops the machine for good and leaves its memory and disk in a folder."""
        self.ask("stop")
        self.ask("migrate-set-parameters", max_bandwidth=1 << 40)
        self.ask("migrate", uri=f"exec:cat >'{folder}/memory'")
        while (state := self.ask("query-migrate").get("status")) != "completed":
            if state in ("failed", "cancelled"):
                raise Refused(f"the machine's memory could not be saved: {state}")
            time.sleep(0.05)
        self.ask("quit")
        self._process.wait(30)
        shutil.copy(self.folder / "root.qcow2", folder)

    def console(self):
        """What the guest's kernel has said."""
        path = self.folder / "console"
        return path.read_text(errors="replace") if path.exists() else ""

    def stop(self):
        """Ends the machine and removes what it has left behind."""
        if self._process.poll() is None:
            self._process.kill()
        self._process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)
