"""The measures by name, and running them: one after the other, each within its time limit, and none
stops the others. A measure that cannot be made is a failed row of the table.
"""

import contextlib
import dataclasses
import importlib
import pathlib
import signal
import sys
import traceback
import typing

from frame.figures import CannotRun, Figure

TIME_LIMIT = 300  # seconds


@dataclasses.dataclass(frozen=True)
class Measure:
    """A function that yields figures, given the Bench; `title` names it where it fails."""

    name: str
    title: str
    limit: int
    run: typing.Callable


MEASURES = {}


def measure(name, title, limit=TIME_LIMIT):
    """Registers a function bench -> figures (a generator, as a rule) under a name of the command line."""

    def register(function):
        assert name not in MEASURES, f"two measures are called {name}"
        MEASURES[name] = Measure(name, title, limit, function)
        return function

    return register


def load(folder):
    """Imports every module of a folder of measures, in the order of their names."""
    for file in sorted(pathlib.Path(folder).glob("*.py")):
        if not file.name.startswith("_"):
            importlib.import_module(f"{pathlib.Path(folder).name}.{file.stem}")


@contextlib.contextmanager
def time_limit(seconds):
    """Ends what runs inside with a CannotRun when it takes longer."""

    def over(*_):
        raise CannotRun(f"no end within {seconds} s")

    previous = signal.signal(signal.SIGALRM, over)
    signal.alarm(seconds)
    try:
        yield
    finally:
        signal.alarm(0)
        signal.signal(signal.SIGALRM, previous)


def run_one(entry, bench):
    """The figures of one measure; what it has yielded before it fails is kept."""
    figures = []
    try:
        with time_limit(entry.limit):
            for figure in entry.run(bench):
                figures.append(figure)
        if not figures:
            raise CannotRun("it made no figure")
    except CannotRun as reason:
        figures.append(Figure(entry.title, failure=str(reason)))
    except Exception as error:  # pylint: disable=broad-except
        traceback.print_exc()
        figures.append(Figure(entry.title, failure=f"{type(error).__name__}: {error}"))
    for figure in figures:
        figure.measure = entry.name
        if figure.verdict == "FAILED" and not figure.failure:
            figure.failure = "it lacks the value that its goal is about"
    return figures


def run_all(names, bench, say=lambda text: print(text, file=sys.stderr, flush=True)):
    """The figures of the named measures, of all without a name, in the order of the table."""
    figures = []
    for name, entry in MEASURES.items():
        if not names or name in names:
            say(f"bench: {name}: {entry.title}")
            figures += run_one(entry, bench)
    return figures
