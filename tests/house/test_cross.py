"""The command ./dev cross up to where it needs another system: what it asks for, and what it does without.
The rest is tried by running it.
"""

import os
import shutil
import subprocess

import pytest


@pytest.fixture
def cross(project, tmp_path):
    """Runs ./dev cross in a pretended project on a machine that lacks everything: (exit status, what it
    said)."""
    checkout = tmp_path / "checkout"
    shutil.copytree(project / "tools", checkout / "tools")
    shutil.copy(project / "dev", checkout)
    programs = tmp_path / "programs"
    programs.mkdir()
    for tool in ("bash", "dirname", "flock", "id", "mkdir", "readlink"):
        (programs / tool).symlink_to(shutil.which(tool))
    (programs / "dpkg-query").write_text("#!/bin/bash\nexit 1\n")
    (programs / "dpkg-query").chmod(0o755)
    (programs / "sudo").write_text("#!/bin/bash\nexit 1\n")
    (programs / "sudo").chmod(0o755)

    def run(*arguments):
        done = subprocess.run(
            [shutil.which("bash"), str(checkout / "dev"), "cross", *arguments],
            env={"PATH": str(programs), "PORTMELD_SKIP_SETUP": "1", "LC_ALL": "C.UTF-8"},
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=60,
            check=False,
        )
        assert os.listdir(checkout / "build" / "cross") == list(arguments[:1]) or done.returncode == 2
        return done.returncode, done.stderr

    (checkout / "build" / "cross").mkdir(parents=True)
    return run


@pytest.mark.parametrize("arguments", [(), ("amd64",), ("--help-me",), ("../x",)])
def test_it_wants_to_know_for_which_architecture(cross, arguments):
    status, said = cross(*arguments)
    assert status == 2
    assert "armhf or arm64" in said


def test_a_suite_that_is_not_run_there_is_refused(cross):
    status, said = cross("armhf", "unit", "workbench")
    assert status == 2
    assert "unknown suite 'workbench'; there are: unit bus ctl packages memory" in said


def test_memory_is_asked_for_only_where_it_can_be_told_from_the_emulators(cross):
    status, said = cross("arm64", "memory")
    assert status == 2
    assert "there are: unit bus ctl packages\n" in said


def test_it_says_what_the_machine_lacks(cross):
    status, said = cross("armhf")
    assert status == 1
    assert "debian-archive-keyring mmdebstrap util-linux" in said
    assert "there is no mmdebstrap on this machine" in said
