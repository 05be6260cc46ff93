"""The installing of what is missing, on a pretended machine: dpkg, apt-get, sudo and id are scripts
that write down how they were called, and everything else comes from the real machine.
"""

import os
import shutil
import subprocess

import pytest

CONTROL = """Source: portmeld
# A comment stands anywhere.
Build-Depends: debhelper-compat (= 13),
               meson (>= 1.0),
# This one as well.
               pkg-config, g++:native,
               old-name | new-name,
               clang-tidy <!nocheck>
Standards-Version: 4.6.2

Package: portmeld
Depends: not-for-building
"""

INSTALLED = {
    "meson": ("1.0.1-5", ""),
    "pkgconf": ("1.8.1", "pkg-config (= 1.8.1), pkgconf-bin"),
    "g++": ("4:12.2.0-3", "c++-compiler"),
    "new-name": ("2", ""),
    "clang-tidy": ("14", ""),
}

TOOLS = ["awk", "bash", "cat", "dirname", "env", "mkdir", "rm", "tail"]


class Machine:
    """A pretended machine with a checkout of the project."""

    def __init__(self, folder, project):
        self.root = folder / "checkout"
        self.bin = folder / "bin"
        self.calls = folder / "calls"
        self.packages = folder / "packages"
        self.after = folder / "packages-after"
        self.bin.mkdir()
        (self.root / "debian").mkdir(parents=True)
        (self.root / "tools").mkdir()
        for name in ("common.sh", "setup.sh"):
            shutil.copy(project / "tools" / name, self.root / "tools")
        self.control(CONTROL)
        for name in TOOLS:
            (self.bin / name).symlink_to(shutil.which(name))
        self.script("dpkg-query", f'cat "{self.packages}"')
        self.script("dpkg", f'exec {shutil.which("dpkg")} "$@"')
        self.script("id", "echo 0")
        self.apt()
        self.installed(INSTALLED)

    def script(self, name, text):
        """Puts a program on the machine."""
        (self.bin / name).write_text(f"#!/bin/bash\n{text}\n")
        (self.bin / name).chmod(0o755)

    def apt(self, update=0, install=0):
        """Puts an apt-get on it that ends in these ways; installing changes what is there."""
        self.script(
            "apt-get",
            f'echo "apt-get $* ${{DEBIAN_FRONTEND:-}}" >>"{self.calls}"\n'
            f'case " $* " in *" update "*) exit {update} ;; esac\n'
            f'echo "E: the archive is away"\n'
            f'[[ -e "{self.after}" ]] && cat "{self.after}" >"{self.packages}"\n'
            f"exit {install}",
        )

    def control(self, text):
        """Writes the list of dependencies."""
        (self.root / "debian" / "control").write_text(text)

    def installed(self, packages, after=None):
        """What is installed, and what will be once apt-get has installed something."""
        for file, content in ((self.packages, packages), (self.after, after)):
            if content is not None:
                file.write_text(
                    "".join(
                        f"installed\t{name}\t{version}\t{provides}\n"
                        for name, (version, provides) in content.items()
                    )
                )

    def setup(self, *arguments, **environment):
        """Runs the script: (exit status, what it said, the calls of apt-get and sudo)."""
        done = subprocess.run(
            [str(self.root / "tools" / "setup.sh"), *arguments],
            env={"PATH": str(self.bin), **environment},
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            timeout=30,
            check=False,
        )
        calls = self.calls.read_text().splitlines() if self.calls.exists() else []
        return done.returncode, done.stdout, calls


@pytest.fixture
def machine(tmp_path, project):
    """A machine on which all but debhelper is installed."""
    return Machine(tmp_path, project)


def without(*names):
    """What is installed, less these."""
    return {name: value for name, value in INSTALLED.items() if name not in names}


def test_nothing_is_started_when_nothing_is_missing(machine):
    assert machine.setup() == (0, "setup: nothing is missing\n", [])


def test_what_is_missing_is_installed_and_named(machine):
    machine.installed(without("clang-tidy", "g++"), after=INSTALLED)
    status, said, calls = machine.setup()
    assert status == 0
    assert said.startswith("setup: missing: g++ clang-tidy\n")
    assert said.endswith("setup: done\n")
    assert len(calls) == 2
    assert " update " in calls[0]
    assert " --no-install-recommends install g++ clang-tidy noninteractive" in calls[1]
    assert all(" -y " in call and call.endswith(" noninteractive") for call in calls)


def test_a_second_run_has_nothing_to_do(machine):
    machine.installed(without("meson"), after=INSTALLED)
    machine.setup()
    machine.calls.unlink()
    assert machine.setup() == (0, "setup: nothing is missing\n", [])


def test_too_old_a_version_is_missing(machine):
    machine.installed({**INSTALLED, "meson": ("0.56.2-1", "")}, after=INSTALLED)
    assert "setup: missing: meson\n" in machine.setup()[1]


