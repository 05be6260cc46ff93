#!/usr/bin/python3
"""Prints how much of each source file the tests reached, and judges it.

Fails when less than 95 % of all lines were reached, when a file with lines that were not reached
has no reason on the list of exceptions, or when a reason is there for nothing. Usage:
coverage_report.py COUNTS EXCEPTIONS, where COUNTS is gcovr's JSON file and EXCEPTIONS holds lines
of the form "src/folder/File.cpp: reason"; a line that starts with # is a comment.
"""

import json
import pathlib
import sys

WANTED_PERCENT = 95.0


def read_counts(text):
    """The lines of each file: {file: {line number: how often it ran}}."""
    files = {}
    for entry in json.loads(text)["files"]:
        lines = files.setdefault(entry["file"], {})
        for line in entry["lines"]:
            if not line.get("gcovr/noncode", False):
                number = line["line_number"]
                lines[number] = lines.get(number, 0) + line["count"]
    return {file: lines for file, lines in files.items() if lines}


def read_exceptions(text):
    """The reasons of each file: {file: [reason]}; ValueError for a line of another form."""
    reasons = {}
    for line in text.splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        file, colon, reason = line.partition(":")
        if not colon or not reason.strip():
            raise ValueError(f"not of the form 'file: reason': {line}")
        reasons.setdefault(file.strip(), []).append(reason.strip())
    return reasons


def ranges(numbers, known):
    """Line numbers as text, "3-5, 9"; lines without code between two of them do not part them."""
    order = {number: index for index, number in enumerate(sorted(known))}
    runs = []
    for number in sorted(numbers):
        if runs and order[number] == order[runs[-1][1]] + 1:
            runs[-1][1] = number
        else:
            runs.append([number, number])
    return ", ".join(str(first) if first == last else f"{first}-{last}" for first, last in runs)


def percent(reached, total):
    """A share of a hundred, never rounded up."""
    return int(1000 * reached / total) / 10


def judge(files, reasons):
    """Prints the table; returns what is wrong, a list of texts."""
    wrong = []
    if not files:
        return ["no line of src/ was counted"]
    width = max(len(file) for file in files)
    print(f"{'file':<{width}}  lines  reached       %")
    all_lines = all_reached = 0
    unreached = {}
    for file, lines in sorted(files.items()):
        reached = sum(1 for count in lines.values() if count)
        all_lines += len(lines)
        all_reached += reached
        missing = [number for number, count in lines.items() if not count]
        if missing:
            unreached[file] = ranges(missing, lines)
        print(f"{file:<{width}}  {len(lines):5}  {reached:7}  {percent(reached, len(lines)):6.1f}")
    total = percent(all_reached, all_lines)
    print(f"{'all':<{width}}  {all_lines:5}  {all_reached:7}  {total:6.1f}")

    if unreached:
        print("\nNot reached:")
    for file, numbers in unreached.items():
        print(f"{file}: {numbers}")
        for reason in reasons.get(file, []):
            print(f"    {reason}")
        if file not in reasons:
            wrong.append(f"{file}: lines {numbers} are not reached and no reason is given")
    for file in reasons:
        if file not in unreached:
            wrong.append(f"{file}: a reason is given, but all of its lines are reached")
    if total < WANTED_PERCENT:
        wanted = f"at least {WANTED_PERCENT:g} % are wanted"
        wrong.append(f"{total} % of the lines are reached; {wanted}")
    return wrong


def main(arguments):
    """Returns the exit status."""
    counts, exceptions = (pathlib.Path(name) for name in arguments)
    try:
        reasons = read_exceptions(exceptions.read_text()) if exceptions.exists() else {}
    except ValueError as error:
        print(f"{exceptions}: {error}")
        return 1
    wrong = judge(read_counts(counts.read_text()), reasons)
    if wrong:
        print("\nFAILED:")
        print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
