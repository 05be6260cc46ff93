#!/usr/bin/python3
"""Adds up what a run of the tests brought and prints one line, "N passed, N failed".

Usage: summary.py MANIFEST ALLOWED-SKIPS. Each line of the manifest, tab-separated, is one thing
that ran:
    check NAME STATUS           a command that counts as one
    cases NAME STATUS RESULTS   a suite with an XML result file (GoogleTest's or JUnit's)
    blocked NAME                a suite that could not be started
Counted as failed beside failed cases: a suite without a readable result file, with no case, or
that ended badly though no case failed; a case that was skipped or disabled, unless the list of
allowed skips holds "SUITE CASE: reason". Returns success when nothing failed and something passed.
"""

import pathlib
import sys
import xml.etree.ElementTree


class Tally:
    """What passed, what failed and why, and which skips were allowed."""

    def __init__(self):
        self.passed = 0
        self.failures = []
        self.allowed = []

    def fail(self, text):
        """Counts one failure."""
        self.failures.append(text)


def read_allowed_skips(text):
    """{(suite, case): reason}; a line of another form is a ValueError."""
    allowed = {}
    for line in text.splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        # A case's own name may hold colons ("Class::test"), a reason starts after ": ".
        names, colon, reason = line.partition(": ")
        suite, blank, case = names.strip().rpartition(" ")
        if not (colon and blank and reason.strip()):
            raise ValueError(f"not of the form 'SUITE CASE: reason': {line}")
        allowed[suite.strip(), case] = reason.strip()
    return allowed


def case_name(case):
    """The name of a case, with its class or file."""
    return ".".join(part for part in (case.get("classname"), case.get("name")) if part)


def skip_reason(case):
    """Why a case did not run, or None when it ran."""
    skipped = case.find("skipped")
    if skipped is not None:
        return " ".join((skipped.get("message") or skipped.text or "skipped").split())
    if case.get("status") == "notrun" or case.get("result") == "suppressed":
        return "disabled"
    return None


def count_case(tally, suite, case, allowed):
    """Counts one case of a result file; returns whether it failed."""
    name = case_name(case)
    failed = [child for child in case if child.tag in ("failure", "error")]
    if failed:
        tally.fail(f"{suite}: {name}")
        return True
    reason = skip_reason(case)
    if reason is None:
        tally.passed += 1
        return False
    listed = allowed.get((suite, name))
    if listed is None:
        tally.fail(f"{suite}: {name} did not run: {reason}")
        return True
    tally.allowed.append(f"{suite}: {name}: {listed}")
    return False


def count_suite(tally, suite, status, file, allowed):
    """Counts the cases of a suite."""
    ending = f"exit status {status}" if status != 124 else "out of time"
    try:
        # Bytes that are no text can stand in a message; they spoil no counting.
        text = pathlib.Path(file).read_text(encoding="utf-8", errors="replace")
        cases = list(xml.etree.ElementTree.fromstring(text).iter("testcase"))
    except FileNotFoundError:
        tally.fail(f"{suite}: left no result file ({ending})")
        return
    except xml.etree.ElementTree.ParseError as error:
        tally.fail(f"{suite}: its result file is broken ({ending}): {error}")
        return
    if not cases:
        tally.fail(f"{suite}: ran no test ({ending})")
        return
    failed = [count_case(tally, suite, case, allowed) for case in cases]
    if status != 0 and not any(failed):
        tally.fail(f"{suite}: ended badly though no case failed ({ending})")


def count(manifest, allowed):
    """The tally of a manifest's text."""
    tally = Tally()
    for line in manifest.splitlines():
        kind, name, *rest = line.split("\t")
        if kind == "check":
            if int(rest[0]) == 0:
                tally.passed += 1
            else:
                tally.fail(name)
        elif kind == "cases":
            count_suite(tally, name, int(rest[0]), rest[1], allowed)
        elif kind == "blocked":
            tally.fail(f"{name}: not run, its build failed")
        else:
            raise ValueError(f"unknown line in the manifest: {line}")
    return tally


def main(arguments):
    """Prints the sums, what failed before them; returns the exit status."""
    manifest, skips = (pathlib.Path(name) for name in arguments)
    listing_error = None
    allowed = {}
    try:
        allowed = read_allowed_skips(skips.read_text())
    except (OSError, ValueError) as error:
        listing_error = f"the list of allowed skips: {error}"
    tally = count(manifest.read_text(), allowed)
    if listing_error:
        tally.fail(listing_error)
    for text in tally.allowed:
        print(f"skipped, as allowed: {text}")
    for text in tally.failures:
        print(f"failed: {text}")
    print(f"{tally.passed} passed, {len(tally.failures)} failed")
    return 0 if tally.passed and not tally.failures else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
