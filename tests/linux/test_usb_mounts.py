"""Mounts: told once, after the device, from the mount table alone, at exactly the right place."""

import os

import pytest
from machine import Machine


@pytest.fixture
def stick(machine, ports):
    """A stick that was told as added."""
    machine.plug("fat32")
    assert ports.next_actions(1) == [("added", "/dev/sda1")]
    return "/dev/sda1"


def test_a_mount_is_told_with_its_place(ports, stick):
    point = ports.mounts.mount(stick)
    action, device = ports.next()
    assert (action, device["devname"], device["mountpath"]) == ("mounted", stick, point)
    assert ports.devices()[0]["mountpath"] == point


def test_a_device_tells_where_it_was_mounted_when_it_is_pulled(machine, ports, stick):
    point = ports.mounts.mount(stick)
    ports.next()
    machine.unplug("fat32")
    action, device = ports.next()
    assert (action, device["mountpath"]) == ("removed", point)


def test_the_mounts_of_other_devices_are_not_told(ports, stick):
    for other in ("/dev/sda", "/dev/sda10", "/dev/sdb1", "sda1", "tmpfs"):
        ports.mounts.mount(other)
    assert ports.news() == []
    assert ports.devices()[0]["mountpath"] is None


def test_a_file_system_that_was_mounted_before_its_device_was_told_is_told_right_after_it(
    machine, ports
):
    point = ports.mounts.mount("/dev/sda1")
    machine.plug("fat32")
    first, second = ports.next(), ports.next()
    assert (first[0], first[1]["mountpath"]) == ("added", None)
    assert (second[0], second[1]["mountpath"]) == ("mounted", point)
    assert ports.news() == []


def test_a_file_system_that_was_mounted_before_the_start_is_listed_with_its_place(
    machine, start_ports
):
    machine.plug("fat32")
    ports = start_ports()
    point = ports.mounts.mount("/dev/sda1")
    ports.probe.call("settle")
    ports.probe.call("usb_device_fini")
    ports.probe.call("usb_device_init")
    ports.listen()
    assert ports.devices()[0]["mountpath"] == point
    assert ports.news() == []


def test_what_was_not_told_as_added_is_not_told_as_mounted(machine, start_ports):
    machine.plug("fat32")
    ports = start_ports()
    point = ports.mounts.mount("/dev/sda1")
    assert ports.news() == []
    assert ports.devices()[0]["mountpath"] == point


def test_a_second_mount_of_the_same_file_system_is_not_told(ports, stick):
    first = ports.mounts.mount(stick)
    ports.next()
    ports.mounts.mount(stick, "elsewhere")
    assert ports.news() == []
    assert ports.devices()[0]["mountpath"] == first


def test_a_whole_mount_counts_before_the_mount_of_a_folder_of_it(ports, stick, tmp_path):
    whole = ports.mounts.mount("/dev/sda1", "whole")
    ports.next()
    os_folder = f"{whole}/folder"
    target = tmp_path / "bound"
    target.mkdir()
    ports.mounts.run("mkdir", os_folder)
    ports.mounts.run("mount", "--bind", os_folder, str(target))
    ports.mounts.run("umount", whole)
    ports.probe.call("settle")
    assert ports.devices()[0]["mountpath"] == str(target)
    ports.mounts.mount("/dev/sda1", "whole")
    ports.probe.call("settle")
    assert ports.devices()[0]["mountpath"] == whole


def test_after_an_unmount_the_next_mount_is_told_again(ports, stick):
    point = ports.mounts.mount(stick)
    ports.next()
    ports.mounts.unmount(point)
    assert ports.news() == []
    assert ports.devices()[0]["mountpath"] is None
    again = ports.mounts.mount(stick, "again")
    action, device = ports.next()
    assert (action, device["mountpath"]) == ("mounted", again)


def test_a_mount_that_was_moved_is_listed_at_its_new_place_and_not_told(ports, stick, tmp_path):
    point = ports.mounts.mount(stick)
    ports.next()
    target = tmp_path / "moved"
    target.mkdir()
    ports.mounts.run("mount", "--move", point, str(target))
    assert ports.news() == []
    assert ports.devices()[0]["mountpath"] == str(target)


