#!/usr/bin/python3
"""Refuses an include that crosses a floor of the house.

The house has floors: which folder may include which. Includes are resolved as the compiler would:
names in quotes relative to the file first, then, like names in angle brackets, below the project's
include roots. What is found nowhere in the project is a system header when it stands in angle
brackets, and an error when it stands in quotes. Usage: floors.py PROJECT-FOLDER
"""

import os
import pathlib
import re
import sys

CONTRACT = "platform/include/platform/"
SIMULATED_TV = "platform/simulated/SimulatedTv.h"

# The one window into the daemon: a value to be read. The web page shows the daemon's own list, counters
# and clients, and a copy of them that the workbench kept for itself could be wrong.
DAEMON_STATE = "src/commoncontrol/MMDeviceState.h"
# A scenario can name any file as a picture; reading it must not hold up the TV.
REGULAR_FILE = "platform/common/RegularFile.h"

SETTINGS_FILES = [
    "platform/linux/settings/SettingsStore.h",
    "platform/linux/support/PathWatch.h",
]

# Floor, and what it may include: a folder with everything below it, or one file. The first floor
# that a file stands on counts.
FLOORS = [
    ("src/main.cpp", ["src/", CONTRACT]),
    ("src/commoncontrol/", ["src/commoncontrol/", "src/util/", CONTRACT]),
    ("src/util/", ["src/util/", CONTRACT]),
    (CONTRACT, [CONTRACT]),
    ("text/", ["text/"]),
    ("platform/common/", ["platform/common/", CONTRACT]),
    ("platform/simulated/", ["platform/simulated/", "platform/common/", CONTRACT]),
    ("platform/linux/", ["platform/linux/", "platform/common/", CONTRACT]),
    ("handlers/", ["handlers/", "platform/common/"]),
    ("workbench/web/", ["workbench/", "text/", SIMULATED_TV, DAEMON_STATE, REGULAR_FILE]),
    ("workbench/", ["workbench/", "text/", SIMULATED_TV]),
    # Of the Linux machine only the settings: they are files, and no bus leads to them.
    ("ctl/", ["ctl/", "text/", *SETTINGS_FILES]),
]

# Where the compiler looks for a name, in this order.
INCLUDE_ROOTS = [
    "text",
    "src/util",
    "src/commoncontrol",
    "src",
    "platform/include",
    "platform/common",
    "platform/simulated",
    "platform/linux",
    "platform/linux/support",
    "workbench",
    "workbench/web",
    "workbench/scenario",
]

# Tests and benchmarks look into every floor; build/ is nobody's.
FREE = ("tests/", "bench/", "build/")

SOURCE_NAMES = re.compile(r"\.(c|cc|cpp|cxx|h|hh|hpp|hxx|inc|ipp|tcc)$")

# Comments and strings; an include directive is matched first, so that its name stays.
TOKENS = re.compile(
    r"""
    (?P<directive>^[ \t]*\#[ \t]*(?:include|include_next|import)\b[^\n]*)
  | //[^\n]*
  | /\*.*?\*/
  | R"(?P<mark>[^()\\\s]{0,16})\(.*?\)(?P=mark)"
  | "(?:\\.|[^"\\\n])*"
  | '(?:\\.|[^'\\\n])*'
    """,
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)
DIRECTIVE = re.compile(r'\s*#\s*\w+\s*(?:"(?P<quoted>[^"]+)"|<(?P<angled>[^>]+)>)')


def includes(text):
    """The include directives of a source: (line number, name, in quotes) or (line, None, None)."""
    text = text.replace("\\\n", "  ")
    for token in TOKENS.finditer(text):
        if token["directive"] is None:
            continue
        line = text.count("\n", 0, token.start()) + 1
        found = DIRECTIVE.match(token["directive"])
        if not found:
            yield line, None, None
        elif found["quoted"]:
            yield line, found["quoted"], True
        else:
            yield line, found["angled"], False


def floor_of(file):
    """The floor that a file stands on and what it may include, or None."""
    for floor, allowed in FLOORS:
        if file == floor or (floor.endswith("/") and file.startswith(floor)):
            return floor, allowed
    return None


def may_include(allowed, target):
    """Whether a file is among what a floor may include."""
    return any(
        target == entry or (entry.endswith("/") and target.startswith(entry)) for entry in allowed
    )


def resolve(project, file, name, quoted):
    """The project files that a name can mean, the compiler's choice first."""
    folders = [os.path.dirname(file)] if quoted else []
    found = []
    for folder in folders + INCLUDE_ROOTS:
        path = os.path.normpath(os.path.join(folder, name))
        if not path.startswith("..") and not os.path.isabs(path) and (project / path).is_file():
            if folder in folders:
                return [path]
            if path not in found:
                found.append(path)
    return found


def judge_include(project, file, allowed, include):
    """What is wrong with one include, or None."""
    _, name, quoted = include
    if name is None:
        return "an include whose name is a macro cannot be judged"
    targets = resolve(project, file, name, quoted)
    if not targets:
        if quoted:
            return f'"{name}" is no file of the project'
        if name.startswith("platform/"):
            return f"<{name}> is no header of the contract"
        return None
    if len(targets) > 1:
        return f'"{name}" can mean {" or ".join(targets)}'
    if may_include(allowed, targets[0]):
        return None
    return f"{targets[0]} stands on a floor that this file may not include"


def sources(project):
    """The C and C++ files of the house, by name relative to the project."""
    for folder, folders, files in os.walk(project):
        folders[:] = sorted(name for name in folders if not name.startswith("."))
        for name in sorted(files):
            file = os.path.relpath(os.path.join(folder, name), project)
            if SOURCE_NAMES.search(name) and not file.startswith(FREE):
                yield file


def judge(project):
    """(number of files, what is wrong with them) of a project."""
    count = 0
    wrong = []
    for file in sources(project):
        count += 1
        standing = floor_of(file)
        if standing is None:
            wrong.append(f"{file}: stands on no floor of the house")
            continue
        text = (project / file).read_text(errors="replace")
        for include in includes(text):
            problem = judge_include(project, file, standing[1], include)
            if problem:
                wrong.append(f"{file}:{include[0]}: {problem}")
    if not count:
        wrong.append("there is no source to judge")
    return count, wrong


def main(arguments):
    """Returns the exit status."""
    count, wrong = judge(pathlib.Path(arguments[0]))
    print("\n".join(wrong) if wrong else f"{count} files, every include stays on its floor")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
