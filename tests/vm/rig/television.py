"""The machine as a whole: a guest on which the packages are installed, its ports, its screen, its user.

Users: kiosk, whose screen shows the pop-ups; viewer, a member of the group as applications are; guest, who
is not.
"""

import json
import pathlib
import tempfile
import time

from channel import PATIENCE, Channel
from guest import Guest, UdevEvents
from guest_programs import Clients, Screen, start_clients, start_screen
from qemu import Qemu
from usb_ports import UsbPorts

# So long after its start the daemon takes no event.
START_UP_SECONDS = 30


class Television:
    """One machine. `images` holds the guest ("image"), what sticks hold ("sticks") and saved machines.

    It stands still until boot() or resume() is called.
    """

    def __init__(self, images, disk=None, saved=None):
        self.images = pathlib.Path(images).resolve()
        image = self.images / "image"
        if saved is not None:
            disk = saved / "root.qcow2"
        self._saved = saved
        self.qemu = Qemu(image, disk or image / "root.img", incoming=saved is not None)
        # Before the guest runs, so that nothing is lost.
        self.guest = Guest(Channel(str(self.qemu.folder / "agent")))
        self.udev = UdevEvents(Channel(str(self.qemu.folder / "events")))
        self.ports = UsbPorts(self.qemu, self.images / "sticks")
        greetings = {}
        if saved is not None:
            greetings = json.loads((saved / "greetings.json").read_text())
        self.screen = Screen(self.qemu.folder / "screen", greetings.get("screen"))
        self._clients = Clients(self.qemu.folder / "clients", greetings.get("clients"))

    # ---- life

    def boot(self):
        """Switches the machine on."""
        self.qemu.run()
        self.guest.wait_until_ready()

    def resume(self):
        """Goes on where the machine was saved."""
        self.wait_for_programs()
        self.qemu.resume(self._saved)
        self.guest.do("true")

    def save(self):
        """Stops the machine for good, and returns the folder that it can be resumed from."""
        folder = pathlib.Path(tempfile.mkdtemp(prefix="saved-", dir=self.images))
        greetings = {"screen": self.screen.greeting, "clients": self._clients.greeting}
        (folder / "greetings.json").write_text(json.dumps(greetings))
        self.qemu.save(folder)
        return folder

    def close(self):
        """The machine is no more."""
        for program in (self.screen, self._clients):
            program.kill()
        self.qemu.stop()

    def sleep(self):
        """Sends the machine to sleep as its user does; returns when it sleeps.

        To idle, not to RAM: from there a kernel that no firmware has loaded does not find back.
        """
        keyboard = "/sys/devices/platform/i8042/serio0/power/wakeup"
        self.guest.do(f"echo s2idle >/sys/power/mem_sleep; echo enabled >{keyboard}; dmesg -n 7")
        self.guest.do("systemctl --no-block suspend")
        end = time.monotonic() + 60 * PATIENCE
        while "Suspending console" not in self.qemu.console():
            assert time.monotonic() < end, "the machine does not go to sleep"
            time.sleep(0.2)
        time.sleep(2)

    def wake(self):
        """Presses a key until the machine is awake; one that comes too early wakes nothing."""
        key = {"keys": [{"type": "qcode", "data": "shift"}]}
        end = time.monotonic() + 60 * PATIENCE
        while True:
            self.qemu.ask_plainly("send-key", key)
            time.sleep(1)
            if "PM: suspend exit" in self.qemu.console():
                break
            assert time.monotonic() < end, "the machine does not wake up"
        self.guest.wait_until("! systemctl -q is-active sleep.target")

    # ---- programs

    def start_programs(self):
        """Starts the screen and the clients in the guest."""
        start_screen(self.guest)
        start_clients(self.guest)
        self.wait_for_programs()

    def restart_clients(self):
        """New clients, after the bus of the old ones has gone."""
        self._clients.kill()
        self.guest.wait_until("! systemctl -q is-active vm-clients")
        self._clients = Clients(self.qemu.folder / "clients")
        start_clients(self.guest)
        self._clients.wait_until_there()

    def restart_screen(self):
        """A new screen, in a new session of the kiosk's."""
        self.screen.kill()
        self.guest.wait_until("! systemctl -q is-active vm-screen && test -S /run/user/1000/bus")
        self.screen = Screen(self.qemu.folder / "screen")
        start_screen(self.guest)
        self.screen.wait_until_there()

    def wait_for_programs(self):
        """Waits until the screen and the clients are on their buses."""
        self.screen.wait_until_there()
        self._clients.wait_until_there()

    @property
    def client(self):
        """A client of the daemon."""
        return self._clients.clients[0]

    @property
    def other_client(self):
        """A second one."""
        return self._clients.clients[1]

    # ---- the daemon

    def service(self, property_name):
        """A property of the daemon's unit, as text."""
        value = self.guest.do(f"systemctl show portmeld@kiosk --value -p {property_name}")
        return value.strip()

    def journal(self, *options):
        """What the daemon wrote to the journal, and others of it."""
        return self.guest.do(" ".join(["journalctl -b -o short-monotonic --no-pager", *options]))

    def wait_until_served(self):
        """Waits until the daemon has its name on the bus."""
        self.guest.wait_until("busctl status com.norvane.portmeld >/dev/null 2>&1", 120)

    def wait_until_listening(self):
        """Waits until the daemon that was started last takes events."""
        self.wait_until_served()
        started = int(self.service("ExecMainStartTimestampMonotonic")) / 1e6
        now = float(self.guest.do("cut -d' ' -f1 /proc/uptime"))
        time.sleep(max(started + START_UP_SECONDS + 3 - now, 0))

    def devices(self, client=None):
        """What the daemon lists, by device node, in its order."""
        client = client or self.client
        client.signals()
        client.call("RequesAll", 7 if client is self.client else 8)
        return {device["DeviceName"]: device for _, device in client.news()}

    # ---- around it

    def mounts(self):
        """Where the machine's devices are mounted: a dictionary of lists."""
        found = {}
        listed = self.guest.do("findmnt --real --list --json -o SOURCE,TARGET")
        for mount in json.loads(listed)["filesystems"]:
            found.setdefault(mount["source"], []).append(mount["target"])
        return found

    def launched(self, limit=60):
        """Waits for the next application that is started for the kiosk; returns what it told."""
        return json.loads(self.guest.do("cat /run/user/1000/launches", limit))
