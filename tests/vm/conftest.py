"""The machines of the scenarios, and the table that a run prints: a row for each of them.

Every scenario has a machine of its own, which goes on where the installed one was saved; ./dev vm has made
that one.
"""

import os
import pathlib
import sys

import pytest

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parent / "rig")]

from television import Television  # noqa: E402 (the path comes first)

IMAGES = pathlib.Path(os.environ["PORTMELD_VM_IMAGES"])


@pytest.fixture
def switch_on(request):
    """Makes a machine; with True, one that was saved, else one that is switched on with what is plugged."""
    machines = []

    def make(saved):
        folder = IMAGES / "saved"
        if saved:
            machine = Television(IMAGES, saved=folder)
            machines.append(machine)
            machine.resume()
        else:
            machine = Television(IMAGES, disk=folder / "root.qcow2")
            machines.append(machine)
        return machine

    yield make
    report = getattr(request.node, "called", None)
    for machine in machines:
        if report is not None and report.failed:
            report.sections.append(("the machine", state_of(machine)))
        machine.close()


@pytest.fixture
def television(switch_on):
    """A machine whose daemon runs and whose ports are empty."""
    return switch_on(saved=True)


def state_of(machine):
    """What the machine tells of itself when a scenario has failed."""
    try:
        return machine.guest.run(
            "journalctl -b -o short-monotonic --no-pager | tail -n 60; findmnt --real; lsblk"
        )[1]
    except Exception as error:  # pylint: disable=broad-except
        return f"it does not answer: {error!r}\n{machine.qemu.console()[-3000:]}"


# ---- the table


def behaviour(node):
    """The name of a test as a sentence."""
    return node.split("::")[-1].removeprefix("test_").replace("_", " ")


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """Lets the machine's fixture see how its test ended."""
    outcome = yield
    report = outcome.get_result()
    if call.when == "call":
        item.called = report


def pytest_report_teststatus(report):
    """No dots: the rows tell."""
    counts = report.when == "call" or not report.passed
    return report.outcome if counts else "", "", ""


class Rows:
    """Prints a row when a scenario has ended; the seconds are those of the whole, its machine's too."""

    def __init__(self, terminal):
        self._terminal = terminal
        self._seconds = 0.0
        self._passed = True

    def pytest_runtest_logreport(self, report):
        """Adds up the phases of a test."""
        if report.when == "setup":
            self._seconds, self._passed = 0.0, True
        self._seconds += report.duration
        self._passed = self._passed and report.passed
        if report.when == "teardown":
            word = "pass" if self._passed else "FAIL"
            self._terminal.write_line(
                f"{word}  {self._seconds:6.1f} s  {behaviour(report.nodeid)}"
            )


@pytest.hookimpl(trylast=True)
def pytest_configure(config):
    """Puts the table in place of pytest's own report of progress."""
    terminal = config.pluginmanager.get_plugin("terminalreporter")
    config.pluginmanager.register(Rows(terminal), "rows")
