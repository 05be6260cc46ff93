"""Pop-ups on a notification server as people have it: dunst, on a display of its own."""

import json
import os
import shutil
import subprocess
import sys
import time

import child
import client
import pytest

pytest_plugins = ["notification_helpers"]

SERVER = "org.freedesktop.Notifications"
CONFIGURATION = """
[global]
  origin = top-left
  offset = 0x0
  width = 400
  idle_threshold = 0
  mouse_left_click = do_action
  mouse_middle_click = close_current
  dmenu = {menu}
"""
EXPIRED, DISMISSED, CLOSED = 1, 2, 3


class Monitor(child.Child):
    """Sees what passes the bus."""

    def __init__(self, bus, rule):
        super().__init__([sys.executable, str(client.SCRIPT), bus.address, "1"])
        destination, path, _ = client.BUS
        order = {
            "destination": destination,
            "path": path,
            "interface": "org.freedesktop.DBus.Monitoring",
            "member": "BecomeMonitor",
            "signature": "(asu)",
            "arguments": [[rule], 0],
        }
        self.take()
        self.send(json.dumps({"peer": 0, "send": order}))
        serial = self.take(lambda line: "sent" in line)["sent"]
        self._message(reply_to=serial)

    def next(self, member):
        """Waits for a message with this member and returns what it carries."""
        return self._message(member=member)["body"]

    def _message(self, **wanted):
        line = self.take(lambda line: wanted.items() <= line.get("message", {}).items())
        return line["message"]


class Desktop:
    """A display, a notification server on it, and somebody with a mouse."""

    def __init__(self, bus, folder):
        for program in ("Xvfb", "dunst", "xdotool", "gdbus"):
            assert shutil.which(program), f"{program} is not installed"
        self.bus = bus
        self.processes = []
        self._folder = folder
        folder.mkdir()
        self._environment = {
            **{name: value for name, value in os.environ.items() if name != "WAYLAND_DISPLAY"},
            "DBUS_SESSION_BUS_ADDRESS": bus.address,
            "DISPLAY": self._start_display(),
            "HOME": str(folder),
            "XDG_RUNTIME_DIR": str(folder),
            "XDG_CONFIG_HOME": str(folder),
            "XDG_CACHE_HOME": str(folder),
        }
        self.dunst = self._start_server()

    def _start_display(self):
        """Starts an X server, which chooses a free number."""
        reading, writing = os.pipe()
        with os.fdopen(reading) as numbers:
            self._start(
                ["Xvfb", "-displayfd", str(writing), "-screen", "0", "800x600x24"]
                + ["-nolisten", "tcp", "-noreset"],
                pass_fds=[writing],
            )
            os.close(writing)
            number = numbers.readline().strip()
        assert number, "Xvfb did not start"
        return f":{number}"

    def _start_server(self):
        """Starts dunst, whose menu takes the line that holds the text in the file "choice", once."""
        menu = self._folder / "menu"
        menu.write_text(
            f'#!/bin/sh\ncd {self._folder} && grep -F -m 1 "$(cat choice)" && mv choice chosen\n'
        )
        menu.chmod(0o755)
        configuration = self._folder / "dunstrc"
        configuration.write_text(CONFIGURATION.format(menu=menu))
        server = self._start(
            ["dunst", "-config", str(configuration)], env=self._environment
        )
        self._run("gdbus", "wait", "--session", "--timeout", "60", SERVER)
        return server

    def _start(self, arguments, **options):
        self.processes.append(subprocess.Popen(arguments, stdin=subprocess.DEVNULL, **options))
        return self.processes[-1]

    def _run(self, *arguments):
        return subprocess.run(
            arguments, env=self._environment, timeout=60, check=True, capture_output=True, text=True
        ).stdout

    def click(self, button):
        """Clicks on the pop-up, as soon as there is one."""
        window = self._run("xdotool", "search", "--sync", "--onlyvisible", "--class", "dunst")
        self._run("xdotool", "mousemove", "--window", window.split()[0], "20", "20")
        self._run("xdotool", "click", str(button))

    def choose(self, label, title):
        """Opens the menu of the buttons and takes the one with this label of the pop-up with this title.

        A click may hit a pop-up that is just being replaced by that one; then it is repeated.
        """
        choice = self._folder / "choice"
        choice.write_text(f"#{label} ({title})")
        end = time.monotonic() + child.LIMIT
        while choice.exists():
            assert time.monotonic() < end, f"no menu has offered {label} of {title}"
            self.click(1)
            self._wait(lambda: not choice.exists(), 2)

    @staticmethod
    def _wait(condition, seconds):
        """Waits for what another program does to a file, at most so long."""
        end = time.monotonic() + seconds
        while not condition() and time.monotonic() < end:
            time.sleep(0.02)

    def displayed(self):
        """How many pop-ups are on the screen."""
        return int(self._run("dunstctl", "count", "displayed"))

    def finish(self):
        """Ends everything, the display last."""
        for process in reversed(self.processes):
            if process.poll() is None:
                process.terminate()
            process.wait(60)


