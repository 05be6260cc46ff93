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

# <linux/mount.h>
FSCONFIG_SET_STRING, FSCONFIG_CMD_CREATE = 1, 6
MOVE_MOUNT_F_EMPTY_PATH = 4
AT_FDCWD = -100

libc = ctypes.CDLL(None, use_errno=True)


def checked(result):
    """Raises what went wrong."""
    if result < 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))
    return result


def mount(node, folder, file_name=None):
    """A file system of this name, with one file on it when that has a name: from the first moment that it can
    be seen, since a search for media may begin then."""
    pathlib.Path(folder).mkdir(parents=True, exist_ok=True)
    context = checked(libc.fsopen(b"tmpfs", 0))
    for key, value in ((b"source", node.encode()), (b"size", b"64k")):
        checked(libc.fsconfig(context, FSCONFIG_SET_STRING, key, value, 0))
    checked(libc.fsconfig(context, FSCONFIG_CMD_CREATE, None, None, 0))
    root = checked(libc.fsmount(context, 0, 0))
    if file_name:
        with open(f"/proc/self/fd/{root}/{file_name}", "xb") as file:
            file.write(b"x")
    checked(libc.move_mount(root, b"", AT_FDCWD, folder.encode(), MOVE_MOUNT_F_EMPTY_PATH))
    os.close(root)
    os.close(context)


def umount(folder):
    """Gone at once, even while a scan looks into it."""
    checked(libc.umount2(folder.encode(), MNT_DETACH))


for line in sys.stdin:
    operation, *arguments = json.loads(line)
    {"mount": mount, "umount": umount}[operation](*arguments)
    print("true", flush=True)
