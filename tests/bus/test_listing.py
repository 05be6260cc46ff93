"""Asking for devices: RequesAll, GetDeviceListByFsType, and the counts that mark a list's end."""

import pytest

FAT, EXFAT, EXT4, NTFS, UNKNOWN = 0, 1, 2, 3, 99
ENTRY, LAST, NO_LIST = 1, 3, 4


@pytest.fixture
def zoo(daemon):
    """A device of each kind: two FAT sticks, one each of exFAT, EXT4 and NTFS, and a camera."""
    for number, file_system in enumerate([FAT, FAT, EXFAT, EXT4, NTFS]):
        daemon.plug(devname=f"/dev/sd{'abcde'[number]}1", fileSystem=file_system)
    daemon.plug_camera(serial="C1", devname="camera")
    return daemon


def listed(client, file_system):
    """What GetDeviceListByFsType sends, as (action, device node)."""
    client.signals()
    client.call("GetDeviceListByFsType", 7, file_system)
    actions = client.actions()
    assert {name for name, _, _ in actions} <= {"mm_device_get_list"}
    return [(action, node) for _, action, node in actions]


# ---- RequesAll


def test_reques_all_sends_every_device_the_newest_first(zoo, client):
    client.call("RequesAll", 7)
    assert client.actions() == [
        ("mm_device_action", ENTRY, node)
        for node in ["camera", "/dev/sde1", "/dev/sdd1", "/dev/sdc1", "/dev/sdb1", "/dev/sda1"]
    ]


def test_reques_all_without_devices_sends_no_signal(daemon, client):
    client.call("RequesAll", 7)
    assert client.news() == []
    assert "W pList = NULL" in daemon.log()


@pytest.mark.parametrize(
    "method, arguments", [("RequesAll", [7]), ("GetDeviceListByFsType", [7, -1])]
)
def test_every_signal_arrives_before_the_reply(zoo, client, method, arguments):
    client.signals()
    messages = client.messages_until_reply(client.send(method, *arguments))
    assert [message["type"] for message in messages] == ["signal"] * 6 + ["return"]


@pytest.mark.parametrize(
    "method, arguments", [("RequesAll", [7]), ("GetDeviceListByFsType", [7, -1])]
)
def test_a_list_goes_to_the_caller_only(zoo, client, other, method, arguments):
    other.call("Connect", "other", 8)
    other.listen_to_everything()
    client.call(method, *arguments)
    assert len(client.signals()) == 6
    assert other.signals() == []


# ---- GetDeviceListByFsType


def test_without_any_device_the_one_signal_holds_action_4_and_nothing_else(daemon, client):
    for file_system in (-1, FAT, 4711):
        client.call("GetDeviceListByFsType", 7, file_system)
        assert client.news() == [("mm_device_get_list", {"Action": NO_LIST})]


def test_three_devices_of_every_file_system_carry_the_actions_1_1_3(daemon, client):
    for node, file_system in [("/dev/sda1", FAT), ("/dev/sdb1", NTFS), ("/dev/sdc1", EXFAT)]:
        daemon.plug(devname=node, fileSystem=file_system)
    assert listed(client, -1) == [
        (ENTRY, "/dev/sdc1"),
        (ENTRY, "/dev/sdb1"),
        (LAST, "/dev/sda1"),
    ]


def test_one_device_is_the_last(daemon, client):
    daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    assert listed(client, -1) == listed(client, FAT) == [(LAST, "/dev/sda1")]


@pytest.mark.parametrize(
    "file_system, expected",
    [
        (FAT, [(ENTRY, "/dev/sdb1"), (LAST, "/dev/sda1")]),
        (EXFAT, [(LAST, "/dev/sdc1")]),
        (EXT4, [(LAST, "/dev/sdd1")]),
        (NTFS, [(LAST, "/dev/sde1")]),
    ],
)
def test_a_file_system_lists_its_own_devices(zoo, client, file_system, expected):
    assert listed(client, file_system) == expected


@pytest.mark.parametrize("file_system", [4, 5, 7, -2, 4711])
def test_a_file_system_that_no_device_has_sends_nothing(zoo, client, file_system):
    assert listed(client, file_system) == []


def test_the_number_that_counts_cameras_lists_none(zoo, client):
    assert client.call("GetDeviceCount", 7, 6) == [1]
    assert listed(client, 6) == []


def test_an_unknown_file_system_is_marked_by_the_count_of_all_devices(zoo, client):
    zoo.plug(devname="/dev/sdf1", fileSystem=UNKNOWN)
    assert client.call("GetDeviceCount", 7, UNKNOWN) == [6]
    assert listed(client, UNKNOWN) == [(ENTRY, "/dev/sdf1"), (ENTRY, "camera")]


def test_the_last_mark_comes_early_when_a_device_is_not_counted(daemon, client):
    daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    daemon.plug(devname="/dev/sdb1", fileSystem=UNKNOWN)
    assert client.call("GetDeviceCount", 7, -1) == [1]
    assert listed(client, -1) == [(LAST, "/dev/sdb1"), (LAST, "/dev/sda1")]


def test_the_last_mark_stays_away_after_a_wake_up_for_devices_are_counted_twice(daemon, client):
    for node in ("/dev/sda1", "/dev/sdb1"):
        daemon.plug(devname=node, fileSystem=FAT)
    assert [action for action, _ in listed(client, FAT)] == [ENTRY, LAST]
    daemon.order("standby")
    daemon.order("wake")
    assert listed(client, FAT) == [(ENTRY, "/dev/sdb1"), (ENTRY, "/dev/sda1")]
    assert client.call("GetDeviceCount", 7, FAT) == [4]
    assert client.call("GetDeviceCount", 7, -1) == [4]


def test_a_wake_up_itself_is_told_to_nobody(daemon, client):
    daemon.plug()
    client.call("Connect", "player", 7)
    daemon.order("standby")
    daemon.order("wake")
    assert client.news() == []


# ---- counts


@pytest.mark.parametrize(
    "file_system, count",
    [(FAT, 2), (EXFAT, 1), (EXT4, 1), (NTFS, 1), (6, 1), (-1, 6), (5, 6), (99, 6), (2**31 - 1, 6)],
)
def test_the_count_of_a_file_system_or_of_everything(zoo, client, file_system, count):
    assert client.call("GetDeviceCount", 7, file_system) == [count]


def test_a_disk_of_an_unknown_file_system_is_not_counted(daemon, client):
    daemon.plug(fileSystem=UNKNOWN)
    assert client.call("GetDeviceCount", 7, -1) == [0]
    assert client.call("GetDeviceCount", 7, UNKNOWN) == [0]


def test_a_count_follows_the_removal(zoo, client):
    stick = zoo.plug(fileSystem=NTFS)
    assert client.call("GetDeviceCount", 7, NTFS) == [2]
    zoo.pull(stick)
    assert client.call("GetDeviceCount", 7, NTFS) == [1]


@pytest.mark.parametrize(
    "method, arguments", [("RequesAll", [7]), ("GetDeviceListByFsType", [7, -1])]
)
def test_devices_that_were_there_before_the_start_are_found_by_asking(
    new_daemon, client, method, arguments
):
    new_daemon.insert(devname="/dev/sda1", fileSystem=FAT)
    new_daemon.insert(devname="/dev/sdb1", fileSystem=FAT)
    assert client.call("GetDeviceCount", 7, FAT) == [0]
    client.call(method, *arguments)
    assert [node for _, _, node in client.actions()] == ["/dev/sdb1", "/dev/sda1"]
    assert client.call("GetDeviceCount", 7, FAT) == [2]
    assert new_daemon.popup() is None
