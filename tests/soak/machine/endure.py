#!/usr/bin/python3
"""Endurance on the Linux machine: recorded devices come and go in random order, are mounted and offered, under
the eyes of clients that come and go as well; after every step the daemon is compared with a reference.

Usage: endure.py [--seed N] [--cycles N | --steps N] [--rest-every STEPS] [--step-file FILE]; the environment
names the build (PORTMELD_BUILD_DIR). Ends with one line of figures, or with the step at which something
differed. ./dev soak starts it, and says how to see that again.
"""

import argparse
import os
import pathlib
import random
import sys
import tempfile
import time

TESTS = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(TESTS / "support"), str(TESTS / "linux")]

from surroundings import Surroundings  # noqa: E402 (the path comes first)
from steps import Steps  # noqa: E402

WARM_UP = 3  # rests after which memory must stay as it is
# Bytes of each kind. Honest runs of 40 to 100 cycles, with ten seeds, stayed at 17 KiB of bytes in use and
# 24 KiB of pages; surroundings.py and soak_on_linux.cpp keep malloc and the kernel from adding to it.
MOST_GROWTH = 65536
TOO_SHORT = 3  # exit status of a whole run in which memory was never judged
HISTORY = 30


class Differs(Exception):
    """The daemon is not as it ought to be."""


class Run:
    """One run; see main() for how it is made."""

    def __init__(self, surroundings, options):
        self.surroundings = surroundings
        self.seed = options.seed
        self.rest_every = options.rest_every
        self.step_file = options.step_file
        self.steps = Steps(surroundings)
        self.number = 0
        self.rests = 0
        self.history = []
        self.sources = None
        # Bytes of each kind: most of the warm-up, most of all, at the last rest.
        self.warm, self.most, self.now = {}, {}, {}

    def go(self, cycles, steps):
        """Steps until so many devices were pulled, or so many steps were made."""
        while (self.number < steps) if steps else (self.steps.cycles < cycles):
            self.number += 1
            if self.step_file:
                self.step_file.write_text(str(self.number))
            # Each step draws from a sequence of its own.
            self.do(self.steps.step, random.Random(f"{self.seed}/{self.number}"))
            if self.number % self.rest_every == 0:
                self.rest()
        self.rest()

    def do(self, step, *arguments):
        """One step and its comparison."""
        self.history = [*self.history[1 - HISTORY :], f"{self.number} ?"]
        said = step(*arguments)
        self.history[-1] = f"{self.number} {said}"
        self.steps.compare()

    def rest(self):
        """Everything is taken away again; what is held then must be the same every time."""
        for step in self.steps.resting():
            self.do(step)
        sources = self.steps.sources(self.sources)
        if self.sources is not None and sources != self.sources:
            raise Differs(f"sources: {self.sources} at first, {sources} now")
        self.sources = sources
        self.rests += 1
        self.judge_memory()

    def judge_memory(self):
        """The first rests are the warm-up: the most that there was then is what the others may have."""
        self.now = self.surroundings.memory()
        self.most = {what: max(value, self.most.get(what, 0)) for what, value in self.now.items()}
        if self.rests <= WARM_UP:
            self.warm = self.most
        for what, value in self.now.items():
            if value > self.warm[what] + MOST_GROWTH:
                raise Differs(f"memory {what}: at most {self.warm[what]} in the warm-up, {value} now")

    def is_too_short(self):
        """Whether memory could have been judged and was not."""
        return bool(self.now) and self.rests <= WARM_UP

    def figures(self, began):
        """The line at the end."""
        memory = "most growth of bytes " + ", ".join(
            f"{what} {self.most[what] - self.warm[what]} of {value}" for what, value in self.now.items()
        )
        if not self.now:
            memory = "memory is the sanitizer's to judge"
        elif self.is_too_short():
            memory = "too short for a judgement of memory"
        seconds = int(time.monotonic() - began)
        return f"{self.steps.cycles} cycles in {self.number} steps, seed {self.seed}, {seconds} s: {memory}"


def main(arguments):
    """Returns the exit status."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cycles", type=int, default=100)
    parser.add_argument("--steps", type=int, default=0)
    parser.add_argument("--rest-every", type=int, default=200)
    parser.add_argument("--step-file", type=pathlib.Path, help="receives the number of the present step")
    options = parser.parse_args(arguments)
    began = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="portmeld-soak-") as folder:
        surroundings = Surroundings(pathlib.Path(folder))
        try:
            run = Run(surroundings, options)
            try:
                run.go(options.cycles, options.steps)
                surroundings.finish()
            except Exception as failure:
                print("the last steps:", *run.history, sep="\n  ")
                print(f"FAILED at step {run.number} of seed {options.seed}: {failure}")
                for line in surroundings.daemon.error_lines()[-20:]:
                    print("  |", line)
                return 1
        finally:
            surroundings.kill()
        print(run.figures(began))
    # A part of a run, as a failure asks for it, may be.
    return TOO_SHORT if run.is_too_short() and not options.steps else 0


if __name__ == "__main__":
    assert "PORTMELD_BUILD_DIR" in os.environ, "PORTMELD_BUILD_DIR is not set"
    sys.exit(main(sys.argv[1:]))
