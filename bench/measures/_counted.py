"""The daemon under callgrind, with as many sticks and clients as are wanted, and its floors: what several
measures of instructions share.
"""

import contextlib
import time

from gi.repository import Gio, GLib

from frame.figures import CannotRun, per_item
from frame.surroundings import median_of

NAME, PATH = "com.norvane.portmeld", "/com/norvane/portmeld"
PATIENCE = 60  # seconds, for the daemon under callgrind to do one thing

# A signal's floor is counted between so many signals.
FEW_SIGNALS, MANY_SIGNALS = 100, 700


class Clients:
    """One connection, registered at the daemon under as many client ids as are wanted."""

    def __init__(self, address):
        self._connection = Gio.DBusConnection.new_for_address_sync(
            address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None,
            None,
        )
        # What it is sent, the connection's own thread reads and drops.

    @property
    def name(self):
        """The unique name on the bus."""
        return self._connection.get_unique_name()

    def close(self):
        """Leaves the bus."""
        self._connection.close_sync(None)

    def call(self, method, signature, *values):
        """Calls a method and waits for the answer."""
        return self._connection.call_sync(
            NAME,
            PATH,
            NAME,
            method,
            GLib.Variant(signature, values),
            None,
            Gio.DBusCallFlags.NONE,
            PATIENCE * 1000,
            None,
        ).unpack()

    def wait_for_daemon(self):
        """Waits until the daemon answers."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            try:
                self.call("ClearPhotoBGMPlayList", "()")
                return
            except GLib.Error:  # nobody has the name yet
                time.sleep(0.05)
        raise CannotRun("the daemon did not come to the bus")

    def register(self, count):
        """Registers under the ids from 1 to `count`; returns when the daemon has done it."""
        for number in range(1, count):
            message = Gio.DBusMessage.new_method_call(NAME, PATH, NAME, "Connect")
            message.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
            message.set_body(GLib.Variant("(si)", ("bench", number)))
            self._connection.send_message(message, Gio.DBusSendMessageFlags.NONE)
        if count:
            self.call("Connect", "(si)", "bench", count)


class Orders:
    """The daemon's standard input; see programs/daemon_with_sticks.cpp."""

    def __init__(self, process):
        self._process = process

    def __call__(self, order):
        self._process.stdin.write(order + "\n")
        self._process.stdin.flush()
        answer = self._process.stdout.readline().strip()
        if answer != "done":
            raise CannotRun(f"the daemon answered '{answer}' to '{order}'")


@contextlib.contextmanager
def _clients(address):
    clients = Clients(address)
    try:
        yield clients
    finally:
        clients.close()


def daemon(bench, sticks, products, act):
    """The instructions that the daemon executes between the orders "count" and "stop", which
    act(orders, clients) gives."""
    program = bench.program("bench/programs/daemon-with-sticks")
    with bench.bus() as address, _clients(address) as clients:

        def drive(process):
            clients.wait_for_daemon()
            act(Orders(process), clients)

        return bench.instructions(
            [program, sticks, products], bench.environment(address), drive=drive
        )


def one_signal(bench, kind, length):
    """The floor of a signal with a text of this length, sent "fresh" or "shared"."""
    program = bench.program("bench/floors/gdbus-signals")
    points = []
    for count in (FEW_SIGNALS, MANY_SIGNALS):
        with bench.bus() as address, _clients(address) as peer:
            command = [program, count, kind, length, peer.name]
            cost = median_of(3, lambda: bench.instructions(command, bench.environment(address)))
            points.append((count, cost))
    return per_item(*points)


def one_text(bench):
    """The floor of a JSON text of 19 members, and the text's length."""
    program = bench.program("bench/floors/json-texts")
    points = [(count, bench.instructions([program, count])) for count in (100, 600)]
    return per_item(*points), int(bench.run([program, 1]))
