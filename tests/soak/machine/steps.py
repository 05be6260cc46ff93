"""What can happen on the Linux machine, one step at a time: each is done to the machine and to the reference,
and then both are compared."""

import dataclasses
import time

from comparison import differences
from reference import CAMERA, TEXTS, Reference
from sockets import DISK_SOCKETS, DISKS, LETTERS, Socket

LIMIT = 20  # seconds in which the daemon must have become what it ought to be
PHOTO = "holiday.jpg"
EXPIRED, DISMISSED = 1, 2  # reasons of a notification server
IDS = (-1, 0, 1, 2, 3, 1_000_000)


class Steps:
    """All steps, with what they need to know between them."""

    def __init__(self, surroundings):
        self.around = surroundings
        self.reference = Reference()
        self.cycles = 0
        self._sockets = [Socket(surroundings.machine, place, DISKS) for place in range(DISK_SOCKETS)]
        self._sockets.append(Socket(surroundings.machine, DISK_SOCKETS, ["mtp"]))
        self._sockets.append(Socket(surroundings.machine, DISK_SOCKETS + 1, ["kbd"]))
        self._mounted = {}  # node -> where
        self._clients = {}  # unique name -> the client that is still there
        self._places = {}  # number of a record -> where the daemon keeps it
        self._signals = []  # (unique name, action, key) that clients must hear
        self._launch = None
        self._popup = None  # the last one, while it is on the screen
        self._music = 0
        self._servers = 0
        self._is_off = False
        self._choices = [
            (30, self._plug),
            (20, self._mount),
            (34, self._pull),
            (3, self._unmount),
            (8, self._press),
            (12, self._end_popup),
            (3, self._distract),
            (3, self._tell_of_media_server),
            (3, self._change_language),
            (3, self._power),
            (18, self._call),
            (4, self._music_call),
            (4, self._leave),
        ]
        self._wait_until(lambda: self.around.state()["activated"], "the start-up time is over")
        self.reference.activated = True
        # Neither a device nor a mount, a client, a pop-up or a launch has one of its own.
        self._descriptors = self.around.descriptors()

    # ---- running

    def step(self, chance):
        """One step, drawn at random; returns what was done, in words."""
        weights, steps = zip(*self._choices)
        (step,) = chance.choices(steps, weights)
        return f"{step.__name__.strip('_')}: {step(chance)}"

    def resting(self):
        """The steps after which nothing is left."""
        yield self._end_distraction
        yield lambda: self._set_language("en")
        if self._is_off:
            yield self._wake_up
        for socket in self._sockets:
            if socket.occupied:
                yield lambda socket=socket: self._take_out(socket)
        yield self._dismiss
        yield self._disconnect_everybody
        yield self._clear_music
        # The first drops what is listed, the second frees what was dropped.
        yield self._wake_up
        yield self._wake_up

    def sources(self, wanted):
        """The sources of the main loop when the daemon is at rest; waits a moment for what is wanted. Between
        two rests there are as many as there are calls, scans and pop-ups on their way."""
        end = time.monotonic() + (1 if wanted is None else 3)
        while True:
            sources = self.around.state()["sources"]
            if sources == wanted or time.monotonic() > end:
                return sources
            time.sleep(0.05)

    def compare(self):
        """Waits until the daemon is as it ought to be; an AssertionError says what it is instead."""
        for title, buttons in self.reference.popups:
            try:
                popup = self.around.screen.take(lambda line: line.get("call") == "Notify", limit=LIMIT)
            except TimeoutError:
                raise AssertionError(f"no pop-up '{title}' came; {self._differences()}") from None
            labels = popup["actions"][1::2]
            assert popup["title"] == title, f"'{title}' expected on the screen, {popup['title']!r} found"
            assert labels == buttons, f"buttons {buttons} expected, {labels} found"
            self._popup = popup
        self.reference.popups = []
        self._wait_until(lambda: not self._differences(), lambda: f"no more: {self._differences()}")
        self._compare_signals()
        if self._launch:
            name, _, _ = self.around.manager.unit()
            started = name.removeprefix("app-").rsplit("-", 1)[0]
            assert started == self._launch, f"{self._launch} expected to be launched, {started} found"
            self._launch = None
        strays = self.around.manager.calls_so_far() + self.around.screen.calls_so_far("Notify")
        assert not strays, f"not expected: {strays}"
        # A scan that nobody waits for has its folder open for a moment.
        self._wait_until(
            lambda: self.around.descriptors() == self._descriptors,
            lambda: f"{self._descriptors} descriptors; there are {self.around.descriptors()}",
        )

    def _compare_signals(self):
        heard = []
        for name in {name for name, _, _ in self._signals}:
            for _, device in self._clients[name].news():
                heard.append((name, device["Action"], device.get("DeviceKey")))
        expected, self._signals = sorted(self._signals), []
        assert sorted(heard) == expected, f"signals {expected} expected, {sorted(heard)} found"

    @staticmethod
    def _wait_until(is_so, what):
        end = time.monotonic() + LIMIT
        while not is_so():
            assert time.monotonic() < end, f"in vain waited for: {what() if callable(what) else what}"
            time.sleep(0.002)

    def _differences(self):
        return differences(self.reference, self.around.state(), self._places)

    # ---- ports

    def _plug(self, chance):
        free = [socket for socket in self._sockets if not socket.occupied]
        if not free:
            return "everything is occupied"
        socket = chance.choice(free)
        name = chance.choice(socket.which)
        is_mounted = chance.random() < 0.3
        if is_mounted and socket.place < DISK_SOCKETS:
            node = f"/dev/sd{LETTERS[socket.place]}1"
            self._mount_node(chance, node)
        for device in socket.plug(name):
            self.reference.plug(
                dataclasses.replace(device, mountpath=self._mounted.get(device.key, ""))
            )
        return f"{name} at {socket.place} {'mounted' if is_mounted else ''}"

    def _mount_node(self, chance, node):
        file_name = PHOTO if chance.random() < 0.5 else None
        point = self.around.mount(node, file_name)
        self.reference.files[point] = file_name
        self._mounted[node] = point
        return point

    def _mount(self, chance):
        nodes = [
            device.key
            for socket in self._sockets
            for device in socket.devices
            if device.usb_class != CAMERA and device.key not in self._mounted
        ]
        if not nodes:
            return "nothing to mount"
        node = chance.choice(nodes)
        self.reference.mount(node, self._mount_node(chance, node))
        return node

    def _unmount(self, chance):
        plugged = {device.key for socket in self._sockets for device in socket.devices}
        nodes = sorted(plugged & self._mounted.keys())
        if not nodes:
            return "nothing to unmount"
        node = chance.choice(nodes)
        self.around.umount(self._mounted.pop(node))
        self.reference.unmount(node)
        return node

    def _pull(self, chance):
        if self._is_off:
            return self._wake_up()  # until then removals are held back
        occupied = [socket for socket in self._sockets if socket.occupied]
        return self._take_out(chance.choice(occupied)) if occupied else "nothing to pull"

    def _take_out(self, socket):
        if socket.devices and not self.reference.devices:
            self._have_listed()
        # What is below goes first, and what is told is told when the disk goes: in order of coming.
        order = [port.key for port in self.reference.ports]
        devices = sorted(socket.pull(), key=lambda device: order.index(device.key))
        for device in devices:
            for action, key in self.reference.pull(device.key):
                self._tell_everybody(action, key)
        for node in [node for node in self._mounted if self._is_at(node, socket)]:
            self.around.umount(self._mounted.pop(node))
        self.cycles += 1
        return f"from {socket.place}"

    def _have_listed(self):
        """Some time after a wake-up each partition goes at a time of its own. Of one that is not listed the
        state does not tell when it is gone."""
        client = self.around.new_client()
        self._clients[client.unique_name] = client
        self.reference.clients[1] = client.unique_name
        self._signals += [(client.unique_name, *told) for told in self.reference.request_all()]
        assert client.call("RequesAll", 1) == []

    @staticmethod
    def _is_at(node, socket):
        return socket.place < DISK_SOCKETS and node.startswith(f"/dev/sd{LETTERS[socket.place]}")

    # ---- viewer

    def _press(self, chance):
        if not self._popup or not self._popup["actions"]:
            return "no question"
        button = chance.choice([0, 0, 1])
        if button == 0:
            self._launch = self.reference.launched()
        self.around.screen.order("press", self._popup["id"], self._popup["actions"][2 * button])
        self._gone()
        return str(button)

    def _end_popup(self, chance):
        if not self._popup:
            return "no pop-up"
        reason = chance.choice([EXPIRED, DISMISSED])
        if reason == EXPIRED:
            self.reference.timed_out("question" if self._popup["actions"] else "notice")
        else:
            self.reference.hidden()
        self.around.screen.order("close", self._popup["id"], reason)
        self._gone()
        return "ends" if reason == EXPIRED else "hides"

    def _dismiss(self):
        if self._popup:
            self.around.screen.order("close", self._popup["id"], DISMISSED)
            self.reference.hidden()
            self._gone()
        return "rest: the pop-up goes"

    def _gone(self):
        self._popup = None
        self.reference.on_screen = None

    def _distract(self, chance):
        return self._set_distraction(chance.random() < 0.3)

    def _end_distraction(self):
        return self._set_distraction(False)

    def _set_distraction(self, is_distracted):
        self.reference.distracted = is_distracted
        self.around.set("run/portmeld/memory/tv_context/state", "128" if is_distracted else "0")
        return str(is_distracted)

    def _change_language(self, chance):
        return self._set_language(chance.choice(list(TEXTS)))

    def _set_language(self, language):
        self.reference.language = language
        self.around.set("var/lib/portmeld/db/menu_widget/language", language)
        return language

    def _tell_of_media_server(self, chance):
        # Never twice the same: a value that stays equal is no news.
        self._servers += 1
        name = f"Server {self._servers}"
        self.around.set("run/portmeld/memory/portmeld/removed_dlna_device", name)
        self.reference.tell_media_server(name)
        return name

    def _power(self, chance):
        if self._is_off or chance.random() < 0.5:
            return self._wake_up()
        self.around.logind.tell("PrepareForShutdown", True)
        self.reference.power_off()
        self._is_off = True
        return "off"

    def _wake_up(self):
        # Off first, so that the activation is seen, which must not fall into a later step.
        self.around.logind.tell("PrepareForShutdown", True)
        self._wait_until(lambda: not self.around.state()["activated"], "it is off")
        self.around.logind.tell("PrepareForShutdown", False)
        self._wait_until(lambda: self.around.state()["activated"], "it is on again")
        self.reference.wake_up()
        self._is_off = False
        return "wake-up"

    # ---- clients

    def _tell_everybody(self, action, key):
        for name in self.reference.clients.values():
            if name in self._clients:
                self._signals.append((name, action, key))

    def _client(self, chance):
        if self._clients and chance.random() < 0.6:
            return chance.choice(list(self._clients.values()))
        client = self.around.new_client()
        self._clients[client.unique_name] = client
        return client

    def _call(self, chance):
        client, number = self._client(chance), chance.choice(IDS)
        clients = self.reference.clients
        what = chance.randrange(6)
        if what == 0:
            clients[number] = client.unique_name
            assert client.call("Connect", "soak", number) == [number]
        elif what == 1:
            clients[number] = client.unique_name
            (count,) = client.call("GetDeviceCount", number, -1)
            assert count == self.reference.total(), f"{self.reference.total()} counted, {count} found"
        elif what == 2:
            clients.pop(number, None)
            assert client.call("DisConnect", number) == []
        elif what == 3:
            clients[number] = client.unique_name
            self._signals += [(client.unique_name, *told) for told in self.reference.request_all()]
            assert client.call("RequesAll", number) == []
        elif what == 4:
            self.reference.activated = chance.random() < 0.8
            assert client.call("SetEnablePopUP", self.reference.activated) == []
        else:
            clients[number] = client.unique_name
            client.send("GetDeviceInfo", number, "/dev/sdw1", no_reply=True)
        return f"{what} by {client.unique_name} as {number}"

    def _music_call(self, chance):
        client = self._client(chance)
        if self._music and chance.random() < 0.4:
            index = chance.randrange(self._music)
            assert client.call("GetPhotoBGMPlayListItem", index) == [f"{index}.mp3", "title", ""]
        else:
            assert client.call("SetPhotoBGMPlayList", f"{self._music}.mp3", "title", "") == []
            self._music += 1
        return str(self._music)

    def _clear_music(self):
        client = self.around.new_client()
        assert client.call("ClearPhotoBGMPlayList") == []
        client.leave()
        self._music = 0
        return "rest: no music"

    def _leave(self, chance):
        """A client goes without a word; its registration stays."""
        if not self._clients:
            return "nobody is there"
        client = self._clients.pop(chance.choice(list(self._clients)))
        client.leave()
        return client.unique_name

    def _disconnect_everybody(self):
        client = self.around.new_client()
        for number in list(self.reference.clients):
            assert client.call("DisConnect", number) == []
        self.reference.clients.clear()
        client.leave()
        while self._clients:
            self._clients.popitem()[1].leave()
        return "rest: no clients"
