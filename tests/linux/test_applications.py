"""Launch requests: what is refused, and how a program is started as a unit of the user's service manager
or, where there is none, directly."""

import json
import os
import pathlib
import re
import time

import child
import pytest
from application_helpers import (  # noqa: F401 (fixtures are found by name)
    bus,
    complaints,
    launch,
    manager,
    peer,
    programs,
    request,
    start,
    write_entry,
)

FOLIAN = "org.quillon.folian"


# ---- requests


def test_a_request_can_be_made_and_released(start):
    probe = start()
    assert probe.call("app-destroy", probe.call("app-create")) == 0


def test_missing_handles_and_texts_are_answered_with_errors(start):
    probe = start()
    handle = probe.call("app-create")
    assert probe.call("app-create-nowhere") == -1
    assert probe.call("app-destroy", 0) == -1
    assert probe.call("app-id", 0, FOLIAN) == -1
    assert probe.call("app-id", handle, "null") == -1
    assert probe.call("app-data", 0, "key", "value") == -1
    assert probe.call("app-data", handle, "null", "value") == -1
    assert probe.call("app-data", handle, "key", "null") == -1
    assert probe.call("app-destroy", handle) == 0


def test_sending_no_request_is_refused_with_one_line(start):
    probe = start()
    assert probe.call("app-send", 0) == -1
    assert complaints(probe) == [
        "portmeld: cannot launch anything yet: no launch request has been made"
    ]


def test_no_application_is_refused_with_one_line(start, manager):
    probe = start()
    assert launch(probe, "") == -1
    [line] = complaints(probe)
    assert "no application is named" in line


@pytest.mark.parametrize(
    "application",
    ["../org.evil", "folder/org.evil", ".hidden", "org.ev\nil", "org.ev\x7fil", "a" * 248],
    ids=["parent", "folder", "hidden", "line feed", "delete", "long"],
)
def test_what_names_no_application_is_refused_with_one_line(start, manager, root, application):
    if len(application) < 248:
        write_entry(root, application, Exec="true")
    probe = start()
    assert launch(probe, application) == -1
    [line] = complaints(probe)
    assert "this is no application id" in line


def test_an_id_of_any_length_that_a_file_can_have_is_looked_up(start):
    probe = start()
    assert launch(probe, "a" * 247) == -1
    assert "no desktop entry" in complaints(probe)[0]


def test_an_application_that_is_not_installed_is_refused_with_one_line(start):
    probe = start()
    probe.call("app-is-running", "org.nobody")
    probe.call("watch-name", "org.nobody")
    probe.event("owner", of="org.nobody")
    assert launch(probe, "org.nobody") == -1
    [line] = complaints(probe)
    assert "no desktop entry 'org.nobody.desktop'" in line and "install" in line


def test_without_an_entry_and_before_the_bus_was_asked_the_refusal_comes_later(start):
    probe = start()
    assert launch(probe, "org.nobody") == 0
    probe.wait_for_error_line("no desktop entry 'org.nobody.desktop'")


@pytest.mark.parametrize(
    "keys",
    [
        {"Exec": "no-such-program"},
        {"Exec": "player", "Hidden": "true"},
        {"Exec": "player", "TryExec": "no-such-program"},
        {"Exec": "player 'unclosed"},
        {"Exec": "./player"},
        {"Exec": "player", "Type": "Link"},
        {},
    ],
    ids=[
        "program missing",
        "hidden",
        "tried in vain",
        "command broken",
        "relative path",
        "no application",
        "no command",
    ],
)
def test_an_entry_that_cannot_be_used_is_none(start, programs, root, keys):
    programs.make("player")
    write_entry(root, "org.some.player", **keys)
    probe = start(session_bus=None)
    assert launch(probe, "org.some.player") == -1
    [line] = complaints(probe)
    assert "no desktop entry" in line and "that can be used" in line


def test_a_file_that_nobody_could_execute_is_no_program(start, programs, root):
    programs.make("player").chmod(0o644)
    write_entry(root, "org.some.player", Exec="player")
    assert launch(start(session_bus=None), "org.some.player") == -1


def test_an_entry_of_the_user_comes_before_one_of_the_machine(start, programs, root):
    write_entry(root, "org.some.player", Exec=programs.make("machine"))
    write_entry(root, "org.some.player", "data-home", Exec=programs.make("user"))
    assert launch(start(session_bus=None), "org.some.player") == 0
    assert programs.started()["program"] == "user"


def test_a_hidden_entry_of_the_user_hides_that_of_the_machine(start, programs, root):
    write_entry(root, "org.some.player", Exec=programs.make("player"))
    write_entry(root, "org.some.player", "data-home", Hidden="true")
    assert launch(start(session_bus=None), "org.some.player") == -1


