"""A machine that is switched on with sticks in its ports."""

from television import START_UP_SECONDS


def test_a_stick_that_was_in_at_the_start_is_mounted_and_listed_without_a_question(switch_on):
    television = switch_on(saved=False)
    television.ports.plug("old", "fat32", serial="AA01")
    television.boot()
    television.guest.wait_until("test -S /run/user/1000/bus", 120)
    television.start_programs()
    television.wait_until_served()
    assert television.service("NRestarts") == "0"
    assert television.client.call("GetDeviceCount", 7, -1) == [0]
    television.guest.wait_until("findmnt --source /dev/sda1")
    (device,) = television.devices().values()
    assert (device["Serial"], device["Mountpath"]) == ("AA01", "/media/kiosk/KINGSTON")
    assert television.client.call("GetDeviceCount", 7, -1) == [1]
    assert television.screen.stays_empty(START_UP_SECONDS)
    television.wait_until_listening()

    television.ports.plug("new", "ext4", serial="BB02")
    assert television.screen.question()["title"].startswith("New device")
    assert [device["Serial"] for device in television.devices().values()] == ["BB02", "AA01"]
    television.ports.pull("old")
    assert television.screen.notice()["body"] == "The device has been disconnected."
    assert [node for _, _, node in television.client.actions()] == ["/dev/sda1"]
