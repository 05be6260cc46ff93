"""Pop-ups as clients switch them, and the road of a stick from the port to the browser and out."""

import pathlib

import pytest


def test_a_new_stick_is_offered_to_the_viewer(daemon):
    daemon.plug(product="Stick")
    assert daemon.popup()["type"] == 1


def test_switched_off_no_new_device_is_offered(daemon, client):
    client.call("SetEnablePopUP", False)
    daemon.plug(product="Stick")
    daemon.plug_camera()
    assert daemon.popup() is None
    assert "I m_bActivated is false, don't launch usb notification now!" in daemon.log()


def test_switched_off_devices_are_listed_all_the_same(daemon, client):
    client.call("SetEnablePopUP", False)
    daemon.plug(devname="/dev/sda1")
    client.call("RequesAll", 7)
    assert client.actions() == [("mm_device_action", 1, "/dev/sda1")]


def test_switched_on_again_the_next_device_is_offered(daemon, client):
    client.call("SetEnablePopUP", False)
    daemon.plug(devname="/dev/sda1")
    client.call("SetEnablePopUP", True)
    assert daemon.popup() is None
    daemon.plug(devname="/dev/sdb1")
    assert daemon.popup()["type"] == 1


def test_anybody_can_switch_for_everybody(daemon, client, other):
    client.call("SetEnablePopUP", False)
    other.call("SetEnablePopUP", True)
    daemon.plug()
    assert daemon.popup()["type"] == 1


def test_switched_off_the_notice_of_a_removal_is_shown(daemon, client):
    client.call("SetEnablePopUP", False)
    stick = daemon.plug(product="Stick")
    daemon.pull(stick)
    assert daemon.popup() == {
        "type": 2,
        "title": "Stick",
        "body": "TV_SID_DEVICE_BEEN_DISCONNECTED",
    }


def test_switched_off_the_demo_of_a_stick_is_not_played_in_a_shop(daemon, client):
    folder = daemon.stick_folder()
    pathlib.Path(folder, "DEMO_LED.tp").touch()
    daemon.set("db/menu/support/use_mode", "int", 1)
    client.call("SetEnablePopUP", False)
    daemon.pull(daemon.plug(folder))
    assert daemon.launches() == []
    client.call("SetEnablePopUP", True)
    daemon.plug(folder)
    assert [launch["app"] for launch in daemon.launches()] == ["org.norvane.shopreel"]


def test_the_end_of_the_start_up_delay_switches_them_on(new_daemon, client):
    client.call("SetEnablePopUP", False)
    new_daemon.start_up()
    new_daemon.plug()
    assert new_daemon.popup()["type"] == 1


def test_switching_them_on_does_not_shorten_the_start_up_delay(new_daemon, client):
    client.call("SetEnablePopUP", True)
    new_daemon.plug()
    assert new_daemon.popup() is None


@pytest.mark.parametrize("switched_on", [True, False])
def test_after_a_wake_up_they_stay_off_for_a_minute_unless_a_client_switches_them_on(
    daemon, client, switched_on
):
    daemon.order("standby")
    daemon.order("wake")
    daemon.advance(59)
    if switched_on:
        client.call("SetEnablePopUP", True)
    daemon.plug(devname="/dev/sda1")
    assert (daemon.popup() is not None) == switched_on
    daemon.advance(1)
    daemon.plug(devname="/dev/sdb1", serial="0002")
    assert daemon.popup()["type"] == 1


def test_a_stick_from_the_port_to_the_browser_and_out_again(daemon, client):
    client.call("Connect", "story", 7)
    stick = daemon.plug(devname="/dev/sda1", product="Stick")
    client.call("GetDeviceListByFsType", 7, -1)
    ((name, device),) = client.news()
    assert (name, device["Action"]) == ("mm_device_get_list", 3)

    daemon.press(0)
    (launch,) = daemon.launches()
    assert launch["app"] == "org.quillon.folian"
    assert device["Mountpath"] in launch["extra"].values()

    daemon.pull(stick)
    assert daemon.popup()["type"] == 2
    assert client.actions() == [("mm_device_action", 2, "/dev/sda1")]
    assert client.call("GetDeviceCount", 7, -1) == [0]
