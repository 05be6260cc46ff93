"""What a log line below the platform's threshold costs: the daemon logs each step of each walk."""

from frame.figures import Figure, at_most, per_item
from frame.registry import measure

FEW, MANY = 1_000, 11_000


def cost(bench, kind):
    """The instructions of one line, without the loop around it."""
    program = bench.program("bench/programs/log-lines")

    def line(kind):
        points = [(count, bench.instructions([program, count, kind])) for count in (FEW, MANY)]
        return per_item(*points)

    return line(kind) - line("none")


@measure("log-line", "a suppressed log line")
def log_line(bench):
    """The line of a walk is judged; one with more arguments costs their handing over besides."""
    yield Figure(
        "a suppressed log line",
        cost(bench, "value"),
        "instructions",
        goal=at_most(20),
        note="the line that walks log for each device, call and arguments included, on the Linux machine at"
        f" its usual level; a line with four values costs {cost(bench, 'words'):.0f}",
    )
