"""Who can fail, and how: what it is for each peer to be killed, to be stopped (SIGSTOP), to be restarted, and to
be well again."""

import os
import pathlib
import signal

import child
from application_helpers import Peer
from journal_helpers import Journal
from programs import Logind
from road import LAUNCHED, PLUGGED, PRESSED
from udevd import Udevd
from world import CLIENT, PLAYER

SERVER = "org.freedesktop.Notifications"
KILLED, STOPPED, RESTARTED = FAULTS = ("killed", "stopped", "restarted")
UDISKS = pathlib.Path(child.__file__).parents[1] / "linux" / "udisks_process.py"


class Failing:
    """One peer of a world. kill() and stop() are undone by recover(); restart() is both at once. `names` are
    those who cannot be spoken to meanwhile."""

    names = ()

    def __init__(self, world, step=None):
        self.world = world
        self.step = step
        self.how = None
        self.stopped = False

    def begin(self):
        """Starts it, where it is not there anyway."""

    def fail(self, how):
        """Is killed, stopped or restarted."""
        self.how = how
        if how == RESTARTED:
            self.restart()
        else:
            self.world.ill.update(self.names)
            {KILLED: self.kill, STOPPED: self.stop}[how]()

    def heal(self):
        """Is well again, if that is still to come."""
        if self.how != RESTARTED:
            self.recover()
        self.world.ill.difference_update(self.names)

    def restart(self):
        """Dies, and is back at once."""
        self.kill()
        self.recover()

    def _send(self, name, number):
        os.kill(self.world.peers[name].process.pid, number)
        self.stopped = number == signal.SIGSTOP


class Screen(Failing):
    """The notification server."""

    names = ("screen",)

    def kill(self):
        self.world.end("screen")
        self.world.wait_until_nobody_is(SERVER)

    def stop(self):
        self._send("screen", signal.SIGSTOP)

    def recover(self):
        if self.stopped:
            self._send("screen", signal.SIGCONT)
        else:
            self.world.start_screen()
            self.world.screen.next("GetCapabilities")


class UserManager(Failing):
    """The user's service manager, which starts applications."""

    names = ("manager",)

    def begin(self):
        # One that fails when it was asked has not answered before.
        if self.step == LAUNCHED:
            self.world.start_manager(answers=False)

    def kill(self):
        self.world.end("manager")

    def stop(self):
        self._send("manager", signal.SIGSTOP)

    def recover(self):
        if self.stopped:
            self._send("manager", signal.SIGCONT)
        else:
            self.world.start_manager()


class Application(Failing):
    """The player, which runs already and is asked over the bus."""

    names = ("player",)

    def begin(self):
        self.world.add("player", Peer(self.world.session)).be_application(
            PLAYER, "/" + PLAYER.replace(".", "/"), answers=False
        )

    def kill(self):
        self.world.end("player")

    def stop(self):
        self._send("player", signal.SIGSTOP)

    def recover(self):
        if self.stopped:
            self._send("player", signal.SIGCONT)
        else:
            self.begin()


class Disks(Failing):
    """UDisks2, which mounts what nobody else has mounted."""

    names = ("udisks",)

    def begin(self):
        # One that fails when it was asked has not answered before.
        self._start("hang" if self.step == PLUGGED else "ok")

    def _start(self, answer):
        disks = self._process(answer)
        assert disks.take() == "ready"
        self.world.add("udisks", disks)

    def _process(self, answer):
        address = self.world.system.address
        disks = child.Child(["/usr/bin/python3", str(UDISKS), address, answer])
        disks.hangs = answer == "hang"
        return disks

    def restart(self):
        """The next one stands by: the daemon asks again for some seconds, which pass fast here."""
        disks = self._process("ok")
        name = "org.freedesktop.UDisks2"
        client = self.world.client
        self.world.wait_for(
            lambda: len(client.call_bus("ListQueuedOwners", name, signature="(s)")[0]) == 2
        )
        self.world.add("udisks", disks)
        assert disks.take() == "ready"

    def kill(self):
        self.world.end("udisks")

    def stop(self):
        self._send("udisks", signal.SIGSTOP)

    def recover(self):
        if self.stopped:
            self._send("udisks", signal.SIGCONT)
        else:
            self._start("ok")


class LoginManager(Failing):
    """logind, which tells of sleep and shutdown."""

    def begin(self):
        self.world.add("logind", Logind(self.world.system))

    def kill(self):
        self.world.end("logind")

    def stop(self):
        self._send("logind", signal.SIGSTOP)

    def recover(self):
        if self.stopped:
            self._send("logind", signal.SIGCONT)
        else:
            self.begin()


class SessionBus(Failing):
    """The user's bus, with the notification server and the service manager on it."""

    names = ("screen", "manager")

    def begin(self):
        # A launch that was asked for is not answered before the bus fails.
        if self.step == LAUNCHED:
            self.world.start_manager(answers=False)

    def fail(self, how):
        # The news of the button is in its hands then.
        if self.step == PRESSED:
            self.world.session.halt()
            self.world.press(passes=False)
        super().fail(how)

    def kill(self):
        self.world.session.kill()
        self.world.end("screen")
        self.world.end("manager")

    def stop(self):
        self.world.session.halt()
        self.stopped = True

    def recover(self):
        if self.stopped:
            self.world.session.go_on()
            return
        self.world.session.start()
        self.world.start_manager()
        self.world.start_screen()
        self.world.screen.next("GetCapabilities")


class SystemBus(Failing):
    """The system bus. The daemon ends with it."""

    names = ("client",)

    def kill(self):
        lives = len(self.world.service.lives)
        self.world.system.kill()
        self.world.service.wait_for("ready", lives + 1)
        self.world.wait_until_it_takes_events()

    def stop(self):
        self.world.system.halt()
        self.stopped = True

    def recover(self):
        if self.stopped:
            self.world.system.go_on()
            return
        self.world.system.start()
        self.world.listen()


class DeviceEvents(Failing):
    """udevd, which tells of devices."""

    names = ("udevd",)

    def begin(self):
        self.world.add("udevd", Udevd(self.world.machine.root))

    def kill(self):
        self.world.peers["udevd"].stop()

    stop = kill

    def recover(self):
        self.world.peers["udevd"].go_on()


class JournalSocket(Failing):
    """journald, to which the daemon writes its lines."""

    def kill(self):
        self.world.journal.close()
        # At each step there is something to say.
        self.world.client.call("GetDeviceCount", CLIENT, -1)

    def stop(self):
        self.world.journal.close()
        self.world.journal = Journal(self.world.folder, reading=False)
        self.stopped = True

    def restart(self):
        """Nobody finds its socket missing: the service manager holds it."""
        before = self.world.journal
        folder = self.world.folder / "next"
        folder.mkdir()
        self.world.journal = Journal(folder)
        self.world.journal.folder.joinpath("socket").rename(before.folder / "socket")
        before.close()

    def recover(self):
        if self.stopped:
            self.world.journal.read()
        else:
            self.world.journal = Journal(self.world.folder)


class Daemon(Failing):
    """The daemon itself, which the service manager starts again."""

    def kill(self):
        self._end(lambda: self.world.daemon.process.kill())

    def stop(self):
        def hang():
            self.world.daemon.process.send_signal(signal.SIGSTOP)
            self.world.service.kill_when_it_hangs()

        self._end(hang)

    def restart(self):
        self._end(lambda: self.world.daemon.process.terminate())

    def recover(self):
        """It is back already."""

    def _end(self, how):
        lives = len(self.world.service.lives)
        how()
        self.world.service.wait_for("ready", lives + 1)
        self.world.listen()


