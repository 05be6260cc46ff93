"""Sockets of the machine: recorded devices, moved to a port of their own, so that several can be plugged in at
a time."""

import functools

import captured
from reference import CAMERA, STORAGE, Device

FILE_SYSTEMS = {"vfat": 0, "exfat": 1, "ext4": 2, "ntfs": 3}
DISKS = ["fat32", "exfat", "ext4", "ntfs", "serial-odd-chars", "inquiry-strings", "two-partitions", "blank"]
# Names and numbers that no disk of the machine has which this runs on: its mounts are seen as well.
LETTERS = "wxyz"
DISK_SOCKETS = len(LETTERS)
FIRST_MINOR = 176

recorded_events = functools.cache(captured.events)
recorded_attributes = functools.cache(captured.attributes)
MINORS_OF_A_DISK = 16


class Socket:
    """A port with nothing or one recorded device in it; `which` are the recordings that fit."""

    def __init__(self, machine, place, which):
        self.machine = machine
        self.place = place
        self.which = which
        self.devices = []  # the Devices that are plugged in now
        self._paths = []

    @property
    def occupied(self):
        """Whether something is plugged in."""
        return bool(self._paths)

    def plug(self, name):
        """Plays back how a recorded device came; returns the Devices that are for viewers."""
        events = recorded_events(f"{name}.plug-monitor.txt")
        attributes = {self._moved(path): values for path, values in recorded_attributes(name).items()}
        for event in events:
            if event.action not in ("add", "change"):
                continue
            path = self._moved(event.path)
            properties = {key: self._moved(value) for key, value in event.properties.items()}
            if "MINOR" in properties and self.place < DISK_SOCKETS:
                minor = int(properties["MINOR"]) + FIRST_MINOR + MINORS_OF_A_DISK * self.place
                properties["MINOR"] = str(minor)
            if event.action == "change":
                self.machine.change(path, properties)
                continue
            self.machine.add(path, properties, attributes[path])
            self._paths.append(path)
            self._note(path, properties, attributes)
        return self.devices

    def _moved(self, text):
        """A text of the recording as it would be at this port."""
        if self.place >= DISK_SOCKETS:
            return text
        letter = LETTERS[self.place]
        for old, new in [
            ("host0/target0:0:0/0:0:0:0", f"host{self.place}/target{self.place}:0:0/{self.place}:0:0:0"),
            ("/sda", f"/sd{letter}"),
        ]:
            text = text.replace(old, new)
        head, found, tail = text.partition("/usb2/2-")
        if not found:
            return text
        old = tail.split("/")[0]
        return f"{head}{found}" + tail.replace(old, str(20 + self.place), 1).replace(
            f"2-{old}:", f"2-{20 + self.place}:", 1
        )

    def _note(self, path, properties, attributes):
        """What the daemon is to know of a device."""
        usb_class = {"partition": STORAGE, "usb_interface": CAMERA}.get(properties.get("DEVTYPE"))
        if usb_class == CAMERA and properties.get("INTERFACE") != "6/1/1":
            return
        if usb_class is None:
            return
        usb = path.split("/")
        depth = next(i for i, part in enumerate(usb) if ":1." in part)
        of_the_device = attributes["/".join(usb[:depth])]
        serial = of_the_device.get("serial", "")
        ids = (of_the_device["idVendor"], of_the_device["idProduct"], serial)
        key = properties["DEVNAME"] if usb_class == STORAGE else serial
        file_system = FILE_SYSTEMS.get(properties.get("ID_FS_TYPE"), 99)
        self.devices.append(Device(key, usb_class, file_system, of_the_device["product"], ids))

    def pull(self):
        """Everything of it goes, what is below before what is above; returns the Devices."""
        for path in reversed(self._paths):
            self.machine.remove(path)
        self._paths = []
        devices, self.devices = self.devices, []
        return devices
