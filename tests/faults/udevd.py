"""udevd between the kernel and its listeners: it passes on each event, and can hang, die and come back.

The kernel's events wait for it meanwhile, as they do in a socket that the service manager holds
(systemd-udevd-kernel.socket). Devices themselves, and their attributes, come and go in sysfs at once.
"""

import pathlib
import socket
import threading


class Udevd:
    """Stands between a machine of umockdev and a program that was started on it."""

    def __init__(self, folder):
        self._runs = threading.Event()
        self._runs.set()
        self._links = []
        # Where umockdev sends its events: a socket for each monitor of the program.
        for place in sorted(pathlib.Path(folder).glob("event[0-9]*")):
            listener = place.with_name("listener-" + place.name)
            place.rename(listener)
            kernel = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
            kernel.bind(str(place))
            self._links.append((kernel, listener))
        assert self._links, "nobody listens to udev"
        self._threads = [
            threading.Thread(target=self._pass_on, args=link, daemon=True) for link in self._links
        ]
        for thread in self._threads:
            thread.start()

    def stop(self):
        """Passes nothing on until go_on()."""
        self._runs.clear()

    def go_on(self):
        """Passes on all that has come meanwhile, and what comes from now on."""
        self._runs.set()

    def kill(self):
        """Is no more."""
        self._runs.set()
        for kernel, _ in self._links:
            kernel.shutdown(socket.SHUT_RDWR)
        for thread in self._threads:
            thread.join(60)
        for kernel, _ in self._links:
            kernel.close()

    def _pass_on(self, kernel, listener):
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as sender:
            while event := kernel.recv(1 << 16):
                self._runs.wait()
                sender.sendto(event, str(listener))
