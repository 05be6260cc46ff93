"""The notification server of a measure: it tells when which pop-up was asked for."""

import contextlib
import queue
import threading
import time

from frame.figures import CannotRun

LIMIT = 20  # seconds for one pop-up


class Screen:
    """What programs/notification_clock.cpp prints, line by line."""

    def __init__(self, process):
        self._lines = queue.Queue()
        threading.Thread(target=self._read, args=(process.stdout,), daemon=True).start()
        self.next("ready")

    def _read(self, output):
        for line in output:
            self._lines.put(line.rstrip("\n"))

    def next(self, sender, title="", limit=LIMIT):
        """Waits for the next pop-up of a sender whose title begins so; when it was asked for, in nanoseconds
        of the monotonic clock."""
        end = time.monotonic() + limit
        while True:
            try:
                line = self._lines.get(timeout=max(0.0, end - time.monotonic()))
            except queue.Empty:
                raise CannotRun(f"no pop-up '{title}' of {sender} within {limit} s") from None
            name, _, rest = line.partition("\t")
            at, _, its_title = rest.partition("\t")
            if name == sender and its_title.startswith(title):
                return int(at or 0)

    def settle(self, quiet=0.3):
        """Forgets what was asked for until nothing has been for so many seconds."""
        with contextlib.suppress(queue.Empty):
            while True:
                self._lines.get(timeout=quiet)


@contextlib.contextmanager
def screen(bench, bus):
    """A notification server on a bus."""
    command = [bench.program("bench/programs/notification-clock")]
    with bench.running(command, bench.environment(None, DBUS_SESSION_BUS_ADDRESS=bus)) as process:
        yield Screen(process)
