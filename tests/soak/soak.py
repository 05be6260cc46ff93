#!/usr/bin/python3
"""Runs the endurance programs of a build, both or one: on the simulated TV, in virtual time, and on the Linux
machine with recorded devices.

A run draws its steps from a seed, which is printed; a failure prints the command that repeats it, however the
run ended. With --shrink a failure on the simulated TV is then made smaller: the fewest steps that still fail
in the same way.
"""

import argparse
import os
import pathlib
import random
import shlex
import signal
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
FULL = {"simulated": 100_000, "linux": 10_000}  # cycles
# Steps between two measurements of memory, at the most: the first ones are the warm-up, also of a short run.
REST_EVERY = {"simulated": 1000, "linux": 200}
MOST_TRIES = 400  # runs that shrinking may take
TOO_SHORT = 3  # exit status of a whole run that never judged memory


def program(part, build):
    """The words that start a part of a build, and its surroundings."""
    env = {
        **os.environ,
        "LC_ALL": "C.UTF-8",
        "G_DEBUG": "fatal-criticals",
        # What each thread keeps of what it has freed counts as in use, and fills up for thousands of steps.
        "GLIBC_TUNABLES": "glibc.malloc.tcache_count=0",
    }
    if part == "linux":
        return ["/usr/bin/python3", str(HERE / "machine" / "endure.py")], {
            **env,
            "PORTMELD_BUILD_DIR": str(build),
            "PYTHONDONTWRITEBYTECODE": "1",
        }
    simulated = build / "tests" / "soak" / "simulated" / "soak-simulated"
    return [str(simulated), "--resources", str(build / "res")], env


def ranges(numbers):
    """Ascending numbers as the programs take them: "3,7,12-20"."""
    parts = []
    for number in numbers:
        if parts and parts[-1][1] == number - 1:
            parts[-1][1] = number
        else:
            parts.append([number, number])
    return ",".join(str(a) if a == b else f"{a}-{b}" for a, b in parts)


class Part:
    """One of the two programs, with what all its runs have in common."""

    def __init__(self, name, build, seed, rest_every):
        self.name = name
        self.command, self.env = program(name, build)
        # Whatever is left out here is another run.
        self.common = ["--seed", str(seed), "--rest-every", str(rest_every)]

    def run(self, *length, **options):
        """Runs it; returns what subprocess.run() does."""
        words = [*self.command, *self.common, *length]
        return subprocess.run(words, env=self.env, text=True, check=False, **options)

    def again(self, *length):
        """The command that repeats a run."""
        return shlex.join(["./dev", "soak", self.name, *self.common, *length])


def endure(part, length, shrinks):
    """One run from its beginning to its end; returns whether all was well."""
    with tempfile.TemporaryDirectory(prefix="portmeld-soak-step-") as folder:
        # The program writes the number of each step: its last one, however it ends.
        step_file = pathlib.Path(folder, "step")

        def length_so_far():
            number = int(step_file.read_text() or 0) if step_file.exists() else 0
            return ["--steps", str(max(number, 1))]

        try:
            result = part.run(*length, "--step-file", str(step_file), stdout=subprocess.PIPE)
        except (KeyboardInterrupt, SystemExit):
            print(f"{part.name}: ended from outside\nagain: {part.again(*length_so_far())}", flush=True)
            raise
        print(result.stdout, end="", flush=True)
        if result.returncode == 0:
            return True
        print(f"{part.name}: FAILED with {status_text(result.returncode)}", flush=True)
        if result.returncode == TOO_SHORT:
            print("take more cycles, or a smaller --rest-every", flush=True)
        elif step_file.exists():
            only = length[length.index("--only") :] if "--only" in length else []
            print(f"again: {part.again(*length_so_far(), *only)}", flush=True)
            if shrinks and part.name == "simulated" and not only:
                shrink(part, length_so_far(), result.returncode)
        return False


def status_text(status):
    """An exit status in words."""
    return f"signal {signal.Signals(-status).name}" if status < 0 else f"status {status}"


def shrink(part, length, status):
    """Leaves out whatever can be left out of a run that fails, in ever smaller pieces."""

    def length_of(kept):
        return [*length, "--only", ranges(kept)]

    def run(kept):
        return part.run(*length_of(kept), stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    steps = int(length[-1])
    kept = list(range(1, steps + 1))
    piece, tries = max(len(kept) // 2, 1), 0
    while tries < MOST_TRIES:
        place, before = 0, len(kept)
        while place < len(kept) and len(kept) > 1 and tries < MOST_TRIES:
            fewer = kept[:place] + kept[place + piece :]
            tries += 1
            if fewer and run(fewer).returncode == status:
                kept = fewer
            else:
                place += piece
        if piece == 1 and len(kept) == before:
            break
        piece = max(piece // 2, 1)
    print(f"{len(kept)} of {steps} steps are enough, after {tries} tries: {part.again(*length_of(kept))}")
    print(run(kept).stdout, flush=True)


def main(arguments):
    """Returns the exit status."""
    parser = argparse.ArgumentParser(prog="./dev soak", description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("part", nargs="?", choices=FULL, help="only this part")
    parser.add_argument("--seed", type=int, help="a random one when missing")
    length = parser.add_mutually_exclusive_group()
    length.add_argument("--cycles", type=int, help=f"so often something is pulled; {FULL}")
    length.add_argument("--steps", type=int, help="so many steps, as a failure says")
    parser.add_argument(
        "--rest-every",
        type=int,
        help=f"steps between two measurements of memory; {REST_EVERY}, fewer for a short run",
    )
    parser.add_argument("--only", help="of --steps only these, as --shrink says (simulated)")
    parser.add_argument("--shrink", action="store_true", help="make a failure smaller (simulated)")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    if options.only and not (options.steps and options.part == "simulated"):
        parser.error("--only takes --steps, and is for the simulated TV")
    seed = options.seed if options.seed is not None else random.SystemRandom().randrange(2**31)
    # A time limit of somebody else ends a run that hangs; then it is to be said where it hung.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    status = 0
    for name in [options.part] if options.part else FULL:
        cycles = options.cycles or FULL[name]
        rest_every = options.rest_every or REST_EVERY[name]
        length = ["--steps", str(options.steps)] if options.steps else ["--cycles", str(cycles)]
        if not (options.rest_every or options.steps):
            rest_every = min(rest_every, max(cycles // 5, 50))
        if options.only:
            length += ["--only", options.only]
        print(f"{name}: seed {seed}", flush=True)
        if not endure(Part(name, options.build.resolve(), seed, rest_every), length, options.shrink):
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
