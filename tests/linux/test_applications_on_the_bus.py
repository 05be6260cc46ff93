"""Applications on the user's message bus: launch requests that are handed to them there, and whether
they run."""

import os
import pathlib
import re
import select
import subprocess
import sys
import time

import child
import pytest
from application_helpers import (  # noqa: F401 (fixtures are found by name)
    ActivatingBus,
    bus,
    complaints,
    launch,
    manager,
    peer,
    programs,
    start,
    write_entry,
)

PLAYER = "org.some-body.Player"
PLAYER_PATH = "/org/some_body/Player"
ASKED_AFTER = ["org.norvane.lumet", "org.norvane.shopreel", "org.norvane.floorreel"]
RUNS = {"status": 0, "running": True}
RUNS_NOT = {"status": 0, "running": False}
USUAL_LIMIT = 25  # seconds that a D-Bus call takes at most when nothing else is said
UNKNOWN = {"status": -1, "running": False}


def hear_of(probe, name, owned):
    """Waits until the probe has heard who owns a name."""
    probe.call("watch-name", name)
    probe.event("owner", of=name, owned=owned)


# ---- launching


def test_an_application_that_the_bus_starts_is_asked_to_launch(start, peer, root):
    write_entry(root, PLAYER, Exec="true", DBusActivatable="true")
    player = peer()
    player.be_application(PLAYER, PLAYER_PATH)
    data = [("b", "1"), ("a", "ä"), ("c", "3"), ("b", "4")]
    assert launch(start(), PLAYER, *data) == 0
    call = player.call()
    assert call["path"] == PLAYER_PATH
    assert call["interface"] == "org.freedesktop.Application"
    assert (call["method"], call["signature"]) == ("ActivateAction", "(sava{sv})")
    action, [extra], platform_data = call["arguments"]
    assert (action, platform_data) == ("launch", {})
    assert list(extra.items()) == [("a", "ä"), ("c", "3"), ("b", "4")]


def test_the_bus_may_start_the_application(start, tmp_path, programs, root):
    services = tmp_path / "services"
    services.mkdir()
    # It records and fails without ever owning its name.
    program = programs.make("player", status=1)
    services.joinpath("player.service").write_text(
        f"[D-BUS Service]\nName={PLAYER}\nExec={program}\n"
    )
    write_entry(root, PLAYER, Exec="true", DBusActivatable="true")
    activating = ActivatingBus(tmp_path / "activating", services)
    try:
        caller = start(session_bus=activating)
        assert launch(caller, PLAYER) == 0
        assert programs.started()["program"] == "player"
        caller.wait_for_error_line(f"'{PLAYER}' did not take the launch request")
    finally:
        activating.stop()


def test_a_running_application_is_handed_the_request_whatever_its_entry_says(
    start, manager, peer, root
):
    write_entry(root, PLAYER, Exec="true")
    player = peer()
    player.be_application(PLAYER, PLAYER_PATH)
    assert launch(start(), PLAYER, ("key", "value")) == 0
    assert player.call()["arguments"] == ["launch", [{"key": "value"}], {}]
    assert manager.calls_so_far() == []


def test_a_running_application_needs_no_entry(start, peer):
    player = peer()
    player.be_application(PLAYER, PLAYER_PATH)
    probe = start()
    for _ in range(2):  # not yet known, and known
        assert launch(probe, PLAYER) == 0
        assert player.call()["method"] == "ActivateAction"
    assert complaints(probe) == []


def test_an_application_that_has_ended_is_started_again(start, manager, peer, root):
    write_entry(root, PLAYER, Exec="true")
    player = peer()
    player.be_application(PLAYER, PLAYER_PATH)
    probe = start()
    launch(probe, PLAYER)
    player.call()
    probe.call("watch-name", PLAYER)
    player.disown(PLAYER)
    probe.event("owner", of=PLAYER, owned=False)
    assert launch(probe, PLAYER) == 0
    assert manager.unit()[0].startswith("app-")


