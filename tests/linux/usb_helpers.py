"""What the tests of the ports share: the recorded devices as they ought to be listed, and a probe on a
machine of its own."""

import ctypes
import os
import struct
import urllib.parse

from machine import Mounts

# What every stick of the emulated controller has in common.
STICK = {
    "class": 8,
    "subClass": 6,
    "protocol": 80,
    "vendorId": 0x46F4,
    "productId": 1,
    "bus": 2,
    "number": 1,
    "manufacturer": "QEMU",
    "product": "QEMU USB HARDDRIVE",
    "devname": "/dev/sda1",
    "mountpath": None,
    "disk": 1,
}
DISK_PATH = "/devices/pci0000:00/0000:00:04.0/usb2/{0}/{0}:1.0/host0/target0:0:0/0:0:0:0/block/sda"


def stick(port, address, serial, label, file_system, **other):
    """The whole record of a recorded stick."""
    return {
        **STICK,
        "address": address,
        "serial": serial,
        "label": label,
        "fileSystem": file_system,
        "devpath": DISK_PATH.format(port) + "/sda1",
        **other,
    }


def decoded(device):
    """A device as the probe prints it, its bytes as text with surrogate escapes."""
    return {
        name: urllib.parse.unquote(value, errors="surrogateescape") if isinstance(value, str) else value
        for name, value in device.items()
    }


class Ports:
    """A probe that has started the USB library on a machine."""

    def __init__(self, probe, folder):
        self.probe = probe
        self.mounts = Mounts(probe.process.pid, folder)
        assert probe.call("usb_device_init") == 0

    def listen(self):
        """Has events told from now on."""
        assert self.probe.call("usb_set_connected_cb") == 0

    def devices(self, usb_class=8):
        """What the library lists."""
        return [decoded(device) for device in self.probe.call("devices", usb_class)]

    def nodes(self, usb_class=8):
        """The nodes of what it lists."""
        return [device["devname"] for device in self.devices(usb_class)]

    def next(self):
        """The next event: (action, device)."""
        event = self.probe.event("usb")
        return event["action"], decoded(event["device"])

    def next_actions(self, count):
        """The next events in short: [(action, node), ...]."""
        return [(action, device["devname"]) for action, device in (self.next() for _ in range(count))]

    def news(self):
        """What was told since the last look, in short."""
        return [
            (event["action"], decoded(event["device"])["devname"])
            for event in self.probe.events_so_far()
            if event["event"] == "usb"
        ]


class Opened:
    """Sees what is opened in a folder (inotify(7)), while it is entered."""

    IN_OPEN = 0x20

    def __init__(self, folder):
        libc = ctypes.CDLL(None, use_errno=True)
        self._descriptor = libc.inotify_init1(os.O_NONBLOCK)
        assert libc.inotify_add_watch(self._descriptor, os.fsencode(folder), self.IN_OPEN) >= 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self._descriptor)

    def names(self):
        """The names of what was opened since the last look; not those of folders."""
        names = set()
        try:
            data = os.read(self._descriptor, 65536)
        except BlockingIOError:
            return names
        while data:
            _, mask, _, length = struct.unpack_from("iIII", data)
            name = data[16 : 16 + length].rstrip(b"\0").decode()
            if name and not mask & 0x40000000:
                names.add(name)
            data = data[16 + length :]
        return names
