"""The workbench in its terminal form, driven through a pipe as a script drives it: what the TV shows,
what is launched, and what a bus client hears."""

import shlex
import subprocess

from workbench_process import blocks, call, launch, signals


def test_a_single_photo_is_offered_and_played_with_its_play_list(stick, start):
    folder = stick("Holiday", "beach.jpg")
    run = start(folder)
    run.expect(r"30 s were skipped")
    run.expect(r'"Holiday" is plugged in: /dev/sda1, mounted at ' + str(folder))
    run.expect(r"│ New device connected: Holiday +│")
    run.expect(r"│ A file was found on this device. Would you like to play it\? File name: +│")
    run.expect(r"│ beach.jpg +│")
    run.expect(r"\[1 Play\]  \[2 Cancel\] +goes after 30 s │")
    run.press("1")
    run.expect(r"pressed: Play")
    run.expect(r"launched: the photo player, org.norvane.picreel, given:")
    run.settle()
    application, given = launch(run.text)
    assert application == "org.norvane.picreel"
    assert list(given) == ["play_list_data"]
    play_list = given["play_list_data"]
    assert play_list["root_path"] == str(folder)
    assert play_list["play_index"] == 0
    assert [item["file_path"] for item in play_list["items"]] == [f"{folder}/beach.jpg"]
    assert play_list["items"][0]["file_size"] == "37.08KB"


def test_several_files_are_offered_for_browsing(stick, start):
    folder = stick("Holiday", "beach.jpg", "boat.jpg")
    run = start(folder)
    run.expect(r"│ Would you like to browse the files on this device\? +│")
    run.expect(r"\[1 Browse\]  \[2 Cancel\]")
    run.press("1")
    run.expect(r"launched: the content browser")
    run.settle()
    application, given = launch(run.text)
    assert application == "org.quillon.folian"
    assert given["device_path"] == str(folder)
    assert given["device_name"] == "Holiday"
    assert "Would you like to play it" not in run.text


def test_the_second_button_launches_nothing(stick, start):
    run = start(stick())
    run.expect(r"\[1 Play\]")
    run.press("2")
    run.expect(r"pressed: Cancel")
    run.settle()
    assert not [block for block in blocks(run.text) if block[0] == "app"]
    run.press("1")
    run.expect(r"there is no pop-up")


def test_the_bus_client_hears_of_a_stick_by_asking(stick, start):
    folder = stick()
    run = start(folder)
    run.settle()
    (device,) = signals(run.text)
    assert device["Action"] == 1
    assert device["Mountpath"] == str(folder)
    assert device["DeviceKey"] == "/dev/sda1"
    assert len(device) == 19


def test_pulling_is_noticed_on_screen_and_on_the_bus(stick, start):
    run = start(stick())
    run.settle()
    run.press("p")
    run.expect(r'"Holiday" is pulled')
    run.expect(r"│ Holiday +│")
    run.expect(r"│ The device has been disconnected. +│")
    run.expect(r"goes after 3 s │")
    run.settle()
    assert [device["Action"] for device in signals(run.text)] == [1, 2]
    run.press("p")
    run.expect(r"it is out already")


def test_a_stick_can_be_plugged_in_again(stick, start):
    run = start(stick())
    run.settle()
    run.press("r")
    run.expect(r"it is in already")
    run.press("pr")
    run.expect(r'"Holiday" is plugged in: /dev/sdb1')
    run.expect(r"\[1 Play\]")
    run.settle()
    assert [device["DeviceKey"] for device in signals(run.text)] == [
        "/dev/sda1",
        "/dev/sda1",
        "/dev/sdb1",
    ]


def test_nothing_is_offered_from_standby_until_a_minute_after_waking(stick, start):
    run = start(stick())
    run.settle()
    run.press("bps")
    run.expect(r"goes to standby")
    run.press("s")
    run.expect(r"the TV is in standby")
    run.press("w")
    run.expect(r"wakes up")
    run.press("btr")
    run.expect(r"\d+ s are skipped, until the next timer is due")
    run.settle()
    assert "New device connected" in run.text[run.text.rindex("wakes up") :]
    run.press("pswr")
    run.settle()
    assert "New device connected" not in run.text[run.text.rindex("wakes up") :]


def test_a_pop_up_goes_by_itself_when_its_time_is_over(stick, start):
    run = start(stick())
    run.expect(r"\[1 Play\]")
    run.press("t")
    run.expect(r"\d+ s are skipped, until the pop-up is due")
    run.expect(r"goes by itself")
    run.press("b")
    run.expect(r"there is no pop-up to hide")


