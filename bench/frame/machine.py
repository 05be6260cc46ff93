"""The machine that the figures come from, in words: what matters for them, and nothing that names it."""

import os
import pathlib
import platform
import re
import subprocess


def _first(file, pattern):
    """The first match of a pattern in a file, or "unknown"."""
    try:
        found = re.search(pattern, pathlib.Path(file).read_text(), re.MULTILINE)
    except OSError:
        found = None
    return found[1].strip() if found else "unknown"


def _version(*command):
    """What a program says of its version, in one line."""
    try:
        done = subprocess.run(command, capture_output=True, text=True, timeout=10, check=False)
    except OSError:
        return "unknown"
    return (done.stdout.strip().splitlines() or ["unknown"])[0]


BUSY = 0.5  # of a core, for each of them


def busy_warning(description):
    """A warning when the machine had other work when the measures began, else ""."""
    load = float(description["load when it began"])
    if load <= BUSY * int(description["cores"]):
        return ""
    return (
        f"the machine was busy when this began (load {load:.2f}): other work lengthens both sides, so that"
        " ratios of times come nearer to 1 than they are; counts stay good"
    )


def describe():
    """The description, {what: words}."""
    kilobytes = _first("/proc/meminfo", r"^MemTotal: +(\d+) kB")
    memory = f"{int(kilobytes) / 2**20:.1f} GiB" if kilobytes.isdigit() else kilobytes
    return {
        "processor": _first("/proc/cpuinfo", r"^(?:model name|Model|Hardware)\s*: (.*)"),
        "cores": str(os.cpu_count()),
        "memory": memory,
        "system": _first("/etc/os-release", r'^PRETTY_NAME="?([^"\n]*)'),
        "kernel": f"{platform.system()} {platform.release()} {platform.machine()}",
        "compiler": _version(os.environ.get("CXX", "c++"), "--version"),
        "GLib": _version("pkg-config", "--modversion", "gio-2.0"),
        "load when it began": f"{os.getloadavg()[0]:.2f}",
    }
