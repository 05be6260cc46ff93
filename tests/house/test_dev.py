"""The command ./dev and the running of suites, in a pretended project: what a person sees, and that
nothing which goes wrong is counted as well.
"""

import os
import shutil
import signal
import subprocess
import time

import pytest

# A meson that "builds" while it configures, and like the real one does nothing about a folder that
# is configured already.
MESON = """#!/bin/bash
folder=${@: -2:1}
[[ ! -e $folder/tests ]] || exit 0
mkdir -p "$folder/tests/unit" "$folder/workbench"
cp "$PRETENDED/unit-tests" "$folder/tests/unit/unit-tests"
cp "$PRETENDED/workbench" "$folder/workbench/portmeld-workbench"
echo "$*" >>"$PRETENDED/meson-calls"
"""
NINJA = """#!/bin/bash
[[ -e $PRETENDED/ninja-fails ]] || exit 0
echo "A.cpp:1: error: no"
exit 1
"""
GOOD_UNIT = """#!/bin/bash
pwd >"$PRETENDED/unit-folder"
cat >"${GTEST_OUTPUT#xml:}" <<EOF
<testsuites><testsuite name="A"><testcase classname="A" name="One" status="run"/>
<testcase classname="A" name="Two" status="run"/></testsuite></testsuites>
EOF
"""
GOOD_PYTEST = "def test_a():\n    pass\n"


class Checkout:
    """A pretended project that uses the real ./dev and tools/."""

    def __init__(self, folder, project):
        self.root = folder / "checkout"
        self.pretended = folder / "pretended"
        for name in ("dev", "tools", ".ci", "tests/house/summary.py"):
            source, target = project / name, self.root / name
            target.parent.mkdir(parents=True, exist_ok=True)
            if source.is_dir():
                shutil.copytree(source, target, ignore=shutil.ignore_patterns("__pycache__"))
            else:
                shutil.copy(source, target)
        self.write("tests/house/allowed-skips.txt", "")
        for suite in ("bus", "ctl", "linux", "workbench"):
            self.write(f"tests/{suite}/test_{suite}.py", GOOD_PYTEST)
        self.write("tests/soak/soak.py", "")
        self.write("debian/control", "Source: portmeld\nBuild-Depends: bash\n")
        self.pretend("meson", MESON)
        self.pretend("ninja", NINJA)
        self.pretend("unit-tests", GOOD_UNIT)
        self.pretend("workbench", '#!/bin/bash\npwd\nprintf "<%s>\\n" "$@"\n')

    def write(self, name, text):
        """Writes a file of the project."""
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        (self.root / name).write_text(text)

    def pretend(self, name, text):
        """Puts a program before the machine's own, or into the builds."""
        self.pretended.mkdir(exist_ok=True)
        (self.pretended / name).write_text(text)
        (self.pretended / name).chmod(0o755)

    def surroundings(self):
        """The environment in which the pretended programs are found."""
        return {
            **os.environ,
            "PATH": f"{self.pretended}:{os.environ['PATH']}",
            "PRETENDED": str(self.pretended),
            "PORTMELD_SKIP_SETUP": "1",
        }

    def dev(self, *arguments, cwd=None, **environment):
        """Runs ./dev: (exit status, lines of standard output, standard error)."""
        done = subprocess.run(
            [str(self.root / "dev"), *arguments],
            cwd=cwd,
            env={**self.surroundings(), **environment},
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=60,
            check=False,
        )
        return done.returncode, done.stdout.splitlines(), done.stderr


@pytest.fixture
def checkout(tmp_path, project):
    """A project in which everything goes well."""
    return Checkout(tmp_path, project)


@pytest.mark.parametrize("arguments", [[], ["help"], ["--help"], ["test", "--help"], ["run", "-h"]])
def test_help_is_one_screen_and_names_every_verb(checkout, arguments):
    status, lines, _ = checkout.dev(*arguments)
    assert status == 0
    assert len(lines) <= 24
    assert max(map(len, lines)) <= 100
    verbs = "run test fuzz soak bench coverage format build setup package cross vm picture help"
    for verb in verbs.split():
        assert any(line.startswith(f"  {verb} ") for line in lines)


def test_an_unknown_verb_is_an_error(checkout):
    status, lines, said = checkout.dev("tset")
    assert (status, lines) == (2, [])
    assert 'unknown verb "tset"' in said


def test_an_unknown_suite_or_variant_is_an_error(checkout):
    assert checkout.dev("test", "unti")[0] == 2
    assert checkout.dev("build", "debug")[0] == 2


def test_run_gives_the_arguments_on_in_the_callers_folder(checkout, tmp_path):
    status, lines, _ = checkout.dev("run", "a folder", "../b", "", cwd=tmp_path)
    assert (status, lines) == (0, [str(tmp_path), "<a folder>", "<../b>", "<>"])


def test_run_starts_nothing_when_the_build_failed(checkout):
    (checkout.pretended / "ninja-fails").touch()
    status, lines, said = checkout.dev("run")
    assert (status, lines) == (1, [])
    assert "A.cpp:1: error: no\n" in said
    assert said.endswith("building build/release failed\n")


