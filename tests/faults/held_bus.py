"""A system bus whose socket the service manager holds, as dbus.socket does: while the bus is dead its clients
come to no refusal but wait until it is back."""

import os
import signal
import socket
import subprocess

from private_bus import PrivateBus

# The descriptor that is handed over is the third (sd_listen_fds(3)).
START = 'LISTEN_FDS=1 LISTEN_PID=$$ exec dbus-daemon "$@" 3<&{}'


class HeldBus(PrivateBus):
    """Can be killed, stopped and started, always at the same socket."""

    def __init__(self, folder):
        self._place = f"{folder}.socket"
        self._listener = socket.socket(socket.AF_UNIX)
        self._listener.bind(self._place)
        self._listener.listen(100)
        super().__init__(folder)

    def start(self):
        """Starts the bus, which is given the socket."""
        self.address = f"unix:path={self._place}"
        number = self._listener.fileno()
        self._process = subprocess.Popen(
            ["bash", "-c", START.format(number), "bash", "--nofork", "--print-address"]
            + ["--address=systemd:", f"--config-file={self._configuration}"],
            stdout=subprocess.PIPE,
            text=True,
            pass_fds=[number],
        )
        assert self._process.stdout.readline(), "dbus-daemon did not start"

    def halt(self):
        """Stops the process in its tracks."""
        os.kill(self._process.pid, signal.SIGSTOP)

    def go_on(self):
        """Lets it run again."""
        os.kill(self._process.pid, signal.SIGCONT)

    def close(self):
        """Ends the bus for good, whatever state it is in."""
        self.kill()
        self._process.stdout.close()
        self._listener.close()
