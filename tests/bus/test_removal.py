"""The news of devices: a removal goes to every client and to nobody else, an attach to nobody."""

import pytest
from client import INTERFACE, NAME, PATH


@pytest.fixture
def clients(daemon, client, other):
    """Two registered clients."""
    client.call("Connect", "first", 1)
    other.call("Connect", "second", 2)
    return [client, other]


def test_a_removal_is_told_to_every_client_with_action_2(daemon, clients):
    stick = daemon.plug(devname="/dev/sda1", product="Stick")
    daemon.pull(stick)
    for client in clients:
        ((name, device),) = client.news()
        assert name == "mm_device_action"
        assert (device["Action"], device["DeviceName"], device["Product"]) == (
            2,
            "/dev/sda1",
            "Stick",
        )


def test_a_removed_camera_is_told_as_well(daemon, clients):
    camera = daemon.plug_camera(serial="C1", product="Camera")
    daemon.pull(camera)
    for client in clients:
        ((name, device),) = client.news()
        assert (name, device["Action"], device["Class"]) == ("mm_device_action", 2, 6)
        assert device["DeviceKey"] == "C1"


def test_the_signal_comes_from_the_object_and_interface_that_was_called(daemon, client):
    client.call("Connect", "player", 1)
    daemon.pull(daemon.plug())
    (signal,) = client.signals()
    assert (signal["path"], signal["interface"]) == (PATH, INTERFACE)
    assert signal["destination"] == client.unique_name
    assert signal["sender"] == client.owner_of(NAME)
    assert signal["signature"] == "s"


def test_who_is_not_registered_receives_nothing_whatever_it_subscribes_to(daemon, client, other):
    client.call("Connect", "player", 1)
    other.listen_to_everything()
    stick = daemon.plug()
    client.call("RequesAll", 1)
    client.call("GetDeviceListByFsType", 1, -1)
    daemon.pull(stick)
    assert len(client.signals()) == 3
    assert other.signals() == []


def test_every_signal_on_the_bus_names_the_one_peer_it_is_for(daemon, clients, start_client):
    watcher = start_client()
    watcher.watch_the_bus()
    stick = daemon.plug()
    clients[0].call("RequesAll", 1)
    clients[1].call("GetDeviceListByFsType", 2, -1)
    daemon.pull(stick)
    seen = watcher.signals_seen_until_reply(clients[0], clients[0].send("DisConnect", 1))
    first, second = (client.unique_name for client in clients)
    assert [(signal["member"], signal["destination"]) for signal in seen] == [
        ("mm_device_action", first),
        ("mm_device_get_list", second),
        ("mm_device_action", first),
        ("mm_device_action", second),
    ]


def test_an_attach_is_told_to_nobody(daemon, clients):
    daemon.plug()
    daemon.plug_camera()
    for client in clients:
        assert client.news() == []


def test_the_steps_of_an_attach_are_told_to_nobody(daemon, client):
    client.call("Connect", "player", 1)
    stick = daemon.insert()
    for step in (
        lambda: daemon.announce(stick, "added"),
        lambda: daemon.mount(stick),
        lambda: daemon.announce(stick, "mounted"),
        lambda: daemon.announce(stick, "added"),
    ):
        step()
        assert client.news() == []


def test_each_partition_of_a_disk_is_a_removal_of_its_own(daemon, client):
    partitions = [daemon.plug(devname=f"/dev/sda{number}") for number in (1, 2)]
    client.call("Connect", "player", 1)
    for partition in partitions:
        daemon.pull(partition)
    assert client.actions() == [
        ("mm_device_action", 2, "/dev/sda1"),
        ("mm_device_action", 2, "/dev/sda2"),
    ]


def test_the_removal_of_a_device_that_was_never_listed_is_told_to_nobody(daemon, client):
    client.call("Connect", "player", 1)
    stranger = daemon.insert(devname="/dev/sdx1", product="Stranger")
    daemon.announce(stranger, "removed")
    assert client.news() == []
    assert daemon.popup()["title"] == "Stranger"


def test_a_removal_in_the_first_30_seconds_is_told_to_nobody(new_daemon, client):
    stick = new_daemon.plug()
    client.call("RequesAll", 1)
    assert len(client.news()) == 1
    new_daemon.pull(stick)
    assert client.news() == []


def test_after_a_wake_up_a_removal_is_told_once_the_list_was_asked_for_again(daemon, client):
    client.call("Connect", "player", 1)
    sticks = [daemon.plug(devname=f"/dev/sd{letter}1") for letter in "ab"]
    daemon.order("standby")
    daemon.order("wake")
    daemon.pull(sticks[0])
    assert client.news() == []
    client.call("RequesAll", 1)
    daemon.pull(sticks[1])
    assert client.actions() == [
        ("mm_device_action", 1, "/dev/sdb1"),
        ("mm_device_action", 2, "/dev/sdb1"),
    ]


def test_a_device_that_no_event_may_touch_is_told_to_nobody(daemon, client):
    client.call("Connect", "player", 1)
    keyboard = daemon.insert(**{"class": 3, "devname": "/dev/input0"})
    empty_slot = daemon.insert(disk=99, devname="/dev/sdb")
    for device in (keyboard, empty_slot):
        for action in ("added", "mounted", "removed"):
            daemon.announce(device, action)
    assert client.news() == []


def test_a_removal_is_told_while_the_companion_application_runs(daemon, client):
    client.call("Connect", "player", 1)
    stick = daemon.plug(devname="/dev/sda1")
    daemon.set_running("org.norvane.lumet", True)
    daemon.pull(stick)
    assert client.actions() == [("mm_device_action", 2, "/dev/sda1")]


def test_a_removal_is_told_after_the_notice_to_the_viewer(daemon, client):
    client.call("Connect", "player", 1)
    stick = daemon.plug(product="Stick")
    before = len(daemon.log())
    daemon.pull(stick)
    log = daemon.log()[before:]
    shown = max(n for n, line in enumerate(log) if line == "I end")
    (told,) = (n for n, line in enumerate(log) if line.startswith("I pSignal:mm_device_action,"))
    forgotten = log.index("I after delete,dev list count is 0")
    assert shown < told < forgotten


def test_a_pulled_device_is_not_listed_any_more(daemon, client):
    client.call("Connect", "player", 1)
    daemon.pull(daemon.plug(devname="/dev/sda1"))
    assert client.actions() == [("mm_device_action", 2, "/dev/sda1")]
    client.call("RequesAll", 1)
    assert client.news() == []
    assert client.call("GetDeviceCount", 1, -1) == [0]
