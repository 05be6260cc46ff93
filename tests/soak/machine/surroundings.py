"""What the daemon has around it on the Linux machine: ports, mounts, two buses, a notification server, a
service manager, logind, clients, settings."""

import json
import os
import pathlib

from application_helpers import Peer, write_entry
from child import Child
from client import ClientProcess
from machine import Machine
from notification_helpers import NotificationServer
from private_bus import PrivateBus
from programs import Logind, built

HASTE = "300"
NOWHERE = "unix:path=/nonexistent/bus"
APPLICATIONS = ("org.quillon.folian", "org.norvane.picreel", "org.norvane.lumet")
CLIENTS = 50  # connections that a client process makes at a time


class Surroundings:
    """Everything is there, and the daemon takes events."""

    def __init__(self, folder):
        self.folder = folder
        self.root = folder / "machine" / "root"
        self.children = []
        self.buses = [PrivateBus(folder / "session"), PrivateBus(folder / "system")]
        self.machine = Machine()
        self._install()
        for application in APPLICATIONS:
            write_entry(self.root, application, Exec="/bin/true")
        self.screen = self._child(NotificationServer(self.buses[0]))
        self.manager = self._child(Peer(self.buses[0]))
        self.manager.be_service_manager()
        self.logind = self._child(Logind(self.buses[1]))
        self.daemon = self._child(
            Child(
                [*Machine.wrapper(), str(built("soak", "machine", "soak-on-linux"))],
                cwd=self.root.parent,
                env=self._environment(),
            )
        )
        self._mounter = self._child(self._start_mounter())
        self._connections = []

    def _child(self, child):
        self.children.append(child)
        return child

    def _install(self):
        """What the daemon finds below its root."""
        resources = pathlib.Path(os.environ["PORTMELD_BUILD_DIR"]).resolve() / "res"
        installed = self.root / "usr" / "apps" / "portmeld" / "res"
        for place, source in [
            (installed / "locale", resources / "po"),
            (installed / "images", resources / "images"),
            (self.root / "usr" / "bin" / "portmeld.interface.xml", resources / "portmeld.interface.xml"),
        ]:
            assert source.exists(), f"{source} was not built"
            place.parent.mkdir(parents=True, exist_ok=True)
            place.symlink_to(source)
        self.set("var/lib/portmeld/db/portmeld/log_level", "warning")

    def _environment(self):
        base = self.root.parent
        # A sanitizer opens its report too early for umockdev's library: it writes to standard error.
        options = {
            name: ":".join(o for o in os.environ[name].split(":") if not o.startswith("log_path="))
            for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS")
            if name in os.environ
        }
        return {
            "PATH": os.environ["PATH"],
            **options,
            **self.machine.environment(),
            "DBUS_SESSION_BUS_ADDRESS": self.buses[0].address,
            "DBUS_SYSTEM_BUS_ADDRESS": self.buses[1].address,
            "XDG_DATA_HOME": str(base / "data-home"),
            "XDG_DATA_DIRS": str(base / "data"),
            "XDG_CONFIG_HOME": str(base / "config-home"),
            "XDG_CACHE_HOME": str(base / "cache-home"),
            "HOME": str(base),
            "G_DEBUG": "fatal-criticals",
            "LC_ALL": "C.UTF-8",
            "PORTMELD_TEST_HASTE": HASTE,
            "PORTMELD_TEST_PORTS_HASTE": HASTE,
            # The run ends pop-ups itself: how fast the machine is must not matter.
            "PORTMELD_TEST_POPUP_PATIENCE": "1000",
            # What each thread keeps of what it has freed counts as in use.
            "GLIBC_TUNABLES": "glibc.malloc.tcache_count=0",
        }

    def _start_mounter(self):
        enter = ["nsenter", "-t", str(self.daemon.process.pid), "-m"]
        if os.geteuid() != 0:
            enter += ["-U", "--preserve-credentials"]
        script = pathlib.Path(__file__).with_name("mount_process.py")
        self.state()  # it runs, and so has its namespace
        return Child([*enter, "/usr/bin/python3", str(script)])

    # ---- the daemon

    def state(self):
        """What the daemon knows, when nothing is due any more."""
        self.daemon.send("state")
        return self.daemon.take()

    def memory(self):
        """Bytes that it holds, by kind; of no kind when they cannot be measured."""
        self.daemon.send("memory")
        return self.daemon.take()

    def descriptors(self):
        """How many descriptors it has open."""
        return len(os.listdir(f"/proc/{self.daemon.process.pid}/fd"))

    # ---- around it

    def set(self, key, value):
        """Writes a setting, at once and whole."""
        file = self.root / key
        file.parent.mkdir(parents=True, exist_ok=True)
        new = file.with_name(file.name + ".new")
        new.write_text(value + "\n")
        new.rename(file)

    def mount(self, node, file_name=None):
        """Mounts a file system; returns where."""
        point = str(self.folder / ("mount" + node.replace("/", "-")))
        self._order_mounter("mount", node, point, file_name)
        return point

    def umount(self, point):
        """Unmounts it."""
        self._order_mounter("umount", point)

    def _order_mounter(self, *words):
        self._mounter.send(json.dumps(words))
        self._mounter.take()

    def new_client(self):
        """A client that the bus has not seen before."""
        if not self._connections:
            self._connections = self._child(ClientProcess(self.buses[1].address, CLIENTS)).clients
        return self._connections.pop()

    def finish(self):
        """Ends the daemon, which must end well."""
        self.daemon.close_input()
        status = self.daemon.wait_for_end()
        assert status == 0, f"the daemon ended with status {status}"

    def kill(self):
        """Ends everything."""
        for child in reversed(self.children):
            child.kill()
        self.machine.close()
        for bus in self.buses:
            bus.stop()