def test_a_package_that_another_one_provides_is_not_missing(machine):
    machine.installed(without("pkgconf"), after=INSTALLED)
    assert "setup: missing: pkg-config\n" in machine.setup()[1]


def test_of_alternatives_the_first_is_installed_when_there_is_none(machine):
    machine.installed(without("new-name"), after=INSTALLED)
    assert "setup: missing: old-name\n" in machine.setup()[1]


def test_a_removed_package_whose_settings_stayed_is_missing(machine):
    machine.installed(without("meson"), after=INSTALLED)
    with machine.packages.open("a") as packages:
        packages.write("config-files\tmeson\t1.0.1-5\t\n")
    assert "setup: missing: meson\n" in machine.setup()[1]


def test_what_packaging_needs_is_installed_only_for_packaging(machine):
    debhelper = ("13.11.4", "debhelper-compat (= 12), debhelper-compat (= 13)")
    machine.installed(INSTALLED, after={**INSTALLED, "debhelper": debhelper})
    status, said, _ = machine.setup("--packaging")
    assert "setup: missing: debhelper-compat\n" in said
    assert (status, said.splitlines()[-1]) == (0, "setup: done")


def test_without_root_sudo_is_used(machine):
    machine.script("id", "echo 1000")
    machine.script("sudo", f'echo "sudo $1" >>"{machine.calls}"; exec "$@"')
    machine.installed(without("meson"), after=INSTALLED)
    status, _, calls = machine.setup()
    assert status == 0
    assert [call.split()[0] for call in calls] == ["sudo", "apt-get", "sudo", "apt-get"]
    assert calls[3].endswith(" noninteractive")


def test_without_root_and_sudo_the_packages_are_named(machine):
    machine.script("id", "echo 1000")
    machine.installed(without("meson", "clang-tidy"))
    status, said, calls = machine.setup()
    assert (status, calls) == (1, [])
    assert "needs root or sudo; as root run: apt-get install meson clang-tidy\n" in said


def test_without_dpkg_the_packages_are_named(machine):
    (machine.bin / "dpkg-query").unlink()
    status, said, calls = machine.setup()
    assert (status, calls) == (1, [])
    for line in ("  meson (>= 1.0)", "  pkg-config", "  g++:native", "  clang-tidy <!nocheck>"):
        assert f"{line}\n" in said
    assert "PORTMELD_SKIP_SETUP=1" in said


def test_without_apt_the_packages_are_named(machine):
    (machine.bin / "apt-get").unlink()
    machine.installed(without("meson"))
    status, said, _ = machine.setup()
    assert status == 1
    assert "install these packages yourself: meson\n" in said


def test_setup_can_be_left_to_the_user(machine):
    (machine.bin / "dpkg-query").unlink()
    assert machine.setup(PORTMELD_SKIP_SETUP="1")[0] == 0


def test_lists_that_cannot_be_fetched_do_not_hinder_the_installation(machine):
    machine.apt(update=100)
    machine.installed(without("meson"), after=INSTALLED)
    status, said, calls = machine.setup()
    assert (status, len(calls)) == (0, 2)
    assert "apt-get update failed" in said


def test_a_failed_installation_shows_why_and_names_the_packages(machine):
    machine.apt(install=100)
    machine.installed(without("meson"))
    status, said, _ = machine.setup()
    assert status == 1
    assert "E: the archive is away\n" in said
    assert said.endswith("could not install: meson\n")


def test_an_installation_that_brought_nothing_is_a_failure(machine):
    machine.installed(without("meson"))
    status, said, _ = machine.setup()
    assert status == 1
    assert said.endswith("still missing after the installation: meson\n")


@pytest.mark.parametrize("relation", ["Meson", "meson [amd64]", "meson <!nodoc>", "meson (>= )"])
def test_a_dependency_that_cannot_be_read_is_an_error(machine, relation):
    machine.control(f"Source: portmeld\nBuild-Depends: g++, {relation}\n")
    status, said, calls = machine.setup()
    assert (status, calls) == (1, [])
    assert f"cannot read the build dependency '{relation}'" in said


@pytest.mark.parametrize("text", ["Source: portmeld\n", "Source: a\n\nBuild-Depends: g++\n", ""])
def test_a_list_without_dependencies_is_an_error(machine, text):
    machine.control(text)
    assert machine.setup()[:2] == (1, "dev: debian/control: no Build-Depends found\n")


def test_an_unknown_argument_is_an_error(machine):
    assert machine.setup("--pakaging")[0] == 2


def test_the_projects_own_list_can_be_read(machine, project):
    machine.control((project / "debian" / "control").read_text())
    machine.installed({})
    status, said, calls = machine.setup("--packaging")
    assert status == 1
    wanted = calls[1].split(" install ")[1].split()[:-1]
    assert {"g++", "meson", "libglib2.0-dev", "clang-tidy", "debhelper-compat"} <= set(wanted)
    assert "cannot read" not in said
    assert all(os.path.basename(name) == name for name in wanted)
