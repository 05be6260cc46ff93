"""The man pages: that they can be shown and found, and that they are complete."""

import os
import pathlib
import re
import subprocess

import pytest

SOURCE = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"])
PAGES = ["portmeld.8", "portmeld-settings.5"]
KEY = re.compile(r'"((?:db|memory)/[\w/]+)"')


def page(machine, name):
    """A page as a reader sees it."""
    title, section = name.split(".")
    text = machine.succeed("guest", "man", section, title, env={"MANWIDTH": "200"})
    return re.sub(".\x08", "", text)


def keys_in_code():
    """The settings that the daemon and its Linux machine read."""
    found = set()
    for folder in ("src", "platform/linux"):
        for file in (SOURCE / folder).rglob("*.*"):
            if file.suffix in (".cpp", ".h"):
                found |= set(KEY.findall(file.read_text()))
    return found


@pytest.mark.parametrize("name", PAGES)
def test_a_page_is_formatted_without_a_warning(name):
    file = SOURCE / "docs" / "man" / name
    for command in (
        ["groff", "-ww", "-mandoc", "-Tutf8", "-z", file],
        ["man", "--warnings", "--encoding=UTF-8", "--local-file", file],
    ):
        done = subprocess.run(
            command, capture_output=True, text=True, check=False, env={**os.environ, "MANWIDTH": "80"}
        )
        assert (done.returncode, done.stderr) == (0, ""), command


@pytest.mark.parametrize("name", PAGES)
def test_a_page_can_be_found_by_what_it_is_about(name):
    done = subprocess.run(
        ["lexgrog", SOURCE / "docs" / "man" / name], capture_output=True, text=True, check=False
    )
    assert done.returncode == 0
    assert f'"{name[:-2]} - ' in done.stdout


def test_every_setting_that_the_code_knows_is_described_and_no_other(machine):
    told = set(re.findall(r"^\s+((?:db|memory)/[\w/]+) \(", page(machine, "portmeld-settings.5"), re.M))
    assert told == keys_in_code()
    assert "db/menu_widget/language" in told


def test_the_folder_of_every_setting_is_made(machine):
    roots = {"db": "/var/lib/portmeld", "memory": "/run/portmeld"}
    for key in keys_in_code():
        file = f"{roots[key.split('/')[0]]}/{key}"
        folder = file.rsplit("/", 1)[0]
        told = machine.succeed("root", "stat", "-c", "%U %G %a", folder)
        assert told == "root portmeld 2775\n", folder


def test_the_daemons_page_names_the_files_that_the_package_installs(machine):
    text = page(machine, "portmeld.8")
    for path in re.findall(r"/usr/\S+", text):
        machine.succeed("guest", "test", "-e", path.rstrip("."))
    for path in ("/usr/bin/portmeld.interface.xml", "/usr/apps/portmeld/res/", "/var/lib/portmeld/"):
        assert path in text
