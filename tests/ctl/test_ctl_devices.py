"""portmeldctl list and count: what is plugged in, for people and for programs."""

import json
import re

import pytest
from ctl_process import until

FAT, EXFAT, EXT4, NTFS, UNKNOWN = 0, 1, 2, 3, 99
KINDS = {"fat": FAT, "exfat": EXFAT, "ext4": EXT4, "ntfs": NTFS}
TITLES = ["DEVICE", "TYPE", "SIZE", "USED", "NAME", "MOUNT"]

# What the daemon sends of a stick.
STICK = {
    "Action": 1,
    "Class": 8,
    "SubClass": 6,
    "Protocol": 80,
    "VendorId": 0x5567,
    "Bus": 1,
    "Address": 4,
    "Number": 77,
    "TotalSize": 15_625_216,
    "UsedSize": 1_048_576,
    "Manufacturer": "Quillon",
    "Product": "Traveller",
    "DeviceName": "/dev/sda1",
    "DevicePath": "/devices/usb1/1-1",
    "Mountpath": "/media/TRAVEL",
    "FileSystem": FAT,
    "Serial": "0123",
    "DisplayName": "Traveller",
    "DeviceKey": "/dev/sda1",
}
CAMERA = {
    **STICK,
    "Class": 6,
    "TotalSize": 0,
    "UsedSize": 0,
    "Product": "Lumet 7",
    "DisplayName": "Lumet 7",
    "DeviceName": "",
    "Mountpath": "",
    "FileSystem": UNKNOWN,
    "DeviceKey": "C-9",
}


@pytest.fixture
def zoo(daemon):
    """A device of each kind, the newest last."""
    for letter, file_system in zip("abcde", [FAT, EXFAT, EXT4, NTFS, UNKNOWN]):
        daemon.plug(devname=f"/dev/sd{letter}1", fileSystem=file_system)
    daemon.plug_camera(serial="C1", devname="camera")
    return daemon


def table(text):
    """The rows of a table, cut where its titles begin or end; the titles are checked."""
    lines = text.splitlines()
    assert lines[0].split() == TITLES
    left = {title: lines[0].index(title) for title in TITLES}
    rows = []
    for line in lines[1:]:
        cells = [
            line[left["DEVICE"] : left["TYPE"]],
            line[left["TYPE"] :].split()[0],
            *line[left["TYPE"] :].split()[1:3],
            line[left["NAME"] : left["MOUNT"]],
            line[left["MOUNT"] :],
        ]
        rows.append(tuple(cell.strip() for cell in cells))
    return rows


def nodes(ctl, *arguments):
    """The device nodes of a list, from the table and, alike, from the JSON."""
    shown = [row[0] for row in table(ctl.answer("list", *arguments))]
    assert [device["node"] for device in ctl.json("list", *arguments)] == shown
    return shown


# ---- list


def test_every_device_is_listed_the_newest_first(zoo, ctl):
    assert nodes(ctl) == ["camera", *(f"/dev/sd{letter}1" for letter in "edcba")]


def test_the_type_is_the_file_system_or_camera(zoo, ctl):
    types = [row[1] for row in table(ctl.answer("list"))]
    assert types == ["camera", "unknown", "ntfs", "ext4", "exfat", "fat"]
    assert [device["type"] for device in ctl.json("list")] == types


@pytest.mark.parametrize("name, letter", [("fat", "a"), ("exfat", "b"), ("ext4", "c"), ("ntfs", "d")])
def test_a_file_system_lists_its_own_devices(zoo, ctl, name, letter):
    assert nodes(ctl, "--fs", name) == nodes(ctl, f"--fs={name}") == [f"/dev/sd{letter}1"]


def test_devices_that_nobody_asked_for_yet_are_listed(new_daemon, ctl):
    new_daemon.insert(devname="/dev/sda1", fileSystem=FAT)
    assert nodes(ctl) == ["/dev/sda1"]


def test_a_wrong_end_mark_of_the_daemon_does_not_shorten_the_list(daemon, ctl):
    daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    daemon.plug(devname="/dev/sdb1", fileSystem=FAT)
    daemon.order("standby")
    daemon.order("wake")
    assert nodes(ctl, "--fs", "fat") == ["/dev/sdb1", "/dev/sda1"]


@pytest.mark.parametrize("arguments", [[], ["--fs", "fat"]])
def test_without_devices_the_table_is_its_titles_and_the_json_an_empty_list(daemon, ctl, arguments):
    assert table(ctl.answer("list", *arguments)) == []
    assert ctl.json("list", *arguments) == []


def test_a_file_system_that_no_device_has_lists_none(daemon, ctl):
    daemon.plug(fileSystem=FAT)
    assert ctl.json("list", "--fs", "ntfs") == []


