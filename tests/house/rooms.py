#!/usr/bin/python3
"""Checks how the rooms of the house are kept.

Three rules: a file has at most 400 lines, unless tests/house/large-rooms.txt gives a reason;
every C++ file begins with a comment paragraph that says what lives in it; some words stand
nowhere. Usage: rooms.py PROJECT-FOLDER
"""

import os
import pathlib
import re
import sys

MOST_LINES = 400
REASONS = "tests/house/large-rooms.txt"

# What is written by hand and read from top to bottom.
ROOMS = re.compile(r"\.(c|cc|cpp|h|hpp|py|js|ts|css|html|sh)$")
CXX = re.compile(r"\.(c|cc|cpp|h|hpp)$")

# Not ours to keep tidy.
FOREIGN_FOLDERS = {".git", "__pycache__", ".cache", "node_modules"}
FOREIGN_FILES = {"LICENSE"}

# Words that say where the project came from instead of what it is. Each is spelled so that this
# file does not hold it.
FORBIDDEN = [
    (re.compile(r"\b[s]pecifications?\b", re.IGNORECASE), "text that readers do not have"),
    (re.compile(r"\b[s]pec\.md\b", re.IGNORECASE), "text that readers do not have"),
    (re.compile(r"\b(the|our|a) [s]pecs?\b", re.IGNORECASE), "text that readers do not have"),
    (re.compile(r"\b[P]arts? [1-5]\.[0-9]", re.IGNORECASE), "text that readers do not have"),
    (re.compile(r"\b[i]ssues? #?[0-9]+\b", re.IGNORECASE), "a number that readers cannot look up"),
    (re.compile(r"\.[l]ibrary\b|\b[f]arm-(bench|studio)\b"), "a tool that readers do not have"),
    (re.compile(r"/[w]ork/|/[f]arm/|(?<![\w.}$)])/([w]ork|[f]arm)\b"), "a path of one machine"),
    (re.compile(r"(?<![\w.}$)])/(root|home/\w+)/"), "a path of one machine"),
]

# Names of public standards may stand.
ALLOWED = re.compile(
    r"\b(Desktop Notifications?|Desktop Entry|D-Bus|Icon Naming|Icon Theme|Shared MIME-info"
    r"( Database)?|XDG Base Directory|Mass Storage( Class)?|USB( [\d.]+)?) [S]pecification\b"
)

# A comment paragraph has at least this many words.
FEWEST_WORDS = 4


def files_of(project):
    """All files of the project, by name relative to it."""
    for folder, folders, files in os.walk(project):
        folders[:] = sorted(name for name in folders if name not in FOREIGN_FOLDERS)
        if os.path.samefile(folder, project) and "build" in folders:
            folders.remove("build")
        for name in sorted(files):
            file = os.path.relpath(os.path.join(folder, name), project)
            if file not in FOREIGN_FILES and not os.path.islink(os.path.join(folder, name)):
                yield file


def first_comment(text):
    """The words of the comment that a C++ file begins with, without licence lines."""
    text = text.lstrip("\ufeff \t\r\n")
    lines = []
    if text.startswith("/*"):
        lines = text[2:].partition("*/")[0].splitlines()
    else:
        for line in text.splitlines():
            if not line.startswith("//"):
                break
            lines.append(line)
    prose = " ".join(
        line for line in lines if not re.search(r"SPDX-|\bCopyright\b|\blicen[cs]e", line, re.I)
    )
    return re.findall(r"[^\W\d_]{2,}", prose)


def forbidden_words(text):
    """(line number, what was found, why not) of each forbidden word."""
    for number, line in enumerate(text.splitlines(), 1):
        line = ALLOWED.sub("", line)
        for pattern, why in FORBIDDEN:
            found = pattern.search(line)
            if found:
                yield number, found[0], why


def read_reasons(text):
    """The reasons for large rooms, {file: reason}, and what is wrong with the list."""
    reasons = {}
    wrong = []
    for number, line in enumerate(text.splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        file, colon, reason = line.partition(":")
        if colon and reason.strip():
            reasons[file.strip()] = reason.strip()
        else:
            wrong.append(f"{REASONS}:{number}: not of the form 'file: reason'")
    return reasons, wrong


def judge(project):
    """(number of files, what is wrong with them) of a project."""
    list_file = project / REASONS
    reasons, wrong = read_reasons(list_file.read_text() if list_file.exists() else "")
    count = 0
    large = set()
    for file in files_of(project):
        for _, word, why in forbidden_words("/" + file):
            wrong.append(f"{file}: the name holds '{word}': {why}")
        content = (project / file).read_bytes()
        if b"\0" in content:
            continue
        count += 1
        text = content.decode(errors="replace")
        for number, word, why in forbidden_words(text):
            wrong.append(f"{file}:{number}: '{word}': {why}")
        lines = len(text.splitlines())
        if ROOMS.search(file) and lines > MOST_LINES:
            large.add(file)
            if file not in reasons:
                wrong.append(
                    f"{file}: {lines} lines; more than {MOST_LINES} need a reason in {REASONS}"
                )
        if CXX.search(file) and len(first_comment(text)) < FEWEST_WORDS:
            wrong.append(f"{file}:1: does not begin with a comment that says what lives here")
    for file in sorted(set(reasons) - large):
        wrong.append(f"{REASONS}: {file} has no more than {MOST_LINES} lines, or is not there")
    if not count:
        wrong.append("there is no file to judge")
    return count, wrong


def main(arguments):
    """Returns the exit status."""
    count, wrong = judge(pathlib.Path(arguments[0]))
    print("\n".join(wrong) if wrong else f"{count} files, all of them well kept")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
