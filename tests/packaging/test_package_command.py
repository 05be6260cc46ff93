"""The command ./dev package, in a pretended project with pretended tools: when it builds, what it leaves
where, and what counts as a failure.
"""

import os
import pathlib
import shutil
import subprocess

import pytest

SOURCE = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"])

BUILD = """#!/bin/bash
echo "$PWD" >>"$CALLS"
echo "$DEB_BUILD_PROFILES: $*" >>"$CALLS"
ls -A >"$(dirname "$PWD")/portmeld_listing"
echo "cannot compile"
[[ ! -e $PRETENDED/build-fails ]] || exit 2
touch ../portmeld_1_all.deb ../portmeld_1_all.changes
"""
JUDGE = """#!/bin/bash
echo "$*" >>"$CALLS"
[[ ! -e $PRETENDED/judge-complains ]] || { echo "W: portmeld: odd"; exit 2; }
"""


class Checkout:
    """The pretended project."""

    def __init__(self, folder):
        self.root = folder / "checkout"
        self.pretended = folder / "pretended"
        self.calls = folder / "calls"
        self.pretended.mkdir()
        shutil.copytree(SOURCE / "tools", self.root / "tools")
        shutil.copy(SOURCE / "dev", self.root)
        self.file("debian/control").write_text("Source: portmeld\nBuild-Depends: bash\n")
        self.file("debian/changelog").write_text(
            "portmeld (1) unstable; urgency=low\n\n  * One.\n\n"
            " -- A <a@example.org>  Sat, 21 Nov 2026 06:00:00 +0000\n"
        )
        for name in ("source.cpp", "build/left-over", ".git/objects"):
            self.file(name).write_text("")
        for name, text in (("dpkg-buildpackage", BUILD), ("lintian", JUDGE)):
            (self.pretended / name).write_text(text)
            (self.pretended / name).chmod(0o755)

    def file(self, name):
        """A file of the project, whose folder is made."""
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        return self.root / name

    def package(self, *arguments):
        """Runs ./dev package: (exit status, standard output, standard error)."""
        done = subprocess.run(
            [str(self.root / "dev"), "package", *map(str, arguments)],
            env={
                **os.environ,
                "PATH": f"{self.pretended}:{os.environ['PATH']}",
                "PRETENDED": str(self.pretended),
                "CALLS": str(self.calls),
                "PORTMELD_SKIP_SETUP": "1",
            },
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=60,
            check=False,
        )
        return done.returncode, done.stdout, done.stderr

    def builds(self):
        """How often something was built or judged."""
        return len(self.calls.read_text().splitlines()) if self.calls.exists() else 0


@pytest.fixture
def checkout(tmp_path):
    """A project in which everything goes well."""
    return Checkout(tmp_path)


def test_the_packages_are_built_in_a_copy_without_what_was_built_before(checkout):
    status, said, _ = checkout.package()
    folder = checkout.root / "build" / "package"
    assert (status, said) == (0, f"{folder}/portmeld_1_all.deb\n")
    assert checkout.calls.read_text().splitlines()[0] == str(folder / "portmeld-1")
    assert (folder / "portmeld_listing").read_text().split() == [
        *("debian", "dev", "source.cpp", "tools")
    ]
    assert not (folder / "portmeld-1").exists()


def test_they_can_be_left_in_another_folder_whose_own_files_stay(checkout, tmp_path):
    other = tmp_path / "other"
    other.mkdir()
    (other / "mine").write_text("mine")
    assert checkout.package(other)[1] == f"{other}/portmeld_1_all.deb\n"
    assert (other / "mine").read_text() == "mine"


def test_what_has_not_changed_is_not_built_again(checkout):
    first = checkout.package()
    built = checkout.builds()
    (checkout.root / "source.cpp").touch()
    assert checkout.package()[:2] == first[:2]
    assert checkout.builds() == built
    (checkout.root / "source.cpp").write_text("int f();\n")
    checkout.package()
    assert checkout.builds() > built


def test_a_failed_build_is_shown_and_is_no_reason_to_keep_anything(checkout):
    (checkout.pretended / "build-fails").touch()
    status, said, log = checkout.package()
    assert (status, said) == (1, "")
    assert "cannot compile" in log
    (checkout.pretended / "build-fails").unlink()
    assert checkout.package()[0] == 0


def test_a_complaint_of_lintian_is_a_failure_each_time(checkout):
    (checkout.pretended / "judge-complains").touch()
    for _ in range(2):
        status, said, log = checkout.package()
        assert (status, said) == (1, "")
        assert "W: portmeld: odd" in log
    assert "--fail-on error,warning" in checkout.calls.read_text()


def test_for_another_architecture_they_are_built_as_cross_builds_are(checkout):
    assert checkout.package("--arch", "armhf")[0] == 0
    built = checkout.calls.read_text().splitlines()[1]
    assert built == "nocheck cross: --no-sign --host-arch armhf"


def test_packages_of_another_architecture_are_not_kept_for_ones_own(checkout):
    checkout.package("--arch", "armhf")
    assert checkout.package()[0] == 0
    assert "nocheck: --no-sign" in checkout.calls.read_text().splitlines()


@pytest.mark.parametrize("arguments", [("--help-me",), ("one", "two"), ("--arch",)])
def test_it_takes_an_architecture_and_a_folder_and_nothing_else(checkout, arguments):
    assert checkout.package(*arguments)[0] == 2
    assert checkout.builds() == 0