def test_a_row_tells_what_people_want_to_know(fake_daemon, ctl):
    fake_daemon(STICK, CAMERA)
    assert ctl.answer("list") == (
        "DEVICE     TYPE     SIZE  USED  NAME       MOUNT\n"
        "/dev/sda1  fat     14.9G    1G  Traveller  /media/TRAVEL\n"
        "C-9        camera      -     -  Lumet 7    -\n"
    )


def test_json_tells_everything_under_names_that_say_what_it_is(fake_daemon, ctl):
    fake_daemon(STICK, CAMERA)
    stick, camera = ctl.json("list")
    assert stick == {
        "key": "/dev/sda1",
        "type": "fat",
        "node": "/dev/sda1",
        "mount": "/media/TRAVEL",
        "size": 15_625_216 * 1024,
        "used": 2**30,
        "name": "Traveller",
        "manufacturer": "Quillon",
        "product": "Traveller",
        "serial": "0123",
        "productId": 0x5567,
        "class": 8,
        "subClass": 6,
        "protocol": 80,
        "bus": 1,
        "address": 4,
        "number": 77,
        "path": "/devices/usb1/1-1",
    }
    assert (camera["type"], camera["size"], camera["used"]) == ("camera", None, None)


@pytest.mark.parametrize(
    "kibibytes, shown, size",
    [
        (1, "1K", 2**10),
        (1023, "1023K", 1023 * 2**10),
        (1024, "1M", 2**20),
        (1536, "1.5M", 3 * 2**19),
        (1024 * 1024 - 1, "1G", (2**20 - 1) * 2**10),
        (10 * 2**20 + 2**19, "10.5G", 21 * 2**29),
        (2**31 - 1, "2T", (2**31 - 1) * 2**10),
        (-(2**31), "2T", 2**41),
        (-1, "4T", (2**32 - 1) * 2**10),
    ],
)
def test_sizes_are_in_units_of_1024_and_right_below_4_tebibytes(
    fake_daemon, ctl, kibibytes, shown, size
):
    fake_daemon({**STICK, "TotalSize": kibibytes, "UsedSize": 0})
    assert table(ctl.answer("list"))[0][2:4] == (shown, "0B")
    assert (ctl.json("list")[0]["size"], ctl.json("list")[0]["used"]) == (size, 0)


def test_equal_products_are_shown_with_their_number_and_without_its_mark_for_screens(daemon, ctl):
    for letter in "ab":
        daemon.plug(devname=f"/dev/sd{letter}1", product="Stick", fileSystem=FAT)
    assert [row[4] for row in table(ctl.answer("list"))] == ["Stick(2)", "Stick"]
    assert [device["name"] for device in ctl.json("list")] == ["Stick(2)", "Stick"]


def test_a_device_that_is_pulled_while_the_list_comes_is_not_in_it(fake_daemon, ctl):
    other = {**STICK, "DeviceName": "/dev/sdb1", "DeviceKey": "/dev/sdb1"}
    fake_daemon(STICK, other, {**STICK, "Action": 2})
    assert nodes(ctl) == ["/dev/sdb1"]


@pytest.mark.parametrize("text", ["", "no JSON", "[]", "null", "{}", '{"Action": 5}', '{"Action": "1"}'])
def test_a_signal_that_tells_of_no_device_is_a_failure(fake_daemon, ctl, text):
    fake_daemon(text)
    status, message = ctl.failure("list")
    assert status == 1
    assert message.startswith(f"the daemon sent what tells of no device: {text}")


def test_members_that_are_missing_or_of_another_kind_count_as_not_known(fake_daemon, ctl):
    fake_daemon({"Action": 1, "TotalSize": "big", "DisplayName": 7, "DeviceKey": ["a"], "Bus": 1.5})
    assert table(ctl.answer("list")) == [("-", "fat", "-", "-", "-", "-")]


def test_signals_of_somebody_else_are_not_taken_for_the_daemons(fake_daemon, ctl):
    fake_daemon(STICK, intruder=True)
    assert ctl.json("list") == []


# ---- hostile texts

HOSTILE = "A\x1b]0;owned\x07\x1b[2J\n/dev/sdz1  fat\r\x7f\u009b31m\u202ecod.\u2028\U000e0001 Ü日"
HARMLESS = (
    r"A\u001b]0;owned\u0007\u001b[2J\u000a/dev/sdz1  fat\u000d\u007f\u009b31m\u202ecod.\u2028"
    r"\U000e0001 Ü日"
)


@pytest.mark.parametrize("member", ["DisplayName", "Mountpath", "DeviceName"])
def test_characters_that_do_more_than_be_seen_reach_nobody(fake_daemon, ctl, member):
    fake_daemon({**STICK, member: HOSTILE})
    text = ctl.answer("list")
    assert HARMLESS in text
    assert len(text.splitlines()) == 2
    for shown in (text.encode(), ctl.on_terminal("list")):
        assert HARMLESS.encode() in shown
        assert not re.search(rb"[\x00-\x09\x0b-\x1f\x7f]|\xc2[\x80-\x9f]", shown)


