"""What is around the daemon is missing, dies, hangs and comes back, at each step of a plug; the daemon goes on,
and what works works."""

import os
import signal

import pytest
from application_helpers import Peer
from notification_helpers import NotificationServer
from stage_helpers import PHOTO, buses, source, stage, start_client  # noqa: F401 (fixtures)


def is_alive(stage):
    """Whether the daemon still serves its clients."""
    return stage.client.call("GetDeviceCount", 7, -1) is not None


def offers_a_stick_again(machine, stage, screen):
    """Whether a stick that is plugged in is offered on this screen."""
    stage.plug_mounted(machine)
    return screen.next("Notify")["actions"][1::2] == ["Browse", "Cancel"]


# ---- the notification server


def test_without_a_notification_server_the_daemon_goes_on_and_says_so(machine, stage):
    stage.screen.order("release")
    stage.client.round_trip()
    stage.plug_mounted(machine)
    stage.daemon.wait_for_error_line("notification save error2")
    assert is_alive(stage)


def test_a_notification_server_that_comes_back_shows_the_next_popup(machine, stage):
    stage.screen.order("release")
    stage.client.round_trip()
    stage.plug_mounted(machine)
    stage.daemon.wait_for_error_line("notification save error2")
    machine.unplug("fat32")
    ((member, _),) = stage.wait_for_news()
    assert member == "mm_device_action"
    stage.screen.order("own")
    stage.screen.next("GetCapabilities")
    assert offers_a_stick_again(machine, stage, stage.screen)


def test_a_hung_notification_server_holds_up_neither_clients_nor_removals(machine, stage):
    stage.screen.stop()
    stage.plug_mounted(machine)
    stage.daemon.wait_for_error_line("m_LaunchAddNotification nItemType")
    machine.unplug("fat32")
    ((member, device),) = stage.wait_for_news()
    assert (member, device["Action"]) == ("mm_device_action", 2)
    stage.screen.go_on()


def test_a_notification_server_that_dies_with_a_popup_is_replaced_by_the_next(
    machine, stage, buses
):
    stage.plug_mounted(machine)
    stage.popup()
    stage.screen.kill()
    stage.daemon.wait_for_error_line("Hide by action")
    machine.unplug("fat32")
    stage.wait_for_news()
    screen = NotificationServer(buses[0])
    screen.next("GetCapabilities")
    try:
        assert offers_a_stick_again(machine, stage, screen)
    finally:
        screen.close_input()
        screen.kill()


# ---- the user's bus


def test_a_user_s_bus_that_dies_and_comes_back_is_found_again(machine, stage, buses):
    session, _ = buses
    session.stop()
    stage.daemon.wait_for_error_line("the session bus is gone")
    stage.plug_mounted(machine)
    stage.daemon.wait_for_error_line("notification save error2")
    machine.unplug("fat32")
    stage.wait_for_news()
    session.start()
    screen = NotificationServer(session)
    screen.next("GetCapabilities")
    try:
        assert offers_a_stick_again(machine, stage, screen)
    finally:
        screen.close_input()
        screen.kill()


# ---- the user's service manager


def test_a_launch_without_a_service_manager_that_should_be_there_harms_nobody(machine, stage):
    stage.plug_mounted(machine)
    popup = stage.popup()
    stage.manager.kill()
    stage.press(popup, 0)
    stage.daemon.wait_for_error_line("launch app[")
    assert is_alive(stage)


def test_a_service_manager_that_never_answers_holds_up_nobody(machine, stage):
    stage.plug_mounted(machine)
    popup = stage.popup()
    os.kill(stage.manager.process.pid, signal.SIGSTOP)
    stage.press(popup, 0)
    stage.daemon.wait_for_error_line("launch app[")
    machine.unplug("fat32")
    ((member, device),) = stage.wait_for_news()
    assert (member, device["Action"]) == ("mm_device_action", 2)
    os.kill(stage.manager.process.pid, signal.SIGCONT)


# ---- logind


@pytest.mark.parametrize("when", ["before it sleeps", "while it sleeps"])
def test_a_logind_that_dies_and_comes_back_still_wakes_the_daemon(
    machine, stage, buses, start_logind, when
):
    first = start_logind(buses[1])
    if when == "while it sleeps":
        asleep = stage.daemon.has_logged("m_PoweroffChangedCB over")
        first.tell_until("PrepareForSleep", True, asleep)
    first.kill()
    second = start_logind(buses[1])
    awake = stage.daemon.has_logged("begin to set Enable false")
    second.tell_until("PrepareForSleep", False, awake)
    assert is_alive(stage)


