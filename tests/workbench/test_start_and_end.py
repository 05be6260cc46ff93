"""How a run of the workbench begins and ends: its arguments, the sample stick, and that nothing is left
behind however it ends."""

import os
import pathlib
import signal
import subprocess

import pytest

from workbench_process import (
    blocks,
    bus_daemons,
    call,
    environment,
    launch,
    script,
    signals,
    temporary_folder,
    terminal_form,
    until,
)


def test_a_script_runs_to_its_end_and_leaves_nothing_behind(stick):
    status, shown, complaints = script("1 p\nr\n", stick())
    assert (status, complaints) == (0, "")
    told = [f"{subject}: {told}" for subject, told, _ in blocks(shown)]
    order = [told.index(line) for line in ("remote: pressed: Play", 'usb: "Holiday" is pulled')]
    assert order == sorted(order)
    assert told[-1] == "tv: is switched off"
    assert [device["Action"] for device in signals(shown)] == [1, 2, 1]
    assert "\x1b" not in shown


def test_the_end_of_a_script_waits_for_what_is_under_way_on_the_bus(stick):
    _, shown, _ = script("p", stick())
    assert [device["Action"] for device in signals(shown)] == [1, 2]


def test_without_a_folder_the_sample_stick_with_its_photo_is_plugged_in():
    status, shown, complaints = script("1")
    assert (status, complaints) == (0, "")
    application, given = launch(shown)
    assert application == "org.norvane.picreel"
    (item,) = given["play_list_data"]["items"]
    assert pathlib.Path(item["file_path"]).read_bytes().startswith(b"\xff\xd8\xff")


def test_the_q_key_quits(stick, start):
    run = start(stick())
    run.settle()
    assert bus_daemons(run.temporary)
    run.press("q")
    assert run.process.wait(20) == 0
    assert not bus_daemons(run.temporary)
    assert not list(run.temporary.iterdir())


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_a_signal_switches_the_tv_off_in_order(stick, start, number):
    run = start(stick())
    run.settle()
    run.process.send_signal(number)
    run.expect(r"is switched off")
    assert run.process.wait(20) == 0
    assert not bus_daemons(run.temporary)
    assert not list(run.temporary.iterdir())


def test_the_bus_does_not_outlive_a_killed_workbench(stick, start):
    run = start(stick())
    run.settle()
    assert bus_daemons(run.temporary)
    run.process.kill()
    assert until(lambda: not bus_daemons(run.temporary))


def test_a_bus_that_dies_switches_the_tv_off(stick, start):
    run = start(stick())
    run.settle()
    for process in bus_daemons(run.temporary):
        os.kill(process, signal.SIGKILL)
    assert run.process.wait(20) == 0
    assert not list(run.temporary.iterdir())


def test_a_call_that_ends_the_daemon_leaves_no_files_behind(stick, start):
    run = start(stick())
    run.settle()
    status, _ = call(run.address(), "com.norvane.portmeld.GetPhotoBGMPlayListItem", "5")
    assert status != 0
    assert run.finish() == -signal.SIGABRT
    assert "portmeld ended the process, as it would on a TV" in run.errors
    assert until(lambda: not bus_daemons(run.temporary))
    assert not list(run.temporary.iterdir())


def test_a_reader_that_leaves_switches_the_tv_off(stick):
    with temporary_folder() as temporary:
        arguments = terminal_form(stick())
        pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE}
        with subprocess.Popen(arguments, env=environment(temporary), **pipes) as process:
            assert process.stdout.readline()
            process.stdout.close()
            assert process.wait(20) == 0
        assert not bus_daemons(temporary)
        assert not list(temporary.iterdir())


@pytest.mark.parametrize("name", ["missing", "file.txt"])
def test_what_is_no_folder_is_refused(tmp_path, stick, name):
    (tmp_path / "file.txt").write_text("no folder")
    reason = {"missing": "No such file or directory", "file.txt": "Not a directory"}[name]
    status, shown, complaints = script("", stick(), tmp_path / name)
    assert (status, shown) == (2, "")
    assert complaints == f'portmeld-workbench: "{tmp_path / name}" cannot be a stick: {reason}\n'


@pytest.mark.parametrize(
    "arguments, complaint",
    [(["--nonsense"], "Unknown option --nonsense"), (["--language", "xx"], 'language "xx"')],
)
def test_an_argument_that_cannot_be_followed_is_refused(arguments, complaint):
    status, shown, complaints = script("", *arguments)
    assert (status, shown) == (2, "")
    assert complaint in complaints


@pytest.mark.parametrize("wrong, complaint", [("PATH", "dbus-daemon"), ("TMPDIR", "no temporary folder")])
def test_a_machine_that_lacks_something_is_told_so(tmp_path, wrong, complaint):
    status, _, complaints = script("", **{wrong: str(tmp_path / "nowhere")})
    assert status == 1
    assert complaints.startswith("portmeld-workbench: ")
    assert complaint in complaints


def test_the_help_tells_the_arguments_and_the_version_is_told():
    status, shown, _ = script("", "--help")
    assert status == 0
    assert "FOLDER" in shown and "--language" in shown
    status, shown, _ = script("", "--version")
    assert status == 0
    assert shown.startswith("portmeld-workbench ")
