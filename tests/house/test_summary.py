"""The adding-up of results: what counts as passed, and everything that must count as failed."""

import pytest
import summary

GTEST = """<?xml version="1.0" encoding="UTF-8"?>
<testsuites tests="{count}" name="AllTests">
  <testsuite name="Manager" tests="{count}">
{cases}
  </testsuite>
</testsuites>
"""
RAN = '<testcase name="{}" status="run" result="completed" classname="Manager" />'
FAILED = (
    '<testcase name="{}" status="run" result="completed" classname="Manager">'
    '<failure message="no" type=""><![CDATA[no]]></failure></testcase>'
)
SKIPPED = (
    '<testcase name="{}" status="run" result="skipped" classname="Manager">'
    '<skipped message="A.cpp:3&#x0A;no hub" /></testcase>'
)
DISABLED = '<testcase name="{}" status="notrun" result="suppressed" classname="Manager" />'

PYTEST = """<?xml version="1.0" encoding="utf-8"?>
<testsuites><testsuite name="pytest" errors="1" failures="0" skipped="2" tests="4">
  <testcase classname="tests.bus.test_a" name="test_good" />
  <testcase classname="tests.bus.test_a" name="test_broken">
    <error message="setup">no</error>
  </testcase>
  <testcase classname="tests.bus.test_a" name="test_left_out">
    <skipped type="pytest.skip" message="no bus">why</skipped>
  </testcase>
  <testcase classname="tests.bus.test_a" name="test_expected">
    <skipped type="pytest.xfail" message="" />
  </testcase>
</testsuite></testsuites>"""


def gtest(*cases):
    """A result file as GoogleTest writes it."""
    text = "\n".join(case.format(f"Case{index}") for index, case in enumerate(cases))
    return GTEST.format(count=len(cases), cases=text)


def count(tree, results, status=0, skips=""):
    """The tally of one suite named "unit" with this result file."""
    file = tree({"unit.xml": results}) / "unit.xml"
    manifest = f"cases\tunit\t{status}\t{file}\n"
    return summary.count(manifest, summary.read_allowed_skips(skips))


def test_every_case_that_ran_well_counts_as_passed(tree):
    tally = count(tree, gtest(RAN, RAN, RAN))
    assert (tally.passed, tally.failures) == (3, [])


def test_a_failed_case_counts_once_and_is_named(tree):
    tally = count(tree, gtest(RAN, FAILED, RAN), status=1)
    assert (tally.passed, tally.failures) == (2, ["unit: Manager.Case1"])


def test_a_skipped_case_counts_as_failed(tree):
    tally = count(tree, gtest(RAN, SKIPPED))
    assert (tally.passed, tally.failures) == (
        1,
        ["unit: Manager.Case1 did not run: A.cpp:3 no hub"],
    )


def test_a_disabled_case_counts_as_failed(tree):
    tally = count(tree, gtest(RAN, DISABLED))
    assert (tally.passed, tally.failures) == (1, ["unit: Manager.Case1 did not run: disabled"])


@pytest.mark.parametrize("case", [SKIPPED, DISABLED])
def test_a_skip_on_the_list_counts_neither_way_and_is_told(tree, case):
    tally = count(tree, gtest(RAN, case), skips="# why\n\nunit Manager.Case1: needs a hub\n")
    assert (tally.passed, tally.failures) == (1, [])
    assert tally.allowed == ["unit: Manager.Case1: needs a hub"]


def test_a_listed_case_that_fails_counts_as_failed(tree):
    tally = count(tree, gtest(RAN, FAILED), status=1, skips="unit Manager.Case1: needs a hub\n")
    assert tally.failures == ["unit: Manager.Case1"]


def test_a_skip_listed_for_another_suite_counts_as_failed(tree):
    tally = count(tree, gtest(RAN, SKIPPED), skips="bus Manager.Case1: needs a hub\n")
    assert len(tally.failures) == 1


@pytest.mark.parametrize("line", ["unit Manager.Case1", "unit Manager.Case1: ", "Case1: reason"])
def test_a_line_of_the_list_without_suite_case_and_reason_is_an_error(line):
    with pytest.raises(ValueError):
        summary.read_allowed_skips(line)