def test_an_application_without_the_action_is_told_of_in_one_line(start, peer):
    peer().own(PLAYER)
    probe = start()
    assert launch(probe, PLAYER) == 0
    probe.wait_for_error_line(f"'{PLAYER}' did not take the launch request")
    assert len([line for line in probe.error_lines() if PLAYER in line]) == 1


@pytest.mark.parametrize("keys", [{"Exec": "true"}, {}], ids=["program", "no program"])
def test_an_application_that_the_bus_does_not_know_is_started_as_a_program(
    start, manager, root, keys
):
    write_entry(root, PLAYER, DBusActivatable="true", **keys)
    probe = start()
    assert launch(probe, PLAYER, ("key", "value")) == 0
    if keys:
        _, properties, data = manager.unit()
        assert properties["ExecStart"][0][0].endswith("/true")
        assert data == {"key": "value"}
        assert complaints(probe) == []
    else:
        probe.wait_for_error_line(f"'{PLAYER}' did not take the launch request")


def test_an_application_that_takes_longer_than_a_call_may_is_not_complained_of(start, peer):
    player = peer()
    player.be_application(PLAYER, PLAYER_PATH, answers=False)
    probe = start()
    assert launch(probe, PLAYER) == 0
    player.call()
    time.sleep(USUAL_LIMIT + 1)
    assert complaints(probe) == []


def test_a_bus_that_hangs_is_waited_for_some_seconds_and_the_launch_is_then_dropped(
    start, bus, manager, root
):
    write_entry(root, PLAYER, Exec="true")
    probe = start()
    hear_of(probe, ASKED_AFTER[0], False)
    with bus.hanging():
        assert launch(probe, PLAYER) == 0
        probe.wait_for_error_line(f"cannot launch '{PLAYER}': the message bus does not answer")
    hear_of(probe, PLAYER, False)
    assert manager.calls_so_far() == []
    assert launch(probe, PLAYER) == 0
    assert manager.unit()[0].startswith("app-")
    assert len(complaints(probe)) == 1


def test_launches_that_wait_when_the_bus_is_lost_are_started_without_it(
    start, bus, manager, programs, root
):
    # Names that come before that of the service manager, and after it.
    for application in ("org.a", "org.z"):
        programs.make(application)
        write_entry(root, application, Exec=application)
    probe = start()
    hear_of(probe, "org.freedesktop.systemd1", True)
    with bus.hanging():
        assert launch(probe, "org.a") == 0
        assert launch(probe, "org.z") == 0
        bus.kill()
    assert {programs.started()["program"] for _ in "12"} == {"org.a", "org.z"}
    assert not any("cannot" in line or "did not" in line for line in complaints(probe))


def test_an_application_that_never_answers_delays_nothing(start, peer):
    player = peer()
    player.be_application(PLAYER, PLAYER_PATH, answers=False)
    probe = start()
    for _ in range(3):
        assert launch(probe, PLAYER) == 0
        assert player.call()["method"] == "ActivateAction"
    assert probe.call("app-is-running", PLAYER) == RUNS


def test_an_id_that_is_no_name_on_the_bus_is_started_as_a_program(start, manager, root):
    write_entry(root, "player", Exec="true", DBusActivatable="true")
    assert launch(start(), "player") == 0
    assert manager.unit()[1]["ExecStart"][0][1][0].endswith("/true")


def test_without_a_bus_an_application_of_the_bus_is_started_as_a_program(probe, programs, root):
    program = programs.make("player")
    write_entry(root, PLAYER, Exec=f"{program} %u", DBusActivatable="true")
    assert launch(probe(), PLAYER) == 0
    assert programs.started()["arguments"] == []


def test_an_application_that_only_a_bus_could_start_is_told_of_without_one(probe, root):
    write_entry(root, PLAYER, DBusActivatable="true")
    caller = probe()
    assert launch(caller, PLAYER) == 0
    caller.wait_for_error_line("it can only be started by the message bus")


