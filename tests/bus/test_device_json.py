"""The text that tells a client of a device: its members, and whatever a device may call itself."""

import ctypes
import os

import pytest

MEMBERS = [
    "Action",
    "Class",
    "SubClass",
    "Protocol",
    "VendorId",
    "Bus",
    "Address",
    "Number",
    "TotalSize",
    "UsedSize",
    "Manufacturer",
    "Product",
    "DeviceName",
    "DevicePath",
    "Mountpath",
    "FileSystem",
    "Serial",
    "DisplayName",
    "DeviceKey",
]

HOSTILE = {
    "not UTF-8": (b"caf\xe9 \xff\xfe", "caf\ufffd \ufffd\ufffd"),
    "cut UTF-8": (b"Stick \xe2\x82", "Stick \ufffd\ufffd"),
    "a surrogate": (b"\xed\xa0\x80", "\ufffd\ufffd\ufffd"),
    "10 kB": (b"x" * 10_000, "x" * 10_000),
    "10 kB of bad bytes": (b"\xff" * 10_000, "\ufffd" * 10_000),
    "unit separator": (b"a\x1fb", "a\ufffdb"),
    "control characters": (bytes(range(1, 31)) + b"\x7f", bytes(range(1, 31)).decode() + "\x7f"),
    "bidirectional marks": ("\u202egpj.evil\u2066".encode(), "\u202egpj.evil\u2066"),
    "C1 controls": ("\u0080\u0085\u009f".encode(), "\u0080\u0085\u009f"),
    "a format": (b"%s%n%99999d", "%s%n%99999d"),
    "JSON": (b'"},{"Action":4,"x":"\\', '"},{"Action":4,"x":"\\'),
    "markup": (b"<b>&amp;</b>", "<b>&amp;</b>"),
    "beyond the first plane": ("\U0001f4be".encode(), "\U0001f4be"),
    "nothing": (b"", ""),
}


def only_device(client):
    """The one device that there is."""
    client.call("RequesAll", 7)
    ((_, device),) = client.news()
    return device


def kibibytes(folder):
    """Size of the file system that holds a folder, in 32 bits."""
    status = os.statvfs(folder)
    return ctypes.c_int32(status.f_bsize * status.f_blocks // 1024).value


def test_a_stick_is_told_whole(daemon, client):
    folder = daemon.stick_folder()
    daemon.plug(
        folder,
        subClass=6,
        protocol=80,
        vendorId=0x1234,
        productId=0x5678,
        bus=3,
        address=12,
        number=5,
        fileSystem=3,
        manufacturer="Acme",
        product="Stick",
        devname="/dev/sda1",
        devpath="/devices/usb3/3-1",
        serial="S1",
    )
    device = only_device(client)
    used = device.pop("UsedSize")
    assert isinstance(used, int)
    assert device == {
        "Action": 1,
        "Class": 8,
        "SubClass": 6,
        "Protocol": 80,
        "VendorId": 0x5678,
        "Bus": 3,
        "Address": 12,
        "Number": 5,
        "TotalSize": kibibytes(folder),
        "Manufacturer": "Acme",
        "Product": "Stick",
        "DeviceName": "/dev/sda1",
        "DevicePath": "/devices/usb3/3-1",
        "Mountpath": folder,
        "FileSystem": 3,
        "Serial": "S1",
        "DisplayName": "Stick",
        "DeviceKey": "/dev/sda1",
    }


def test_a_camera_has_no_size_and_its_serial_for_a_key(daemon, client):
    daemon.plug_camera(serial="C1", product="Camera")
    device = only_device(client)
    told = {key: device[key] for key in ("Class", "FileSystem", "TotalSize", "UsedSize")}
    assert told == {"Class": 6, "FileSystem": 99, "TotalSize": 0, "UsedSize": 0}
    assert (device["DeviceKey"], device["Mountpath"]) == ("C1", "")


def test_the_members_come_in_their_order_in_every_signal(daemon, client):
    stick = daemon.plug()
    client.call("RequesAll", 7)
    client.call("GetDeviceListByFsType", 7, -1)
    daemon.pull(stick)
    news = client.news()
    assert [list(device) for _, device in news] == [MEMBERS] * 3


def test_the_product_id_is_sent_as_vendor_id_and_the_vendor_id_not_at_all(daemon, client):
    daemon.plug(vendorId=0x1234, productId=0x5678)
    device = only_device(client)
    assert device["VendorId"] == 22136
    assert 0x1234 not in device.values()
    assert "ProductId" not in device


def test_the_second_stick_of_a_product_is_numbered(daemon, client):
    for node in ("/dev/sda1", "/dev/sdb1"):
        daemon.plug(devname=node, product="Stick")
    client.call("RequesAll", 7)
    names = [(device["DisplayName"], device["Product"]) for _, device in client.news()]
    assert names == [("Stick(2&#x202d;)", "Stick"), ("Stick", "Stick")]


def test_texts_that_a_device_does_not_have_are_empty(daemon, client):
    daemon.plug(manufacturer=None, product=None, serial=None, devpath="")
    device = only_device(client)
    for member in ("Manufacturer", "Product", "Serial", "DisplayName"):
        assert device[member] == ""


@pytest.mark.parametrize("kind", HOSTILE)
def test_whatever_a_device_calls_itself_arrives_as_valid_json(daemon, client, kind):
    given, expected = HOSTILE[kind]
    stick = daemon.plug(
        manufacturer=given, product=given, serial=given, devpath=b"/devices/" + given
    )
    arrived = [only_device(client)]
    client.call("GetDeviceListByFsType", 7, -1)
    daemon.pull(stick)
    arrived += [device for _, device in client.news()]
    assert [device["Action"] for device in arrived] == [1, 3, 2]
    for device in arrived:
        assert list(device) == MEMBERS
        assert device["DevicePath"] == "/devices/" + expected
        for member in ("Manufacturer", "Product", "Serial", "DisplayName"):
            assert device[member] == expected


@pytest.mark.parametrize("kind", [kind for kind in HOSTILE if kind != "nothing"])
def test_a_hostile_node_name_is_told_and_its_removal_recognised(daemon, client, kind):
    given, expected = HOSTILE[kind]
    stick = daemon.plug(devname=b"/dev/" + given)
    device = only_device(client)
    assert (device["DeviceName"], device["DeviceKey"]) == ("/dev/" + expected,) * 2
    daemon.pull(stick)
    ((_, removed),) = client.news()
    assert (removed["Action"], removed["DeviceKey"]) == (2, "/dev/" + expected)
    client.call("RequesAll", 7)
    assert client.news() == []


def test_two_node_names_that_differ_in_bad_bytes_only_are_two_devices(daemon, client):
    for node in (b"/dev/\xff", b"/dev/\xfe"):
        daemon.plug(devname=node)
    client.call("RequesAll", 7)
    assert len(client.news()) == 2


def test_a_hostile_folder_of_the_mount_is_told(daemon, client):
    folder = os.fsencode(daemon.stick_folder()) + b"/\xff\x1f\xe2\x80\xae%n"
    os.mkdir(folder)
    daemon.plug(folder)
    device = only_device(client)
    assert device["Mountpath"].endswith("/\ufffd\ufffd\u202e%n")
    assert device["TotalSize"] == kibibytes(folder)
