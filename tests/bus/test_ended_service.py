"""A bus service that was ended while the process lives on, which the daemon itself never does.

As long as somebody else in the process uses the bus, the service's object stays there, and calls
find no service behind it.
"""

import re

import pytest
from client import NAME
from daemon import interface_description


@pytest.fixture
def daemon(start_daemon, client):
    """A daemon whose bus service was made, served one client and was ended."""
    daemon = start_daemon(description=None)
    daemon.wait_for_log("Create dbus fail")
    daemon.write_description(interface_description())
    assert daemon.order("bus-service", "1") is True
    daemon.wait_for_name()
    daemon.start_up()
    client.call("Connect", "player", 7)
    client.call("SetPhotoBGMPlayList", "a", "b", "c")
    client.destination = client.owner_of(NAME)
    daemon.order("bus-service", "0")
    return daemon


def test_the_name_is_given_back(daemon, client):
    assert client.owner_of(NAME) is None


def test_calls_are_answered_and_register_nobody(daemon, client):
    stick = daemon.plug(fileSystem=0)
    assert client.call("Connect", "player", 7) == [7]
    assert client.call("GetDeviceCount", 7, 0) == [1]
    assert client.call("RequesAll", 7) == []
    assert client.call("GetDeviceListByFsType", 7, -1) == []
    assert client.call("DisConnect", 7) == []
    client.send("GetDeviceInfo", 7, "/dev/sda1")
    daemon.pull(stick)
    assert client.news() == []


def test_pop_ups_can_not_be_switched_any_more(daemon, client):
    assert client.call("SetEnablePopUP", False) == []
    daemon.plug()
    assert daemon.popup()["type"] == 1


def test_a_removal_finds_no_service_to_tell(daemon):
    daemon.pull(daemon.plug())
    assert "W NULL == pThis" in daemon.log()


def test_the_music_of_before_is_gone(daemon, client):
    client.call("SetPhotoBGMPlayList", "d", "e", "f")
    assert client.call("GetPhotoBGMPlayListItem", 0) == ["d", "e", "f"]


def test_a_new_service_finds_its_place_on_the_bus_taken(daemon):
    lines = len(daemon.log())
    assert daemon.order("bus-service", "1") is True
    daemon.wait_for_log("Error: g_dbus_connection_register_object:")
    log = daemon.log()[lines:]
    assert "I nRegistrationId : 0" in log
    (error,) = [line for line in log if line.startswith("W")]
    assert re.fullmatch(
        r"W Error: g_dbus_connection_register_object:  Error code: \d+  Error msg: .+\n", error
    )
    daemon.order("bus-service", "0")