def test_an_entry_in_a_folder_of_its_own_is_found_by_its_id(start, programs, root):
    write_entry(root, "some/maker/big-player", Exec=programs.make("player"))
    assert launch(start(session_bus=None), "some-maker-big-player") == 0
    assert programs.started()["program"] == "player"


# ---- as a unit of the user's service manager


def test_a_program_becomes_a_transient_unit_of_the_user(start, manager, programs, root):
    program = programs.make("player")
    write_entry(root, "org.some.player", Exec="player --full-screen", Name="Some Player")
    probe = start()
    assert launch(probe, "org.some.player", ("root_path", "/media/stick")) == 0
    name, properties, data = manager.unit()
    assert re.fullmatch(r"app-org\.some\.player-[0-9a-f]{16}\.service", name)
    assert properties == {
        "Description": "Some Player",
        "Slice": "app.slice",
        "Type": "exec",
        "ExitType": "cgroup",
        "CollectMode": "inactive-or-failed",
        "ExecStart": [[str(program), [str(program), "--full-screen"], False]],
    }
    assert data == {"root_path": "/media/stick"}
    assert complaints(probe) == [] and programs.nothing_started()


@pytest.mark.parametrize(
    "arguments, result",
    [
        ("--open %U", ["--open"]),
        ("%f %F %u %U %i %c %k %d %D %n %N %v %m", []),
        ("--file=%f", ["--file="]),
        ("--volume=50%%", ["--volume=50%"]),
        ('"two words" ""', ["two words", ""]),
        (r'"costs \\$5" \\$HOME', ["costs $$5", "$$HOME"]),
    ],
)
def test_field_codes_are_taken_out_of_the_command_line(
    start, manager, programs, root, arguments, result
):
    program = str(programs.make("player"))
    write_entry(root, "org.some.player", Exec=f"{program} {arguments}")
    assert launch(start(), "org.some.player") == 0
    _, properties, _ = manager.unit()
    assert properties["ExecStart"] == [[program, [program, *result], False]]


def test_the_working_directory_of_the_entry_is_kept(start, manager, programs, root):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player", Path="/usr/share")
    assert launch(start(), "org.some.player") == 0
    assert manager.unit()[1]["WorkingDirectory"] == "/usr/share"


def test_two_launches_are_two_units(start, manager, programs, root):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player")
    probe = start()
    launch(probe, "org.some.player")
    launch(probe, "org.some.player")
    assert manager.unit()[0] != manager.unit()[0]


@pytest.mark.parametrize(
    "application, escaped",
    [
        ("org.some-body.player", r"org.some\x2dbody.player"),
        ("a b@c", r"a\x20b\x40c"),
        ("-" * 247, (r"\x2d" * 100)[:200]),
    ],
    ids=["dash", "blank", "long"],
)
def test_the_id_is_escaped_in_the_unit_s_name(start, manager, programs, root, application, escaped):
    programs.make("player")
    write_entry(root, application, Exec="player")
    assert launch(start(), application) == 0
    name = manager.unit()[0]
    assert re.fullmatch(re.escape(f"app-{escaped}-") + r"[0-9a-f]{16}\.service", name)


def test_a_service_manager_that_refuses_is_told_of_in_one_line(start, peer, programs, root):
    peer().be_service_manager(error=["org.freedesktop.systemd1.Masked", "not today"])
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player")
    probe = start()
    assert launch(probe, "org.some.player") == 0
    probe.wait_for_error_line("did not start 'org.some.player'")
    [line] = [line for line in probe.error_lines() if "org.some.player" in line]
    assert "not today" in line
    assert programs.nothing_started()


def test_a_daemon_that_may_execute_nothing_finds_what_the_user_may(start, manager, programs, root):
    program = programs.make("player")
    write_entry(root, "org.some.player", Exec="player", TryExec="player")
    rights = [] if os.geteuid() == 0 else ["-r"]
    sandbox = (
        f'mount --bind "{programs.folder}" "{programs.folder}" && '
        f'mount -o remount,bind,noexec "{programs.folder}" && '
        f'! test -x "{program}" && exec "$0"'
    )
    wrapper = ["unshare", *rights, "-m", "--propagation", "private", "sh", "-c", sandbox]
    assert launch(start(wrapper=wrapper), "org.some.player") == 0
    assert manager.unit()[1]["ExecStart"] == [[str(program), [str(program)], False]]


# ---- extra data


def test_extra_data_come_in_the_order_in_which_they_were_last_set(start, manager, programs, root):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player")
    data = [("music_url", "/a"), ("device_path", "/b"), ("other", "c"), ("music_url", "/a")]
    assert launch(start(), "org.some.player", *data) == 0
    assert list(manager.unit()[2].items()) == [
        ("device_path", "/b"),
        ("other", "c"),
        ("music_url", "/a"),
    ]