@pytest.fixture
def desktop(start_bus, stage, tmp_path):
    """A desktop, with a probe that knows its notification server."""
    made = Desktop(start_bus(), tmp_path / "desktop")
    try:
        stage.begin(made.bus)
        stage.probe.event("bus-connected")
        yield made
        stage.probe.finish()
    finally:
        made.finish()


@pytest.fixture
def monitor(desktop):
    """Sees the calls and signals of the notification server."""
    seen = Monitor(desktop.bus, f"interface='{SERVER}'")
    yield seen
    seen.close_input()
    seen.kill()


@pytest.mark.parametrize(("label", "button"), [("Browse", 0), ("Cancel", 1)])
def test_a_button_that_is_chosen_with_the_mouse_is_told(stage, desktop, monitor, label, button):
    assert stage.show(title="Stick & <b>Co</b>") == 0
    desktop.choose(label, "Stick & <b>Co</b>")
    assert stage.probe.event("button") == {"event": "button", "type": 1, "button": button}
    monitor.next("NotificationClosed")
    assert stage.news() == []
    assert desktop.displayed() == 0


def test_a_pop_up_that_is_clicked_away_is_hidden(stage, desktop, monitor):
    assert stage.show() == 0
    desktop.click(2)
    stage.probe.event("hidden")
    assert monitor.next("NotificationClosed")[1] == DISMISSED
    assert stage.news() == []


@pytest.mark.parametrize("item_type", [1, 2])
def test_dunst_keeps_the_time_itself(stage, desktop, monitor, item_type):
    assert stage.show(type=item_type, timeout=1) == 0
    assert stage.probe.event("time-out")["type"] == item_type
    assert monitor.next("NotificationClosed")[1] == EXPIRED
    assert stage.news() == []
    assert desktop.displayed() == 0


def test_of_many_pop_ups_one_is_on_the_screen_and_its_button_counts(stage, desktop):
    assert stage.show_removal(title="Old", timeout=60) == 0
    for number in range(5):
        assert stage.show(title=f"Stick {number}") == 0
    stage.probe.event("hidden")
    stage.pass_bus()
    desktop.choose("Browse", "Stick 4")
    assert stage.probe.event("button")["button"] == 0
    assert stage.news() == []


def test_pop_ups_one_by_one_take_each_others_place(stage, desktop, monitor):
    for number in range(3):
        assert stage.show(title=f"Stick {number}") == 0
        monitor.next("Notify")
        stage.pass_bus()
        assert desktop.displayed() == 1
    assert stage.news() == []


def test_the_end_of_the_service_takes_the_pop_up_from_the_screen(stage, desktop, monitor):
    assert stage.show() == 0
    monitor.next("Notify")
    assert desktop.displayed() == 1
    stage.pass_bus()
    assert stage.probe.call("notification-close") == 0
    assert monitor.next("NotificationClosed")[1] == CLOSED
    assert desktop.displayed() == 0


def test_a_server_that_crashes_hides_its_pop_up(stage, desktop, monitor):
    assert stage.show() == 0
    monitor.next("Notify")
    desktop.dunst.kill()
    stage.lost("the notification server")
    assert stage.show() != 0