def test_the_next_pop_up_is_in_the_language_chosen(stick, start):
    run = start("--language", "de", stick())
    run.expect(r"│ Neues Gerät angeschlossen: Holiday")
    run.press("plr")
    run.expect(r"menu language: Français")
    run.expect(r"│ Nouvel appareil connecté\s:\sHoliday")


def test_a_camera_is_offered_and_heard_of(stick, start):
    run = start(stick())
    run.settle()
    run.press("c")
    run.expect(r"┌─ camera ─")
    run.settle()
    assert {device["Class"] for device in signals(run.text)} == {6, 8}
    run.press("p")
    run.expect(r'"Camera" is pulled')
    run.press("np")
    run.expect(r'in hand: "Holiday"')
    run.expect(r'"Holiday" is pulled')


def test_the_companion_application_is_told_instead_of_the_viewer(stick, start):
    run = start(stick())
    run.settle()
    run.press("bpbur")
    run.expect(r"launched: the companion application, org.norvane.lumet")
    run.settle()
    shown = run.text[run.text.rindex("companion application runs") :]
    assert "pop-up  " not in shown
    assert launch(run.text)[1]["device_action"] == "ADD"


def test_an_undisturbed_tv_shows_no_pop_up(stick, start):
    run = start(stick())
    run.settle()
    run.press("bpbxr")
    run.expect(r"undisturbed: no pop-ups")
    run.settle()
    assert "pop-up  " not in run.text[run.text.rindex("undisturbed") :]


def test_shop_mode_plays_the_demo_film_of_a_stick(stick, start):
    folder = stick("Shop")
    (folder / "DEMO_LED.tp").write_bytes(b"film")
    run = start(folder)
    run.settle()
    run.press("pdr")
    run.expect(r"stands in a shop")
    run.expect(r"launched: the demo player, org.norvane.shopreel")
    run.settle()
    assert launch(run.text)[1]["root_path"] == f"{folder}/DEMO_LED.tp"
    run.press("h")
    run.expect(r"home: the demo player is left")


def test_the_daemons_log_is_shown_on_demand(stick, start):
    run = start(stick())
    run.settle()
    assert " log " not in run.text
    run.press("Lp")
    run.expect(r"log +MMDeviceMgrUsbIntake.cpp:\d+ m_DeleteDeviceNode  after delete,dev list count is 0")
    run.press("LLr")
    run.expect(r"lines are not shown")
    run.settle()
    assert "  log  " not in run.text[run.text.rindex("are not shown") :]


def test_the_pace_of_time_can_be_changed(stick, start):
    run = start(stick())
    run.settle()
    run.press("++")
    run.expect(r"the time passes 2 times as fast")
    run.expect(r"the time passes 5 times as fast")
    run.press("+++++")
    run.expect(r"60 times as fast")
    run.expect(r"goes by itself")
    run.press("-")
    run.expect(r"30 times as fast")


def test_two_sticks_are_two_devices(stick, start):
    run = start(stick("One"), stick("Two"))
    run.settle()
    assert {device["Product"] for device in signals(run.text)} == {"One", "Two"}
    status, answer = call(run.address(), "com.norvane.portmeld.GetDeviceCount", "--", "7", "-1")
    assert (status, answer) == (0, "(2,)")


def test_the_printed_lines_work_in_another_terminal(stick, start):
    run = start(stick())
    run.settle()
    lines = [line.strip() for line in run.text.splitlines() if line.startswith("  gdbus call ")]
    answers = [
        subprocess.run(shlex.split(line), capture_output=True, text=True, timeout=20, check=True)
        for line in lines
    ]
    assert [answer.stdout.strip() for answer in answers] == ["(1,)", "()"]

    (watch,) = [line for line in run.text.splitlines() if line.startswith("  dbus-monitor ")]
    with subprocess.Popen(shlex.split(watch), stdout=subprocess.PIPE, text=True) as monitor:
        try:
            monitor.stdout.readline()  # it has begun
            assert call(run.address(), "com.norvane.portmeld.RequesAll", "9") == (0, "()")
            heard = iter(monitor.stdout.readline, "")
            assert any("member=mm_device_action" in line for line in heard)
        finally:
            monitor.kill()


def test_what_a_device_says_cannot_harm_the_terminal(tmp_path, start):
    folder = tmp_path / "a\x1b[31m\u202eb\u2066c\n\u009bd"
    folder.mkdir()
    run = start(folder)
    run.expect(r"New device connected: a<U\+001B>\[31m<U\+202E>bc<U\+000A><U\+009B>d")
    run.settle()
    harmful = {character for character in run.text if not character.isprintable()} - {"\n"}
    assert not harmful
    assert "<U+202E>" in signals(run.text)[0]["Mountpath"]
