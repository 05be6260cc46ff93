#!/usr/bin/python3
"""Runs fuzz harnesses one after the other and prints a table, or replays inputs.

Usage: fuzz.py PROJECT [NAME...] [--seconds N]     N seconds for each harness, 75 if not said
       fuzz.py PROJECT NAME FILE...                replay: each input once
A harness is a program below build/fuzz with a folder of inputs (tests/fuzz/corpus/NAME) and a dictionary
(tests/fuzz/dictionaries/NAME.dict). New inputs are kept in build/fuzz-corpus/NAME, from where the next
run goes on; one that ends a harness is kept in build/fuzz-crashes/NAME, and the command that replays it
is printed. The exit status is 1 when one did, or when a harness ran nothing.
"""

import argparse
import dataclasses
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

# Eight harnesses take ten minutes.
SECONDS = 75

# An input may take so long before it counts as one that hangs.
LONGEST_INPUT_SECONDS = 30

# What a harness may take beyond its time to read its inputs and to end.
GRACE_SECONDS = 120

STATUS = re.compile(r"^#\d+\s.* cov: (\d+) ft: \d+ corp: (\d+)/(\S+)", re.MULTILINE)
EXECUTIONS = re.compile(r"^stat::number_of_executed_units: (\d+)$", re.MULTILINE)
PER_SECOND = re.compile(r"^stat::average_exec_per_sec: +(\d+)$", re.MULTILINE)
KEPT_INPUT = re.compile(r"^artifact_prefix=.*; Test unit written to (.+)$", re.MULTILINE)
CAUSE = re.compile(r"^(fuzz: .+|.*runtime error: .+|.*ERROR: .+)$", re.MULTILINE)


@dataclasses.dataclass
class Outcome:
    """What a run of a harness brought."""

    status: int  # its exit status; None when it had to be stopped
    output: str
    executions: int = 0
    per_second: int = 0
    edges: int = 0
    inputs: int = 0
    size: str = "0b"

    @property
    def kept_input(self):
        """The file of the input that ended the harness, or None."""
        found = KEPT_INPUT.search(self.output)
        return found[1] if found else None

    @property
    def cause(self):
        """Why it ended badly, in one line."""
        if self.status is None:
            return "no end"
        found = CAUSE.search(self.output)
        return found[1] if found else f"exit status {self.status}"


def read_outcome(status, output):
    """The outcome of a run that printed this."""
    outcome = Outcome(status, output)
    lines = STATUS.findall(output)
    if lines:
        edges, inputs, outcome.size = lines[-1]
        outcome.edges, outcome.inputs = int(edges), int(inputs)
    executions = EXECUTIONS.search(output)
    outcome.executions = int(executions[1]) if executions else 0
    per_second = PER_SECOND.search(output)
    outcome.per_second = int(per_second[1]) if per_second else 0
    return outcome


