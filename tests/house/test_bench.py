"""The frame of the benchmarks: its arithmetic, its verdicts, that a measure which cannot be made fails the
run and is seen to, and one real measure made from end to end.
"""

import json
import os
import pathlib
import subprocess
import sys

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(PROJECT / "bench"))

from frame import figures, machine, plots, report, surroundings  # noqa: E402

MEASURES = '''
from frame.figures import CannotRun, Figure, at_most, ratio_at_most
from frame.registry import measure

@measure("good", "a good one")
def good(bench):
    yield Figure("good", 3.0, "ms", 2.0, "floor", ratio_at_most(1.5), curves={"c": [(10, 5), (1000, 400)]})

@measure("slow", "one that misses its goal")
def slow(bench):
    yield Figure("slow", 21.0, "instructions", goal=at_most(20))

@measure("absent", "one that needs what is not there")
def absent(bench):
    yield Figure("its first half", 1.0, goal=at_most(2))
    bench.need("no-such-command")

@measure("broken", "one with a defect")
def broken(bench):
    yield 1 / 0

@measure("endless", "one without an end", limit=1)
def endless(bench):
    import time
    time.sleep(60)
    yield None

@measure("empty", "one that makes no figure")
def empty(bench):
    return iter(())

@measure("half", "one that forgets the floor")
def half(bench):
    yield Figure("half", 1.0, "ms", goal=ratio_at_most(2))
'''


@pytest.fixture
def bench(tmp_path):
    """Runs bench.py with the measures above; returns (exit status, output, results, plots)."""
    folder = tmp_path / "pretended"
    folder.mkdir()
    (folder / "some.py").write_text(MEASURES)

    def run(*names):
        done = subprocess.run(
            [sys.executable, str(PROJECT / "bench" / "bench.py"), "--measures", str(folder)]
            + ["--build", str(tmp_path / "build"), *names],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=60,
            check=False,
        )
        results = tmp_path / "build" / "results.json"
        told = json.loads(results.read_text()) if results.exists() else None
        drawn = {file.name: file.read_text() for file in (tmp_path / "build").glob("plots/*.svg")}
        return done.returncode, done.stdout, told, drawn

    return run


def row(output, title):
    """The cells of the table's row of a figure."""
    (line,) = [each for each in output.splitlines() if each.startswith(f"| {title} ")]
    return [cell.strip() for cell in line.strip("|").split("|")]


def test_a_figure_is_told_beside_its_floor_with_ratio_and_verdict(bench):
    status, output, told, drawn = bench("good")
    assert status == 0
    assert row(output, "good") == ["good", "3 ms", "2 ms (floor)", "1.50", "≤ 1.50 ×", "yes"]
    assert "\n1 figures: 1 reached, 0 missed, 0 failed\n" in output
    (figure,) = told["figures"]
    assert (figure["ours"], figure["peer"], figure["ratio"], figure["reached"]) == (3, 2, 1.5, "yes")
    assert told["command"] == "./dev bench good"
    assert set(drawn) == {"goals.svg", "growth-good.svg"}
    assert all(text.startswith("<svg") for text in drawn.values())


def test_plots_are_those_of_the_last_run_alone(bench):
    bench("good")
    _, _, _, drawn = bench("slow")
    assert set(drawn) == {"goals.svg"}


@pytest.mark.parametrize("load, warned", [("1.00", False), ("1.01", True)])
def test_a_machine_that_was_busy_when_it_began_is_told_of(load, warned):
    assert bool(machine.busy_warning({"load when it began": load, "cores": "2"})) == warned


def test_a_missed_goal_is_seen_and_is_no_failure(bench):
    status, output, _, _ = bench("slow")
    assert (status, row(output, "slow")[-1]) == (0, "no")


@pytest.mark.parametrize(
    "name, title, reason",
    [
        ("absent", "one that needs what is not there", "no-such-command is not installed"),
        ("broken", "one with a defect", "ZeroDivisionError: division by zero"),
        ("endless", "one without an end", "no end within 1 s"),
        ("empty", "one that makes no figure", "it made no figure"),
        ("half", "half", "it lacks the value that its goal is about"),
    ],
)
def test_a_measure_that_cannot_be_made_fails_the_run_and_says_why(bench, name, title, reason):
    status, output, told, _ = bench("good", name)
    assert status == 1
    assert row(output, title)[-1] == "FAILED"
    assert f"FAILED: {title} ({name}): {reason}" in output
    assert row(output, "good")[-1] == "yes"
    assert told["figures"][-1]["failure"] == reason


def test_figures_made_before_a_failure_are_kept(bench):
    _, output, _, _ = bench("absent")
    assert row(output, "its first half")[-1] == "yes"


def test_an_unknown_name_runs_nothing(bench):
    status, _, told, _ = bench("good", "nonesuch")
    assert (status, told) == (2, None)


def test_medians_are_compared_and_not_means():
    figure = figures.timed("t", [1, 2, 90], [1, 1, 40], "ms", "floor", figures.ratio_at_most(1.9))
    assert (figure.ours, figure.peer, figure.ratio, figure.verdict) == (2, 1, 2.0, "no")


def test_an_exact_goal_allows_neither_more_nor_less():
    verdicts = [figures.Figure("", value, goal=figures.exactly(12)).verdict for value in (11, 12, 13)]
    assert verdicts == ["no", "yes", "no"]


def test_an_exponent_is_the_slope_between_two_sizes():
    assert figures.exponent((10, 7), (1000, 70_000)) == pytest.approx(2.0)


def test_the_cost_of_one_item_leaves_out_what_every_run_costs():
    assert figures.per_item((10, 5_100), (110, 6_100)) == 10


def test_runs_alternate_after_one_of_each_that_does_not_count():
    calls = []

    def side(name):
        calls.append(name)
        return len(calls)

    ours, peer = surroundings.alternate(lambda: side("ours"), lambda: side("peer"), runs=3)
    assert calls == ["ours", "peer"] * 4
    assert (ours, peer) == ([3, 5, 7], [4, 6, 8])


def test_callgrind_totals_are_read_and_none_is_a_failure():
    assert surroundings.total_instructions("summary: 0\n\ntotals: 42\n") == 42
    for text in ("", "totals: 0\n"):
        with pytest.raises(figures.CannotRun):
            surroundings.total_instructions(text)


def test_a_failed_figure_stands_in_table_and_json_but_in_no_plot():
    failed = figures.Figure("gone", failure="why")
    good = figures.Figure("here", 1.0, goal=figures.at_most(2))
    assert "FAILED: gone" in report.table([failed, good])
    assert "gone" in report.as_json([failed, good], "c", "d", {})
    assert "gone" not in plots.goals([failed, good])


def test_a_suppressed_log_line_is_really_counted(tmp_path):
    build = os.environ["PORTMELD_BUILD_DIR"]
    done = subprocess.run(
        [sys.executable, str(PROJECT / "bench" / "bench.py"), "--build", build]
        + ["--results", str(tmp_path), "log-line"],
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        timeout=120,
        check=False,
    )
    assert done.returncode == 0, done.stdout + done.stderr
    (figure,) = json.loads((tmp_path / "results.json").read_text())["figures"]
    assert 5 < figure["ours"] <= 20
