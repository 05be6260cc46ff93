"""The tests' hold on the daemon: a process of its own, on a simulated TV that does as it is told.

A Daemon has a folder that it takes for the root of the file system. Each order is carried out, with
all that it causes on the TV, before the method returns; the TV's clock moves only with advance().
"""

import collections
import os
import pathlib
import urllib.parse

import child

PROGRAM = pathlib.Path("tests", "bus", "portmeld-under-test")
DESCRIPTION = pathlib.Path("res", "portmeld.interface.xml")
START_UP_DELAY = 30  # seconds

End = collections.namedtuple("End", "status calls breaches")


def from_environment(name):
    """A folder that the environment names."""
    assert name in os.environ, f"the environment variable {name} is not set"
    return pathlib.Path(os.environ[name])


def interface_description():
    """The interface description as it is installed."""
    return (from_environment("PORTMELD_SOURCE_DIR") / DESCRIPTION).read_text()


class Daemon(child.Child):
    """One process of the daemon. `description` is the text of its interface description, if any."""

    def __init__(self, folder, bus_address, description, arguments=()):
        program = from_environment("PORTMELD_BUILD_DIR") / PROGRAM
        assert program.is_file(), f"{program} was not built"
        self.folder = folder
        self._sticks = 0
        self._calls_seen = 0
        self._end_was_seen = False
        folder.mkdir()
        self.write_description(description)
        super().__init__(
            [str(program.resolve()), *arguments],
            cwd=folder,
            env={
                **os.environ,
                "DBUS_SYSTEM_BUS_ADDRESS": bus_address,
                "G_DEBUG": "fatal-criticals",
                "LC_ALL": "C.UTF-8",
            },
        )

    def write_description(self, description):
        """Puts an interface description where the daemon looks for it when it starts."""
        if description is not None:
            file = self.folder / "root" / "usr" / "bin" / "portmeld.interface.xml"
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(description)

    def wait_for_log(self, message):
        """Waits until the daemon logged this."""
        self.wait_for_error_line(message)

    def wait_for_name(self):
        """Waits until the daemon owns its name on the bus."""
        self.wait_for_log("com.norvane.portmeld NameAcquired.")

    def order(self, *words):
        """Gives one order and returns its result."""
        self.send(" ".join(urllib.parse.quote(word) for word in words))
        answer = self.take()
        assert "error" not in answer, f"{words}: {answer['error']}"
        return answer["result"]

    # ---- ports

    def stick_folder(self):
        """A fresh folder, to be the content of a stick."""
        self._sticks += 1
        folder = self.folder / f"stick{self._sticks}"
        folder.mkdir()
        return str(folder)

    def plug(self, folder=None, **properties):
        """Plugs in a stick that holds a folder; returns its id. None: it lacks the property."""
        return self.order("plug", folder or self.stick_folder(), *_words(properties))

    def plug_camera(self, **properties):
        """Plugs in a camera; returns its id."""
        return self.order("camera", *_words(properties))

    def insert(self, **properties):
        """Has a device there from now on, without an event; returns its id."""
        return self.order("insert", *_words(properties))

    def announce(self, device, action):
        """Sends an event about a device."""
        self.order("announce", str(device), action)

    def mount(self, device, folder=None):
        """Mounts a device that was inserted."""
        self.order("mount", str(device), folder or self.stick_folder())

    def pull(self, device):
        """Pulls a device out."""
        self.order("pull", str(device))

    # ---- everything else

    def advance(self, seconds):
        """Lets time pass on the TV."""
        self.order("advance", str(seconds))

    def start_up(self):
        """Lets the time pass in which the daemon does not take USB events yet."""
        self.advance(START_UP_DELAY)

    def set(self, key, kind, value):
        """Changes a setting; kind is "int" or "text"."""
        self.order("set", key, kind, str(value))

    def press(self, button):
        """Presses a button of the pop-up."""
        self.order("press", str(button))

    def set_running(self, application, running):
        """Has an application run or not."""
        self.order("running", application, str(int(running)))

    def popup(self):
        """The pop-up on the screen: {"type", "title", "body"}, or None."""
        return self.order("popup")

    def launches(self):
        """Every application that was launched so far: [{"app", "extra"}]."""
        return self.order("launches")

    def log(self):
        """Every log line so far, as "I message" with the first letter of its priority."""
        return ["?DIW"[line["priority"] - 2] + " " + line["message"] for line in self.order("log")]

    def new_calls(self):
        """The daemon's calls to the platform since the last look."""
        calls = self.order("calls")
        new = calls[self._calls_seen :]
        self._calls_seen = len(calls)
        return new

    def works_for_the_viewer(self):
        """Whether a daemon that has just started does what needs no bus: in its first 30 seconds it
        feeds the watchdog, and afterwards it offers a new stick and tells of its removal."""
        fed = self.order("watchdog")["feeds"]
        self.start_up()
        fed = self.order("watchdog")["feeds"] - fed
        stick = self.plug()
        offered = self.popup()["type"]
        self.pull(stick)
        return (fed, offered, self.popup()["type"]) == (6, 1, 2)

    def quit(self):
        """Ends the daemon in an orderly way; returns an End, with the calls since the last look."""
        self.order("quit")
        answer = self.take()
        return End(self.see_end(), answer["calls"][self._calls_seen :], answer["breaches"])

    def see_end(self):
        """Waits until the daemon has ended; returns its exit status, or minus the signal."""
        self._end_was_seen = True
        return self.wait_for_end()

    def finish(self):
        """Ends the daemon, unless the test saw its end, and checks that it did nothing wrong."""
        if not self._end_was_seen:
            end = self.quit()
            assert (end.status, end.breaches) == (0, [])


def _words(properties):
    """Properties as the process takes them; values may be bytes."""
    for name, value in properties.items():
        if value is None:
            yield name
        elif isinstance(value, bytes):
            yield name.encode() + b"=" + value
        else:
            yield f"{name}={value}"
