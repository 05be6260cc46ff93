"""What clients cost: the answer to RequesAll, device by device, and the news of a removal, client by
client. Both are counted in instructions of the daemon's process, in all its threads."""

from frame.figures import Figure, per_item, ratio_at_most
from frame.registry import measure
from frame.surroundings import median_of
from measures import _counted

FEW, MANY = 10, 210
CLIENTS = 256


@measure("listing", "a device of a RequesAll answer")
def listing(bench):
    """The list stands already; what each further device adds to the answer."""

    def answer(orders, clients):
        clients.register(1)
        orders("enumerate")
        orders("count")
        clients.call("RequesAll", "(i)", 1)
        orders("stop")

    points = [
        (sticks, median_of(3, lambda s=sticks: _counted.daemon(bench, s, s, answer)))
        for sticks in (FEW, MANY)
    ]
    text, length = _counted.one_text(bench)
    signal = _counted.one_signal(bench, "fresh", length)
    yield Figure(
        "RequesAll, per device",
        per_item(*points),
        "instructions",
        signal + text,
        "one GDBus signal + one json-glib text",
        ratio_at_most(1.15),
        f"signal {signal:,.0f} and text of {length} bytes {text:,.0f} (callgrind)",
    )


@measure("removal", "a client of a removal")
def removal(bench):
    """Everything that the removal costs, divided by the clients that are told."""

    def pull(orders, clients):
        orders("enumerate")
        clients.register(CLIENTS)
        orders("count")
        orders("pull")
        orders("stop")

    _, length = _counted.one_text(bench)
    yield Figure(
        f"removal, per client of {CLIENTS}",
        median_of(3, lambda: _counted.daemon(bench, 2, 2, pull)) / CLIENTS,
        "instructions",
        _counted.one_signal(bench, "shared", length),
        "one GDBus signal",
        ratio_at_most(1.1),
        "the whole event, its JSON text included, for one connection with as many client ids; the floor's"
        " signals share their values too (callgrind)",
    )
