"""Who is a client: ids that clients pick for themselves, how they are taken, kept and given up."""

import pytest

REMOVED = [("mm_device_action", 2, "/dev/sda1")]

REGISTERING = {
    "Connect": ["player", 7],
    "GetDeviceInfo": [7, "/dev/sda1"],
    "GetDeviceCount": [7, 0],
    "RequesAll": [7],
    "GetDeviceListByFsType": [7, 0],
}

NOT_REGISTERING = {
    "DisConnect": [7],
    "SetEnablePopUP": [True],
    "LaunchPopup": ["/dev/sda1"],
    "SwitchToContent": [],
    "SetPhotoBGMPlayList": ["a", "b", "c"],
    "GetPhotoBGMPlayListItem": [0],
    "ClearPhotoBGMPlayList": [],
}


@pytest.fixture
def stick(daemon):
    """A stick that is plugged in."""
    return daemon.plug(devname="/dev/sda1")


@pytest.mark.parametrize("method", REGISTERING)
def test_a_caller_that_names_its_id_is_registered(daemon, client, stick, method):
    client.send(method, *REGISTERING[method])
    client.signals()
    daemon.pull(stick)
    assert client.actions() == REMOVED


@pytest.mark.parametrize("method", NOT_REGISTERING)
def test_other_callers_are_not_registered(daemon, client, other, stick, method):
    other.call("SetPhotoBGMPlayList", "a", "b", "c")
    client.send(method, *NOT_REGISTERING[method])
    client.round_trip()
    daemon.pull(stick)
    assert client.news() == []


def test_a_refused_call_registers_nobody(daemon, client, stick):
    serial = client.send("Connect", "player", "7", signature="(ss)")
    assert client.reply_to(serial)["type"] == "error"
    daemon.pull(stick)
    assert client.news() == []


def test_without_a_client_nothing_is_made_of_a_removal(daemon, client, stick):
    daemon.pull(stick)
    assert client.news() == []
    assert [line for line in daemon.log() if line.startswith("I strDeviceInfo:")] == []


def test_registering_again_brings_no_signal_twice(daemon, client, stick):
    for _ in range(3):
        client.call("Connect", "player", 7)
    client.call("GetDeviceCount", 7, 0)
    daemon.pull(stick)
    assert client.actions() == REMOVED


def test_one_peer_under_two_ids_receives_each_signal_twice(daemon, client, stick):
    client.call("Connect", "player", 7)
    client.call("Connect", "player", 8)
    daemon.pull(stick)
    assert client.actions() == REMOVED * 2


@pytest.mark.parametrize("method", REGISTERING)
def test_the_last_caller_takes_an_id_over(daemon, client, other, stick, method):
    client.call("Connect", "first", 7)
    other.send(method, *REGISTERING[method])
    other.signals()
    daemon.pull(stick)
    assert other.actions() == REMOVED
    assert client.news() == []


def test_an_id_can_be_taken_back(daemon, client, other, stick):
    client.call("Connect", "first", 7)
    other.call("Connect", "second", 7)
    client.call("Connect", "first", 7)
    daemon.pull(stick)
    assert client.actions() == REMOVED
    assert other.news() == []


def test_an_id_that_is_taken_over_is_still_one_client(daemon, client, other):
    client.call("Connect", "first", 7)
    other.call("Connect", "second", 7)
    client.call("GetDeviceCount", 8, 0)
    assert "I nHandleId:8 vec_size=1" in daemon.log()


def test_a_disconnected_client_receives_nothing_more(daemon, client, other, stick):
    client.call("Connect", "first", 7)
    other.call("Connect", "second", 8)
    client.call("DisConnect", 7)
    daemon.pull(stick)
    assert client.news() == []
    assert other.actions() == REMOVED


def test_disconnect_ends_one_id_of_a_peer_only(daemon, client, stick):
    client.call("Connect", "player", 7)
    client.call("Connect", "player", 8)
    client.call("DisConnect", 8)
    daemon.pull(stick)
    assert client.actions() == REMOVED


def test_anybody_can_disconnect_an_id(daemon, client, other, stick):
    client.call("Connect", "player", 7)
    other.call("DisConnect", 7)
    daemon.pull(stick)
    assert client.news() == []


def test_disconnecting_an_unknown_id_changes_nothing(daemon, client, stick):
    client.call("Connect", "player", 7)
    client.call("DisConnect", 8)
    daemon.pull(stick)
    assert client.actions() == REMOVED


def test_a_disconnected_client_can_come_back(daemon, client, stick):
    client.call("Connect", "player", 7)
    client.call("DisConnect", 7)
    client.call("Connect", "player", 7)
    daemon.pull(stick)
    assert client.actions() == REMOVED


def test_a_client_that_left_the_bus_does_not_keep_the_others_from_their_news(
    daemon, client, other, start_client, stick
):
    gone = start_client()
    for number, peer in enumerate([client, gone, other]):
        peer.call("Connect", "player", number)
    gone.leave()
    daemon.pull(stick)
    assert client.actions() == REMOVED
    assert other.actions() == REMOVED
    assert [line for line in daemon.log() if line.startswith("W Error:")] == []


def test_a_client_that_left_stays_registered_until_its_id_is_disconnected(
    daemon, client, other, start_client, stick
):
    gone = start_client()
    gone.call("Connect", "player", 7)
    gone.leave()
    other.watch_the_bus()
    daemon.pull(stick)
    seen = other.signals_seen_until_reply(client, client.send("DisConnect", 7))
    assert [signal["destination"] for signal in seen] == [gone.unique_name]
    daemon.pull(daemon.plug())
    assert other.signals_seen_until_reply(client, client.send("DisConnect", 7)) == []


@pytest.fixture
def order_of_signals(daemon, client, other, start_client, stick):
    """Three clients with the ids 0, 1 and 2, and a function that tells in which order the three are
    told of a removal."""
    watcher = start_client()
    peers = [client, other, start_client()]
    for number, peer in enumerate(peers):
        peer.call("Connect", "player", number)

    def order():
        watcher.watch_the_bus()
        daemon.pull(stick)
        seen = watcher.signals_seen_until_reply(client, client.send("DisConnect", 4711))
        names = [peer.unique_name for peer in peers]
        return [names.index(signal["destination"]) for signal in seen]

    return order


def test_clients_are_served_in_the_order_of_their_first_registration(order_of_signals, client):
    client.call("GetDeviceCount", 0, 0)
    assert order_of_signals() == [0, 1, 2]


@pytest.mark.parametrize("gone, order", [(0, [1, 2]), (1, [0, 2]), (2, [0, 1])])
def test_the_others_keep_their_order_when_a_client_goes(order_of_signals, client, gone, order):
    client.call("DisConnect", gone)
    assert order_of_signals() == order


def test_a_client_that_comes_back_is_served_last(order_of_signals, client):
    client.call("DisConnect", 0)
    client.call("Connect", "player", 0)
    assert order_of_signals() == [1, 2, 0]


def test_256_clients_each_receive_one_signal_for_a_removal(daemon, start_clients, stick):
    clients = start_clients(256)
    assert len({peer.unique_name for peer in clients}) == 256
    for number, peer in enumerate(clients):
        assert peer.call("Connect", "player", number) == [number]
    daemon.pull(stick)
    for peer in clients:
        assert peer.actions() == REMOVED
