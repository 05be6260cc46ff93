"""Sticks that are pulled at bad moments, and one that is pulled as it should be."""


JOBS = "busctl --list tree org.freedesktop.UDisks2 | grep -q /jobs/"


def test_a_stick_pulled_while_it_is_being_mounted_leaves_nothing_behind(television):
    guest = television.guest
    television.ports.plug("stick", "ext4")
    guest.wait_until("busctl --list tree org.freedesktop.UDisks2 | grep -q block_devices/sda1")
    television.ports.slow_down("stick")
    guest.wait_until(JOBS)
    assert "/dev/sda1" not in television.mounts()
    television.ports.pull("stick")
    guest.wait_until("! test -e /dev/sda1", 120)
    guest.wait_until(f"! {JOBS}", 120)
    assert television.devices() == {}
    assert "/dev/sda1" not in television.mounts()
    # The viewer was never asked about it.
    assert all(popup["actions"] == [] for popup in television.screen.popups_so_far())
    television.ports.plug("next", "fat32", serial="BB02")
    assert television.screen.question()["title"].startswith("New device connected")
    (device,) = television.devices().values()
    assert device["Serial"] == "BB02"


def test_a_stick_pulled_while_it_is_in_use_is_missed_and_the_next_one_works(television):
    television.ports.plug("stick", "ext4", serial="AA01")
    television.screen.popup()
    assert list(television.devices()) == ["/dev/sda1"]
    television.guest.do("systemd-run --unit=reader --working-directory='/media/kiosk/linux data' sleep 600")
    television.guest.wait_until("systemctl -q is-active reader")
    television.ports.pull("stick")
    notice = television.screen.notice()
    assert notice["body"] == "The device has been disconnected."
    television.screen.hide(notice)
    assert television.client.actions() == [("mm_device_action", 2, "/dev/sda1")]
    television.ports.plug("next", "fat32", serial="BB02")
    assert television.screen.question()["title"].startswith("New device connected")
    (device,) = television.devices().values()
    assert (device["Serial"], device["Mountpath"]) == ("BB02", "/media/kiosk/KINGSTON")


def test_a_stick_that_is_removed_safely_is_missed_once(television):
    television.ports.plug("stick", "fat32")
    television.screen.popup()
    television.devices()
    television.guest.do("udisksctl unmount -b /dev/sda1 && udisksctl power-off -b /dev/sda")
    assert television.screen.notice()["body"] == "The device has been disconnected."
    assert television.client.actions() == [("mm_device_action", 2, "/dev/sda1")]
    television.ports.pull("stick")
    assert television.screen.stays_empty()
    assert television.client.actions() == []


def test_a_stick_pulled_in_the_first_second_is_never_spoken_of(television):
    television.ports.plug("stick", "fat32")
    television.guest.wait_until("test -e /sys/bus/usb/devices/2-1")
    television.ports.pull("stick")
    assert television.screen.stays_empty(8)
    assert television.devices() == {}
