"""Programs in the guest that the tests speak with: the kiosk's screen, and clients of the daemon.

They are those of the other suites, put into the guest and started there as a service, with a port that
leads to the host as their input and output.
"""

import json
import pathlib
import shlex

import child
import client

HERE = pathlib.Path(__file__).resolve().parent
RELAY = HERE / "relay.py"
SCREEN = HERE.parents[1] / "linux" / "notification_peer.py"
PROGRAMS = "/usr/local/lib/portmeld-tests"
CAPABILITIES = {"capabilities": ["actions", "body"], "inhibited": False}
SESSION_BUS = "unix:path=/run/user/1000/bus"
SYSTEM_BUS = "unix:path=/run/dbus/system_bus_socket"


def relay(socket, greeting=None):
    """The arguments of the host's end."""
    greetings = [] if greeting is None else [json.dumps(greeting)]
    return ["/usr/bin/python3", str(RELAY), str(socket), *greetings]


def start(guest, port, user, program, *arguments):
    """Starts a program in the guest that speaks on a port."""
    device = f"/dev/virtio-ports/{port}"
    guest.do(
        shlex.join(
            [
                *("systemd-run", "--quiet", "--collect", f"--unit=vm-{port}", f"--uid={user}"),
                *("--property", f"StandardInput=file:{device}"),
                *("--property", f"StandardOutput=file:{device}"),
                *("--property", "StandardError=journal"),
                *("/usr/bin/python3", f"{PROGRAMS}/{pathlib.Path(program).name}", *arguments),
            ]
        )
    )


def start_screen(guest):
    """Starts the notification server of the kiosk's session."""
    start(guest, "screen", "kiosk", SCREEN, SESSION_BUS, json.dumps(CAPABILITIES))


def start_clients(guest):
    """Starts two clients of the system bus, of a user in the group."""
    start(guest, "clients", "viewer", client.SCRIPT, SYSTEM_BUS, "2")


def is_popup(said):
    """Whether the screen tells of a pop-up."""
    return isinstance(said, dict) and said.get("call") == "Notify"


class Screen(child.Child):
    """What the viewer sees and presses. `greeting` is what the server said when it was started."""

    def __init__(self, socket, greeting=None):
        super().__init__(relay(socket, greeting))
        self.greeting = None

    def wait_until_there(self):
        """Waits until the server has the bus's ear."""
        self.greeting = self.take(lambda said: "unique_name" in said)

    def popup(self):
        """Waits for the next pop-up."""
        return self.take(is_popup)

    def question(self):
        """Waits for the next pop-up with buttons, that of a new device."""
        return self.take(lambda said: is_popup(said) and said["actions"])

    def notice(self):
        """Waits for the next pop-up without buttons, that of a removed device."""
        return self.take(lambda said: is_popup(said) and not said["actions"])

    def stays_empty(self, seconds=6):
        """True when no pop-up comes within this time; by default long enough for a mount."""
        return self.popup_within(seconds) is None

    def popup_within(self, seconds):
        """The next pop-up, or None."""
        try:
            return self.take(is_popup, limit=seconds)
        except TimeoutError:
            return None

    def popups_so_far(self):
        """The pop-ups that have come by now."""
        popups = []
        while popup := self.popup_within(1):
            popups.append(popup)
        return popups

    def press(self, popup, label):
        """Presses the button of a pop-up that is labelled so."""
        actions = popup["actions"]
        key = actions[actions.index(label, 1) - 1]
        self._order("press", popup["id"], key)

    def wait_for_close(self, popup):
        """Waits until the daemon has closed a pop-up."""
        self.take(lambda said: (said.get("call"), said.get("id")) == ("CloseNotification", popup["id"]))

    def hide(self, popup):
        """The viewer closes a pop-up."""
        self._order("close", popup["id"], 2)

    def _order(self, name, *arguments):
        self.send(json.dumps([name, *arguments]))
        self.take(lambda said: said.get("done") == name)


class Clients(client.ClientProcess):
    """Two clients of the daemon, "player" and "browser"."""

    def __init__(self, socket, greeting=None):
        # Those of the parent are started where the test runs.
        child.Child.__init__(self, relay(socket, greeting))
        self.greeting = None
        self.clients = []

    def wait_until_there(self):
        """Waits until both are on the bus."""
        self.greeting = self.take(lambda said: isinstance(said, list))
        names = enumerate(self.greeting)
        self.clients = [client.Client(self, number, name) for number, name in names]
