"""A machine that goes to sleep with sticks in its ports and wakes up again."""

import time

# So long after a wake-up the daemon asks no question.
QUIET_SECONDS = 60


def test_after_a_sleep_no_stick_is_announced_again_and_the_list_is_true(television):
    television.ports.plug("stays", "fat32", serial="AA01")
    television.screen.popup()
    television.ports.plug("goes", "ext4", serial="BB02")
    television.screen.popup()
    assert set(television.devices()) == {"/dev/sda1", "/dev/sdb1"}
    television.sleep()
    television.ports.pull("goes")
    television.wake()
    woken = time.monotonic()
    television.guest.wait_until("! test -e /dev/sdb1")
    assert "PM: suspend exit" in television.journal("-k")

    # Its removal may be told; no question comes.
    time.sleep(10)
    assert all(popup["actions"] == [] for popup in television.screen.popups_so_far())
    (device,) = television.devices().values()
    assert (device["Serial"], device["Mountpath"]) == ("AA01", "/media/kiosk/KINGSTON")
    assert television.service("NRestarts") == "0"

    television.ports.plug("early", "exfat", serial="CC03")
    television.guest.wait_until("findmnt --source /dev/sdb1")
    assert television.screen.stays_empty(5)
    assert len(television.devices()) == 2

    time.sleep(max(woken + QUIET_SECONDS + 5 - time.monotonic(), 0))
    television.ports.plug("late", "ntfs", serial="DD04")
    assert television.screen.question()["title"].startswith("New device connected")
    assert len(television.devices()) == 3
