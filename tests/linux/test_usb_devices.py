"""Recorded devices, plugged in and pulled out: what each is listed as, and what is told in which order."""

import pytest
from usb_helpers import DISK_PATH, Opened, stick

TWO_STICKS = "/devices/pci0000:00/0000:00:04.0/usb2/2-8/2-8:1.0/host1/target1:0:0/1:0:0:0/block/sdb/sdb1"
SECOND_SLOT = "/devices/pci0000:00/0000:00:04.0/usb2/2-4/2-4:1.0/host0/target0:0:0/0:0:0:1/block/sdb/sdb1"

# What each recording is listed as, in the order of the events.
RECORDS = {
    "fat32": [stick("2-1", 2, "AA010203", "KINGSTON", 0)],
    "exfat": [stick("2-2", 3, "4C530001230101117392", "SanDisk 64", 1)],
    "ntfs": [stick("2-1", 2, "AA01", "Família", 3)],
    "ext4": [stick("2-4", 5, "AA01", "linux data", 2)],
    # What the disk says of itself is another's name: the USB strings are taken.
    "inquiry-strings": [stick("2-4", 13, "001CC0EC3450EB71F77001A0", "KINGSTON", 0)],
    # Blanks at both ends and bytes that are no ASCII: as they are.
    "serial-odd-chars": [stick("2-2", 11, "  a b/c;Ã¼  ", "KINGSTON", 0)],
    "two-partitions": [
        stick("2-6", 7, "AA01", "FIRST", 0),
        stick(
            "2-6",
            7,
            "AA01",
            "second",
            2,
            number=2,
            devname="/dev/sda2",
            devpath=DISK_PATH.format("2-6") + "/sda2",
        ),
    ],
    "two-sticks-same-serial": [
        stick("2-7", 16, "0000001", "KINGSTON", 0),
        stick("2-8", 17, "0000001", "MY STICK", 0, devname="/dev/sdb1", devpath=TWO_STICKS),
    ],
    "card-reader-2lun": [
        stick("2-4", 21, "RDR1", "linux data", 2, devname="/dev/sdb1", devpath=SECOND_SLOT),
        stick("2-4", 21, "RDR1", "KINGSTON", 0),
    ],
}

CAMERA = {
    "class": 6,
    "subClass": 1,
    "protocol": 1,
    "vendorId": 0x46F4,
    "productId": 4,
    "bus": 1,
    "address": 2,
    "number": 0,
    "manufacturer": "QEMU",
    "product": "QEMU filesharing",
    "devname": "/dev/bus/usb/001/002",
    "devpath": "/devices/pci0000:00/0000:00:04.0/usb1/1-4/1-4:1.0",
    "mountpath": None,
    "serial": "MTP0001",
    "label": None,
    "fileSystem": 99,
    "disk": 99,
}
CAMERA_DEVICE = "/devices/pci0000:00/0000:00:04.0/usb1/1-4"

by_node = {"key": lambda record: record["devname"]}


@pytest.mark.parametrize("name", RECORDS)
def test_a_stick_is_told_as_added_with_everything_that_is_known_of_it(machine, ports, name):
    machine.plug(name)
    told = [ports.next() for _ in RECORDS[name]]
    assert {action for action, _ in told} == {"added"}
    expected = sorted(RECORDS[name], **by_node)
    assert sorted((record for _, record in told), **by_node) == expected
    assert sorted(ports.devices(), **by_node) == expected
    assert ports.news() == []


@pytest.mark.parametrize("name", RECORDS)
def test_a_stick_that_is_there_at_the_start_is_listed_and_not_told(machine, start_ports, name):
    machine.plug(name)
    ports = start_ports()
    assert sorted(ports.devices(), **by_node) == sorted(RECORDS[name], **by_node)
    assert ports.news() == []


@pytest.mark.parametrize("name", sorted(RECORDS.keys() - {"two-sticks-same-serial"}))
def test_a_pulled_stick_is_told_as_removed_and_still_tells_what_it_was(machine, ports, name):
    machine.plug(name)
    for _ in RECORDS[name]:
        assert ports.next()[0] == "added"
    machine.unplug(name)
    told = [ports.next() for _ in RECORDS[name]]
    assert {action for action, _ in told} == {"removed"}
    expected = sorted(RECORDS[name], **by_node)
    assert sorted((record for _, record in told), **by_node) == expected
    assert ports.devices() == []