class Harness:
    """One harness of a project."""

    def __init__(self, project, name):
        self.name = name
        self.program = project / "build" / "fuzz" / "tests" / "fuzz" / name
        self.corpus = project / "tests" / "fuzz" / "corpus" / name
        self.dictionary = project / "tests" / "fuzz" / "dictionaries" / f"{name}.dict"
        self.found = project / "build" / "fuzz-corpus" / name
        self.crashes = project / "build" / "fuzz-crashes" / name

    def run(self, arguments, limit):
        """Runs the program with these arguments, in a fresh folder: what it writes lies below it."""
        self.crashes.mkdir(parents=True, exist_ok=True)
        environment = {
            **os.environ,
            # Where the sanitizers see each allocation, and the same texts on every machine.
            "G_SLICE": "always-malloc",
            "LC_ALL": "C.UTF-8",
            "ASAN_OPTIONS": "malloc_context_size=12:quarantine_size_mb=32",
            "UBSAN_OPTIONS": "print_stacktrace=1",
        }
        # The harness ends itself on a complaint of GLib, in a way that the fuzzer hears of.
        environment.pop("G_DEBUG", None)
        environment.pop("LANGUAGE", None)
        command = [str(self.program), f"-artifact_prefix={self.crashes}/", "-fork=0"]
        command += [f"-timeout={LONGEST_INPUT_SECONDS}", "-print_final_stats=1", *arguments]
        with tempfile.TemporaryDirectory(prefix="portmeld-fuzz-") as scratch:
            try:
                done = subprocess.run(
                    command,
                    cwd=scratch,
                    env=environment,
                    stdin=subprocess.DEVNULL,
                    stdout=subprocess.PIPE,
                    stderr=subprocess.STDOUT,
                    timeout=limit,
                    check=False,
                )
                status, output = done.returncode, done.stdout
            except subprocess.TimeoutExpired as expired:
                status, output = None, expired.stdout or b""
        return read_outcome(status, output.decode(errors="replace"))

    def fuzz(self, seconds, found):
        """Makes inputs up for some seconds, beginning with the committed ones; keeps new ones."""
        found.mkdir(parents=True, exist_ok=True)
        options = [f"-max_total_time={seconds}", f"-dict={self.dictionary}"]
        return self.run([*options, str(found), str(self.corpus)], seconds + GRACE_SECONDS)

    def replay(self, files):
        """Runs inputs, each once."""
        return self.run([str(file) for file in files], GRACE_SECONDS)


def harness_names(project):
    """The names of all harnesses, sorted."""
    return sorted(path.name for path in (project / "tests" / "fuzz" / "corpus").iterdir())


def fuzz(project, names, seconds):
    """Runs harnesses and prints their rows as they end; returns the exit status."""
    print(f"{'harness':<24}{'executions':>12}{'exec/s':>9}{'edges':>8}{'inputs':>8}{'size':>8}")
    wrong = []
    for name in names:
        harness = Harness(project, name)
        outcome = harness.fuzz(seconds, harness.found)
        print(
            f"{name:<24}{outcome.executions:>12}{outcome.per_second:>9}{outcome.edges:>8}"
            f"{outcome.inputs:>8}{outcome.size:>8}",
            flush=True,
        )
        if outcome.status != 0:
            wrong.append(f"{name}: {outcome.cause}")
            if outcome.kept_input:
                kept = os.path.relpath(outcome.kept_input, project)
                wrong.append(f"    replay it: ./dev fuzz {name} {shlex.quote(kept)}")
        elif outcome.executions == 0:
            wrong.append(f"{name}: ran nothing")
    if wrong:
        print("\nFAILED:", *wrong, sep="\n")
    return 1 if wrong else 0


def replay(project, name, files):
    """Replays inputs and prints what the harness prints; returns the exit status."""
    outcome = Harness(project, name).replay(path.resolve() for path in files)
    print(outcome.output, end="")
    if outcome.status != 0:
        print(f"\nFAILED: {name}: {outcome.cause}")
    return 0 if outcome.status == 0 else 1


def main(arguments):
    """Returns the exit status."""
    parser = argparse.ArgumentParser(prog="./dev fuzz", usage="%(prog)s [NAME...] [--seconds N]")
    parser.add_argument("words", nargs="*", metavar="NAME")
    parser.add_argument("--seconds", type=int, default=SECONDS)
    options = parser.parse_args(arguments[1:])
    project = pathlib.Path(arguments[0]).resolve()
    known = harness_names(project)
    names = [word for word in options.words if word in known]
    files = [pathlib.Path(word) for word in options.words if word not in known]
    missing = [str(file) for file in files if not file.is_file()]
    if missing or (files and len(names) != 1):
        parser.error(f"no harness: {', '.join(missing or map(str, files))}; there are: {', '.join(known)}")
    if options.seconds < 1:
        parser.error("a run takes at least one second")
    if files:
        return replay(project, names[0], files)
    return fuzz(project, names or known, options.seconds)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