def test_the_application_of_the_documentation_takes_its_data(start, bus, tmp_path):
    page = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"], "docs", "applications.md").read_text()
    [code] = re.findall(r"```python\n(.*?)```", page, re.DOTALL)
    program = tmp_path / "browser.py"
    program.write_text(code)
    probe = start()
    probe.call("watch-name", "org.quillon.folian")
    with subprocess.Popen(
        [sys.executable, program],
        env={**os.environ, "DBUS_SESSION_BUS_ADDRESS": bus.address},
        stdout=subprocess.PIPE,
        text=True,
    ) as browser:
        try:
            probe.event("owner", of="org.quillon.folian", owned=True)
            assert launch(probe, "org.quillon.folian", ("device_path", "/media/stick")) == 0
            assert select.select([browser.stdout], [], [], child.LIMIT)[0]
            assert browser.stdout.readline() == "browse /media/stick\n"
        finally:
            browser.kill()


# ---- running


def test_an_application_runs_while_its_name_is_owned(start, peer):
    player = peer()
    player.own(PLAYER)
    probe = start()
    probe.call("app-is-running", PLAYER)
    hear_of(probe, PLAYER, True)
    assert probe.call("app-is-running", PLAYER) == RUNS
    assert probe.call("aul-is-running", PLAYER) == 1
    player.disown(PLAYER)
    probe.event("owner", of=PLAYER, owned=False)
    assert probe.call("app-is-running", PLAYER) == RUNS_NOT
    assert probe.call("aul-is-running", PLAYER) == 0
    player.own(PLAYER)
    probe.event("owner", of=PLAYER, owned=True)
    assert probe.call("app-is-running", PLAYER) == RUNS


@pytest.mark.parametrize("application", ASKED_AFTER)
def test_whom_the_daemon_asks_after_is_known_before_the_first_question(start, peer, application):
    peer().own(application)
    probe = start()
    hear_of(probe, application, True)
    assert probe.call("app-is-running", application) == RUNS
    others = [name for name in ASKED_AFTER if name != application]
    for other in others:
        hear_of(probe, other, False)
        assert probe.call("app-is-running", other) == RUNS_NOT


def test_a_question_that_the_bus_has_not_answered_yet_fails_and_does_not_wait(start, peer):
    peer().own(PLAYER)
    assert start().call("app-is-running", PLAYER) == UNKNOWN


def test_names_are_known_again_after_the_bus_was_lost(start, bus, peer):
    peer().own(ASKED_AFTER[0])
    probe = start()
    hear_of(probe, ASKED_AFTER[0], True)
    bus.stop()
    probe.event("session-bus", connected=False)
    assert probe.call("app-is-running", ASKED_AFTER[0]) == RUNS_NOT
    bus.start()
    probe.event("session-bus", connected=True)
    hear_of(probe, ASKED_AFTER[0], False)
    peer().own(ASKED_AFTER[0])
    probe.event("owner", of=ASKED_AFTER[0], owned=True)
    assert probe.call("app-is-running", ASKED_AFTER[0]) == RUNS


def test_nothing_runs_where_there_is_no_bus(probe):
    caller = probe()
    assert caller.call("app-is-running", PLAYER) == RUNS_NOT
    assert caller.call("aul-is-running", PLAYER) == 0


@pytest.mark.parametrize("name", ["", "no name", ":1.1", "org..two", "a" * 300])
def test_what_is_no_name_does_not_run(start, name):
    probe = start()
    assert probe.call("app-is-running", name) == RUNS_NOT
    assert probe.call("aul-is-running", name) == 0


def test_a_question_without_a_name_or_a_place_for_the_answer_fails(start):
    probe = start()
    assert probe.call("app-is-running", "null") == UNKNOWN
    assert probe.call("app-is-running-nowhere", PLAYER) == -1
    assert probe.call("aul-is-running", "null") == 0
