"""Each harness over its committed inputs, then over made-up ones for a few seconds. What must hold for an
input stands in the harness.
"""

import pathlib
import re

import fuzz
import pytest

PROJECT = pathlib.Path(__file__).resolve().parent.parent.parent
NAMES = fuzz.harness_names(PROJECT)
SECONDS = 2


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
    assert outcome.executions >= len(list(harness.corpus.iterdir()))


def test_each_program_has_inputs_and_a_dictionary():
    built = {
        path.name
        for path in fuzz.Harness(PROJECT, NAMES[0]).program.parent.iterdir()
        if path.is_file() and path.suffix == ""
    }
    dictionaries = {path.stem for path in (PROJECT / "tests/fuzz/dictionaries").iterdir()}
    assert built == set(NAMES) == dictionaries
