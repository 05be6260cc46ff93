"""How the cost grows: with attached devices when they are enumerated, and with registered clients when
one event is told to all of them. Instructions of the daemon, its log at the usual level. Judged is the
exponent over the whole range; linear is 1. The notes tell that of each decade: what does not depend on
the number hardly counts in the last one."""

from frame.figures import Figure, at_most, exponent
from frame.registry import measure
from frame.surroundings import median_of
from measures import _counted

DEVICES = [10, 100, 1_000]
CLIENTS = [10, 100, 1_000, 10_000]


def over_all(curve):
    """The exponent from the first to the last point of a curve."""
    return exponent(curve[0], curve[-1])


def decades(curve):
    """The exponents from each point of a curve to the next, as a text."""
    return ", ".join(
        f"{few[0]:,} → {many[0]:,}: {exponent(few, many):.2f}" for few, many in zip(curve, curve[1:])
    )


def enumeration(orders, _clients):
    """Counts the listing of all devices."""
    orders("count")
    orders("enumerate")
    orders("stop")


@measure("devices", "growth with devices", limit=600)
def devices(bench):
    """Sticks of as many products as there are sticks, and sticks that are all alike: these get numbers
    behind their names, and each number is one that no other has."""

    def listing(count, products):
        return median_of(3, lambda: _counted.daemon(bench, count, products, enumeration))

    curves = {
        name: [(count, listing(count, products or count)) for count in DEVICES]
        for name, products in (("each of its own product", 0), ("all of one product", 1))
    }
    for name, curve in curves.items():
        yield Figure(
            f"growth with devices, 10 → 1,000, {name}",
            over_all(curve),
            "(exponent)",
            goal=at_most(1.2),
            note=f"{decades(curve)}; "
            f"{curve[-1][1] / DEVICES[-1]:,.0f} instructions a device of 1,000, the median of 3 runs",
            curves=curves if name == "all of one product" else {},
        )


@measure("clients", "growth with clients")
def clients(bench):
    """One removal, told to all."""

    def removal(count):
        def act(orders, bus_clients):
            orders("enumerate")
            bus_clients.register(count)
            orders("count")
            orders("pull")
            orders("stop")

        return _counted.daemon(bench, 2, 2, act)

    curve = [(count, removal(count)) for count in CLIENTS]
    yield Figure(
        "growth with clients, 10 → 10,000",
        over_all(curve),
        "(exponent)",
        goal=at_most(1.05),
        note=f"{decades(curve)}; one run each",
        curves={"one removal": curve},
    )
