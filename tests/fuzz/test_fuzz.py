"""Each harness over its committed inputs, then over made-up ones for a few seconds. What must hold for an
input stands in the harness.
"""

import pathlib
import re

import fuzz
import pytest

PROJECT = pathlib.Path(__file__).resolve().parent.parent.parent
NAMES = fuzz.harness_names(PROJECT)
SECONDS = 4
# So many on a machine that is slow and busy, where the slowest harness runs twenty inputs a second.
FEWEST_MADE_UP = 10


def made_up(outcome):
    """How many inputs of a run were made up: those after the committed ones were read."""
    read = re.search(r"^#(\d+)\s+INITED ", outcome.output, re.MULTILINE)
    assert read, outcome.output[-4000:]
    return outcome.executions - int(read[1])


@pytest.mark.parametrize("name", NAMES)
def test_every_committed_input_does_what_it_should(name):
    harness = fuzz.Harness(PROJECT, name)
    files = sorted(harness.corpus.iterdir())
    assert len(files) >= 10
    outcome = harness.replay(files)
    assert outcome.status == 0, outcome.output[-4000:]
    assert len(re.findall(r"^Executed ", outcome.output, re.MULTILINE)) == len(files)


@pytest.mark.parametrize("name", NAMES)
def test_a_few_seconds_of_made_up_inputs_find_nothing(name, tmp_path):
    harness = fuzz.Harness(PROJECT, name)
    outcome = harness.fuzz(SECONDS, tmp_path / "found")
    assert outcome.status == 0, outcome.output[-4000:]
    assert made_up(outcome) >= FEWEST_MADE_UP


def test_inputs_that_were_only_read_do_not_count_as_made_up(tmp_path):
    harness = fuzz.Harness(PROJECT, "mount-table")
    outcome = harness.run(["-runs=0", str(tmp_path), str(harness.corpus)], fuzz.GRACE_SECONDS)
    assert outcome.executions > len(list(harness.corpus.iterdir()))
    assert made_up(outcome) == 0


def test_each_program_has_inputs_and_a_dictionary():
    built = {
        path.name
        for path in fuzz.Harness(PROJECT, NAMES[0]).program.parent.iterdir()
        if path.is_file() and path.suffix == ""
    }
    dictionaries = {path.stem for path in (PROJECT / "tests/fuzz/dictionaries").iterdir()}
    assert built == set(NAMES) == dictionaries
