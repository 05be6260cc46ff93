"""A socket that leads to QEMU or into the guest, spoken to in lines."""

import json
import os
import socket
import time

# What a busy host makes of a time limit that is generous on an idle one.
PATIENCE = float(os.environ.get("PORTMELD_VM_PATIENCE", "1"))


class Silent(Exception):
    """Nothing came within the time limit, or the other end is gone."""


class Channel:
    """One connection to a socket that QEMU serves; waits until it is there."""

    def __init__(self, path, seconds=30):
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._rest = b""
        end = time.monotonic() + seconds * PATIENCE
        while True:
            try:
                self._socket.connect(path)
                return
            except OSError as error:
                if time.monotonic() > end:
                    raise Silent(f"{path}: {error}") from error
                time.sleep(0.02)

    def close(self):
        """Ends the connection."""
        self._socket.close()

    def say(self, what):
        """Sends one JSON object as a line."""
        self._socket.sendall(json.dumps(what).encode() + b"\n")

    def hear(self, seconds):
        """The next line as JSON."""
        return json.loads(self.line(seconds))

    def line(self, seconds=None):
        """The next line, without its end; None: however long it takes."""
        end = None if seconds is None else time.monotonic() + seconds * PATIENCE
        while b"\n" not in self._rest:
            self._socket.settimeout(None if end is None else max(end - time.monotonic(), 0.001))
            try:
                piece = self._socket.recv(1 << 20)
            except TimeoutError:
                raise Silent(f"nothing came within {seconds * PATIENCE:.0f} s") from None
            if not piece:
                raise Silent("the other end is gone")
            self._rest += piece
        line, self._rest = self._rest.split(b"\n", 1)
        return line.decode(errors="replace").rstrip("\r")
