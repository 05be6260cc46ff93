"""Sticks of every file system, from the port to the pop-up and out again."""

import pytest

NAME = "QEMU USB HARDDRIVE"

# What the emulated stick tells of itself, at the first port that is free.
STICK = {
    "Class": 8,
    "SubClass": 6,
    "Protocol": 80,
    "VendorId": 1,
    "Bus": 2,
    "Manufacturer": "QEMU",
    "Product": NAME,
    "DisplayName": NAME,
}
PORT = "/devices/pci0000:00/0000:00:04.0/usb2/2-1/2-1:1.0"

# Image, number of the file system, and the folder it is mounted at.
KINDS = {
    "FAT32": ("fat32", 0, "KINGSTON"),
    "exFAT": ("exfat", 1, "SanDisk 64"),
    "ext4": ("ext4", 2, "linux data"),
    "NTFS": ("ntfs", 3, "Família"),
}


def kibibytes(television, folder):
    """The size of a file system and how much of it is in use."""
    numbers = television.guest.do(f"stat -f -c '%S %b %f' '{folder}'").split()
    block, blocks, free = map(int, numbers)
    return block * blocks // 1024, block * blocks // 1024 - block * free // 1024


@pytest.mark.parametrize("kind", KINDS)
def test_a_stick_is_mounted_offered_listed_and_missed(television, kind):
    image, number, label = KINDS[kind]
    television.ports.plug("stick", image, serial="AA01")
    popup = television.screen.popup()
    assert popup["title"] == f"New device connected: {NAME}"
    assert popup["body"] == "Would you like to browse the files on this device?"
    assert popup["actions"][1::2] == ["Browse", "Cancel"]
    assert popup["icon"].endswith("usb.png")

    folder = f"/media/kiosk/{label}"
    assert television.mounts()["/dev/sda1"] == [folder]
    for of_kind, count in ((number, 1), (-1, 1), ((number + 1) % 4, 0)):
        assert television.client.call("GetDeviceCount", 7, of_kind) == [count]
    (device,) = television.devices().values()
    assert device.pop("DevicePath").startswith(PORT)
    assert device.pop("Address") > 1
    total, used = kibibytes(television, folder)
    assert abs(device.pop("UsedSize") - used) < 100
    assert device == {
        **STICK,
        "Action": 1,
        "Number": 1,
        "TotalSize": total,
        "DeviceName": "/dev/sda1",
        "DeviceKey": "/dev/sda1",
        "Mountpath": folder,
        "FileSystem": number,
        "Serial": "AA01",
    }

    television.ports.pull("stick")
    notice = television.screen.notice()
    assert notice["title"] == NAME
    assert notice["body"] == "The device has been disconnected."
    assert television.client.actions() == [("mm_device_action", 2, "/dev/sda1")]
    assert television.client.call("GetDeviceCount", 7, -1) == [0]
    television.guest.wait_until("! findmnt --source /dev/sda1", 30)


def test_a_file_system_without_a_partition_is_a_stick_too(television):
    television.ports.plug("stick", "whole")
    assert television.screen.popup()["title"] == f"New device connected: {NAME}"
    (device,) = television.devices().values()
    assert (device["DeviceName"], device["Number"]) == ("/dev/sda", 0)
    assert device["Mountpath"] == "/media/kiosk/FLOPPY"
    television.ports.pull("stick")
    television.screen.popup()
    assert television.client.actions() == [("mm_device_action", 2, "/dev/sda")]


def test_two_partitions_are_two_devices_and_one_question(television):
    television.ports.plug("stick", "two")
    television.screen.popup()
    assert television.screen.stays_empty()
    devices = television.devices()
    places = {node: device["Mountpath"] for node, device in devices.items()}
    assert places == {"/dev/sda1": "/media/kiosk/FIRST", "/dev/sda2": "/media/kiosk/second"}
    assert {device["FileSystem"] for device in devices.values()} == {0, 2}
    assert television.client.call("GetDeviceCount", 7, -1) == [2]
    television.ports.pull("stick")
    assert television.screen.notice()["body"] == "The device has been disconnected."
    assert television.screen.stays_empty(3)
    assert sorted(television.client.actions()) == [
        ("mm_device_action", 2, "/dev/sda1"),
        ("mm_device_action", 2, "/dev/sda2"),
    ]


def test_two_sticks_with_one_serial_number_are_told_apart(television):
    television.ports.plug("first", "fat32", serial="SAME")
    television.screen.popup()
    television.ports.plug("second", "fat32b", serial="SAME")
    television.guest.wait_until("findmnt --source /dev/sdb1")
    # To viewers it is the same stick once more.
    assert television.screen.stays_empty()
    devices = television.devices()
    places = {node: device["Mountpath"] for node, device in devices.items()}
    assert places == {"/dev/sda1": "/media/kiosk/KINGSTON", "/dev/sdb1": "/media/kiosk/MY STICK"}
    assert devices["/dev/sda1"]["DisplayName"] == NAME
    assert devices["/dev/sdb1"]["DisplayName"] == f"{NAME}(2&#x202d;)"
    assert [device["Serial"] for device in devices.values()] == ["SAME", "SAME"]
    television.ports.pull("first")
    television.screen.popup()
    assert television.client.actions() == [("mm_device_action", 2, "/dev/sda1")]
    assert list(television.devices()) == ["/dev/sdb1"]
    assert television.mounts()["/dev/sdb1"] == ["/media/kiosk/MY STICK"]


def test_a_service_partition_is_neither_mounted_nor_shown(television):
    television.ports.plug("stick", "service")
    television.screen.popup()
    assert list(television.devices()) == ["/dev/sda2"]
    assert television.screen.stays_empty()
    mounts = television.mounts()
    assert mounts["/dev/sda2"] == ["/media/kiosk/DATA"]
    assert "/dev/sda1" not in mounts
    television.ports.pull("stick")
    television.screen.popup()
    assert television.client.actions() == [("mm_device_action", 2, "/dev/sda2")]


def test_switched_off_by_its_setting_nothing_is_mounted_unless_somebody_else_does(television):
    television.guest.do("runuser -u viewer -- sh -c 'echo 0 >/var/lib/portmeld/db/portmeld/automount'")
    television.ports.plug("stick", "fat32")
    assert television.screen.stays_empty(8)
    (device,) = television.devices().values()
    assert (device["Mountpath"], device["TotalSize"]) == ("", 0)
    assert "/dev/sda1" not in television.mounts()
    television.guest.do("mkdir /mnt/stick; mount /dev/sda1 /mnt/stick")
    assert television.screen.popup()["title"] == f"New device connected: {NAME}"
    (device,) = television.devices().values()
    assert device["Mountpath"] == "/mnt/stick"


def test_a_stick_that_udisks_knows_late_is_mounted_all_the_same(television):
    # What it is asked while it is busy waits; so does its own look at what was plugged in, which takes
    # longer than an answer.
    television.guest.do("systemctl kill --signal=STOP udisks2.service")
    at = television.ports.plug("stick", "fat32")
    television.udev.wait_for("add", "block", at, DEVNAME="/dev/sda1")
    television.guest.do("sleep 4; systemctl kill --signal=CONT udisks2.service")
    assert television.screen.popup()["title"] == f"New device connected: {NAME}"
    assert television.mounts()["/dev/sda1"] == ["/media/kiosk/KINGSTON"]