def test_the_builds_are_configured_once_and_again_when_an_option_changed(checkout):
    calls = checkout.pretended / "meson-calls"
    checkout.dev("build")
    checkout.dev("build")
    assert len(calls.read_text().splitlines()) == 1
    checkout.dev("build", CXX="clang++")
    assert len(calls.read_text().splitlines()) == 2


def test_a_build_whose_configuring_failed_is_configured_anew(checkout):
    checkout.pretend("meson", "#!/bin/bash\necho 'no such library'\nexit 1\n")
    status, _, said = checkout.dev("build")
    assert status == 1
    assert "no such library\n" in said
    checkout.pretend("meson", MESON)
    assert checkout.dev("build")[0] == 0


def test_every_build_takes_warnings_as_errors_and_its_own_options(checkout):
    assert checkout.dev("build", "release", "sanitize", "coverage")[0] == 0
    release, sanitize, coverage = (checkout.pretended / "meson-calls").read_text().splitlines()
    for call in (release, sanitize, coverage):
        assert "-Dwerror=true -Dpath_prefix=./root" in call
    assert "-Db_sanitize" not in release
    assert "-Db_sanitize=address,undefined" in sanitize
    assert "-Db_coverage=true" in coverage


@pytest.mark.parametrize("asked, used", [("", "clang++"), ("my-clang", "my-clang")])
def test_the_fuzzer_is_built_by_a_clang_and_nothing_but_its_programs(checkout, asked, used):
    checkout.pretend("meson", MESON.replace('"$*"', '"${CXX##* } $*"'))
    checkout.pretend("ninja", '#!/bin/bash\necho "$*" >>"$PRETENDED/ninja-calls"\n')
    checkout.pretend("c++", "#!/bin/bash\necho 'c++ (Debian) 12'\n")
    checkout.pretend("my-clang", "#!/bin/bash\necho 'my clang version 14'\n")
    assert checkout.dev("build", "fuzz", CXX=asked)[0] == 0
    (call,) = (checkout.pretended / "meson-calls").read_text().splitlines()
    assert call.startswith(f"{used} setup ")
    assert "-Db_sanitize=address,undefined" in call
    assert "-Dfuzz=true" in call
    (built,) = (checkout.pretended / "ninja-calls").read_text().splitlines()
    assert built.endswith("/build/fuzz --quiet -k 0 fuzz-harnesses")


def test_a_good_run_closes_on_the_sum(checkout):
    status, lines, _ = checkout.dev("test", "unit", "bus")
    # The build, two unit tests and one bus test.
    assert (status, lines[-1]) == (0, "4 passed, 0 failed")
    assert sum("passed," in line for line in lines) == 1
    assert [line for line in lines if line.startswith("== ")] == [
        "== build release",
        "== unit",
        "== bus",
    ]


def test_the_unit_tests_work_in_a_fresh_folder_below_the_results(checkout):
    checkout.dev("test", "unit")
    folder = (checkout.pretended / "unit-folder").read_text()
    assert folder.startswith(str(checkout.root / "build" / "results" / "scratch."))


def test_a_failing_test_is_shown_and_the_other_suites_still_run(checkout):
    checkout.pretend("unit-tests", "#!/bin/bash\necho 'Expected: nothing'\nkill -SEGV $$\n")
    status, lines, _ = checkout.dev("test", "unit", "bus")
    assert status == 1
    assert "Expected: nothing" in lines
    assert "failed: unit: left no result file (exit status 139)" in lines
    assert lines[-1] == "2 passed, 1 failed"


def test_a_suite_without_a_test_is_a_failure(checkout):
    checkout.write("tests/bus/test_bus.py", "")
    status, lines, _ = checkout.dev("test", "bus")
    assert (status, lines[-1]) == (1, "1 passed, 1 failed")


def test_a_suite_that_is_not_there_is_a_failure(checkout):
    status, lines, _ = checkout.dev("test", "resources")
    assert (status, lines[-1]) == (1, "1 passed, 1 failed")


def test_a_skipped_test_is_a_failure(checkout):
    checkout.write("tests/bus/test_bus.py", "import pytest\ndef test_a():\n    pytest.skip('no')\n")
    status, lines, _ = checkout.dev("test", "bus")
    assert (status, lines[-1]) == (1, "1 passed, 1 failed")


def test_after_a_failed_build_its_tests_do_not_run_and_count_as_failed(checkout):
    checkout.dev("build")
    (checkout.pretended / "ninja-fails").touch()
    status, lines, _ = checkout.dev("test", "unit", "bus", "sanitize")
    assert status == 1
    assert "A.cpp:1: error: no" in lines
    assert not (checkout.pretended / "unit-folder").exists()
    assert lines[-1] == "0 passed, 9 failed"


def test_results_of_an_earlier_run_are_not_counted(checkout):
    checkout.dev("test", "unit")
    checkout.pretend("unit-tests", "#!/bin/bash\nexit 0\n")
    shutil.copy(checkout.pretended / "unit-tests", checkout.root / "build/release/tests/unit")
    status, lines, _ = checkout.dev("test", "unit")
    assert (status, lines[-1]) == (1, "1 passed, 1 failed")