@pytest.mark.parametrize(
    "name",
    [
        pytest.param("MY STICK", id="blank"),
        pytest.param("tab\there", id="tab"),
        pytest.param("line\nfeed", id="line feed"),
        pytest.param("back\\slash", id="backslash"),
        pytest.param("\\040", id="what looks like an escape"),
        pytest.param("a#b", id="hash"),
        pytest.param("Família ☃", id="UTF-8"),
        pytest.param("\udcff\udcfe\udce9", id="bytes that are no UTF-8"),
        pytest.param("x" * 255, id="255 bytes"),
        pytest.param(" ends with blanks  ", id="blanks at the ends"),
        pytest.param("- tmpfs - /dev/sdb1", id="what looks like the end of the fields"),
        pytest.param("\x01\x7f\x1b[31m", id="control characters"),
    ],
)
def test_the_place_of_a_mount_is_exact(ports, stick, name):
    point = ports.mounts.mount(stick, name)
    action, device = ports.next()
    assert action == "mounted"
    assert os.fsencode(device["mountpath"]) == os.fsencode(point)


def test_each_partition_is_told_by_itself(machine, ports):
    machine.plug("two-partitions")
    assert ports.next_actions(2) == [("added", "/dev/sda1"), ("added", "/dev/sda2")]
    second = ports.mounts.mount("/dev/sda2")
    action, device = ports.next()
    assert (action, device["devname"], device["mountpath"]) == ("mounted", "/dev/sda2", second)
    assert [device["mountpath"] for device in ports.devices()] == [None, second]


def test_the_mount_of_a_busy_stick_that_was_pulled_is_no_mount_of_the_next_one(machine, ports, stick):
    # The kernel keeps the mount, and gives the next stick another name.
    ports.mounts.mount(stick)
    ports.next()
    machine.unplug("fat32")
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]
    machine.plug("two-sticks-same-serial")
    told = ports.next_actions(3)
    assert ("added", "/dev/sdb1") in told
    assert ("mounted", "/dev/sdb1") not in told


def table(machine, *lines):
    """Has the machine's mount table be this one for good."""
    file = machine.root / "proc" / "self" / "mountinfo"
    file.parent.mkdir(parents=True)
    file.write_text("".join(f"{number} 1 {line}\n" for number, line in enumerate(lines, 20)))


@pytest.mark.parametrize(
    ("line", "point"),
    [
        pytest.param("8:1 / /m rw - vfat /dev/sda1 rw", "/m", id="of the device"),
        pytest.param("8:1 / /m rw - vfat /dev/disk/by-label/X rw", "/m", id="by another name"),
        pytest.param("0:50 / /m rw - fuseblk /dev/sda1 rw", "/m", id="by a FUSE program"),
        pytest.param("0:50 /@ /m rw - btrfs /dev/sda1 rw", "/m", id="without a device number"),
        pytest.param("8:1 / /m rw shared:1 master:2 - vfat /dev/sda1 rw", "/m", id="with tags"),
        pytest.param("8:2 / /m rw - vfat /dev/sda1 rw", None, id="of another device by its name"),
        pytest.param("0:50 / /m rw - fuse.any /dev/sda1 rw", None, id="that any user can make"),
        pytest.param("8:17 / /m rw - vfat /dev/sdb1 rw", None, id="of another device"),
        pytest.param("8:1 / /m", None, id="of a line that is none"),
    ],
)
def test_a_line_of_the_mount_table_counts_when_it_is_the_mount(machine, start_ports, line, point):
    table(machine, "0:20 / / rw - overlay overlay rw", line)
    machine.plug("fat32")
    assert start_ports().devices()[0]["mountpath"] == point


def test_a_mount_is_found_in_a_table_of_fifty_thousand_lines(machine, start_ports):
    others = [f"0:{n} / /many/{n} rw - tmpfs none rw" for n in range(100, 50100)]
    table(machine, *others, "8:1 / /m rw - vfat /dev/sda1 rw")
    machine.plug("fat32")
    assert start_ports().devices()[0]["mountpath"] == "/m"


def test_without_a_mount_table_devices_are_still_listed(machine, start_ports):
    (machine.root / "proc" / "self").mkdir(parents=True)
    (machine.root / "proc" / "self" / "mountinfo").write_text("no table\n\n- - -\n1 2 3\n")
    machine.plug("fat32")
    assert start_ports().devices()[0]["mountpath"] is None


def test_a_machine_keeps_its_ports_to_itself(machine, start_ports):
    """The tests' own ground: two machines do not see each other's devices."""
    other = Machine()
    try:
        other.plug("fat32")
        assert start_ports().devices() == []
    finally:
        other.close()