def test_a_suite_name_of_several_words_can_be_listed():
    listed = summary.read_allowed_skips("unit under sanitizers A.B::c[1]: why: so\n")
    assert listed == {("unit under sanitizers", "A.B::c[1]"): "why: so"}


def test_errors_skips_and_expected_failures_of_pytest_count_as_failed(tree):
    tally = count(tree, PYTEST, status=1)
    assert tally.passed == 1
    assert [text.split(" ")[1] for text in tally.failures] == [
        "tests.bus.test_a.test_broken",
        "tests.bus.test_a.test_left_out",
        "tests.bus.test_a.test_expected",
    ]


def test_a_suite_without_a_case_counts_as_failed(tree):
    tally = count(tree, gtest())
    assert (tally.passed, tally.failures) == (0, ["unit: ran no test (exit status 0)"])


def test_a_suite_that_crashed_half_way_through_its_file_counts_as_failed(tree):
    whole = gtest(RAN, RAN)
    tally = count(tree, whole[: len(whole) // 2], status=134)
    assert tally.passed == 0
    assert len(tally.failures) == 1
    assert "broken (exit status 134)" in tally.failures[0]


def test_an_empty_result_file_counts_as_failed(tree):
    assert len(count(tree, "").failures) == 1


def test_a_missing_result_file_counts_as_failed(tmp_path):
    tally = summary.count(f"cases\tunit\t139\t{tmp_path}/none.xml\n", {})
    assert tally.failures == ["unit: left no result file (exit status 139)"]


def test_a_suite_that_ran_out_of_time_says_so(tmp_path):
    tally = summary.count(f"cases\tunit\t124\t{tmp_path}/none.xml\n", {})
    assert tally.failures == ["unit: left no result file (out of time)"]


def test_a_bad_end_after_good_cases_counts_as_failed(tree):
    tally = count(tree, gtest(RAN, RAN), status=1)
    assert tally.passed == 2
    assert tally.failures == ["unit: ended badly though no case failed (exit status 1)"]


def test_bytes_that_are_no_text_spoil_no_counting(tree):
    results = gtest(RAN, FAILED).encode().replace(b"[no]", b"[n\xff]")
    tally = count(tree, results, status=1)
    assert (tally.passed, len(tally.failures)) == (1, 1)


def test_a_check_counts_as_one():
    tally = summary.count("check\tbuild\t0\ncheck\tclang-tidy\t1\n", {})
    assert (tally.passed, tally.failures) == (1, ["clang-tidy"])


def test_what_could_not_be_started_counts_as_failed():
    tally = summary.count("blocked\tunit\n", {})
    assert tally.failures == ["unit: not run, its build failed"]


def run(tree, capsys, manifest, skips=""):
    """The exit status and the printed lines of a whole run."""
    folder = tree({"manifest": manifest, "skips": skips})
    status = summary.main([str(folder / "manifest"), str(folder / "skips")])
    return status, capsys.readouterr().out.splitlines()


def test_the_last_line_is_the_sum(tree, capsys):
    assert run(tree, capsys, "check\ta\t0\ncheck\tb\t0\n") == (0, ["2 passed, 0 failed"])
    status, printed = run(tree, capsys, "check\ta\t0\ncheck\tb\t1\n")
    assert (status, printed) == (1, ["failed: b", "1 passed, 1 failed"])


def test_a_run_of_nothing_is_a_failure(tree, capsys):
    assert run(tree, capsys, "") == (1, ["0 passed, 0 failed"])


def test_a_broken_list_of_allowed_skips_is_a_failure(tree, capsys):
    status, printed = run(tree, capsys, "check\ta\t0\n", skips="nonsense\n")
    assert status == 1
    assert printed[-1] == "1 passed, 1 failed"
    assert printed[0].startswith("failed: the list of allowed skips: ")


def test_an_allowed_skip_is_printed_with_its_reason(tree, capsys):
    file = tree({"unit.xml": gtest(RAN, SKIPPED)}) / "unit.xml"
    status, printed = run(
        tree, capsys, f"cases\tunit\t0\t{file}\n", skips="unit Manager.Case1: needs a hub\n"
    )
    assert (status, printed) == (
        0,
        ["skipped, as allowed: unit: Manager.Case1: needs a hub", "1 passed, 0 failed"],
    )
