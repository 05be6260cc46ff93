"""A child process that is spoken to in lines: orders to its standard input, JSON from its output.

What it prints on standard error is kept line by line. Nothing is polled: two threads read, and who
waits is woken. Every wait has a time limit, wide enough for a sanitizer build on a busy machine.
"""

import json
import os
import subprocess
import threading
import time

# Seconds; shorter for whoever wants to see soon what a test waits for in vain.
LIMIT = float(os.environ.get("PORTMELD_TEST_LIMIT", "60"))


class ChildEnded(Exception):
    """The process ended while something more was expected of it."""


class Child:
    """One process; `arguments` and the keywords are those of subprocess.Popen."""

    def __init__(self, arguments, **options):
        self._changed = threading.Condition()
        self._answers = []
        self._errors = []
        self._open = 2
        self.process = subprocess.Popen(
            arguments,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            errors="replace",
            **options,
        )
        self._readers = [
            threading.Thread(target=self._read, args=pair, daemon=True)
            for pair in [(self.process.stdout, self._answers), (self.process.stderr, self._errors)]
        ]
        for reader in self._readers:
            reader.start()

    def send(self, line):
        """Gives it one order."""
        try:
            self.process.stdin.write(line + "\n")
            self.process.stdin.flush()
        except BrokenPipeError:
            raise ChildEnded(f"could not take '{line[:100]}'") from None

    def take(self, wanted=lambda answer: True, limit=LIMIT):
        """Takes the first answer for which `wanted` is true, leaving the others; waits for it."""
        taken = []

        def found():
            for index, answer in enumerate(self._answers):
                if wanted(answer):
                    taken.append(self._answers.pop(index))
                    return True
            return False

        self._wait(found, "an answer", limit)
        return taken[0]

    def take_within(self, seconds):
        """Takes the next answer; a TimeoutError when none comes in time. For what must not come."""
        return self.take(limit=seconds)

    def wait_for_error_line(self, text):
        """Waits until a line with this text was printed on standard error."""
        self._wait(lambda: any(text in line for line in self._errors), f"'{text}'")

    def error_lines(self):
        """What was printed on standard error so far."""
        with self._changed:
            return list(self._errors)

    def wait_for_end(self):
        """Waits until the process ended by itself and everything it printed was read."""
        status = self.process.wait(LIMIT)
        for reader in self._readers:
            reader.join(LIMIT)
        return status

    def close_input(self):
        """Tells it that no order will come any more."""
        self.process.stdin.close()

    def kill(self):
        """Ends it, if it still runs, and lets go of it."""
        if self.process.poll() is None:
            self.process.kill()
        self.wait_for_end()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            try:
                stream.close()
            except BrokenPipeError:
                pass

    def _wait(self, condition, what, limit=LIMIT):
        end = time.monotonic() + limit
        with self._changed:
            while not condition():
                if not self._open:
                    raise ChildEnded("\n".join([f"ended without {what}", *self._errors[-50:]]))
                if not self._changed.wait(end - time.monotonic()):
                    raise TimeoutError(f"waited {limit} s in vain for {what}")

    def _read(self, stream, lines):
        for line in stream:
            with self._changed:
                if lines is self._answers:
                    # Not strict: a device's text in it may hold control characters.
                    lines.append(json.loads(line, strict=False))
                else:
                    lines.append(line.rstrip("\n"))
                self._changed.notify_all()
        with self._changed:
            self._open -= 1
            self._changed.notify_all()
