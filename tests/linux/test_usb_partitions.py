"""Which partitions and disks are anybody's to see, and what kind of disk and file system they are."""

import pytest
from usb_helpers import decoded


def plug_with(machine, partition=None, disk=None):
    """Plugs in the FAT32 stick with other udev properties of its partition or its disk."""

    def change(_path, properties, _attributes):
        properties.update({"disk": disk, "partition": partition}.get(properties["DEVTYPE"]) or {})

    machine.plug("fat32", change=change)


def gpt(kind, flags=None):
    """A partition of a GPT."""
    return {
        "ID_PART_ENTRY_SCHEME": "gpt",
        "ID_PART_ENTRY_TYPE": kind,
        "ID_PART_ENTRY_FLAGS": flags,
    }


BASIC_DATA = "ebd0a0a2-b9e5-4433-87c0-68b6b72699c7"


@pytest.mark.parametrize(
    "partition",
    [
        pytest.param(gpt("c12a7328-f81f-11d2-ba4b-00a0c93ec93b"), id="EFI system"),
        pytest.param(gpt("e3c9e316-0b5c-4db8-817d-f92df00215ae"), id="Microsoft reserved"),
        pytest.param(gpt("de94bba4-06d1-4d40-a16a-bfd50179d6ac"), id="Windows recovery"),
        pytest.param(gpt("21686148-6449-6e6f-744e-656564454649"), id="BIOS boot"),
        pytest.param(gpt(BASIC_DATA, "0x4000000000000000"), id="hidden"),
        pytest.param(gpt(BASIC_DATA, "0x8000000000000000"), id="no drive letter"),
        pytest.param(gpt(BASIC_DATA, "0x1"), id="required by the firmware"),
        pytest.param({"ID_PART_ENTRY_TYPE": "0xef"}, id="EFI system, MBR"),
        pytest.param({"ID_PART_ENTRY_TYPE": "0x27"}, id="recovery, MBR"),
        pytest.param({"ID_PART_ENTRY_TYPE": "0x12"}, id="diagnostics, MBR"),
        pytest.param({"ID_PART_ENTRY_TYPE": "0x1c"}, id="hidden FAT, MBR"),
        pytest.param({"ID_PART_ENTRY_TYPE": "0x17"}, id="hidden NTFS, MBR"),
        pytest.param({"ID_PART_ENTRY_TYPE": "0x5"}, id="extended, MBR"),
        pytest.param({"ID_PART_ENTRY_TYPE": "0xf"}, id="extended with LBA, MBR"),
        pytest.param({"UDISKS_IGNORE": "1"}, id="hidden by the administrator"),
        pytest.param({"UDISKS_IGNORE": "true"}, id="hidden by the administrator, in words"),
        pytest.param(gpt("bfbfafe7-a34f-448a-9a5b-6213eb736c22"), id="a maker's recovery"),
        pytest.param(
            {"ID_PART_ENTRY_SCHEME": "mac", "ID_PART_ENTRY_TYPE": "Apple_partition_map"},
            id="the entry of an Apple table for itself",
        ),
        pytest.param(
            {"ID_PART_ENTRY_SCHEME": "mac", "ID_PART_ENTRY_TYPE": "Apple_Driver_ATAPI"},
            id="a driver in an Apple table",
        ),
    ],
)
def test_a_service_partition_never_appears(machine, start_ports, partition):
    plug_with(machine, partition)
    assert start_ports().devices() == []


@pytest.mark.parametrize(
    "partition",
    [
        pytest.param(gpt(BASIC_DATA), id="basic data"),
        pytest.param(gpt(BASIC_DATA, "0x1000000000000000"), id="read-only"),
        pytest.param(gpt("0fc63daf-8483-4772-8e79-3d69d8477de4"), id="Linux"),
        # The numbers of MBR types mean nothing in a GPT.
        pytest.param({"ID_PART_ENTRY_TYPE": "0x83"}, id="Linux, MBR"),
        pytest.param({"UDISKS_IGNORE": "0"}, id="not hidden by the administrator"),
        pytest.param(
            {"ID_PART_ENTRY_SCHEME": "mac", "ID_PART_ENTRY_TYPE": "Apple_HFS"}, id="Apple HFS"
        ),
        # The image of a disc on a stick, which firmware is to leave alone.
        pytest.param({"ID_PART_ENTRY_TYPE": "0x17", "ID_FS_TYPE": "iso9660"}, id="disc image"),
    ],
)
def test_a_partition_for_viewers_appears(machine, start_ports, partition):
    plug_with(machine, partition)
    assert start_ports().nodes() == ["/dev/sda1"]


def test_a_disk_with_a_file_system_and_no_partition_table_is_one_device(machine, start_ports):
    plug_with(
        machine,
        disk={
            "ID_PART_TABLE_TYPE": None,
            "ID_FS_USAGE": "filesystem",
            "ID_FS_TYPE": "exfat",
            "ID_FS_LABEL_ENC": "WHOLE\\x20DISK",
        },
    )
    machine.remove(machine.path_of("sda1"))
    (disk,) = start_ports().devices()
    assert (disk["devname"], disk["number"], disk["fileSystem"], disk["label"]) == (
        "/dev/sda",
        0,
        1,
        "WHOLE DISK",
    )


