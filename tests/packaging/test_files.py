"""What the packages bring besides programs, and which package brings what."""

import os
import pathlib
import re
import stat
import subprocess

import installed

SOURCE = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"])


def contents(package):
    """The files of a package, as absolute paths."""
    listing = subprocess.run(
        ["dpkg-deb", "--contents", installed.packages()[package]],
        capture_output=True,
        text=True,
        check=True,
    ).stdout
    return {
        line.split()[5].removeprefix(".") for line in listing.splitlines() if not line.startswith("d")
    }


def test_the_three_packages_hold_what_they_say():
    daemon, handlers, headers = map(contents, ("portmeld", "portmeld-handlers", "portmeld-dev"))
    for path in ("bin/portmeld", "bin/portmeldctl", "lib/systemd/system/portmeld@.service"):
        assert f"/usr/{path}" in daemon
    assert any(path.startswith("/usr/libexec/portmeld/") for path in handlers)
    assert any(path.startswith("/usr/share/applications/") for path in handlers)
    assert "/usr/share/pkgconfig/portmeld-platform.pc" in headers
    contract = (SOURCE / "platform" / "include" / "platform").glob("*.h")
    assert {f"/usr/include/portmeld/platform/{header.name}" for header in contract} == {
        path for path in headers if path.startswith("/usr/include/")
    }


def test_no_test_and_no_workbench_is_installed():
    everything = set().union(*(contents(package) for package in installed.packages()))
    assert not [path for path in everything if re.search(r"test|workbench|simulated|probe", path)]


def test_the_interface_description_lies_in_both_places_with_the_same_bytes(stage):
    there = [
        (stage / "usr" / place).read_bytes()
        for place in (
            "bin/portmeld.interface.xml",
            "share/dbus-1/interfaces/com.norvane.portmeld.xml",
        )
    ]
    assert there[0] == there[1] == (SOURCE / "res" / "portmeld.interface.xml").read_bytes()


def test_what_is_no_program_cannot_be_executed(stage):
    mode = (stage / "usr/bin/portmeld.interface.xml").stat().st_mode
    assert stat.S_IMODE(mode) == 0o644


def test_the_packages_do_not_know_where_they_were_built(stage):
    builder = str(pathlib.Path(os.environ["PORTMELD_BUILD_DIR"]).resolve()).encode()
    for path in stage.joinpath("usr").rglob("*"):
        if path.is_file() and not path.is_symlink():
            content = path.read_bytes()
            assert builder not in content and b"PORTMELD_PATH_PREFIX" not in content, path


def test_the_desktop_entries_are_valid(stage):
    entries = sorted(stage.joinpath("usr/share/applications").glob("*.desktop"))
    names = (SOURCE / "src" / "util" / "MMNames.h").read_text()
    ids = set(re.findall(r'APP_\w+ = "([^"]+)"', names))
    assert {entry.stem for entry in entries} == ids
    done = subprocess.run(
        ["desktop-file-validate", *entries], capture_output=True, text=True, check=False
    )
    assert (done.returncode, done.stdout + done.stderr) == (0, "")


def test_the_program_of_each_desktop_entry_is_installed(machine, stage):
    for entry in stage.joinpath("usr/share/applications").glob("*.desktop"):
        command = re.search(r"^Exec=(\S+)", entry.read_text(), re.MULTILINE)[1]
        machine.succeed("guest", "test", "-x", command)
