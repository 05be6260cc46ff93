"""udevd between the kernel and its listeners: it passes on each event, can hang, die and come back, and its
events can be lost.

The kernel's events wait for it meanwhile, as they do in a socket that the service manager holds
(systemd-udevd-kernel.socket). Devices themselves, and their attributes, come and go in sysfs at once.
"""

import pathlib
import socket
import threading

MARK = b"mark"


class Udevd:
    """Stands between a machine of umockdev and a program that was started on it."""

    def __init__(self, folder):
        self._runs = threading.Event()
        self._runs.set()
        self._loses = False
        self._marks = {}
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

    def lose(self, loses):
        """Passes nothing on that comes from now on, or all of it again. What came before is through at the
        return."""
        self._wait_until_passed()
        self._loses = loses

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

    def _wait_until_passed(self):
        """An event of one's own, which no listener understands, has come out behind all others."""
        for kernel, _ in self._links:
            done = threading.Event()
            self._marks[kernel] = done
            with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as sender:
                sender.sendto(MARK, kernel.getsockname())
            assert done.wait(60)

    def _pass_on(self, kernel, listener):
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as sender:
            while event := kernel.recv(1 << 16):
                self._runs.wait()
                if event == MARK:
                    self._marks[kernel].set()
                elif not self._loses:
                    sender.sendto(event, str(listener))