def test_a_disk_with_a_partition_table_is_only_the_frame_of_its_partitions(machine, start_ports):
    # Images for optical discs have both when they are written to a stick.
    plug_with(machine, disk={"ID_FS_USAGE": "filesystem", "ID_FS_TYPE": "iso9660"})
    assert start_ports().nodes() == ["/dev/sda1"]


@pytest.mark.parametrize("usage", ["raid", "crypto", "other"])
def test_a_disk_that_holds_something_else_than_a_file_system_never_appears(
    machine, start_ports, usage
):
    plug_with(machine, disk={"ID_PART_TABLE_TYPE": None, "ID_FS_USAGE": usage})
    machine.remove(machine.path_of("sda1"))
    assert start_ports().devices() == []


@pytest.mark.parametrize(
    ("name", "code"),
    [
        ("vfat", 0),
        ("exfat", 1),
        ("ext2", 2),
        ("ext3", 2),
        ("ext4", 2),
        ("ntfs", 3),
        ("btrfs", 99),
        ("hfsplus", 99),
        ("iso9660", 99),
        ("ext5", 99),
        (None, 99),
    ],
)
def test_a_file_system_has_the_code_of_the_platform(machine, start_ports, name, code):
    plug_with(machine, {"ID_FS_TYPE": name})
    (device,) = start_ports().devices()
    assert device["fileSystem"] == code


@pytest.mark.parametrize(
    ("properties", "code"),
    [
        pytest.param({}, 1, id="stick"),
        pytest.param({"ID_BUS": "ata"}, 0, id="ATA disk behind a bridge"),
        pytest.param({"ID_ATA": "1"}, 0, id="disk that answers ATA commands"),
        pytest.param({"ID_BUS": "scsi"}, 99, id="of another kind"),
    ],
)
def test_a_disk_has_the_type_of_its_bridge(machine, start_ports, properties, code):
    plug_with(machine, properties, properties)
    (device,) = start_ports().devices()
    assert device["disk"] == code


def test_a_uas_disk_appears_with_its_own_protocol(machine, start_ports):
    machine.plug("fat32")
    interface = machine.path_of("2-1:1.0")
    machine.set_attribute(interface, "bInterfaceProtocol", "62")
    (device,) = start_ports().devices()
    assert (device["class"], device["subClass"], device["protocol"]) == (8, 6, 98)


def test_a_partition_on_an_interface_of_another_class_never_appears(machine, start_ports):
    machine.plug("fat32")
    machine.set_attribute(machine.path_of("2-1:1.0"), "bInterfaceClass", "ff")
    assert start_ports().devices() == []


def test_a_partition_of_another_bus_never_appears(machine, start_ports):
    ports = start_ports()
    machine.add(
        "/devices/pci0000:00/0000:00:1f.2/ata1/host9/target9:0:0/9:0:0:0/block/sdz/sdz1",
        {
            "SUBSYSTEM": "block",
            "DEVTYPE": "partition",
            "DEVNAME": "/dev/sdz1",
            "ID_BUS": "ata",
            "ID_FS_TYPE": "ext4",
            "ID_FS_USAGE": "filesystem",
        },
        {"size": "2048"},
    )
    assert ports.news() == []
    assert ports.devices() == []


def test_a_device_that_udev_has_not_identified_yet_appears_when_it_has(machine, ports):
    plug_with(machine)
    assert ports.next_actions(1) == [("added", "/dev/sda1")]
    settled = machine.properties(machine.path_of("sda1"))
    machine.remove(machine.path_of("sda1"))
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]
    path = machine.path_of("sda") + "/sda1"
    machine.add(path, {**settled, "ID_BUS": ""}, {"size": "2048"})
    assert ports.news() == []
    assert ports.devices() == []
    machine.change(path, settled)
    assert ports.next_actions(1) == [("added", "/dev/sda1")]


@pytest.mark.parametrize(
    ("properties", "label"),
    [
        ({"ID_FS_LABEL_ENC": "a\\x20b\\x5cc\\x2fd"}, "a b\\c/d"),
        ({"ID_FS_LABEL_ENC": "\\x1b[31mred\\x0a"}, "\x1b[31mred\n"),
        ({"ID_FS_LABEL_ENC": "\\xff\\xfe"}, "\udcff\udcfe"),
        ({"ID_FS_LABEL_ENC": "\\x2"}, "\\x2"),
        ({"ID_FS_LABEL_ENC": "\\xzz\\x00"}, "\\xzz\\x00"),
        ({"ID_FS_LABEL_ENC": None, "ID_PART_ENTRY_NAME": "My\\x20Data"}, "My Data"),
        ({"ID_FS_LABEL_ENC": None}, None),
    ],
)
def test_a_label_is_exact(machine, start_ports, properties, label):
    plug_with(machine, properties)
    (device,) = start_ports().devices()
    assert device["label"] == label


def test_a_device_without_usb_strings_is_called_as_its_disk_calls_itself(machine, start_ports):
    def change(_path, _properties, attributes):
        for name in ("product", "manufacturer", "serial"):
            attributes.pop(name, None)

    machine.plug("fat32", change=change)
    ports = start_ports()
    (device,) = map(decoded, ports.probe.call("devices", 8))
    assert (device["product"], device["manufacturer"], device["serial"]) == (
        "QEMU HARDDISK",
        None,
        None,
    )
