"""A stand-in for the system's service manager: it runs the daemon as its unit says, and writes down when which
process began, was ready and ended.

Of the unit it follows Restart=, RestartSec=, StartLimitIntervalSec= and WatchdogSec= (systemd.service(5)).
"""

import os
import pathlib
import signal
import socket
import threading
import time

import child

UNIT = pathlib.Path("packaging", "portmeld@.service")

# How much faster than its unit says the watchdog is, as the daemon feeds it faster in these tests too. It is
# less than the daemon's own haste: a busy machine is no reason to take a daemon for hung.
WATCHDOG_HASTE = 30


def seconds(text):
    """A span of time as units have it, in seconds."""
    for ending, factor in (("ms", 0.001), ("min", 60), ("s", 1)):
        if text.endswith(ending):
            return float(text.removesuffix(ending)) * factor
    return float(text)


class Unit:
    """What the daemon's unit says of its ends and starts."""

    def __init__(self):
        file = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"]) / UNIT
        settings = dict(
            line.split("=", 1) for line in file.read_text().splitlines() if "=" in line and line[0] != "#"
        )
        self.restart = settings["Restart"]
        self.restart_seconds = seconds(settings["RestartSec"])
        self.watchdog_seconds = seconds(settings["WatchdogSec"])
        self.start_limit_seconds = seconds(settings["StartLimitIntervalSec"])


class ServiceManager:
    """Keeps the daemon running. `start(env)` starts a process of it and returns it as a child."""

    numbers = iter(range(1 << 30))

    def __init__(self, start):
        self.unit = Unit()
        self.lives = []
        self._start = start
        self._log = []
        self._changed = threading.Condition()
        self._closing = False
        self._fed = time.monotonic()
        name = f"\0portmeld-faults-{os.getpid()}-{next(self.numbers)}"
        self._notices = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._notices.bind(name)
        self._env = {"NOTIFY_SOCKET": name.replace("\0", "@"), "INVOCATION_ID": "0" * 32}
        self._threads = []

    def begin(self):
        """Starts the daemon, and keeps it running."""
        self._begin()
        for work in (self._keep_running, self._hear):
            self._threads.append(threading.Thread(target=work, daemon=True))
            self._threads[-1].start()

    @property
    def life(self):
        """The daemon's process of now, or the last one."""
        return self.lives[-1]

    def log(self):
        """What happened so far: (what, detail, monotonic time), in its order."""
        with self._changed:
            return list(self._log)

    def wait_for(self, what, count):
        """Waits until something has happened so often."""
        with self._changed:
            assert self._changed.wait_for(
                lambda: [entry[0] for entry in self._log].count(what) >= count, child.LIMIT
            ), f"not {count} times {what}: {self._log}"

    def ends(self):
        """The status of each process that has ended: its exit status, or minus the signal."""
        return [detail for what, detail, _ in self.log() if what == "ended"]

    def kill_when_it_hangs(self):
        """Does what the unit's watchdog does to a daemon that is silent: waits, and ends it."""
        limit = self.unit.watchdog_seconds / WATCHDOG_HASTE
        while (rest := self._fed + limit - time.monotonic()) > 0:
            time.sleep(rest)
        self.life.process.send_signal(signal.SIGABRT)
        self.life.process.send_signal(signal.SIGCONT)

    def close(self):
        """Ends the daemon well, and does not start it again."""
        self._close()
        if self.life.process.poll() is None:
            self.life.close_input()
            assert self.life.wait_for_end() == 0, "\n".join(self.life.error_lines()[-50:])

    def kill(self):
        """Ends what still runs."""
        self._close()
        for life in self.lives:
            life.kill()
        if self._threads:
            self._notices.shutdown(socket.SHUT_RDWR)
        for thread in self._threads:
            thread.join(child.LIMIT)
        self._notices.close()

    def _close(self):
        with self._changed:
            self._closing = True
            self._changed.notify_all()

    def _begin(self):
        self.lives.append(self._start(self._env))
        self._note("started", self.life.process.pid)

    def _note(self, what, detail):
        with self._changed:
            self._log.append((what, detail, time.monotonic()))
            self._changed.notify_all()

    def _keep_running(self):
        while True:
            status = self.life.process.wait()
            self._note("ended", status)
            with self._changed:
                if self.unit.restart != "always" or self._changed.wait_for(
                    lambda: self._closing, self.unit.restart_seconds
                ):
                    return
                self._begin()

    def _hear(self):
        while notice := self._notices.recv(4096).decode():
            words = dict(line.split("=", 1) for line in notice.splitlines())
            if "READY" in words:
                self._note("ready", words.get("STATUS"))
            self._fed = time.monotonic()