def test_extra_data_stay_for_the_launches_that_follow(start, manager, programs, root):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player")
    probe = start()
    handle = request(probe, "org.some.player", ("first", "1"))
    probe.call("app-send", handle)
    probe.call("app-data", handle, "second", "2")
    probe.call("app-send", handle)
    probe.call("app-destroy", handle)
    assert manager.unit()[2] == {"first": "1"}
    assert manager.unit()[2] == {"first": "1", "second": "2"}


def test_hostile_values_arrive_whole(start, manager, programs, root):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player")
    value = 'Joe\'s "stick" \\ $HOME %n </b> \u202e ümläut ' + "".join(map(chr, range(1, 0x20))) + "\x7f"
    assert launch(start(), "org.some.player", ("device_name", value)) == 0
    properties = dict(manager.call()["arguments"][2])
    [variable] = properties["Environment"]
    text = variable.partition("=")[2]
    assert json.loads(text) == {"device_name": value}
    assert not re.search(r"[\x00-\x1f\x7f]", text)


def test_a_launch_says_what_was_set_when_it_was_sent(start, manager, programs, root):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player")
    probe = start()
    handle = request(probe, "org.some.player", ("key", "then"))
    orders = [["app-send", handle], ["app-data", handle, "key", "now"], ["app-destroy", handle]]
    # In one piece: the answer of the bus comes after all of them.
    probe.send("\n".join(" ".join(map(str, order)) for order in orders))
    assert manager.unit()[2] == {"key": "then"}
    assert [probe.take()["result"] for _ in orders] == [0, 0, 0]


def test_more_data_than_an_environment_takes_are_refused_with_one_line(
    start, manager, programs, root
):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player")
    probe = start()
    most = 131072 - len('PORTMELD_LAUNCH_DATA={"key":""}') - 1
    assert launch(probe, "org.some.player", ("key", "x" * (most + 1))) == 0
    probe.wait_for_error_line("too long")
    assert launch(probe, "org.some.player", ("key", "x" * most)) == 0
    assert manager.unit()[2] == {"key": "x" * most}


# ---- without a service manager


@pytest.mark.parametrize("with_bus", [True, False], ids=["bus", "no bus"])
def test_without_a_service_manager_the_program_is_started_directly(
    start, bus, programs, root, with_bus
):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player --now", Path=str(programs.folder))
    service = ["NOTIFY_SOCKET", "JOURNAL_STREAM", "WATCHDOG_PID", "WATCHDOG_USEC"]
    probe = start(
        session_bus=bus if with_bus else None, env={"KEPT": "kept", **dict.fromkeys(service, "1")}
    )
    assert launch(probe, "org.some.player", ("root_path", "/media/stick")) == 0
    told = programs.started()
    environment = told["environment"]
    assert told["arguments"] == ["--now"]
    assert told["folder"] == str(programs.folder)
    assert told["input"] == "/dev/null"
    assert told["session"] == told["process"]
    assert json.loads(environment["PORTMELD_LAUNCH_DATA"]) == {"root_path": "/media/stick"}
    assert environment["KEPT"] == "kept"
    assert [name for name in service if name in environment] == []
    assert complaints(probe) == []


def test_a_program_that_was_started_directly_is_reaped(start, programs, root):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player")
    probe = start(session_bus=None)
    launch(probe, "org.some.player")
    process = pathlib.Path("/proc", str(programs.started()["process"]))
    end = time.monotonic() + child.LIMIT
    while process.exists():
        assert time.monotonic() < end, process.joinpath("status").read_text()
        probe.call("settle")


def test_a_program_that_cannot_be_started_directly_is_told_of_in_one_line(start, programs, root):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player", Path="/nonexistent/folder")
    probe = start(session_bus=None)
    assert launch(probe, "org.some.player") == 0
    [line] = complaints(probe)
    assert "org.some.player" in line and "/nonexistent/folder" in line


@pytest.mark.parametrize("with_bus", [True, False], ids=["bus", "no bus"])
def test_a_service_starts_nothing_itself_that_would_inherit_its_sandbox(
    start, bus, programs, root, with_bus
):
    programs.make("player")
    write_entry(root, "org.some.player", Exec="player")
    probe = start(session_bus=bus if with_bus else None, env={"INVOCATION_ID": "1234"})
    assert launch(probe, "org.some.player") == 0
    probe.wait_for_error_line("sandbox")
    [line] = complaints(probe)
    assert "cannot launch 'org.some.player'" in line
    probe.close_input()
    assert probe.see_end() == 0
    assert programs.nothing_started()