def test_json_writes_them_by_their_number_and_says_the_same(fake_daemon, ctl):
    fake_daemon({**STICK, "DisplayName": HOSTILE, "Product": HOSTILE})
    for shown in (ctl.answer("--json", "list").encode(), ctl.on_terminal("--json", "list")):
        assert not re.search(rb"[\x00-\x09\x0b-\x1f\x7f]|\xc2[\x80-\x9f]", shown)
        text = shown.decode()
        assert "\u202e" not in text and "\u2028" not in text and "\U000e0001" not in text
        assert "Ü日" in text
        assert json.loads(text)[0]["name"] == HOSTILE


@pytest.mark.parametrize("locale", ["C", "POSIX"])
def test_a_terminal_of_another_encoding_gets_no_byte_that_it_takes_for_something_else(
    fake_daemon, ctl, locale
):
    fake_daemon({**STICK, "DisplayName": "Ü日 Stick"})
    shown = ctl.on_terminal("list", LC_ALL=locale)
    assert b"?? Stick" in shown
    assert max(shown) < 0x80
    shown = ctl.on_terminal("--json", "list", LC_ALL=locale)
    assert max(shown) < 0x80
    assert json.loads(shown)[0]["name"] == "Ü日 Stick"


def test_what_is_no_terminal_gets_utf_8_in_every_locale(fake_daemon, ctl):
    fake_daemon({**STICK, "DisplayName": "Ü日 Stick"})
    ctl.environment["LC_ALL"] = "C"
    assert "Ü日 Stick" in ctl.answer("list")


def test_columns_stand_below_each_other_whatever_the_width_of_the_letters(fake_daemon, ctl):
    fake_daemon(
        {**STICK, "DisplayName": "日本", "Mountpath": "/a"},
        {**STICK, "DisplayName": "u\u0308ber", "Mountpath": "/b", "DeviceKey": "b"},
        {**STICK, "DisplayName": "plain", "Mountpath": "/c", "DeviceKey": "c"},
    )
    names = [line.partition("1G  ")[2] for line in ctl.answer("list").splitlines()[1:]]
    assert names == ["日本   /a", "u\u0308ber   /b", "plain  /c"]


# ---- count


@pytest.mark.parametrize(
    "arguments, number",
    [
        ([], 5),
        (["--fs", "fat"], 1),
        (["--fs", "exfat"], 1),
        (["--fs", "ext4"], 1),
        (["--fs", "ntfs"], 1),
        (["--cameras"], 1),
    ],
)
def test_the_count_is_the_daemons(zoo, ctl, arguments, number):
    assert ctl.answer("count", *arguments) == f"{number}\n"
    assert ctl.json("count", *arguments) == {"count": number}


@pytest.mark.parametrize("name, file_system", KINDS.items())
def test_each_file_system_is_counted_by_its_own_number(daemon, ctl, name, file_system):
    for letter in "abc":
        daemon.plug(devname=f"/dev/sd{letter}1", fileSystem=file_system)
    assert {each: ctl.json("count", "--fs", each)["count"] for each in KINDS} == {
        each: 3 * (each == name) for each in KINDS
    }


def test_the_count_of_a_daemon_that_nobody_asked_yet_is_right(new_daemon, ctl):
    new_daemon.insert(devname="/dev/sda1", fileSystem=FAT)
    assert ctl.answer("count") == "1\n"


# ---- being a client


def registrations(daemon):
    """The client ids that came and went, in their order."""
    found = []
    for line in daemon.log():
        if match := re.match(r"I (nHandleId:(-?\d+) vec_size|connetion : (-?\d+)$)", line):
            found.append(("+", int(match[2])) if match[2] else ("-", int(match[3])))
    return found


@pytest.mark.parametrize("command", [["list"], ["list", "--fs", "fat"]])
def test_a_client_registers_once_and_leaves(daemon, ctl, command):
    ctl.answer(*command)
    until(lambda: len(registrations(daemon)) == 2)
    (_, came), (_, left) = registrations(daemon)
    assert registrations(daemon) == [("+", came), ("-", left)]
    assert came == left > 0x50000000


def test_two_runs_have_different_numbers(daemon, ctl):
    ctl.answer("list")
    ctl.answer("list")
    until(lambda: len(registrations(daemon)) == 4)
    assert len({number for _, number in registrations(daemon)}) == 2


@pytest.mark.parametrize("number", [7, -7, 0, 2**31 - 1, -(2**31)])
def test_the_client_id_can_be_chosen(daemon, ctl, number):
    ctl.answer("--client-id", str(number), "count")
    until(lambda: ("-", number) in registrations(daemon))
    assert {each for _, each in registrations(daemon)} == {number}


def test_whoever_registers_nothing_needs_not_leave(daemon, ctl):
    ctl.answer("popups", "on")
    assert registrations(daemon) == []