def test_of_two_sticks_with_one_serial_each_is_told_and_pulled_by_itself(machine, ports):
    machine.plug("two-sticks-same-serial")
    assert sorted(ports.next_actions(2)) == [("added", "/dev/sda1"), ("added", "/dev/sdb1")]
    machine.unplug("two-sticks-same-serial", "s1")
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]
    assert ports.nodes() == ["/dev/sdb1"]
    machine.unplug("two-sticks-same-serial", "s2")
    assert ports.next_actions(1) == [("removed", "/dev/sdb1")]


def test_partitions_are_told_in_the_order_in_which_udev_passes_them_on(machine, ports):
    machine.plug("two-partitions")
    assert ports.next_actions(2) == [("added", "/dev/sda1"), ("added", "/dev/sda2")]


@pytest.mark.parametrize("name", ["blank", "kbd"])
def test_what_holds_no_file_system_or_no_storage_never_appears(machine, start_ports, name):
    ports = start_ports()
    machine.plug(name)
    assert ports.news() == []
    machine.unplug(name, "k1" if name == "kbd" else "s1")
    assert ports.news() == []
    machine.plug(name)
    assert start_ports().devices() == []


# ---- card readers


def test_an_empty_card_reader_never_appears(machine, start_ports):
    ports = start_ports()
    machine.plug("reader-empty", "reader-empty.monitor.txt")
    assert ports.news() == []
    assert start_ports().devices() == []


def test_a_card_appears_when_it_is_pushed_in_and_goes_when_it_is_taken_out(machine, ports):
    machine.plug("reader-empty", "reader-empty.monitor.txt")
    machine.plug("reader-card-in", "reader-card-in.monitor.txt")
    action, card = ports.next()
    assert (action, card["devname"], card["product"], card["serial"], card["number"]) == (
        "added",
        "/dev/sda1",
        "USB2.0-CRW",
        "20100201396000000",
        1,
    )
    machine.plug("reader-card-in", "reader-card-out.monitor.txt")
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]
    assert ports.devices() == []


def test_a_card_with_a_file_system_and_no_partition_table_comes_and_goes_by_changes_of_the_disk(
    machine, ports
):
    machine.plug("reader-empty", "reader-empty.monitor.txt")
    disk = machine.path_of("sda")
    empty = machine.properties(disk)
    machine.change(disk, {**empty, "ID_FS_TYPE": "vfat", "ID_FS_USAGE": "filesystem"})
    action, card = ports.next()
    assert (action, card["devname"], card["number"], card["fileSystem"]) == (
        "added",
        "/dev/sda",
        0,
        0,
    )
    machine.change(disk, empty)
    assert ports.next_actions(1) == [("removed", "/dev/sda")]


# ---- cameras


def test_a_camera_is_told_as_added_with_everything_that_is_known_of_it(machine, ports):
    machine.plug("mtp")
    assert ports.next() == ("added", CAMERA)
    assert ports.devices(6) == [CAMERA]
    assert ports.devices(8) == []


def test_a_camera_that_is_there_at_the_start_is_listed_and_not_told(machine, start_ports):
    machine.plug("mtp")
    ports = start_ports()
    assert ports.devices(6) == [CAMERA]
    assert ports.news() == []


def test_a_pulled_camera_is_told_as_removed_and_still_tells_what_it_was(machine, ports):
    machine.plug("mtp")
    ports.next()
    machine.unplug("mtp", "m1")
    assert ports.next() == ("removed", CAMERA)
    assert ports.devices(6) == []


def plug_camera_with(machine, interfaces=None, **attributes):
    """Plugs in the camera as a device with other interfaces."""

    def change(path, properties, known):
        if path == CAMERA_DEVICE and interfaces is not None:
            properties["ID_USB_INTERFACES"] = interfaces
        if path != CAMERA_DEVICE:
            known.update(attributes)

    machine.plug("mtp", change=change)


def test_an_interface_beside_a_printer_interface_is_no_camera(machine, ports):
    plug_camera_with(machine, interfaces=":060101:070102:")
    assert ports.news() == []
    assert ports.devices(6) == []