def test_a_report_of_a_sanitizer_is_a_failure_though_every_test_passed(checkout):
    report = 'echo "ERROR: leak" >"${ASAN_OPTIONS##*log_path=}.17"\n'
    checkout.pretend("unit-tests", GOOD_UNIT + report)
    status, lines, _ = checkout.dev("test", "sanitize")
    assert status == 1
    assert "ERROR: leak" in lines
    assert "failed: no sanitizer reports" in lines
    # The build, two unit tests and one test of each other suite went well.
    assert lines[-1] == "7 passed, 1 failed"


def test_sanitizers_without_a_report_pass(checkout):
    status, lines, _ = checkout.dev("test", "sanitize")
    assert (status, lines[-1]) == (0, "8 passed, 0 failed")


def test_endurance_is_tried_in_both_its_parts_with_two_seeds_each(checkout):
    checkout.write("tests/soak/soak.py", "import sys\nsys.exit('linux' in sys.argv)\n")
    status, lines, _ = checkout.dev("test", "soak")
    assert (status, lines[-1]) == (1, "3 passed, 2 failed")


def gone(process):
    """Whether a process has ended, be it still to be collected by its parent."""
    try:
        with open(f"/proc/{process}/stat", encoding="utf-8") as stat:
            return stat.read().rpartition(")")[2].split()[0] == "Z"
    except FileNotFoundError:
        return True


def wait_until(condition):
    """Waits for something that must come about within some seconds."""
    end = time.monotonic() + 20
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.02)


def test_an_interrupt_ends_the_run_and_the_suite_that_is_at_work(checkout):
    started = checkout.pretended / "started"
    checkout.pretend("unit-tests", f'#!/bin/bash\necho $$ >"{started}"\nexec sleep 60\n')
    with subprocess.Popen(
        ["env", "--default-signal=INT", str(checkout.root / "dev"), "test", "unit"],
        env=checkout.surroundings(),
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
        start_new_session=True,
    ) as run:
        wait_until(lambda: started.exists() and started.read_text().endswith("\n"))
        # As a terminal does it: to the whole process group.
        os.killpg(run.pid, signal.SIGINT)
        assert run.wait(timeout=20) == 130
    wait_until(lambda: gone(int(started.read_text())))


def test_a_suite_does_not_inherit_ignored_interrupts(checkout):
    checkout.pretend("unit-tests", GOOD_UNIT + "trap >&2\nkill -INT $$\nsleep 5\n")
    status, lines, _ = checkout.dev("test", "unit")
    assert status == 1
    assert "failed: unit: ended badly though no case failed (exit status 130)" in lines


def test_a_linter_that_finds_no_file_is_a_failure(checkout):
    for linter in ("format", "tidy"):
        done = subprocess.run(
            [str(checkout.root / "tools" / "lint.sh"), linter], capture_output=True, check=False
        )
        assert done.returncode == 1
        assert b"there is no file to look at" in done.stderr


@pytest.mark.parametrize(
    "name, text, good",
    [
        ("tools/a.sh", "#!/bin/bash\nx=1\necho \"$x\"\n", True),
        ("tools/a.sh", "#!/bin/bash\nx=1\necho $y\n", False),
        ("tests/no-suffix", "#!/usr/bin/env bash\nx=1\necho $y\n", False),
        ("tests/no-suffix", "#!/bin/sh -e\nx=1\necho $y\n", False),
        ("tests/no-suffix", "#!/usr/bin/python3\nx = '\n", True),
    ],
)
def test_every_shell_script_is_judged(checkout, name, text, good):
    checkout.write(name, text)
    done = subprocess.run(
        [str(checkout.root / "tools" / "lint.sh"), "shell"], capture_output=True, check=False
    )
    assert (done.returncode == 0) == good, done.stdout


@pytest.mark.parametrize("text, good", [("int f();\n", True), ("int  f( ) ;\n", False)])
@pytest.mark.parametrize("folder", ["src", "platform/linux", "workbench", "ctl", "tests/unit"])
def test_every_cxx_file_is_held_to_the_format_and_can_be_brought_to_it(
    checkout, project, folder, text, good
):
    shutil.copy(project / ".clang-format", checkout.root)
    checkout.write(f"{folder}/A.h", text)
    judge = [str(checkout.root / "tools" / "lint.sh"), "format"]
    assert (subprocess.run(judge, capture_output=True, check=False).returncode == 0) == good
    assert checkout.dev("format")[0] == 0
    assert subprocess.run(judge, capture_output=True, check=False).returncode == 0


def test_the_build_server_runs_the_whole_test_command(checkout):
    checkout.write("dev", '#!/bin/bash\necho "dev $*"\nexit 7\n')
    done = subprocess.run(
        ["bash", str(checkout.root / ".ci" / "run")], capture_output=True, text=True, check=False
    )
    assert (done.returncode, done.stdout) == (7, "dev test\n")
