"""Figures and their goals, and the arithmetic between samples and a verdict.

A figure is ours beside that of a floor or a peer from the same run. What is judged is their ratio, or
ours itself where it is a count or a size; never a time by itself, which would judge the machine.
"""

import dataclasses
import math
import statistics
import typing


class CannotRun(Exception):
    """A measure cannot be made here; the text says why."""


@dataclasses.dataclass(frozen=True)
class Goal:
    """What is wanted of `judged`, "ratio" or "ours": that it lies between `least` and `most`."""

    judged: str
    most: float
    least: float = -math.inf

    @property
    def text(self):
        """As the table shows it."""
        sign = "=" if self.least == self.most else "≤"
        return f"{sign} {number(self.most)}{' ×' if self.judged == 'ratio' else ''}"

    def reached(self, value):
        """Whether a value is as wanted."""
        return self.least <= value <= self.most


def ratio_at_most(most):
    """Ours may be `most` times the floor's."""
    return Goal("ratio", most)


def at_most(most):
    """Ours, in its unit, may be `most`."""
    return Goal("ours", most)


def exactly(value):
    """Ours is to be this, neither more nor less."""
    return Goal("ours", value, value)


@dataclasses.dataclass
class Figure:
    """One row of the table. A failed one has no values, but the reason why."""

    title: str
    ours: float | None = None
    unit: str = ""
    peer: float | None = None
    peer_name: str = ""  # what is compared with
    goal: Goal | None = None
    note: str = ""  # below the table: how it was measured, in one sentence
    failure: str = ""
    # Growth: {name of a curve: [(size, cost)]}, drawn with both axes logarithmic.
    curves: dict = dataclasses.field(default_factory=dict)
    samples: dict = dataclasses.field(default_factory=dict)  # {"ours": [...], "peer": [...]}
    measure: str = ""  # set by the frame

    @property
    def ratio(self):
        """Ours in relation to the floor's or peer's; None without one."""
        return None if not self.peer or self.ours is None else self.ours / self.peer

    @property
    def judged(self):
        """The value that the goal is about; None when there is none."""
        if self.goal is None:
            return None
        return self.ratio if self.goal.judged == "ratio" else self.ours

    @property
    def verdict(self):
        """ "FAILED" when it could not be measured, else whether the goal is reached; "–" without one."""
        if self.failure or self.ours is None:
            return "FAILED"
        if self.goal is None:
            return "–"
        if self.judged is None:
            return "FAILED"
        return "yes" if self.goal.reached(self.judged) else "no"


def timed(title, ours, peer, unit, peer_name, goal, note=""):
    """A figure from the samples of alternating runs: their medians are compared."""
    return Figure(
        title,
        statistics.median(ours),
        unit,
        statistics.median(peer),
        peer_name,
        goal,
        note or f"medians of {len(ours)} alternating runs",
        samples={"ours": list(ours), "peer": list(peer)},
    )


def exponent(small, large):
    """The exponent k of cost ~ size^k between two points (size, cost)."""
    return math.log(large[1] / small[1]) / math.log(large[0] / small[0])


def per_item(few, many):
    """The cost of one item from two points (items, cost): what every run costs anyway falls out."""
    return (many[1] - few[1]) / (many[0] - few[0])


def number(value: typing.Optional[float]):
    """A number for people: three significant digits or more, thousands set apart."""
    if value is None:
        return "–"
    if value == int(value) or abs(value) >= 1000:
        return f"{value:,.0f}"
    digits = 2 if abs(value) < 10 else 1
    return f"{value:.{digits}f}"
