"""The page of a whole run is written only when the run is whole, and the daemon was back in time."""

import pytest
import reliability
from outcomes import EXPECTED

KEYS = [(who, how, step) for (who, how), row in EXPECTED.items() for step in row]
TEXT = f"before\n{reliability.BEGIN}\nold\n{reliability.END}\nafter\n"


@pytest.fixture
def document(tmp_path):
    """A page with a table that is out of date."""
    file = tmp_path / "page.md"
    file.write_text(TEXT)
    return file


def write(tmp_path, document, keys=KEYS, back=(0.5,)):
    """Enters these cells into a run, each with these absences, and writes the page; returns the exit status."""
    build = tmp_path / "build"
    build.mkdir()
    run = reliability.Run(build)
    for key in keys:
        run.add(key, "all well", list(back))
    return reliability.main(build, document)


def test_a_whole_run_is_written(tmp_path, document):
    assert write(tmp_path, document, back=[0.5, 1.0]) == 0
    assert reliability.documented(document) == reliability.table(dict.fromkeys(KEYS, "all well"))
    assert document.read_text().startswith("before\n")
    assert document.read_text().endswith("after\n")


def test_a_run_without_one_cell_is_not_written(tmp_path, document, capsys):
    assert write(tmp_path, document, keys=KEYS[1:]) == 1
    assert str(KEYS[0]) in capsys.readouterr().out
    assert document.read_text() == TEXT


@pytest.mark.parametrize(("back", "told"), [([0.5, 1.001], "away for 1.001 s"), ([], "away never")])
def test_a_run_in_which_the_daemon_was_not_back_within_a_second_is_not_written(
    tmp_path, document, capsys, back, told
):
    assert write(tmp_path, document, back=back) == 1
    assert told in capsys.readouterr().out
    assert document.read_text() == TEXT
