#!/usr/bin/python3
"""Runs the measures and tells what came out: a table on standard output, results.json and plots in a
folder. Exit status: 0 when every measure was made, whether or not its goal was reached; 1 when one
could not be made; 2 for a wrong command line. ./dev bench builds everything first and calls this.
"""

import argparse
import datetime
import pathlib
import sys

from frame import machine, plots, registry, report, surroundings

HERE = pathlib.Path(__file__).resolve().parent


def arguments(words):
    """The command line, taken apart."""
    parser = argparse.ArgumentParser(prog="./dev bench", description="Benchmarks; without a NAME, all.")
    parser.add_argument("names", nargs="*", metavar="NAME", help="a measure")
    parser.add_argument("--list", action="store_true", help="tell the measures, and run none")
    parser.add_argument("--build", default="build/bench", help="build folder (build/bench)")
    parser.add_argument("--image", help="folder that the build's absolute paths lie in")
    parser.add_argument("--results", help="folder for results.json and plots (the build folder)")
    parser.add_argument("--measures", default=HERE / "measures", help=argparse.SUPPRESS)
    return parser.parse_args(words)


def main(words):
    """Returns the exit status."""
    asked = arguments(words)
    sys.path.insert(0, str(pathlib.Path(asked.measures).parent))
    registry.load(asked.measures)
    if asked.list:
        for entry in registry.MEASURES.values():
            print(f"{entry.name:12} {entry.title}")
        return 0
    unknown = [name for name in asked.names if name not in registry.MEASURES]
    if unknown:
        print(f"bench: no measure is called {', '.join(unknown)}; --list tells them", file=sys.stderr)
        return 2
    description = machine.describe()
    bench = surroundings.Bench(pathlib.Path(asked.build).resolve(), asked.image)
    figures = registry.run_all(asked.names, bench)

    folder = pathlib.Path(asked.results or asked.build)
    folder.mkdir(parents=True, exist_ok=True)
    command = " ".join(["./dev bench", *asked.names])
    date = datetime.date.today().isoformat()
    (folder / "results.json").write_text(report.as_json(figures, command, date, description))
    plots.write(figures, folder / "plots")

    print("\n".join(f"{key}: {value}" for key, value in description.items()), end="\n\n")
    print(report.table(figures))
    warning = machine.busy_warning(description)
    if warning:
        print(f"\n{warning}")
    return 1 if any(figure.verdict == "FAILED" for figure in figures) or not figures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
