"""The table of docs/reliability.md: made of what a run of the tests has seen, and read for comparison.

Usage: reliability.py BUILD-FOLDER DOCUMENT
Writes the table into the document as the tests have last seen it in that build, and tells whether that is news.
Fails, and writes nothing, when one of them has failed, or never ran, or when the daemon was away for longer than
it may be.
"""

import json
import pathlib
import statistics
import sys

BEGIN = "<!-- made by tests/faults/reliability.py from here -->"
END = "<!-- to here -->"
HOWS = ("killed", "stopped", "restarted")
NOT_RUN = "–"

# In seconds, from the end of the daemon to the moment in which it is ready again.
LONGEST_ABSENCE = 1.0


def cell(lost, late, said):
    """One cell of the table."""
    parts = []
    if lost:
        parts.append("lost: " + ", ".join(lost))
    if late:
        parts.append("late: " + ", ".join(late))
    text = "; ".join(parts) or "all well"
    return f"{text} ({said})" if said else text


def table(cells):
    """The whole of it, of {(who, how, step): cell}: a table for each peer, a line for each step."""
    lines = []
    for who in dict.fromkeys(who for who, _, _ in cells):
        steps = dict.fromkeys(step for other, _, step in cells if other == who)
        lines += ["", f"### {who}", ""]
        lines += ["| step | " + " | ".join(HOWS) + " |", "|---" * (len(HOWS) + 1) + "|"]
        for step in steps:
            row = [cells.get((who, how, step), NOT_RUN) for how in HOWS]
            lines.append(f"| {step} | " + " | ".join(row) + " |")
    return "\n".join(lines) + "\n\n"


def documented(document):
    """What stands between the marks of a document."""
    text = document.read_text()
    return text[text.index(BEGIN) + len(BEGIN) + 1 : text.index(END)]


class Run:
    """What the tests have seen, a file for each cell: they may run in several processes."""

    def __init__(self, build):
        self._folder = pathlib.Path(build) / "faults"

    def forget(self, key):
        """A cell is tried again."""
        self._file(key).unlink(missing_ok=True)

    def add(self, key, text, back):
        """One cell, and how long the daemon was away, in seconds, each time that it ended."""
        self._folder.mkdir(exist_ok=True)
        self._file(key).write_text(json.dumps([key, text, back]))

    def _file(self, key):
        return self._folder / ".".join(key).replace(" ", "-")

    def cells(self):
        """All cells so far, and all times."""
        read = [json.loads(file.read_text()) for file in sorted(self._folder.iterdir())]
        return {tuple(key): text for key, text, _ in read}, [t for *_, back in read for t in back]


def main(build, file):
    """Returns the exit status."""
    from outcomes import EXPECTED

    order = [(who, how, step) for (who, how), row in EXPECTED.items() for step in row]
    cells, back = Run(build).cells()
    missing = [key for key in order if key not in cells]
    if missing:
        print(f"not run, or failed: {missing}")
        return 1
    if not back or max(back) > LONGEST_ABSENCE:
        longest = f"for {max(back):.3f} s" if back else "never"
        print(f"the daemon was away {longest}; it has to end, and to be back within {LONGEST_ABSENCE} s")
        return 1
    document = pathlib.Path(file)
    made = table({key: cells[key] for key in order})
    before = documented(document)
    document.write_text(document.read_text().replace(before, made))
    print("the table has changed" if before != made else "the table is what it was")
    print(f"away {len(back)} times, median {statistics.median(back):.3f} s, most {max(back):.3f} s")
    return 0


if __name__ == "__main__":
    sys.path[:0] = [str(pathlib.Path(__file__).resolve().parents[1] / name) for name in ("linux", "support")]
    sys.exit(main(*sys.argv[1:]))
