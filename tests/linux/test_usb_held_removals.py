"""Removals that may be none: partition tables that are read again, and devices found anew at a wake-up."""

import pytest
from captured import Event


@pytest.fixture
def stick(machine, ports):
    """A mounted stick, told as such; returns its path in sysfs."""
    machine.plug("fat32")
    ports.mounts.mount("/dev/sda1")
    assert ports.next_actions(2) == [("added", "/dev/sda1"), ("mounted", "/dev/sda1")]
    return machine.path_of("sda1")


def read_table_again(machine, path, **changes):
    """The kernel drops a partition and finds it again."""
    properties = machine.properties(path)
    machine.remove(path)
    machine.play(Event("add", path, {**properties, **changes}))


def test_a_mounted_partition_that_goes_and_comes_back_is_not_told(machine, ports, stick):
    before = ports.devices()
    read_table_again(machine, stick)
    assert ports.news() == []
    assert ports.devices() == before


def test_a_partition_that_nobody_mounted_and_that_comes_back_is_not_told(machine, ports):
    machine.plug("fat32")
    ports.next()
    read_table_again(machine, machine.path_of("sda1"))
    assert ports.news() == []
    assert ports.nodes() == ["/dev/sda1"]


def test_it_may_come_and_go_many_times(machine, ports, stick):
    for _ in range(10):
        read_table_again(machine, stick)
    assert ports.news() == []
    machine.unplug("fat32")
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]
    assert ports.news() == []


def test_a_partition_that_stays_away_is_told_as_removed(machine, ports, stick):
    machine.remove(stick)
    assert ports.nodes() == ["/dev/sda1"]  # it may come back yet
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]
    assert ports.devices() == []


def test_with_its_disk_a_partition_that_is_away_goes_at_once(machine, ports, stick):
    machine.remove(stick)
    machine.remove(stick.rsplit("/", 1)[0])
    assert ports.news() == [("removed", "/dev/sda1")]


def test_another_file_system_in_the_same_place_is_another_device(machine, ports, stick):
    read_table_again(machine, stick, ID_FS_UUID_ENC="0000-0000", ID_FS_LABEL_ENC="NEW")
    # The mount of the old one is the mount of its name.
    assert ports.next_actions(3) == [
        ("removed", "/dev/sda1"),
        ("added", "/dev/sda1"),
        ("mounted", "/dev/sda1"),
    ]


def test_what_was_mounted_while_its_partition_was_away_is_told(machine, ports):
    machine.plug("fat32")
    ports.next()
    path = machine.path_of("sda1")
    properties = machine.properties(path)
    machine.remove(path)
    ports.probe.call("settle")
    point = ports.mounts.mount("/dev/sda1")
    assert ports.news() == []
    machine.add(path, properties, machine.attributes_of(path))
    action, device = ports.next()
    assert (action, device["mountpath"]) == ("mounted", point)


def test_a_stick_that_is_formatted_is_another_device(machine, ports):
    machine.plug("fat32")
    ports.next()
    path = machine.path_of("sda1")
    machine.change(path, {**machine.properties(path), "ID_FS_TYPE": "ext4", "ID_FS_UUID_ENC": "1"})
    (removed, old), (added, new) = ports.next(), ports.next()
    assert (removed, old["fileSystem"], added, new["fileSystem"]) == ("removed", 0, "added", 2)


def test_a_mounted_stick_that_gets_a_new_label_stays_the_same_device(machine, ports, stick):
    machine.change(stick, {**machine.properties(stick), "ID_FS_LABEL_ENC": "RENAMED"})
    assert ports.news() == []
    assert ports.devices()[0]["label"] == "RENAMED"


def test_an_event_that_changes_nothing_is_not_told(machine, ports, stick):
    machine.change(stick, machine.properties(stick))
    machine.play(Event("add", stick, machine.properties(stick)))
    assert ports.news() == []


def test_a_node_whose_removal_was_missed_is_told_before_it_is_given_to_another_device(machine, ports):
    machine.plug("fat32")
    ports.next()
    machine.vanish()
    machine.plug("exfat")  # the same node at another port
    assert ports.next_actions(2) == [("removed", "/dev/sda1"), ("added", "/dev/sda1")]
    assert ports.devices()[0]["fileSystem"] == 1


def test_a_mounted_partition_that_udev_cannot_read_for_once_stays_what_it_was(machine, ports, stick):
    before = ports.devices()
    properties = machine.properties(stick)
    for name in ("ID_FS_TYPE", "ID_FS_USAGE", "ID_FS_UUID_ENC", "ID_FS_LABEL_ENC"):
        del properties[name]
    machine.change(stick, properties)
    assert ports.news() == []
    assert ports.devices() == before


