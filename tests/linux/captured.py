"""The recordings in captures/: uevents with their properties, and sysfs attributes."""

import collections
import pathlib
import re

FOLDER = pathlib.Path(__file__).resolve().parent / "captures"

Event = collections.namedtuple("Event", "action path properties")

# What the daemon's world is made of; hosts, targets and generic nodes only stand between them.
WANTED = ("usb", "block")


def events(file):
    """The events that udev passed on, of USB and block devices, in their order."""
    found = []
    for block in (FOLDER / file).read_text(errors="surrogateescape").split("\n\n"):
        lines = block.strip("\n").split("\n")
        if not lines[0].startswith("UDEV "):
            continue
        properties = dict(line.split("=", 1) for line in lines[1:] if "=" in line)
        if properties["SUBSYSTEM"] in WANTED:
            found.append(Event(properties["ACTION"], properties["DEVPATH"], properties))
    assert found, f"{file} holds no event"
    return found


def attributes(name):
    """The sysfs attributes of a recording, by path below /sys."""
    found = collections.defaultdict(dict)
    for kind in ("usb", "chain"):
        file = FOLDER / f"{name}.sysfs-{kind}.txt"
        if not file.exists():
            continue
        path = None
        for line in file.read_bytes().decode(errors="surrogateescape").split("\n"):
            place = re.match(r"(?:== \S+ -> |  )/sys(/\S+)$", line)
            if place:
                path = place[1]
            elif line.startswith("== "):
                path = None
            elif path and "=" in line:
                key, value = line.strip("\n").lstrip(" ").split("=", 1)
                found[path].setdefault(key, value)
    assert found, f"there are no attributes of {name}"
    for values in found.values():
        values.pop("driver", None)
        values.pop("subsystem", None)
    return found
