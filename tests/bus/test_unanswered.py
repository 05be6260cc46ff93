"""The three methods that are never answered: neither with a reply nor with an error."""

import pytest

UNANSWERED = [
    ("GetDeviceInfo", [7, "/dev/sda1"]),
    ("LaunchPopup", ["/dev/sda1"]),
    ("SwitchToContent", []),
]


@pytest.mark.parametrize("method, arguments", UNANSWERED)
def test_a_caller_that_waits_runs_into_its_own_time_limit(daemon, client, method, arguments):
    assert client.call_with_limit(300, method, *arguments) == "timed-out"
    client.round_trip()


@pytest.mark.parametrize("method, arguments", UNANSWERED)
def test_no_reply_and_no_error_travels_over_the_bus(daemon, client, other, method, arguments):
    other.watch_the_bus()
    unanswered = client.send(method, *arguments)
    answered = client.send("GetDeviceCount", 7, 0)
    seen = other.seen_until_reply(client, answered)
    calls = [message["member"] for message in seen if message["type"] == "call"]
    assert calls == [method, "GetDeviceCount"]
    assert unanswered not in [
        message["reply_to"] for message in seen if message["destination"] == client.unique_name
    ]


@pytest.mark.parametrize("method, arguments", UNANSWERED)
def test_a_caller_that_does_not_ask_for_a_reply_is_served(daemon, client, method, arguments):
    client.send(method, *arguments, no_reply=True)
    client.round_trip()
    assert f"I szMethodName :{method}" in daemon.log()


def test_get_device_info_registers_the_caller_all_the_same(daemon, client):
    stick = daemon.plug(devname="/dev/sda1")
    client.send("GetDeviceInfo", 7, "/dev/sda1")
    client.round_trip()
    daemon.pull(stick)
    assert client.actions() == [("mm_device_action", 2, "/dev/sda1")]


def test_launch_popup_shows_no_pop_up(daemon, client):
    daemon.insert(devname="/dev/sda1")
    client.send("LaunchPopup", "/dev/sda1")
    client.round_trip()
    assert daemon.popup() is None


def test_many_unanswered_calls_keep_nobody_from_being_served(daemon, client, other):
    for _ in range(200):
        for method, arguments in UNANSWERED:
            client.send(method, *arguments)
    assert other.call("Connect", "player", 8) == [8]
    client.round_trip()
    assert daemon.log().count("I szMethodName :SwitchToContent") == 200
