"""The machine's USB ports: what is plugged into them and pulled out again while it runs."""

import time

from channel import PATIENCE
from qemu import Refused


class UsbPorts:
    """Plugs devices into a machine; `sticks` is the folder of what the sticks hold."""

    def __init__(self, qemu, sticks):
        self._qemu = qemu
        self._sticks = sticks
        self._disks = {}

    def plug(self, name, holds, serial="AA01", port=None):
        """Plugs a stick in, or a USB disk: both are one. `holds` names an image; the port may be chosen.

        Returns when that was, by the host's clock.
        """
        path = self._qemu.overlay(f"{name}.qcow2", self._sticks / f"{holds}.img")
        below = {"driver": "file", "filename": str(path)}
        image = {"driver": "qcow2", "file": below}
        # The brake is there from the start, and off.
        self._qemu.ask_plainly("object-add", {"qom-type": "throttle-group", "id": f"brake-{name}"})
        self._qemu.ask_plainly(
            "blockdev-add",
            {
                "driver": "throttle",
                "node-name": f"disk-{name}",
                "throttle-group": f"brake-{name}",
                "file": image,
            },
        )
        self._disks[name] = path
        where = {"port": str(port)} if port else {}
        return self._add(
            name, "usb-storage", drive=f"disk-{name}", serial=serial, removable=True, **where
        )

    def plug_camera(self, name):
        """Plugs a camera in: one interface of the class 6."""
        folder = str(self._sticks / "camera")
        return self._add(name, "usb-mtp", rootdir=folder, readonly=True, desc="Camera")

    def slow_down(self, name):
        """From now on a stick does one operation in a second."""
        limits = {"iops-total": 1}
        brake = {"path": f"/objects/brake-{name}", "property": "limits", "value": limits}
        self._qemu.ask_plainly("qom-set", brake)

    def pull(self, name):
        """Pulls a device out without a warning; returns when that was, by the host's clock."""
        at = time.monotonic()
        self._qemu.ask("device_del", id=name)
        self._qemu.wait_for("DEVICE_DELETED", device=name)
        if name in self._disks:
            self._forget(name, self._disks.pop(name))
        return at

    def _add(self, name, driver, **properties):
        at = time.monotonic()
        self._qemu.ask_plainly(
            "device_add", {"driver": driver, "id": name, "bus": "xhci.0", **properties}
        )
        return at

    def _forget(self, name, path):
        """A disk's file is let go only when the emulator has ended its last request."""
        end = time.monotonic() + 30 * PATIENCE
        while True:
            try:
                self._qemu.ask_plainly("blockdev-del", {"node-name": f"disk-{name}"})
                break
            except Refused:
                if time.monotonic() > end:
                    raise
                time.sleep(0.05)
        self._qemu.ask_plainly("object-del", {"id": f"brake-{name}"})
        path.unlink()