# ---- a pull at each step


def test_a_pull_before_anybody_has_mounted_it_offers_nothing(machine, stage):
    machine.plug("fat32")
    machine.unplug("fat32")
    notice = stage.popup()
    assert notice["actions"] == []
    assert stage.client.call("GetDeviceCount", 7, -1) == [0]


def test_a_pull_while_the_server_is_asked_what_it_can_do_ends_with_the_removal_alone(
    machine, stage, buses
):
    stage.screen.order("release")
    screen = NotificationServer(buses[0], capabilities=None)
    screen.next("GetCapabilities")
    stage.plug_mounted(machine)
    stage.daemon.wait_for_error_line("m_LaunchAddNotification nItemType")
    machine.unplug("fat32")
    stage.wait_for_news()
    screen.order("able", ["actions", "body"])
    screen.order("answer")
    try:
        titles = [screen.next("Notify")["title"]]
        titles += [call["title"] for call in screen.calls_so_far("Notify")]
        assert titles[-1] == "QEMU USB HARDDRIVE"
    finally:
        screen.close_input()
        screen.kill()


def test_a_pull_while_a_popup_is_on_its_way_replaces_it_by_the_removal(machine, stage):
    stage.screen.order("hold")
    stage.plug_mounted(machine)
    stage.popup()
    machine.unplug("fat32")
    stage.wait_for_news()
    stage.screen.order("answer")
    calls = [stage.popup(), *stage.screen.calls_so_far("Notify")]
    assert calls[-1]["title"] == "QEMU USB HARDDRIVE"
    assert calls[-1]["actions"] == []


def test_after_a_pull_a_stick_that_is_being_looked_through_is_not_offered(machine, stage):
    point = stage.mounts.mount("/dev/sda1")
    stage.mounts.run("sh", "-c", f"for i in $(seq 20000); do : > {point}/$i.txt; done")
    stage.mounts.run("cp", str(source(PHOTO)), f"{point}/zzz.jpg")
    machine.plug("fat32")
    stage.popup()
    machine.unplug("fat32")
    while stage.popup()["actions"]:
        pass  # the scan may have been faster than the hand that pulled
    stage.wait_for_news()
    stage.mounts.run("umount", "-l", point)
    stage.client.round_trip()
    assert stage.screen.calls_so_far("Notify") == []


def test_a_button_of_a_stick_that_was_pulled_is_ignored(machine, stage):
    stage.plug_mounted(machine)
    popup = stage.popup()
    machine.unplug("fat32")
    stage.popup()
    stage.press(popup, 0)
    stage.wait_for_news()
    stage.screen.order("settle")
    stage.client.round_trip()
    assert stage.manager.calls_so_far() == []


# ---- crowds


def test_a_storm_of_events_is_survived_and_the_last_state_is_true(machine, stage):
    for _ in range(20):
        machine.plug("fat32")
        machine.unplug("fat32")
    stage.plug_mounted(machine)
    stage.wait_for_count(1)
    stage.client.call("RequesAll", 1)
    listed = [d["DeviceName"] for _, d in stage.client.news() if d["Action"] == 1]
    assert listed == ["/dev/sda1"]


@pytest.mark.parametrize("name", ["with blank", "line\nfeed", "back\\slash", "x" * 255])
def test_a_mount_point_reaches_clients_and_applications_exactly(machine, stage, name):
    point = stage.mounts.mount("/dev/sda1", name)
    machine.plug("fat32")
    stage.press(stage.popup(), 0)
    _, data = stage.launched()
    assert data["device_path"] == point
    machine.unplug("fat32")
    ((_, device),) = stage.wait_for_news()
    assert device["Mountpath"] == point


def test_a_mount_point_that_is_no_utf8_reaches_clients_as_text(machine, stage):
    point = stage.mounts.mount("/dev/sda1", "caf\udce9")
    machine.plug("fat32")
    stage.popup()
    machine.unplug("fat32")
    ((_, device),) = stage.wait_for_news()
    assert device["Mountpath"] == point.replace("\udce9", "\ufffd")
