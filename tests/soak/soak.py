#!/usr/bin/python3
"""Runs the endurance programs of a build, both or one: on the simulated TV, in virtual time, and on the Linux
machine with recorded devices.

A run draws its steps from a seed, which is printed; a failure prints the command that repeats it. With
--shrink a failure on the simulated TV is then made smaller: the fewest steps that still fail.
"""

import argparse
import os
import pathlib
import random
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
FULL = {"simulated": 100_000, "linux": 10_000}  # cycles
MOST_TRIES = 400  # runs that shrinking may take


def program(part, build):
    """The words that start a part of a build, and its surroundings."""
    env = {**os.environ, "LC_ALL": "C.UTF-8", "G_DEBUG": "fatal-criticals"}
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


def shrink(command, env, seed, steps):
    """Leaves out whatever can be left out of a run that fails, in ever smaller pieces."""

    def run(kept):
        words = [*command, "--seed", str(seed), "--steps", str(steps), "--only", ranges(kept)]
        return words, subprocess.run(words, env=env, capture_output=True, text=True, check=False)

    kept = list(range(1, steps + 1))
    piece, tries = max(len(kept) // 2, 1), 0
    while tries < MOST_TRIES:
        place, before = 0, len(kept)
        while place < len(kept) and len(kept) > 1 and tries < MOST_TRIES:
            fewer = kept[:place] + kept[place + piece :]
            tries += 1
            if fewer and run(fewer)[1].returncode != 0:
                kept = fewer
            else:
                place += piece
        if piece == 1 and len(kept) == before:
            break
        piece = max(piece // 2, 1)
    words, result = run(kept)
    print(f"{len(kept)} of {steps} steps are enough, after {tries} tries:", " ".join(words))
    print(result.stdout, flush=True)


def failed_step(output):
    """The step at which a run says that it failed."""
    (line,) = [line for line in output.splitlines() if line.startswith("again: ")]
    return int(line.rsplit(" ", 1)[1])


def main(arguments):
    """Returns the exit status."""
    parser = argparse.ArgumentParser(prog="./dev soak", description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("part", nargs="?", choices=FULL, help="only this part")
    parser.add_argument("--seed", type=int, help="a random one when missing")
    length = parser.add_mutually_exclusive_group()
    length.add_argument("--cycles", type=int, help=f"so often something is pulled; {FULL}")
    length.add_argument("--steps", type=int, help="so many steps, as a failure says")
    parser.add_argument("--rest-every", type=int, help="steps between two measurements of memory")
    parser.add_argument("--shrink", action="store_true", help="make a failure smaller (simulated)")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    seed = options.seed if options.seed is not None else random.SystemRandom().randrange(2**31)
    status = 0
    for part in [options.part] if options.part else FULL:
        command, env = program(part, options.build.resolve())
        length = ["--steps", options.steps] if options.steps else ["--cycles", options.cycles or FULL[part]]
        if options.rest_every:
            length += ["--rest-every", options.rest_every]
        print(f"{part}: seed {seed}", flush=True)
        words = [*command, "--seed", str(seed), *map(str, length)]
        result = subprocess.run(words, env=env, stdout=subprocess.PIPE, text=True, check=False)
        print(result.stdout, end="", flush=True)
        if result.returncode != 0:
            status = 1
            print(f"{part}: FAILED with status {result.returncode}", flush=True)
            if options.shrink and part == "simulated" and "again: " in result.stdout:
                shrink(command, env, seed, failed_step(result.stdout))
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
