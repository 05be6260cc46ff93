"""./dev fuzz with pretended harnesses: the table, what a crash says, and that nothing passes by doing
nothing.
"""

import fuzz
import pytest

GOOD = """#!/bin/bash
echo "$*" >>"$(dirname "$0")/calls"
echo 'INFO: whatever'
echo '#2	INITED cov: 10 ft: 20 corp: 2/9b exec/s: 0 rss: 30Mb'
echo '#1234	DONE   cov: 77 ft: 99 corp: 12/345b lim: 21 exec/s: 617 rss: 35Mb'
echo 'stat::number_of_executed_units: 1234'
echo 'stat::average_exec_per_sec:     617'
"""
CRASHING = """#!/bin/bash
for argument; do [[ $argument == -artifact_prefix=* ]] && kept=${argument#*=}crash-1; done
echo '#3	INITED cov: 10 ft: 20 corp: 2/9b exec/s: 0 rss: 30Mb'
echo 'fuzz: does not hold: two is two: three'
echo '==1== ERROR: libFuzzer: deadly signal'
echo "artifact_prefix='x'; Test unit written to $kept"
exit 77
"""
IDLE = "#!/bin/bash\nexit 0\n"
EMPTY_STATUS = "#!/bin/bash\necho 'stat::number_of_executed_units: 0'\n"


@pytest.fixture
def pretended(tree):
    """Makes a project with pretended harnesses, {name: script}; returns its folder."""

    def make(**scripts):
        files = {}
        for name, script in scripts.items():
            files[f"tests/fuzz/corpus/{name}/one"] = "1"
            files[f"tests/fuzz/dictionaries/{name}.dict"] = ""
            files[f"build/fuzz/tests/fuzz/{name}"] = script
        folder = tree(files)
        for name in scripts:
            (folder / "build/fuzz/tests/fuzz" / name).chmod(0o755)
        return folder

    return make


def run(folder, *words):
    """The exit status of ./dev fuzz with these words."""
    return fuzz.main([str(folder), *words])


def test_each_harness_is_a_row_of_figures(pretended, capsys):
    assert run(pretended(b=GOOD, a=GOOD)) == 0
    rows = [line.split() for line in capsys.readouterr().out.splitlines()]
    assert rows == [
        ["harness", "executions", "exec/s", "edges", "inputs", "size"],
        ["a", "1234", "617", "77", "12", "345b"],
        ["b", "1234", "617", "77", "12", "345b"],
    ]


def test_only_the_named_harness_runs_for_the_wanted_time_from_both_corpora(pretended):
    folder = pretended(a=GOOD, b=GOOD)
    assert run(folder, "b", "--seconds", "9") == 0
    calls = (folder / "build/fuzz/tests/fuzz/calls").read_text().splitlines()
    assert len(calls) == 1
    assert "-max_total_time=9 " in calls[0]
    assert calls[0].endswith(f"{folder}/build/fuzz-corpus/b {folder}/tests/fuzz/corpus/b")


def test_a_crash_fails_says_why_and_gives_the_command_that_replays_it(pretended, capsys):
    assert run(pretended(a=CRASHING, b=GOOD)) == 1
    lines = capsys.readouterr().out.splitlines()
    assert lines[2].split()[:2] == ["b", "1234"], "the others still run"
    assert lines[-2:] == [
        "a: fuzz: does not hold: two is two: three",
        "    replay it: ./dev fuzz a build/fuzz-crashes/a/crash-1",
    ]


@pytest.mark.parametrize("script", [IDLE, EMPTY_STATUS])
def test_a_harness_that_runs_nothing_fails(pretended, capsys, script):
    assert run(pretended(a=script)) == 1
    assert "a: ran nothing" in capsys.readouterr().out


def test_a_harness_without_an_end_is_stopped_and_fails(pretended, capsys, monkeypatch):
    monkeypatch.setattr(fuzz, "GRACE_SECONDS", -0.5)
    assert run(pretended(a="#!/bin/bash\necho begun\nexec sleep 60\n"), "--seconds", "1") == 1
    assert "a: no end" in capsys.readouterr().out


def test_an_input_is_replayed_and_its_output_shown(pretended, capsys):
    folder = pretended(a=GOOD)
    assert run(folder, "a", str(folder / "tests/fuzz/corpus/a/one")) == 0
    assert "INFO: whatever" in capsys.readouterr().out
    call = (folder / "build/fuzz/tests/fuzz/calls").read_text()
    assert call.endswith(f" {folder}/tests/fuzz/corpus/a/one\n")
    assert "max_total_time" not in call


def test_a_replay_that_crashes_fails(pretended, capsys):
    folder = pretended(a=CRASHING)
    assert run(folder, "a", str(folder / "tests/fuzz/corpus/a/one")) == 1
    assert capsys.readouterr().out.endswith(
        "FAILED: a: fuzz: does not hold: two is two: three\n"
    )


@pytest.mark.parametrize(
    "words", [["c"], ["a", "missing"], ["tests/fuzz/corpus/a/one"], ["--seconds", "0"]]
)
def test_what_cannot_be_meant_is_an_error(pretended, words, monkeypatch):
    folder = pretended(a=GOOD)
    monkeypatch.chdir(folder)
    with pytest.raises(SystemExit) as ended:
        run(folder, *words)
    assert ended.value.code == 2
