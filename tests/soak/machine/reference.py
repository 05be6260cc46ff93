"""The daemon once more, small: what it knows on a Linux machine and which pop-ups it shows, written down from
the description of its behaviour and sharing nothing with its code."""

import dataclasses
import itertools

STORAGE = 8
CAMERA = 6
UNCOUNTED = 99
# Of each language that a run changes between: what is said of a device, and on the buttons.
TEXTS = {
    "en": {"connected": "New device connected: ", "browse": "Browse", "play": "Play", "cancel": "Cancel"},
    "de_DE": {
        "connected": "Neues Gerät angeschlossen: ",
        "browse": "Durchsuchen",
        "play": "Wiedergeben",
        "cancel": "Abbrechen",
    },
    "fr": {
        "connected": "Nouvel appareil connecté\u00a0: ",
        "browse": "Parcourir",
        "play": "Lire",
        "cancel": "Annuler",
    },
    "ja": {
        "connected": "新しいデバイスが接続されました：",
        "browse": "参照",
        "play": "再生",
        "cancel": "キャンセル",
    },
}
COUNTERS = {0: "fat", 1: "exFat", 2: "ext4", 3: "ntfs"}


@dataclasses.dataclass(frozen=True)
class Device:
    """A device at the ports."""

    key: str
    usb_class: int
    file_system: int
    product: str
    ids: tuple  # vendor, product, serial
    mountpath: str = ""


@dataclasses.dataclass(eq=False)
class Record:
    """A listed device."""

    number: int
    device: Device = None
    display_name: str = ""
    index: int = 0
    announced: bool = False


class Reference:
    """The daemon. `popups` collects what it shows: (title, buttons)."""

    def __init__(self):
        self.ports = []  # devices, in the order of coming
        self.devices = []  # records, newest first
        self.counters = dict.fromkeys([*COUNTERS.values(), "cameras"], 0)
        self.current = self.displayed = None
        self.activated = True
        self.kind = -1
        self.notice = None
        self.scanned = ""
        self.distracted = False
        self.language = "en"
        self.clients = {}  # id -> unique name, in the order of registration
        self.files = {}  # mount path -> the media file there
        self.popups = []
        self.on_screen = None  # "question" or "notice"
        self._numbers = itertools.count(1)

    # ---- list

    def _find(self, key):
        return next((record for record in self.devices if record.device.key == key), None)

    def _fill(self, record, device):
        record.device = device
        self._name(record)

    def _name(self, record):
        product = record.device.product
        used = {
            other.index
            for other in self.devices
            if other.device.product == product and other.device.key != record.device.key
        }
        record.display_name = product
        index = next(number for number in itertools.chain([0], itertools.count(2)) if number not in used)
        if used and index:
            record.index = index
            record.display_name += f"({index}&#x202d;)"

    def _add(self, device):
        record = self._find(device.key)
        if record:
            self._fill(record, device)
            return record
        record = Record(next(self._numbers))
        self._fill(record, device)
        counter = COUNTERS.get(device.file_system)
        if counter:
            self.counters[counter] += 1
        if device.usb_class == CAMERA:
            self.counters["cameras"] += 1
        self.devices.insert(0, record)
        return record

    def _enumerate_if_empty(self):
        if not self.devices:
            for usb_class in (STORAGE, CAMERA):
                for device in self.ports:
                    if device.usb_class == usb_class:
                        self._name(self._add(device))

    # ---- ports

    def plug(self, device):
        """A device comes; one that is mounted already mounts a moment later."""
        self.ports.append(device)
        self._enumerate_if_empty()
        if device.usb_class == CAMERA:
            self._connected(device)
            return
        self._add(dataclasses.replace(device, mountpath="")).announced = True
        if device.mountpath:
            self._mounted(device)

    def mount(self, key, mountpath):
        """Its file system is mounted."""
        device = self._at_ports(key, mountpath)
        self._enumerate_if_empty()
        self._mounted(device)

    def unmount(self, key):
        """Its file system is mounted no more, of which the daemon hears nothing."""
        self._at_ports(key, "")

    def _at_ports(self, key, mountpath):
        place = next(place for place, device in enumerate(self.ports) if device.key == key)
        self.ports[place] = dataclasses.replace(self.ports[place], mountpath=mountpath)
        return self.ports[place]

    def _mounted(self, device):
        record = self._find(device.key)
        if record and record.announced:
            record.announced = False
            self._connected(device)

    def _connected(self, device):
        record = self._add(device)
        listed = len(self.devices)
        if not self.activated:
            return
        self.current = record
        self.kind = 1
        self._offer("browse")
        file_name = self.files.get(device.mountpath)
        if device.usb_class == STORAGE and listed == 1 and file_name:
            self.kind = 0
            self.scanned = file_name
            self._offer("play")

    def pull(self, key):
        """A device goes; returns what each client is told: (action, key)."""
        device = next(device for device in self.ports if device.key == key)
        self.ports.remove(device)
        record = self._find(key)
        self._tell_removal(record.device.product if record else device.product)
        if record is None:
            return []
        counter = COUNTERS.get(record.device.file_system)
        if counter and self.counters[counter] > 0:
            self.counters[counter] -= 1
        if record.device.usb_class == CAMERA:
            self.counters["cameras"] -= 1
        self.devices.remove(record)
        if self.current is record:
            self.current = None
        return [(2, key)]

    # ---- pop-ups

    def _offer(self, button):
        if self.distracted or self.current is None:
            return
        if button == "browse":
            same = self.displayed and self.displayed.device.ids == self.current.device.ids
            if same:
                return
            self.displayed = self.current
        title = self.text("connected") + self.current.device.product
        self._show("question", title, [self.text(button), self.text("cancel")])

    def text(self, name):
        """A text in the language of the menu."""
        return TEXTS[self.language][name]

    def _tell_removal(self, name):
        if self.distracted:
            return
        shown = self.notice is None and name != ""
        if shown:
            self.notice = name
        self.displayed = None
        if shown:
            self._show("notice", name, [])

    def tell_media_server(self, name):
        """A media server of the network went."""
        self._tell_removal(name)

    def _show(self, kind, title, buttons):
        replaced = self.on_screen
        self.on_screen = kind
        self.popups.append((title, buttons))
        if replaced == "notice":
            # Its end is told once the screen shows the next; a notice that this hides is none.
            self.hidden()

    def hidden(self):
        """The viewer, or the server, took the pop-up away."""
        self.notice = None
        self.displayed = None

    def timed_out(self, kind):
        """Nobody answered."""
        if kind == "notice":
            self.notice = None
        self.displayed = None

    def launched(self):
        """The application that the first button launches, or None."""
        if self.kind == 0:
            return "org.norvane.picreel"
        if len(self.devices) == 1:
            return "org.quillon.folian" if self.current else None
        return "org.norvane.lumet" if self.current and self.activated and not self.distracted else None

    # ---- power and bus

    def power_off(self):
        """The TV goes off."""
        self.activated = False

    def wake_up(self):
        """The list is dropped; the activation comes by itself."""
        self.devices = []
        self.activated = True

    def request_all(self):
        """What the asking client is told: (action, key) of each."""
        self._enumerate_if_empty()
        return [(1, record.device.key) for record in self.devices]

    def total(self):
        """What a client that asks for any number gets."""
        return sum(self.counters.values())