@pytest.mark.parametrize(
    "attributes", [{"bInterfaceSubClass": "02"}, {"bInterfaceProtocol": "02"}]
)
def test_a_still_image_interface_of_another_kind_is_no_camera(machine, ports, attributes):
    plug_camera_with(machine, **attributes)
    assert ports.news() == []
    assert ports.devices(6) == []


def test_a_camera_that_udev_has_not_identified_yet_does_not_appear(machine, start_ports):
    plug_camera_with(machine, interfaces=None)
    assert len(start_ports().devices(6)) == 1
    machine.unplug("mtp", "m1")
    plug_camera_with(machine, interfaces="")
    assert start_ports().devices(6) == []


def test_a_camera_with_two_interfaces_is_one_camera(machine, start_ports):
    machine.plug("mtp")
    second = CAMERA_DEVICE + "/1-4:1.1"
    first = machine.path_of("1-4:1.0")
    machine.add(second, machine.properties(first), machine.attributes_of(first))
    ports = start_ports()
    assert len(ports.devices(6)) == 1
    machine.remove(second)
    machine.unplug("mtp", "m1")
    assert ports.next_actions(1) == [("removed", CAMERA["devname"])]
    assert ports.news() == []
    assert ports.devices(6) == []


# ---- the functions around it


def test_a_walk_visits_every_storage_device_at_once_and_can_be_ended(machine, start_ports):
    machine.plug("two-partitions")
    ports = start_ports()
    assert ports.probe.call("usb_mass_storage_foreach") == 0
    steps = [event["device"]["devname"] for event in ports.probe.events_so_far()]
    assert steps == ["/dev/sda1", "/dev/sda2"]
    ports.probe.call("foreach_until_first")
    assert len(ports.probe.events_so_far()) == 1


def test_nothing_is_told_without_a_listener_or_after_the_end(machine, start_ports):
    ports = start_ports(listening=False)
    machine.plug("fat32")
    assert ports.news() == []
    ports.listen()
    ports.probe.call("usb_unset_connected_cb")
    machine.unplug("fat32")
    machine.plug("fat32")
    assert ports.news() == []
    ports.listen()
    assert ports.probe.call("usb_device_fini") == 0
    assert ports.probe.call("usb_unset_connected_cb") == 0
    machine.unplug("fat32")
    assert ports.news() == []
    assert ports.probe.call("devices", 8) is None


def test_what_was_added_while_nobody_listened_is_not_told_as_mounted(machine, start_ports):
    ports = start_ports(listening=False)
    machine.plug("fat32")
    ports.probe.call("settle")
    ports.listen()
    point = ports.mounts.mount("/dev/sda1")
    assert ports.news() == []
    assert ports.devices()[0]["mountpath"] == point


def test_no_device_node_is_ever_opened(machine, ports):
    nodes = machine.root / "dev"
    nodes.mkdir(exist_ok=True)
    with Opened(nodes) as opened:
        machine.plug("fat32")
        ports.mounts.mount("/dev/sda1")
        assert ports.next_actions(2) == [("added", "/dev/sda1"), ("mounted", "/dev/sda1")]
        ports.devices()
        ports.probe.call("usb_mass_storage_foreach")
        assert not opened.names() & {"sda", "sda1"}
        (nodes / "sda1").open("rb").close()
        assert "sda1" in opened.names()  # it would have been seen


def test_two_hundred_events_at_once_are_all_told_in_their_order(machine, ports):
    machine.plug("fat32")
    assert ports.next_actions(1) == [("added", "/dev/sda1")]
    disk = machine.path_of("sda")
    partition = machine.properties(machine.path_of("sda1"))
    for number in range(2, 102):
        machine.add(
            f"{disk}/sda{number}",
            {**partition, "DEVNAME": f"/dev/sda{number}", "PARTN": str(number), "MINOR": str(number)},
            {"size": "2048"},
        )
    assert ports.next_actions(100) == [("added", f"/dev/sda{n}") for n in range(2, 102)]
    for number in range(2, 102):
        machine.remove(f"{disk}/sda{number}")
    machine.remove(disk + "/sda1")
    machine.remove(disk)
    assert sorted(ports.next_actions(101)) == sorted(("removed", f"/dev/sda{n}") for n in range(1, 102))
