#!/usr/bin/python3
"""A machine with three sticks, of the kernel's own making.

To be run by root in a mount namespace and a network namespace of its own; what it mounts there is seen, and
the kernel's events are heard, by nobody outside. A stick is a loop device whose partition comes and goes: the
kernel's event, systemd-udevd with the system's rules, the file system (ext4, without a journal as on sticks)
and its mount are real. Its content is in memory, so that no disk is measured. What no loop device has is laid
over sysfs: a USB interface and a USB device above it.

"bench-ours" is mounted by a rule of udev, as automounters of televisions do, before udev passes its event on.
"bench-asking" nobody mounts but whoever asks UDisks2 to. Both are nothing to UDisks2's clients. "bench-peers" is
theirs, and no USB device to the daemon.

Prints {"ready": true}, then takes one JSON list a line: ["plug", STICK] makes the partition and answers when
that was asked of the kernel, in nanoseconds of the monotonic clock; ["pull", STICK] unmounts and removes it.
"""

import contextlib
import ctypes
import errno
import fcntl
import json
import os
import pathlib
import struct
import subprocess
import sys
import time

UDEVD = "/lib/systemd/systemd-udevd"
MEBIBYTE = 1 << 20
SIZE = 64 * MEBIBYTE
STICKS = ("bench-ours", "bench-asking", "bench-peers")

# <linux/blkpg.h>
BLKPG, ADD_PARTITION, DEL_PARTITION = 0x1269, 1, 2

RULES = """
SUBSYSTEM!="block", GOTO="end"
KERNEL=="{ours}*|{asking}*", ENV{{ID_BUS}}="usb", ENV{{UDISKS_AUTO}}="0"
KERNEL=="{peers}*", ENV{{UDISKS_AUTO}}="1", ENV{{UDISKS_SYSTEM}}="0", ENV{{UDISKS_IGNORE}}="0"
ACTION=="add", KERNEL=="{ours}p1", RUN+="/bin/mount -n -i -t ext4 /dev/%k {point}"
LABEL="end"
"""

USB_DEVICE = {
    "uevent": "DEVTYPE=usb_device\nPRODUCT=46f4/1/0\nBUSNUM=002\nDEVNUM=002",
    "manufacturer": "Bench",
    "product": "Loop Stick",
    "serial": "AA01",
}
USB_INTERFACE = {
    "uevent": "DEVTYPE=usb_interface",
    "bInterfaceClass": "08",
    "bInterfaceSubClass": "06",
    "bInterfaceProtocol": "50",
}


def run(*command):
    """Runs a command that must end well; returns what it printed."""
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=60).stdout.strip()


def lay_usb_over_sysfs():
    """Makes the folders above all loop devices a USB interface and its device. Everything else that is in
    them stays the kernel's own."""
    run("mount", "-t", "sysfs", "sysfs", "/sys")
    plain = pathlib.Path("/run/plain-sysfs")
    plain.mkdir()
    run("mount", "--bind", "/sys", str(plain))
    virtual = pathlib.Path("/sys/devices/virtual")
    run("mount", "-t", "tmpfs", "tmpfs", str(virtual))
    (virtual / "block").mkdir()
    for folder in ("", "block"):
        for entry in (plain / "devices" / "virtual" / folder).iterdir():
            place = virtual / folder / entry.name
            if entry.is_dir() and not place.exists():
                place.mkdir()
                run("mount", "--bind", str(entry), str(place))
    for folder, attributes in ((virtual, USB_DEVICE), (virtual / "block", USB_INTERFACE)):
        (folder / "subsystem").symlink_to("/sys/bus/usb")
        for name, value in attributes.items():
            (folder / name).write_text(value + "\n")


class LoopStick:
    """One stick, pulled."""

    def __init__(self, folder, label):
        image = folder / label
        with open(image, "wb") as file:
            file.truncate(SIZE)
        subprocess.run(
            ["sfdisk", "--quiet", str(image)], input="2048,,L\n", check=True, text=True, timeout=60
        )
        blocks = f"{(SIZE - MEBIBYTE) // 1024}k"
        run("mkfs.ext4", "-q", "-O", "^has_journal", "-E", f"offset={MEBIBYTE}", "-L", label, str(image), blocks)
        self.device = run("losetup", "--find", "--show", str(image))
        self.name = pathlib.Path(self.device).name
        self._descriptor = os.open(self.device, os.O_RDONLY)

    def plug(self):
        """Makes the partition; returns when that was asked for."""
        return self._change(ADD_PARTITION)

    def pull(self):
        """Removes the partition, once nobody is busy with it; returns when that was done."""
        subprocess.run(["umount", self.device + "p1"], check=False, capture_output=True, timeout=60)
        end = time.monotonic() + 10
        while True:
            try:
                return self._change(DEL_PARTITION)
            except OSError as error:
                if error.errno != errno.EBUSY or time.monotonic() > end:
                    raise
                time.sleep(0.02)

    def _change(self, operation):
        partition = struct.pack("qqi64s64s4x", MEBIBYTE, SIZE - MEBIBYTE, 1, b"", b"")
        buffer = ctypes.create_string_buffer(partition, len(partition))
        argument = struct.pack("iiiP", operation, 0, len(partition), ctypes.addressof(buffer))
        at = time.monotonic_ns()
        fcntl.ioctl(self._descriptor, BLKPG, argument)
        return at

    def forget(self):
        """Gives the loop device back."""
        with contextlib.suppress(OSError):  # it has been pulled
            self.pull()
        os.close(self._descriptor)
        run("losetup", "--detach", self.device)


def start_udevd():
    """Starts udev's daemon, which rules over this namespace alone."""
    daemon = subprocess.Popen(
        [UDEVD], env={**os.environ, "SYSTEMD_DEVICE_VERIFY_SYSFS": "0"}, stderr=subprocess.DEVNULL
    )
    end = time.monotonic() + 30
    while not os.path.exists("/run/udev/control"):
        assert time.monotonic() < end and daemon.poll() is None, "udevd did not start"
        time.sleep(0.01)
    return daemon


def main():
    """Serves until standard input ends."""
    for place in ("/run", "/media", "/var/lib/udisks2"):
        os.makedirs(place, exist_ok=True)
        run("mount", "-t", "tmpfs", "tmpfs", place)
    lay_usb_over_sysfs()
    images = pathlib.Path("/run/images")
    images.mkdir()
    sticks = {label: LoopStick(images, label) for label in STICKS}
    point = pathlib.Path("/media/stick")
    point.mkdir()
    rules = pathlib.Path("/run/udev/rules.d")
    rules.mkdir(parents=True)
    names = {label.removeprefix("bench-"): stick.name for label, stick in sticks.items()}
    (rules / "99-bench.rules").write_text(RULES.format(point=point, **names))
    daemon = start_udevd()
    try:
        print(json.dumps({"ready": True}), flush=True)
        for line in sys.stdin:
            order, label = json.loads(line)
            stick = sticks[label]
            print({"plug": stick.plug, "pull": stick.pull}[order](), flush=True)
    finally:
        for stick in sticks.values():
            stick.forget()
        daemon.terminate()
        daemon.wait(30)


if __name__ == "__main__":
    main()
