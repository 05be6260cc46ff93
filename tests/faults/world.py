"""A viewer's machine around the daemon: the service manager that keeps it running, both buses, and the peers
that a plug needs. Who fails, and how, is peers.py; what a plug is, road.py."""

import contextlib
import subprocess
import time

import child
from application_helpers import Peer, write_entry
from client import ClientProcess
from journal_helpers import Journal
from machine import Mounts
from notification_helpers import NotificationServer
from programs import Daemon
from road import LAUNCH, NOTICE, SIGNAL, is_notice
from service_manager import ServiceManager
from stick import NAME, NODE, Stick

PLAYER = "org.norvane.picreel"
BROWSER = "org.quillon.folian"

# The number by which the daemon knows its client.
CLIENT = 1

# What the service manager does for a daemon whose lines go to the journal.
WITH_JOURNAL = 'JOURNAL_STREAM=$(stat -L -c %d:%i /proc/self/fd/2) exec "$@"'


class World:
    """The machine; after begin(), everything on it is well. `surroundings` and `machine` are those of the
    fixtures; `preload` are more libraries for the daemon, `wrapper` is what else starts it."""

    def __init__(
        self,
        folder,
        root,
        surroundings,
        machine,
        session,
        system,
        env=None,
        journal=False,
        preload=(),
        wrapper=(),
    ):
        self.folder = folder
        self.root = root
        self.machine = machine
        self.session = session
        self.system = system
        self.stick = Stick(folder)
        self.journal = Journal(folder) if journal else None
        self.peers = {}  # what was started beside, by name
        self.ill = set()  # the names of those that cannot be spoken to
        self.seen = []  # what has come of plugs
        self.popup = None  # the last question that the viewer has seen and not answered
        self._clients = []
        self._surroundings = surroundings
        self._env = env or {}
        self._preload = preload
        self._wrapper = wrapper
        self.service = ServiceManager(self._start_life)
        # Mounts outlive the daemon: they belong to somebody who does nothing else.
        apart = machine.wrapper() if self.journal is None else self.journal.wrapper()
        self._keeper = subprocess.Popen([*apart, "cat"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.mounts = Mounts(self._keeper.pid, folder)
        self._keeper.stdin.write(b"ready\n")
        self._keeper.stdin.flush()
        self._keeper.stdout.readline()
        for application in (PLAYER, BROWSER):
            write_entry(root, application, Exec="/bin/true")

    def begin(self):
        """Starts everything."""
        self.start_screen()
        self.start_manager()
        self.service.begin()
        self.listen()

    # ---- the daemon

    @property
    def daemon(self):
        """The daemon's process of now."""
        return self.service.life

    def wait_until_it_takes_events(self):
        """Waits for the end of the time in which the daemon takes no USB event."""
        if self.journal is None:
            self.daemon.wait_until_it_takes_events()
        else:
            self.journal.take(lambda entry: "NULL == pMovieDir" in entry["MESSAGE"])

    def listen(self):
        """Waits for the daemon and becomes its client, as every program does that sees it come."""
        self.wait_until_it_takes_events()
        self._clients.append(ClientProcess(self.system.address))
        (self.client,) = self._clients[-1].clients
        self.client.listen_to_everything()
        if self.client.owner_of(self.client.destination) is None:
            self.client.wait_for_owner_change(self.client.destination)
        self.client.call("Connect", "test", CLIENT)
        self.client.call("RequesAll", CLIENT)
        self.client.news()

    def lines(self):
        """What all processes of the daemon have printed so far, or written to the journal of now."""
        if self.journal is not None:
            return [entry["MESSAGE"] for entry in self.journal.entries()]
        return [line for life in self.service.lives for line in life.error_lines()]

    def _start_life(self, env):
        logs = [] if self.journal is None else ["sh", "-c", WITH_JOURNAL, "sh"]
        surroundings = self._surroundings(
            self.session,
            self.system,
            {
                **self.machine.environment(),
                **self.stick.environment([*self._preload, self.machine.environment()["LD_PRELOAD"]]),
                **env,
                **self._env,
            },
        )
        # Who enters other mounts leaves his folder.
        place = ["env", "-C", str(self.root.parent)]
        return Daemon(self.root.parent, surroundings, [*self.mounts.enter, *self._wrapper, *place, *logs])

    def wait_for_line(self, text, after=0):
        """Waits until the daemon has printed a line with this text, after so many others."""
        end = time.monotonic() + child.LIMIT
        while not any(text in line for line in self.lines()[after:]):
            assert time.monotonic() < end, f"not said: {text}"
            time.sleep(0.005)

    # ---- what happens on the machine

    def plug(self):
        """Plugs the stick in; the daemon knows of it at the return, if it can."""
        before = len(self.lines())
        self.machine.plug(NAME)
        if "udevd" in self.ill:
            return
        if self.journal is None:
            self.wait_for_line("Device count=", before)
        else:
            self.wait_for(lambda: self.client.call("GetDeviceCount", CLIENT, -1) == [1])
        if "udisks" in self.peers and "udisks" not in self.ill and self.peers["udisks"].hangs:
            self.peers["udisks"].take()

    def mount(self):
        """The stick is mounted: by UDisks2 if it is there, and well, and asked; else by somebody. Returns
        where, or None."""
        if "udisks" in self.ill:
            return None
        if "udisks" in self.peers and not self.peers["udisks"].hangs:
            self.peers["udisks"].take()
        return self.stick.mount(self.mounts)

    def press(self, passes=True):
        """The viewer presses the first button of the question, if he sees one. The news of it does not pass
        a bus that hangs."""
        if self.popup is not None and "screen" not in self.ill:
            self.screen.order("press", self.popup["id"], self.popup["actions"][0], passes)
        self.popup = None

    def take_launch(self):
        """The player is asked to show the photo: as a program that runs already, or as one to be started."""
        if "player" in self.peers:
            self.peers["player"].call()
        else:
            unit, _, _ = self.manager.unit()
            assert unit.startswith(f"app-{PLAYER}-")
        self.seen.append(LAUNCH)

    def take_notice(self):
        """The viewer sees that the stick was removed."""
        self.screen.take(is_notice)
        self.seen.append(NOTICE)

    def take_signal(self):
        """The client hears of the removal."""
        ((signal, device),) = self.wait_for(self.client.news)
        assert (signal, device["Action"], device["DeviceName"]) == ("mm_device_action", 2, NODE)
        self.seen.append(SIGNAL)

    @staticmethod
    def wait_for(ask):
        """Asks the daemon again and again, which answers at once, until it has something to say."""
        end = time.monotonic() + child.LIMIT
        while not (answer := ask()):
            assert time.monotonic() < end, "the daemon has nothing to say"
        return answer

    # ---- the peers

    def start_screen(self):
        """Starts the notification server."""
        self.screen = self.add("screen", NotificationServer(self.session))

    def start_manager(self, answers=True):
        """Starts the user's service manager."""
        self.manager = self.add("manager", Peer(self.session))
        self.manager.be_service_manager(answers=answers)

    def add(self, name, process):
        """Takes over a process, which ends with the world at the latest."""
        self.end(name)
        self.peers[name] = process
        return process

    def end(self, name):
        """Ends a process at once, whatever state it is in."""
        if name in self.peers:
            self.peers.pop(name).kill()

    def wait_until_nobody_is(self, name):
        """Until the session's bus has seen the end of the process that owned a name, and told it."""
        ask = ["gdbus", "call", "--address", self.session.address, "--dest", "org.freedesktop.DBus"]
        ask += ["--object-path", "/", "--method", "org.freedesktop.DBus.NameHasOwner", name]
        self.wait_for(
            lambda: subprocess.run(ask, capture_output=True, check=True, timeout=60).stdout
            == b"(false,)\n"
        )

    def close(self):
        """Ends the daemon, well; who is left is ended by kill()."""
        self.stick.close()
        self.service.close()

    def kill(self):
        """Ends everything that still runs."""
        self.service.kill()
        for name in list(self.peers):
            self.end(name)
        for process in self._clients:
            process.kill()
        if self.journal is not None:
            with contextlib.suppress(OSError):  # it may have been closed by a test
                self.journal.close()
        self._keeper.communicate()
