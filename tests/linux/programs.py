"""The programs that the tests of the Linux machine drive, as processes: the probe of the contract."""

import os
import pathlib
import time
import urllib.parse

import child


def built(*name):
    """A program of the build under test."""
    program = pathlib.Path(os.environ["PORTMELD_BUILD_DIR"]).resolve().joinpath("tests", *name)
    assert program.is_file(), f"{program} was not built"
    return program


class Probe(child.Child):
    """Calls functions of the contract and tells what comes back."""

    def __init__(self, folder, environment, wrapper=()):
        self.folder = folder
        self._end_was_seen = False
        super().__init__(
            [*wrapper, str(built("linux", "platform-probe"))], cwd=folder, env=environment
        )

    def call(self, *words):
        """Gives one order and returns its result."""
        self.send(" ".join(urllib.parse.quote(str(word)) for word in words))
        answer = self.take(lambda line: "event" not in line)
        assert "error" not in answer, f"{words}: {answer['error']}"
        return answer["result"]

    def event(self, name, **wanted):
        """Waits for the next event of this name (and these members) and returns it."""
        return self.take(
            lambda line: line.get("event") == name
            and all(line.get(member) == value for member, value in wanted.items())
        )

    def events_so_far(self):
        """Takes all events that came until now; what the program had to say before this call was
        answered is among them."""
        self.call("settle")
        events = []
        with self._changed:
            events = [line for line in self._answers if "event" in line]
            self._answers[:] = [line for line in self._answers if "event" not in line]
        return events

    def see_end(self):
        """Waits until the program has ended; returns its exit status, or minus the signal."""
        self._end_was_seen = True
        return self.wait_for_end()

    def finish(self):
        """Ends the probe, unless the test saw its end, and checks that it ended well."""
        if not self._end_was_seen:
            if self.process.poll() is None:
                self.close_input()
            assert self.see_end() == 0, "\n".join(self.error_lines()[-50:])


class Logind(child.Child):
    """Tells everybody on the system bus of sleep and shutdown."""

    def __init__(self, system_bus):
        script = pathlib.Path(__file__).with_name("logind_process.py")
        super().__init__(["/usr/bin/python3", str(script), system_bus.address])
        assert self.take() == "ready"

    def tell(self, signal, value):
        """Sends PrepareForSleep or PrepareForShutdown."""
        self.send(f"{signal} {str(value).lower()}")
        self.take()

    def tell_until(self, signal, value, is_heard):
        """Sends it again and again until somebody has heard it, who may not be listening yet."""
        end = time.monotonic() + child.LIMIT
        self.tell(signal, value)
        while not is_heard():
            assert time.monotonic() < end, f"nobody heard {signal}"
            time.sleep(0.1)
            self.tell(signal, value)

    def close(self):
        """Leaves the bus."""
        self.close_input()
        self.kill()


class Daemon(child.Child):
    """The daemon on the Linux machine, its long timers shortened."""

    def __init__(self, folder, environment, wrapper=()):
        self.folder = folder
        self._end_was_seen = False
        super().__init__(
            [*wrapper, str(built("linux", "portmeld-on-linux"))],
            cwd=folder,
            env={"PORTMELD_TEST_HASTE": "100", **environment},
        )

    def has_logged(self, text):
        """Makes a question: whether the daemon has logged this by now."""
        return lambda: any(text in line for line in self.error_lines())

    def wait_until_it_takes_events(self):
        """Waits for the end of the time in which the daemon takes no USB event."""
        self.wait_for_error_line("NULL == pMovieDir")

    def see_end(self):
        """Waits until the daemon has ended; returns its exit status, or minus the signal."""
        self._end_was_seen = True
        return self.wait_for_end()

    def finish(self):
        """Ends the daemon, unless the test saw its end, and checks that it ended well."""
        if not self._end_was_seen:
            if self.process.poll() is None:
                self.close_input()
            assert self.see_end() == 0, "\n".join(self.error_lines()[-50:])