def test_a_mounted_disk_without_partitions_that_udev_cannot_read_for_once_stays(machine, ports):
    machine.plug("reader-empty", "reader-empty.monitor.txt")
    disk = machine.path_of("sda")
    machine.set_attribute(disk, "size", "2048")
    empty = machine.properties(disk)
    card = {**empty, "ID_FS_TYPE": "vfat", "ID_FS_USAGE": "filesystem", "ID_FS_UUID_ENC": "1"}
    machine.change(disk, card)
    ports.mounts.mount("/dev/sda")
    assert ports.next_actions(2) == [("added", "/dev/sda"), ("mounted", "/dev/sda")]
    machine.change(disk, empty)
    assert ports.news() == []
    assert ports.nodes() == ["/dev/sda"]
    machine.set_attribute(disk, "size", "0")
    machine.change(disk, empty)
    assert ports.next_actions(1) == [("removed", "/dev/sda")]


def test_a_card_that_was_swapped_between_two_looks_of_the_kernel_is_another_device(machine, ports):
    machine.plug("reader-empty", "reader-empty.monitor.txt")
    disk = machine.path_of("sda")
    machine.set_attribute(disk, "size", "2048")
    card = {
        **machine.properties(disk),
        "ID_FS_TYPE": "vfat",
        "ID_FS_USAGE": "filesystem",
        "ID_FS_UUID_ENC": "1",
    }
    machine.change(disk, card)
    ports.mounts.mount("/dev/sda")
    assert ports.next_actions(2) == [("added", "/dev/sda"), ("mounted", "/dev/sda")]
    machine.change(disk, {**card, "ID_FS_UUID_ENC": "2", "DISK_MEDIA_CHANGE": "1"})
    assert ports.next_actions(2) == [("removed", "/dev/sda"), ("added", "/dev/sda")]


# ---- wake-up


@pytest.fixture
def ports(start_ports, start_bus, request):
    """The USB library, with a logind that can wake it up."""
    request.node.system_bus = start_bus()
    return start_ports(system_bus=request.node.system_bus)


@pytest.fixture
def wake(ports, start_logind, request):
    """Has the machine wake up, and waits until the USB library knows."""
    logind = start_logind(request.node.system_bus)
    ports.probe.call("on-sleep")

    def is_heard():
        return any(event["event"] == "power" for event in ports.probe.events_so_far())

    return lambda sleeps=False: logind.tell_until("PrepareForSleep", sleeps, is_heard)


def all_again(machine):
    """Every device is dropped by the kernel and found anew, under another host number."""
    found = [(path, machine.properties(path)) for path in machine.present()]
    known = {path: machine.attributes_of(path) for path, _ in found}
    for path, _ in reversed(found):
        machine.remove(path)
    for path, properties in found:
        renumbered = path.replace("/host0/target0:0:0/0:0:0:0/", "/host7/target7:0:0/7:0:0:0/")
        machine.add(renumbered, {**properties, "DEVPATH": renumbered}, known[path])


def test_a_stick_that_the_kernel_finds_anew_after_a_wake_up_is_not_told(machine, ports, stick, wake):
    wake()
    all_again(machine)
    assert ports.news() == []
    assert ports.nodes() == ["/dev/sda1"]
    assert "/host7/" in ports.devices()[0]["devpath"]
    machine.unplug_everything()
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]


def test_a_camera_that_the_kernel_finds_anew_after_a_wake_up_is_not_told(machine, ports, wake):
    machine.plug("mtp")
    ports.next()
    wake()
    all_again(machine)
    assert ports.news() == []
    assert len(ports.devices(6)) == 1


def test_a_stick_that_was_pulled_in_standby_is_told_some_seconds_after_the_wake_up(
    machine, ports, stick, wake
):
    wake()
    machine.unplug_everything()
    assert ports.news() == []
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]


def test_a_new_stick_is_told_after_a_wake_up_as_ever(machine, ports, wake):
    wake()
    machine.plug("fat32")
    assert ports.next_actions(1) == [("added", "/dev/sda1")]


def test_a_stick_that_goes_before_the_machine_says_that_it_is_awake_and_comes_back_is_not_told(
    machine, ports, stick, wake
):
    wake(sleeps=True)
    all_again(machine)
    assert ports.news() == []
    wake()
    assert ports.news() == []
    assert ports.nodes() == ["/dev/sda1"]


def test_a_stick_that_goes_in_standby_is_told_some_seconds_after_the_wake_up(
    machine, ports, stick, wake
):
    wake(sleeps=True)
    machine.unplug_everything()
    assert ports.news() == []
    wake()
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]
