"""Mounts and unmounts in the mount namespace that it is started in, many times a second. Takes one JSON list a
line: ["mount", NODE, FOLDER] or ["mount", NODE, FOLDER, FILE-NAME], ["umount", FOLDER]; answers each with
one line.
"""

import ctypes
import json
import os
import pathlib
import sys

MNT_DETACH = 2

libc = ctypes.CDLL(None, use_errno=True)


def checked(result):
    """Raises what went wrong."""
    if result != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def mount(node, folder, file_name=None):
    """A file system of this name, with one file on it when that has a name."""
    pathlib.Path(folder).mkdir(parents=True, exist_ok=True)
    checked(libc.mount(node.encode(), folder.encode(), b"tmpfs", 0, b"size=64k"))
    if file_name:
        pathlib.Path(folder, file_name).write_bytes(b"x")


def umount(folder):
    """Gone at once, even while a scan looks into it."""
    checked(libc.umount2(folder.encode(), MNT_DETACH))


for line in sys.stdin:
    operation, *arguments = json.loads(line)
    {"mount": mount, "umount": umount}[operation](*arguments)
    print("true", flush=True)
