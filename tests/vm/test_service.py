"""The daemon as a service: what it outlives, what it comes back from, and that its sandbox fits it."""

import pytest

GONE = "! kill -0 {} 2>/dev/null"


def main_process(television):
    """The daemon's process."""
    return int(television.service("MainPID"))


def works_again(television, name, image="fat32", serial="CC03"):
    """Waits through the daemon's first seconds, and sees a stick from the port to the list and out."""
    television.wait_until_listening()
    television.screen.popups_so_far()
    television.ports.plug(name, image, serial=serial)
    television.screen.question()
    assert [device["Serial"] for device in television.devices().values()] == [serial]
    television.ports.pull(name)
    television.screen.notice()
    return [action for _, action, _ in television.client.actions()] == [2]


def test_the_daemon_is_ready_only_when_the_service_manager_hears_so(television):
    assert television.service("ActiveState") == "active"
    assert television.service("Type") == "notify"
    assert television.service("StatusText") == "Watching the USB ports"
    assert television.service("NRestarts") == "0"


def test_killed_the_daemon_comes_back_and_takes_sticks_again(television):
    television.ports.plug("before", "fat32b", serial="AA01")
    television.screen.popup()
    process = main_process(television)
    television.guest.do(f"kill -KILL {process}")
    television.guest.wait_until(GONE.format(process))
    television.wait_until_served()
    assert main_process(television) not in (0, process)
    assert television.service("NRestarts") == "1"
    # What is in the port when it starts is listed, with its place, and asked about no more.
    (device,) = television.devices().values()
    assert (device["Serial"], device["Mountpath"]) == ("AA01", "/media/kiosk/MY STICK")
    television.ports.pull("before")
    television.guest.wait_until("! test -e /dev/sda1")
    television.wait_until_listening()
    assert works_again(television, "after")


def test_a_daemon_that_hangs_is_replaced_within_a_minute(television):
    process = main_process(television)
    television.guest.do(f"kill -STOP {process}")
    television.guest.wait_until(GONE.format(process), 90)
    television.wait_until_served()
    assert main_process(television) not in (0, process)
    assert "Watchdog timeout" in television.journal("-u portmeld@kiosk")
    assert works_again(television, "after")


def test_the_daemon_ends_with_the_system_bus_and_comes_back_with_it(television):
    process = main_process(television)
    television.guest.do("systemctl restart dbus.service")
    television.guest.wait_until(GONE.format(process))
    television.wait_until_served()
    assert main_process(television) not in (0, process)
    television.restart_clients()
    assert works_again(television, "after")


def test_udisks_is_found_again_after_its_restart_and_started_when_it_was_stopped(television):
    for number, command in enumerate(("restart", "stop")):
        television.guest.do(f"systemctl {command} udisks2.service")
        television.ports.plug("stick", "fat32", serial=f"DD0{number}")
        popup = television.screen.popup()
        assert popup["title"].startswith("New device")
        (device,) = television.devices().values()
        assert device["Mountpath"] == "/media/kiosk/KINGSTON"
        television.ports.pull("stick")
        television.screen.hide(television.screen.notice())
        television.guest.wait_until("! findmnt --source /dev/sda1")


@pytest.mark.parametrize("seconds", [0, 15], ids=["at once", "slowly"])
def test_a_user_who_logs_in_later_is_shown_the_next_stick(television, seconds):
    guest = television.guest
    guest.do("systemctl stop vm-screen.service user@1000.service", 120)
    television.ports.plug("unseen", "fat32", serial="AA01")
    guest.wait_until("findmnt --source /dev/sda1")
    assert list(television.devices()) == ["/dev/sda1"]
    # The user's folder is there, and his session takes its time to fill it.
    slow = f"[Service]\\nExecStartPre=sleep {seconds}\\n"
    folder = "/run/systemd/system/user@1000.service.d"
    guest.do(f"mkdir -p {folder}; printf '{slow}' >{folder}/slow.conf; systemctl daemon-reload")
    guest.do("systemctl start user@1000.service", 120)
    television.restart_screen()
    television.ports.plug("seen", "fat32b", serial="BB02")
    television.screen.question()
    assert len(television.devices()) == 2


def test_no_system_call_that_the_daemon_makes_is_denied_to_it(television):
    """A call that is not on the list ends the daemon here, instead of failing as it does in life.

    Save one: GLib tries sched_setattr when it makes its first thread, and lives without it.
    """
    folder = "/etc/systemd/system/portmeld@kiosk.service.d"
    deadly = "[Service]\\nSystemCallErrorNumber=kill\\nSystemCallFilter=sched_setattr\\n"
    television.guest.do(f"mkdir {folder}; printf '{deadly}' >{folder}/deadly.conf")
    television.guest.do("systemctl daemon-reload; systemctl restart portmeld@kiosk")
    assert "deadly.conf" in television.service("DropInPaths")
    process = main_process(television)
    television.wait_until_listening()
    television.ports.plug("stick", "photo", serial="AA01")
    assert television.screen.question()["actions"][1] == "Browse"
    television.screen.press(television.screen.question(), "Play")
    assert television.launched()["arguments"] == ["/media/kiosk/ONEPHOTO/DCIM/Holiday 1.JPG"]
    assert list(television.devices()) == ["/dev/sda1"]
    television.ports.pull("stick")
    television.screen.notice()
    assert main_process(television) == process
