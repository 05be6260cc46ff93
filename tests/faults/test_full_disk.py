"""No room for settings: who wants to change one is told so, the daemon keeps what it has, and takes up the next
one that can be written."""

import subprocess

import pytest
from programs import built

LANGUAGE = "db/menu_widget/language"
SIZE = "64k"  # of a disk for settings
FILL = "dd if=/dev/zero of={disk}/.full bs=1k 2>/dev/null || true"
USE_UP_NAMES = "i=0; while touch {disk}/.full$i 2>/dev/null; do i=$((i+1)); done"


@pytest.fixture
def disk(world):
    """The folder of the settings, on a small disk of its own."""
    folder = world.root / "var" / "lib" / "portmeld" / "db"
    world.mounts.run("mount", "-t", "tmpfs", "-o", f"size={SIZE},nr_inodes=12", "settings", str(folder))
    run(world, f"mkdir {folder}/portmeld && echo info >{folder}/portmeld/log_level")
    return folder


def ctl(world, *words):
    """Runs portmeldctl where the daemon's settings are."""
    program = str(built("..", "ctl", "portmeldctl").resolve())
    return subprocess.run(
        [*world.mounts.enter, "env", "-C", str(world.root.parent), program, "setting", *words],
        capture_output=True,
        text=True,
        timeout=60,
    )


def run(world, command):
    """Runs shell commands where the daemon's settings are."""
    world.mounts.run("sh", "-c", command)


def first_button(world):
    """The first button of the question about a stick, in the language of the menu."""
    world.client.round_trip()
    world.plug()
    point = world.mount()
    popup = world.screen.take(lambda call: call.get("call") == "Notify" and call["actions"])
    before = len(world.lines())
    world.machine.unplug("fat32")
    world.take_notice()
    # While a notice of a removal stands, the next removal is told by no other.
    world.wait_for_line("Hide by timeout", before)
    world.client.news()
    world.stick.unmount(world.mounts, point)
    return popup["actions"][1]


@pytest.mark.parametrize("use_up", [FILL, USE_UP_NAMES], ids=["room", "names"])
def test_a_setting_for_which_there_is_no_room_stays_what_it_was(world, disk, use_up):
    assert ctl(world, "set", LANGUAGE, "de_DE").returncode == 0
    run(world, use_up.format(disk=disk))
    refused = ctl(world, "set", LANGUAGE, "fr_FR")
    assert refused.returncode == 1
    assert "No space left on device" in refused.stderr
    assert ctl(world, "get", LANGUAGE).stdout == "de_DE\n"
    assert first_button(world) == "Durchsuchen"

    run(world, f"rm {disk}/.full*")
    assert ctl(world, "set", LANGUAGE, "fr_FR").returncode == 0
    assert first_button(world) == "Parcourir"
    assert world.service.ends() == []


def test_a_setting_that_was_cut_short_counts_as_not_set_and_the_log_says_so(world, disk):
    """As a shell leaves it that found no room: the file is empty."""
    assert ctl(world, "set", LANGUAGE, "de_DE").returncode == 0
    file = disk / "menu_widget" / "language"
    run(world, f"rm {file}; {FILL.format(disk=disk)}; (echo fr_FR >{file}) 2>/dev/null || true")
    world.wait_for_line(f"{file.name} is empty: half written?")
    assert first_button(world) == "Browse"
    assert world.service.ends() == []
