"""Files in the place of desktop entries that are none, and what the largest entry is."""

import os

import pytest
from application_helpers import (  # noqa: F401 (fixtures are found by name)
    bus,
    complaints,
    launch,
    manager,
    peer,
    programs,
    start,
    write_entry,
)

PLAYER = "org.some.Player"


def lay(root, content):
    """Puts a file in the place of the user's own entry."""
    file = root.parent / "data-home" / "applications" / f"{PLAYER}.desktop"
    file.parent.mkdir(parents=True)
    if content is None:
        os.mkfifo(file)
    else:
        file.write_bytes(content)


@pytest.mark.parametrize(
    "content",
    [None, b"[Desktop Entry]\nType=Application\nExec=player\n" + b"#" * (1 << 20), b"\xff\xfe\0"],
    ids=["a pipe", "more than 1 MiB", "no text"],
)
def test_what_lies_in_the_place_of_an_entry_is_passed_by_and_never_waited_for(
    start, manager, programs, root, content
):
    programs.make("player")
    other = programs.make("other")
    lay(root, content)
    write_entry(root, PLAYER, Exec="other")
    assert launch(start(), PLAYER) == 0
    assert manager.unit()[1]["ExecStart"][0][0] == str(other)


def test_an_entry_of_1_mib_is_read(start, manager, programs, root):
    program = programs.make("player")
    start_of_it = b"[Desktop Entry]\nType=Application\nExec=player\n"
    lay(root, start_of_it + b"#" * ((1 << 20) - len(start_of_it)))
    assert launch(start(), PLAYER) == 0
    assert manager.unit()[1]["ExecStart"][0][0] == str(program)


def test_a_command_that_is_not_utf_8_is_none(start, programs, root):
    programs.make("player")
    lay(root, b"[Desktop Entry]\nType=Application\nExec=player \xff\n")
    probe = start()
    probe.call("app-is-running", PLAYER)
    probe.call("watch-name", PLAYER)
    probe.event("owner", of=PLAYER)
    assert launch(probe, PLAYER) == -1
    assert "no desktop entry" in complaints(probe)[0]


@pytest.mark.parametrize(
    "names, name",
    [
        ({"Name": "Player", "Name[de]": "Abspieler", "Name[fr]": "Lecteur"}, "Abspieler"),
        ({"Name": "Player", "Name[fr]": "Lecteur"}, "Player"),
        ({"Name": "Player", "Name[de]": ""}, "Player"),
        ({"Name": ""}, PLAYER),
    ],
    ids=["its own", "another", "an empty one", "none"],
)
def test_a_unit_is_called_by_the_name_in_the_users_language(
    start, manager, programs, root, names, name
):
    programs.make("player")
    write_entry(root, PLAYER, Exec="player", **names)
    assert launch(start(env={"LC_ALL": "C.UTF-8", "LANGUAGE": "de_DE:de"}), PLAYER) == 0
    assert manager.unit()[1]["Description"] == name
