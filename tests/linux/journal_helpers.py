"""A journal of the test's own: a socket that takes what programs send to the system journal.

The place of that socket is fixed, so a program under test runs in a mount namespace of its own, where
the test's socket lies in that place. Needs the right to make one: that of the administrator, or user
namespaces.
"""

import contextlib
import os
import socket
import struct
import threading

LIMIT = 60  # seconds

# What a service manager does: the journal's socket in its place, and JOURNAL_STREAM, which tells that
# standard error goes to the journal.
START = """
set -eu
mount -t tmpfs tmpfs /run
mkdir -p /run/systemd/journal
mount --bind "$1" /run/systemd/journal
shift
JOURNAL_STREAM=$(stat -L -c %d:%i /proc/self/fd/2)
export JOURNAL_STREAM
exec "$@"
"""


class Journal:
    """Takes entries; wait for them with take(). One that is not `reading` takes as many as its socket
    holds, until read() is called. One that was closed can be followed by another in its place."""

    def __init__(self, folder, reading=True):
        self.folder = folder / "journal"
        self.folder.mkdir(exist_ok=True)
        self.folder.joinpath("socket").unlink(missing_ok=True)
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(str(self.folder / "socket"))
        self._entries = []
        self._changed = threading.Condition()
        if reading:
            self.read()

    def read(self):
        """Begins to take entries; those that were waiting have been taken at the return."""
        with contextlib.suppress(BlockingIOError):
            while self._receive(socket.MSG_DONTWAIT):
                pass
        threading.Thread(target=self._read, daemon=True).start()

    def wrapper(self):
        """What to put before a program's name so that this is its journal."""
        rights = [] if os.geteuid() == 0 else ["-r"]
        namespace = ["unshare", *rights, "-m", "--propagation", "private"]
        return [*namespace, "sh", "-c", START, "sh", str(self.folder)]

    def take(self, wanted=lambda entry: True):
        """Takes the first entry (a dictionary) for which `wanted` is true; waits for it."""
        with self._changed:
            assert self._changed.wait_for(
                lambda: any(wanted(entry) for entry in self._entries), LIMIT
            ), f"not among {self._entries}"
            entry = next(entry for entry in self._entries if wanted(entry))
            self._entries.remove(entry)
            return entry

    def entries(self):
        """All that was not taken."""
        with self._changed:
            return list(self._entries)

    def close(self):
        """Wakes the reading thread up for the last time."""
        self._socket.shutdown(socket.SHUT_RDWR)
        self._socket.close()

    def _read(self):
        with contextlib.suppress(OSError):
            while self._receive():
                pass

    def _receive(self, flags=0):
        """Takes one entry from the socket; tells whether there was one."""
        data = self._socket.recv(1 << 20, flags)
        if data:
            with self._changed:
                self._entries.append(entry_of(data))
                self._changed.notify_all()
        return bool(data)


def entry_of(data):
    """The fields of an entry, in the journal's native protocol; texts where they are valid."""
    entry = {}
    while data:
        line, _, data = data.partition(b"\n")
        name, equals, value = line.partition(b"=")
        if not equals:
            (size,) = struct.unpack("<Q", data[:8])
            value, data = data[8 : 8 + size], data[8 + size + 1 :]
        entry[name.decode()] = value.decode("utf-8", "surrogateescape")
    return entry
