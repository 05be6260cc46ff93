"""The workbench on a terminal of its own: what a person sees of it, and what becomes of the terminal's
settings."""

import contextlib
import fcntl
import os
import pty
import re
import struct
import subprocess
import termios
import threading

from small_screen import SmallScreen
from workbench_process import TIME_LIMIT, environment, temporary_folder, terminal_form, until

UNFINISHED = re.compile(r"\x1b(\[[0-9;]*)?$")


class TerminalWorkbench:
    """A run whose keys and screen are those of a terminal."""

    def __init__(self, *arguments, columns=100, rows=45, env=None):
        self._folders = contextlib.ExitStack()
        self.temporary = self._folders.enter_context(temporary_folder())
        self._master, self._slave = pty.openpty()
        self._bytes = b""
        self._size_since = 0
        self._size = (columns, rows)
        self._set_size()
        self.settings_before = self.settings()
        more = {"NO_COLOR": "", **(env or {})}
        self.process = subprocess.Popen(
            terminal_form(*arguments),
            stdin=self._slave,
            stdout=self._slave,
            stderr=self._slave,
            env=environment(self.temporary, **more),
            preexec_fn=self._take_terminal,
        )
        threading.Thread(target=self._read, daemon=True).start()

    @staticmethod
    def _take_terminal():
        os.setsid()
        fcntl.ioctl(0, termios.TIOCSCTTY, 0)

    def _set_size(self):
        columns, rows = self._size
        fcntl.ioctl(self._slave, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def _read(self):
        with contextlib.suppress(OSError):
            while chunk := os.read(self._master, 65536):
                self._bytes += chunk

    def settings(self):
        """The terminal's settings."""
        return termios.tcgetattr(self._slave)

    def resize(self, columns, rows):
        """Gives the terminal another size; what it showed is forgotten."""
        self._size_since = len(self._bytes)
        self._size = (columns, rows)
        self._set_size()

    def screen(self):
        """The screen as it is now."""
        text = self._bytes[self._size_since :].decode(errors="ignore")
        screen = SmallScreen(*self._size)
        screen.feed(UNFINISHED.sub("", text))
        return screen

    def shows(self, pattern):
        """Waits until a line of the screen matches."""
        expression = re.compile(pattern)
        found = until(lambda: any(map(expression.search, self.screen().lines())))
        assert found, f"no {pattern!r} on\n" + "\n".join(self.screen().lines())

    def shows_no(self, pattern):
        """Waits until no line of the screen matches."""
        expression = re.compile(pattern)
        gone = until(lambda: not any(map(expression.search, self.screen().lines())))
        assert gone, f"still {pattern!r} on\n" + "\n".join(self.screen().lines())

    def press(self, keys):
        """Presses keys."""
        os.write(self._master, keys.encode())

    def finish(self):
        """Waits for the end; returns the exit status."""
        return self.process.wait(TIME_LIMIT)

    def close(self):
        """Ends whatever is left."""
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait(TIME_LIMIT)
        os.close(self._slave)
        os.close(self._master)
        self._folders.close()
