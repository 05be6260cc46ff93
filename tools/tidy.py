#!/usr/bin/python3
"""Runs clang-tidy on the given files, as many at a time as there are cores.

The compiler's options come from compile_commands.json of a build. A source file that this build
does not compile cannot be judged and counts as a finding; headers are judged where they are
included. Usage: tidy.py BUILD-FOLDER FILE...
"""

import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys


def compiled_files(build):
    """The real paths of the sources that a build compiles."""
    entries = json.loads((build / "compile_commands.json").read_text())
    return {os.path.realpath(os.path.join(entry["directory"], entry["file"])) for entry in entries}


def tidy(build, source):
    """Judges one source: True and nothing when it is clean, else False and what was found."""
    done = subprocess.run(
        # g++ knows warnings that clang does not.
        [
            "clang-tidy",
            "--quiet",
            "-p",
            str(build),
            "--extra-arg=-Wno-unknown-warning-option",
            source,
        ],
        capture_output=True,
        text=True,
        check=False,
    )
    # Standard error holds the count of findings in system headers, of no interest unless it failed.
    return done.returncode == 0, done.stdout + (done.stderr if done.returncode else "")


def main(arguments):
    """Returns the exit status."""
    build = pathlib.Path(arguments[0])
    sources = [os.path.realpath(name) for name in arguments[1:] if name.endswith(".cpp")]
    compiled = compiled_files(build)
    orphans = [source for source in sources if source not in compiled]
    for orphan in orphans:
        print(f"{orphan}: no part of the build compiles this file", flush=True)
    judged = [source for source in sources if source in compiled]
    if not judged:
        print("there is no compiled source to judge")
        return 1
    clean = not orphans
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for passed, output in pool.map(lambda source: tidy(build, source), judged):
            if not passed:
                clean = False
                print(output, flush=True)
    print(f"{len(judged)} sources judged")
    return 0 if clean else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
