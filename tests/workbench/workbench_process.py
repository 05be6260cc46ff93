"""The workbench as a child process: keys go in, what it shows comes out. PORTMELD_BUILD_DIR names the
build folder; without it every test fails."""

import contextlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import time

TIME_LIMIT = 20

CALL = ["--dest", "com.norvane.portmeld", "--object-path", "/com/norvane/portmeld", "--method"]

EVENT = re.compile(r"^ *(\d+(?::\d\d)+)  (\S+) +(.*)$")


def program():
    """The program under test."""
    return str(pathlib.Path(os.environ["PORTMELD_BUILD_DIR"]) / "workbench" / "portmeld-workbench")


def terminal_form(*arguments):
    """The command line of the form for a terminal."""
    return [program(), "--terminal", *map(str, arguments)]


def environment(temporary, **more):
    """The environment of a run whose temporary files go to a folder of its own."""
    return {**os.environ, "TMPDIR": str(temporary), "TERM": "xterm", **more}


@contextlib.contextmanager
def temporary_folder():
    """A fresh folder with a short name, as addresses of sockets have to be short."""
    folder = tempfile.mkdtemp(prefix="wb-", dir="/tmp")
    try:
        yield pathlib.Path(folder)
    finally:
        shutil.rmtree(folder)


def until(condition, limit=TIME_LIMIT):
    """Waits until a condition holds; returns whether it did in time."""
    end = time.monotonic() + limit
    while time.monotonic() < end:
        if condition():
            return True
        time.sleep(0.01)
    return condition()


def bus_daemons(temporary):
    """Process ids of the bus daemons that were started with files in a folder."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        with contextlib.suppress(OSError):
            command = (entry / "cmdline").read_bytes()
            if b"dbus-daemon" in command and os.fsencode(temporary) in command:
                found.append(int(entry.name))
    return found


def blocks(text):
    """The events of a transcript: (subject, what was told, the lines below it)."""
    events = []
    for line in text.splitlines():
        event = EVENT.match(line)
        if event:
            events.append((event[2], event[3], []))
        elif events and line.startswith(" "):
            events[-1][2].append(line)
    return events


def signals(text):
    """The objects that the bus client heard, parsed."""
    return [
        json.loads("\n".join(lines))
        for subject, told, lines in blocks(text)
        if subject == "bus" and told.startswith("client 1 hears")
    ]


def launch(text):
    """The last launch of a transcript: (application, {key: value}), JSON values parsed."""
    _, told, lines = [block for block in blocks(text) if block[0] == "app"][-1]
    given = {}
    key = None
    for line in lines:
        line = line[15:]
        if line.startswith(" "):
            given[key] += line
        elif line.endswith(" ="):
            key = line[:-2]
            given[key] = ""
        else:
            key, _, given[key] = line.partition(" = ")
    if "play_list_data" in given:
        given["play_list_data"] = json.loads(given["play_list_data"])
    return told.partition(", ")[2].partition(", ")[0], given


def call(address, *method):
    """Calls a method from another process: (exit status, answer)."""
    done = subprocess.run(
        ["gdbus", "call", "--address", address, *CALL, *method],
        capture_output=True,
        text=True,
        timeout=20,
        check=False,
    )
    return done.returncode, done.stdout.strip() or done.stderr.strip()


class Workbench:
    """A run through pipes."""

    def __init__(self, *arguments, env=None):
        self._folders = contextlib.ExitStack()
        self.temporary = self._folders.enter_context(temporary_folder())
        self.process = subprocess.Popen(
            terminal_form(*arguments),
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            env=environment(self.temporary, **(env or {})),
        )
        self._bytes = b""
        self.errors = ""
        self._seen = 0
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        while chunk := os.read(self.process.stdout.fileno(), 65536):
            self._bytes += chunk

    @property
    def text(self):
        """All that was shown so far, as far as lines are complete."""
        return self._bytes[: self._bytes.rfind(b"\n") + 1].decode()

    def press(self, keys):
        """Presses keys, one after the other."""
        self.process.stdin.write(keys.encode())
        self.process.stdin.flush()

    def expect(self, pattern):
        """Waits for a text that was not expected before; returns the match."""
        expression = re.compile(pattern, re.MULTILINE)
        assert until(
            lambda: expression.search(self.text, self._seen) or self.process.poll() is not None
        ), self.story(f"no {pattern!r}")
        self._reader.join(0.05)
        match = expression.search(self.text, self._seen)
        assert match, self.story(f"no {pattern!r}")
        self._seen = match.end()
        return match

    def story(self, headline):
        """What to show of a run that went wrong."""
        return f"{headline} in\n{self.text[self._seen:]}\nshown before:\n{self.text[:self._seen]}"

    def settle(self):
        """Waits until all keys so far have had their effect."""
        self.press("~")
        self.expect("nothing is on that key")

    def address(self):
        """The address of the bus."""
        return re.search(r"^Bus address: (\S+)$", self.text, re.MULTILINE)[1]

    def finish(self):
        """Waits for the end; returns the exit status."""
        with contextlib.suppress(OSError):
            self.process.stdin.close()
        try:
            status = self.process.wait(TIME_LIMIT)
        except subprocess.TimeoutExpired as error:
            raise AssertionError(self.story("no end")) from error
        self._reader.join()
        self.errors = self.process.stderr.read().decode()
        return status

    def close(self):
        """Ends whatever is left."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.finish()
        self.process.stdout.close()
        self.process.stderr.close()
        self._folders.close()


def script(keys, *arguments, **more):
    """A whole run with these keys: (exit status, what it showed, its complaints)."""
    with temporary_folder() as temporary:
        done = subprocess.run(
            terminal_form(*arguments),
            input=keys.encode(),
            capture_output=True,
            env=environment(temporary, **more),
            timeout=TIME_LIMIT,
            check=False,
        )
        assert not list(temporary.iterdir()), "files were left behind"
        return done.returncode, done.stdout.decode(), done.stderr.decode()
