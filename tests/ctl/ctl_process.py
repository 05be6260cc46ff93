"""The tests' hold on portmeldctl: a process that is run to its end, one that goes on, one on a terminal;
and a fake daemon. PORTMELD_BUILD_DIR names the build folder."""

import collections
import contextlib
import json
import os
import pathlib
import pty
import signal
import subprocess
import threading
import time

import child

PROGRAM = pathlib.Path("ctl", "portmeldctl")
WITHOUT_SETTINGS = pathlib.Path("tests", "ctl", "portmeldctl-without-settings")
FAKE = pathlib.Path(__file__).with_name("fake_daemon_process.py")

Done = collections.namedtuple("Done", "status out err")


def until(condition):
    """Waits for something that must come about; fails when it does not."""
    end = time.monotonic() + child.LIMIT
    while not condition():
        assert time.monotonic() < end, "waited in vain"
        time.sleep(0.01)


@contextlib.contextmanager
def stopped(process):
    """Has a process do nothing for a while."""
    process.send_signal(signal.SIGSTOP)
    try:
        yield
    finally:
        process.send_signal(signal.SIGCONT)


class Ctl:
    """How portmeldctl is started: in which folder, on which bus."""

    def __init__(self, folder, bus_address):
        build = pathlib.Path(os.environ["PORTMELD_BUILD_DIR"]).resolve()
        self.program = build / PROGRAM
        self.without_settings = build / WITHOUT_SETTINGS
        assert self.program.is_file(), f"{self.program} was not built"
        self.folder = folder
        self.environment = {
            **os.environ,
            "DBUS_SYSTEM_BUS_ADDRESS": bus_address,
            "G_DEBUG": "fatal-criticals",
            "LC_ALL": "C.UTF-8",
        }

    def __call__(self, *arguments, program=None, before=(), stdout=subprocess.PIPE):
        """Runs it to its end. `before`: a command that starts it."""
        done = subprocess.run(
            [*before, program or self.program, *arguments],
            cwd=self.folder,
            env=self.environment,
            stdin=subprocess.DEVNULL,
            stdout=stdout,
            stderr=subprocess.PIPE,
            timeout=child.LIMIT,
            check=False,
        )
        return Done(done.returncode, (done.stdout or b"").decode(), done.stderr.decode())

    def answer(self, *arguments):
        """What it prints when all goes well."""
        done = self(*arguments)
        assert (done.status, done.err) == (0, ""), done
        return done.out

    def json(self, *arguments):
        """What it answers in JSON, on one line."""
        text = self.answer("--json", *arguments)
        assert text.count("\n") == 1 and text.endswith("\n")
        return json.loads(text)

    def failure(self, *arguments, **options):
        """(exit status, message) of a run that must fail with one line."""
        done = self(*arguments, **options)
        assert (done.status != 0, done.out) == (True, "")
        assert done.err.startswith("portmeldctl: ") and done.err.endswith("\n"), done.err
        assert done.err.count("\n") == 1
        return done.status, done.err[len("portmeldctl: ") : -1]

    def on_terminal(self, *arguments, **environment):
        """The bytes that a terminal gets, line feeds as they were written; the exit status is 0."""
        ours, its = pty.openpty()
        with subprocess.Popen(
            [self.program, *arguments],
            cwd=self.folder,
            env={**self.environment, **environment},
            stdin=subprocess.DEVNULL,
            stdout=its,
            stderr=its,
        ) as process:
            os.close(its)
            received = b""
            with contextlib.suppress(OSError):  # how a terminal tells that nobody writes any more
                while part := os.read(ours, 65536):
                    received += part
            os.close(ours)
            assert process.wait(child.LIMIT) == 0, received
        return received.replace(b"\r\n", b"\n")


class Running:
    """A portmeldctl that goes on; its lines can be waited for."""

    def __init__(self, ctl, arguments, before=()):
        self._lines = []
        self._changed = threading.Condition()
        self.process = subprocess.Popen(
            [*before, ctl.program, *arguments],
            cwd=ctl.folder,
            env=ctl.environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
        )
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def take(self):
        """The next line; waits for it."""
        with self._changed:
            assert self._changed.wait_for(lambda: self._lines, child.LIMIT), "no line came"
            return self._lines.pop(0)

    def end(self, number):
        """Sends a signal; see finish()."""
        self.process.send_signal(number)
        return self.finish()

    def finish(self):
        """Waits for its end: (exit status, lines that nobody took, standard error)."""
        status = self.process.wait(child.LIMIT)
        self._reader.join(child.LIMIT)
        return Done(status, self._lines, self.process.stderr.read())

    def kill(self):
        """Ends it, if it still runs, and lets go of it."""
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self._reader.join(child.LIMIT)
        self.process.stdout.close()
        self.process.stderr.close()

    def _read(self):
        for line in self.process.stdout:
            with self._changed:
                self._lines.append(line.rstrip("\n"))
                self._changed.notify_all()


class FakeDaemon:
    """Owns the daemon's name and sends `texts` as devices to who asks; see its script. `description` is
    the file of an interface description other than the daemon's."""

    def __init__(self, address, texts, intruder=False, description=None):
        texts = [text if isinstance(text, str) else json.dumps(text) for text in texts]
        if description is None:
            description = pathlib.Path(
                os.environ["PORTMELD_SOURCE_DIR"], "res", "portmeld.interface.xml"
            )
        role = "intruder" if intruder else "alone"
        self.process = subprocess.Popen(
            ["/usr/bin/python3", FAKE, description, address, role, *texts],
            stdout=subprocess.PIPE,
            text=True,
        )
        assert self.process.stdout.readline() == "ready\n"

    def kill(self):
        """Ends it."""
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()


@contextlib.contextmanager
def calls_seen(address):
    """Gives a function that waits until a method is called on a bus."""
    with subprocess.Popen(
        ["dbus-monitor", "--address", address, "--profile"], stdout=subprocess.PIPE, text=True
    ) as monitor:

        def wait_for(method):
            for line in monitor.stdout:
                if line.startswith("mc\t") and line.rstrip("\n").endswith(f"\t{method}"):
                    return
            raise AssertionError(f"{method} was not called")

        try:
            while "NameLost" not in monitor.stdout.readline():
                pass  # from then on it is a monitor
            yield wait_for
        finally:
            monitor.kill()
