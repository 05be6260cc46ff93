"""A machine with USB ports: recorded devices are played back to a program by umockdev, and file systems are
really mounted, in a mount namespace that the program has to itself.

The kernel's own rules are kept: a device comes after what is above it, and on "remove" its attributes are
gone already while the event still carries its properties.
"""

import json
import os
import pathlib
import shutil
import subprocess

import captured
import child

PRELOAD = "libumockdev-preload.so.0"
TESTBED = pathlib.Path(__file__).with_name("testbed_process.py")


class Machine:
    """One testbed. Programs that run on it get environment() and wrapper()."""

    def __init__(self):
        self._testbed = child.Child(
            ["/usr/bin/python3", str(TESTBED)], env={**os.environ, "LD_PRELOAD": PRELOAD}
        )
        self.root = pathlib.Path(self._testbed.take())
        self._attributes = {}
        self._present = {}  # path below /sys -> properties

    def close(self):
        """The machine is no more."""
        self._testbed.close_input()
        self._testbed.kill()

    def _do(self, operation, *arguments):
        self._testbed.send(json.dumps([operation, *arguments]))
        return self._testbed.take()

    # ---- running programs on it

    def environment(self):
        """What a program needs in its environment to see the devices."""
        return {"UMOCKDEV_DIR": str(self.root), "LD_PRELOAD": PRELOAD}

    @staticmethod
    def wrapper():
        """What starts a program with mounts of its own: as root, or in a user namespace."""
        kind = "-m" if os.geteuid() == 0 else "-rm"
        return ["unshare", kind, "--propagation", "private"]

    # ---- devices

    def plug(self, name, monitor=None, change=None):
        """Plays back how a recorded device came. change(path, properties, attributes) may make it another
        device in some respects; a property that becomes None is none."""
        recorded = captured.attributes(name)
        events = captured.events(monitor or f"{name}.plug-monitor.txt")
        if change is not None:
            for event in events:
                change(event.path, event.properties, recorded[event.path])
                for key in [key for key, value in event.properties.items() if value is None]:
                    del event.properties[key]
        self._attributes.update(recorded)
        for event in events:
            self.play(event)

    def unplug(self, name, which="s1"):
        """Plays back how it went."""
        for event in captured.events(f"{name}.unplug-{which}-monitor.txt"):
            self.play(event)

    def play(self, event):
        """One recorded event."""
        if event.action == "remove":
            self.remove(event.path)
        elif event.path not in self._present:
            if event.action in ("add", "change"):
                self.add(event.path, event.properties)
        elif event.action in ("add", "change"):
            self.change(event.path, event.properties, event.action)

    def add(self, path, properties, attributes=None):
        """A device comes; attributes are those of the recording unless others are given."""
        lines = [f"P: {path}"]
        if "DEVNAME" in properties:
            lines.append(f"N: {properties['DEVNAME'].removeprefix('/dev/')}")
        lines += [f"E: {key}={value}" for key, value in _lasting(properties)]
        if attributes is None:
            attributes = self._attributes.get(path, {})
        for key, value in attributes.items():
            escaped = value.replace("\\", "\\\\").replace("\n", "\\n")
            lines.append(f"A: {key}={escaped}\\n")
        self._present[path] = dict(properties)
        self._do("add", "\n".join(lines) + "\n")

    def change(self, path, properties, action="change"):
        """A device has other properties now."""
        for key in self._present[path].keys() - properties.keys():
            self._do("set_property", "/sys" + path, key, "")
        for key, value in _lasting(properties):
            if self._present[path].get(key) != value:
                self._do("set_property", "/sys" + path, key, value)
        self._present[path] = dict(properties)
        of_the_event = properties.get("DISK_MEDIA_CHANGE")
        if of_the_event:
            self._do("set_property", "/sys" + path, "DISK_MEDIA_CHANGE", of_the_event)
        self._do("uevent", "/sys" + path, action)
        if of_the_event:
            self._do("set_property", "/sys" + path, "DISK_MEDIA_CHANGE", "")

    def tell(self, path, action):
        """An event of a device that stays what it is; returns when, in nanoseconds of the monotonic clock."""
        return self._do("uevent", "/sys" + path, action)

    def set_attribute(self, path, key, value):
        """A sysfs attribute changes, which nobody is told."""
        self._do("set_attribute", "/sys" + path, key, value)

    def remove(self, path):
        """A device goes, with its attributes gone before the event."""
        properties = self._present.pop(path, None)
        if properties is None:
            return
        folder = self.root / ("sys" + path)
        for entry in folder.iterdir():
            if entry.is_file() and not entry.is_symlink() and entry.name != "uevent":
                entry.unlink()
        self._do("uevent", "/sys" + path, "remove")
        self._drop(path, properties)

    def vanish(self):
        """Everything goes without a word: the events were lost."""
        for path in sorted(self._present, key=len, reverse=True):
            self._drop(path, self._present.pop(path))

    def _drop(self, path, properties):
        if properties["SUBSYSTEM"] == "block":
            (self.root / "sys" / "block" / path.rsplit("/", 1)[1]).unlink(missing_ok=True)
        self._do("remove", "/sys" + path)

    def unplug_everything(self):
        """Everything goes, what is below before what is above."""
        for path in sorted(self._present, key=len, reverse=True):
            self.remove(path)

    def present(self):
        """The paths of what is there."""
        return list(self._present)

    def attributes_of(self, path):
        """The attributes that were recorded of a device."""
        return self._attributes.get(path, {})

    def properties(self, path):
        """The properties that a device has now."""
        return dict(self._present[path])

    def path_of(self, node):
        """The path of a device by its node's name, "sda1"."""
        (path,) = [path for path in self._present if path.endswith("/" + node)]
        return path


def _lasting(properties):
    """The properties that stay in the udev database: not those of one event."""
    for key, value in properties.items():
        if key not in ("ACTION", "DEVPATH", "SEQNUM", "USEC_INITIALIZED", "DISK_MEDIA_CHANGE"):
            yield key, value


class Mounts:
    """The mount namespace of a running program; `enter` is what starts another one in it."""

    def __init__(self, pid, folder):
        self.enter = ["nsenter", "-t", str(pid), "-m"]
        if os.geteuid() != 0:
            self.enter += ["-U", "--preserve-credentials"]
        self._folder = folder

    def mount(self, node, point=None):
        """Mounts something by the name of a device node; returns where."""
        point = self._folder / (point or f"mount-{node.replace('/', '_')}")
        point.mkdir(parents=True, exist_ok=True) if isinstance(point, pathlib.Path) else None
        self.run("mount", "-t", "tmpfs", node, str(point))
        return str(point)

    def unmount(self, point):
        """Unmounts it."""
        self.run("umount", str(point))

    def run(self, *command):
        """Runs a command among the program's mounts."""
        environment = {k: v for k, v in os.environ.items() if k != "LD_PRELOAD"}
        subprocess.run([*self.enter, *command], check=True, timeout=60, env=environment)


def needs_tools():
    """Fails with a plain word when what these tests stand on is missing."""
    for tool in ("unshare", "nsenter", "mount"):
        assert shutil.which(tool), f"{tool} is missing (package util-linux or mount)"
