"""The judgement of the coverage figures: what passes, and each way to fail."""

import json

import coverage_report


def counts(**files):
    """gcovr's JSON text; each file is given by how often each of its lines ran."""
    entries = []
    for name, hits in files.items():
        lines = [
            {"line_number": number, "count": hit, "gcovr/noncode": False}
            for number, hit in enumerate(hits, 1)
        ]
        lines.append({"line_number": len(hits) + 1, "count": 0, "gcovr/noncode": True})
        entries.append({"file": f"src/{name}.cpp", "lines": lines})
    return json.dumps({"files": entries})


def judge(exceptions="", **files):
    """What is wrong with these counts."""
    return coverage_report.judge(
        coverage_report.read_counts(counts(**files)), coverage_report.read_exceptions(exceptions)
    )


def test_full_coverage_passes(capsys):
    assert judge(A=[1] * 10, B=[3] * 5) == []
    assert "all           15       15   100.0" in capsys.readouterr().out


def test_95_percent_with_a_reason_passes_and_prints_it(capsys):
    assert judge("src/A.cpp: needs a broken disk\n", A=[1] * 95 + [0] * 5) == []
    printed = capsys.readouterr().out
    assert "src/A.cpp: 96-100\n    needs a broken disk\n" in printed


def test_less_than_95_percent_fails():
    wrong = judge("src/A.cpp: needs a broken disk\n", A=[1] * 949 + [0] * 51)
    assert wrong == ["94.9 % of the lines are reached; at least 95 % are wanted"]


def test_lines_that_are_not_reached_need_a_reason():
    wrong = judge(A=[1] * 98 + [0, 0], B=[1])
    assert wrong == ["src/A.cpp: lines 99-100 are not reached and no reason is given"]


def test_a_reason_for_nothing_fails():
    assert len(judge("src/A.cpp: why\nsrc/Gone.cpp: why\n", A=[1])) == 2


def test_no_counted_line_fails():
    assert judge() == ["no line of src/ was counted"]


def test_a_line_counts_as_reached_when_any_of_its_copies_ran():
    text = json.loads(counts(A=[0, 1]))
    text["files"].append(json.loads(counts(A=[1, 0]))["files"][0])
    files = coverage_report.read_counts(json.dumps(text))
    assert files == {"src/A.cpp": {1: 1, 2: 1}}


def test_runs_of_lines_are_told_as_ranges():
    assert coverage_report.ranges([3, 7, 8, 20], [1, 3, 5, 7, 8, 20]) == "3, 7-20"


def test_the_exit_status_tells_the_outcome(tree):
    folder = tree({"counts": counts(A=[1]), "bad": "no colon\n"})
    assert coverage_report.main([str(folder / "counts"), str(folder / "none")]) == 0
    assert coverage_report.main([str(folder / "counts"), str(folder / "bad")]) == 1
