"""The guest from inside: commands, files, and the events of its udev."""

import base64
import pathlib
import threading
import time

from channel import PATIENCE, Silent


class Failed(Exception):
    """A command in the guest ended with another status than 0."""


class Guest:
    """Runs commands as the guest's root through the agent there."""

    def __init__(self, channel):
        self._channel = channel

    def wait_until_ready(self):
        """Waits for the agent of a guest that starts."""
        assert self._channel.hear(180) == {"ready": True}

    def run(self, command, limit=60):
        """Runs a command for the shell; returns (status, both outputs in one)."""
        answer = self.ask({"run": command, "limit": limit * PATIENCE}, limit + 15)
        return answer["status"], answer["output"]

    def do(self, command, limit=60):
        """Runs a command that must end well; returns what it printed."""
        status, output = self.run(command, limit)
        if status != 0:
            raise Failed(f"status {status}: {command}\n{output}")
        return output

    def wait_until(self, condition, limit=60):
        """Waits until a command ends well, of which no event tells; returns what it printed then."""
        return self.do(f"until {condition}; do sleep 0.2; done", limit)

    def put(self, source, path, mode=0o644):
        """Copies a file of the host."""
        content = base64.b64encode(pathlib.Path(source).read_bytes()).decode()
        answer = self.ask({"write": path, "mode": mode, "content": content}, 60)
        assert answer == {"status": 0}

    def ask(self, order, seconds):
        """Gives the agent an order."""
        self._channel.say(order)
        return self._channel.hear(seconds)


class UdevEvent(dict):
    """An event's properties; `at` is when it came, by the host's clock."""

    def __init__(self, at):
        super().__init__()
        self.at = at


class UdevEvents:
    """What udev in the guest tells, once it has applied its rules."""

    def __init__(self, channel):
        self._channel = channel
        self._events = []
        self._changed = threading.Condition()
        threading.Thread(target=self._read, daemon=True).start()

    def wait_for(self, action, subsystem, since=0.0, seconds=60, **properties):
        """Waits for an event with these properties that came after a moment of the host's clock."""
        wanted = {"ACTION": action, "SUBSYSTEM": subsystem, **properties}

        def found():
            for event in self._events:
                if event.at >= since and wanted.items() <= event.items():
                    return event
            return None

        with self._changed:
            event = self._changed.wait_for(found, seconds * PATIENCE)
        assert event is not None, f"no such event of udev: {wanted}"
        return event

    def _read(self):
        event = None
        try:
            while True:
                line = self._channel.line()
                name, equals, value = line.partition("=")
                if line.startswith("UDEV "):
                    event = UdevEvent(time.monotonic())
                elif event is not None and equals:
                    event[name] = value
                elif event is not None and not line:
                    with self._changed:
                        self._events.append(event)
                        self._changed.notify_all()
                    event = None
        except (OSError, Silent):
            pass  # the machine is stopped
