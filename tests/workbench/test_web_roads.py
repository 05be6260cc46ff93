"""Every road of an event, by orders of a page; what the bus carries is checked by a client that knows
nothing of the page."""

import pytest


def node_actions(client):
    return [(action, node) for _, action, node in client.actions()]


@pytest.fixture
def registered(bus_client):
    """The client of the bus, which the daemon knows as number 7."""
    assert bus_client.call("Connect", "test", 7) == [7]
    return bus_client


@pytest.mark.parametrize(
    "sample, file, application, kind",
    [
        ("one-film", "bouncing-ball.avi", "org.norvane.vidreel", "video"),
        ("one-photo", "chelsea.jpg", "org.norvane.picreel", "photo"),
    ],
)
def test_a_single_file_is_offered_and_played(page, sample, file, application, kind):
    assert page.order("plugSample", id=sample) == {"ports": [1]}
    popup = page.until_popup("play")
    assert file in popup["body"]
    assert [button["label"] for button in popup["buttons"]] == ["Play", "Cancel"]
    assert popup["timeoutMs"] == popup["leftMs"] == 30000
    page.until(lambda: (page.state["daemon"]["scan"] or {}).get("type") == kind)
    page.order("press", button=0)
    launched = page.until(lambda: page.state["launched"])
    assert launched["app"] == application
    (item,) = launched["playList"]["items"]
    assert item["file_path"].endswith(f"/{sample}/{file}")
    assert launched["playList"]["root_path"] == page.state["ports"][0]["folder"]
    assert page.state["popup"] is None
    page.order("key", name="home")
    page.until(lambda: page.state["launched"] is None)


def test_a_song_is_handed_to_the_browser_with_its_tags(page):
    page.order("plugSample", id="one-song")
    page.until_popup("play")
    page.order("press", button=0)
    launched = page.until(lambda: page.state["launched"])
    assert launched["app"] == "org.quillon.folian"
    given = {key: launched["extra"][key] for key in ("music_title", "music_artist", "music_album")}
    assert given == {
        "music_title": "Five Steps Up",
        "music_artist": "The Workbench Ensemble",
        "music_album": "Sample Sounds",
    }
    assert launched["playList"] is None


@pytest.mark.parametrize("sample", ["mixed", "empty", "damaged"])
def test_what_is_no_single_file_is_browsed(page, sample):
    page.order("plugSample", id=sample)
    page.until_popup("browse")
    page.order("press", button=0)
    launched = page.until(lambda: page.state["launched"])
    assert launched["app"] == "org.quillon.folian"
    assert launched["extra"]["device_path"] == page.state["ports"][0]["folder"]


def test_the_list_is_the_one_that_the_bus_tells(page, registered):
    page.order("plugSample", id="one-film")
    page.order("plugCamera", title="My Camera", serial="C-1")
    page.until(lambda: len(page.state["devices"]) == 2)
    registered.call("RequesAll", 7)
    told = [device for _, device in registered.news()]
    names = {
        "Class": "class",
        "SubClass": "subClass",
        "Protocol": "protocol",
        "VendorId": "productId",
        "Bus": "bus",
        "Address": "address",
        "Number": "number",
        "TotalSize": "totalSize",
        "UsedSize": "usedSize",
        "Manufacturer": "manufacturer",
        "Product": "product",
        "DeviceName": "deviceName",
        "DevicePath": "devicePath",
        "Mountpath": "mountpath",
        "FileSystem": "fileSystemType",
        "Serial": "serial",
        "DisplayName": "displayName",
        "DeviceKey": "deviceKey",
    }
    shown = [{name: device[field] for name, field in names.items()} for device in page.state["devices"]]
    for device in told:
        assert device.pop("Action") == 1
    assert sorted(told, key=str) == sorted(shown, key=str)
    assert registered.call("GetDeviceCount", 7, 6) == [page.state["daemon"]["counters"]["cameras"]]
    assert registered.call("GetDeviceCount", 7, 1) == [page.state["daemon"]["counters"]["exfat"]]


def test_a_damaged_stick_is_listed_in_no_counter(page, registered):
    page.order("plugSample", id="damaged")
    (device,) = page.until(lambda: page.state["devices"])
    assert device["damageFlag"] is True
    assert set(page.state["daemon"]["counters"].values()) == {0}
    assert registered.call("GetDeviceCount", 7, -1) == [0]


def test_a_pulled_stick_is_told_to_viewer_and_clients(page, registered):
    page.order("plugSample", id="one-photo")
    page.until_popup("play")
    assert node_actions(registered) == []
    page.order("pull", port=1)
    popup = page.until_popup("removal")
    assert (popup["title"], popup["buttons"]) == ("Photo Stick", [])
    assert node_actions(registered) == [(2, "/dev/sda1")]
    page.until(lambda: page.state["devices"] == [] and page.state["ports"] == [])
    assert page.state["daemon"]["removalNotice"] == "Photo Stick"
    page.order("skip", ms=3000)
    page.until(lambda: page.state["popup"] is None)
    page.until(lambda: page.state["daemon"]["removalNotice"] is None)


def test_a_result_that_comes_after_the_pull_offers_nothing(page):
    page.order("plugSample", id="one-photo")
    page.until_popup("play")
    page.order("hide")
    page.order("pull", port=1, busy=True)
    page.until_popup("removal")
    reports = "m_OnScanDeviceCB begin"
    page.until(lambda: len([line for line in page.log if reports in line["message"]]) == 2)
    page.order("skip", ms=0)
    shown = [value["kind"] for path, value in page.history if path == "popup" and value]
    assert shown == ["browse", "play", "removal"]


def test_the_running_companion_is_told_and_nothing_pops_up(page, registered):
    page.order("companion", running=True)
    page.order("plugSample", id="one-film")
    launched = page.until(lambda: page.state["launched"])
    assert (launched["app"], launched["extra"]["device_action"]) == ("org.norvane.lumet", "ADD")
    page.order("pull", port=1)
    page.until(lambda: page.state["launched"]["extra"]["device_action"] == "DELETE")
    assert node_actions(registered) == [(2, "/dev/sda1")]
    assert not [value for path, value in page.history if path == "popup" and value]


def test_a_demonstration_plays_at_once_in_a_shop(page):
    page.order("setting", key="shopMode", value=True)
    page.until(lambda: page.state["settings"]["shopMode"] is True)
    page.order("plugSample", id="demo")
    launched = page.until(lambda: page.state["launched"])
    assert launched["app"] == "org.norvane.shopreel"
    assert launched["extra"]["root_path"].endswith("/demo/DEMO_LED.tp")


def test_after_a_wake_up_nothing_is_offered_for_a_minute(page, registered):
    page.order("powerOff")
    page.until(lambda: page.state["power"] == "off" and not page.state["daemon"]["activated"])
    page.order("wake")
    page.until(lambda: page.state["power"] == "on")
    page.order("plugSample", id="one-photo")
    page.until(lambda: page.state["devices"])
    assert page.order("step") == {
        "skippedMs": 60000,
        "what": "after a wake-up: connections start something again",
    }
    page.until(lambda: page.state["daemon"]["activated"])
    assert not [value for path, value in page.history if path == "popup" and value and value["kind"] == "browse"]
    page.order("plugSample", id="mixed")
    page.until_popup("browse")


def test_a_tv_that_rests_goes_on_offering(page):
    page.order("standby")
    page.until(lambda: page.state["power"] == "standby" and page.state["daemon"]["standby"])
    assert page.state["daemon"]["activated"] is True
    page.order("wake")
    page.until(lambda: page.state["power"] == "on")


def test_two_partitions_are_two_devices_of_one_disk(page):
    assert page.order("plugSample", id="two-partitions") == {"ports": [1, 2]}
    page.until(lambda: len(page.state["devices"]) == 2)
    assert {port["node"] for port in page.state["ports"]} == {"/dev/sda1", "/dev/sda2"}
    assert {port["kind"] for port in page.state["ports"]} == {"disk"}
    page.until(lambda: page.state["daemon"]["counters"]["ext4"] == 2)


def test_the_second_of_two_equal_sticks_is_no_news(page):
    page.order("plugSample", id="equal-products")
    page.until(lambda: len(page.state["devices"]) == 2)
    page.until(lambda: any(line["message"] == "No need to notify again" for line in page.log))


def test_a_hub_brings_many_sticks_at_once(page, registered):
    assert page.order("hub", count=12) == {"ports": list(range(1, 13))}
    page.until(lambda: len(page.state["devices"]) == 12)
    assert registered.call("GetDeviceCount", 7, 0) == [12]


def test_a_folder_is_a_stick_that_can_be_mounted_later(page, stick):
    folder = stick("Holiday", "a.jpg")
    page.order("plugFolder", path=str(folder), fileSystem="ntfs", mounted=False)
    (port,) = page.until(lambda: page.state["ports"])
    assert (port["title"], port["mounted"], port["fileSystem"]) == ("Holiday", False, "ntfs")
    page.until(lambda: page.state["devices"])
    assert page.state["popup"] is None
    page.order("mount", port=1)
    assert page.until_popup("play")["title"] == "New device connected: Holiday"
    page.until(lambda: page.state["ports"][0]["mounted"] is True)


def test_the_remote_control_moves_presses_and_hides(page):
    page.order("plugSample", id="mixed")
    page.until_popup("browse")
    page.order("key", name="right")
    page.until(lambda: page.state["popup"]["focus"] == 1)
    page.order("key", name="right")
    page.order("key", name="left")
    page.until(lambda: page.state["popup"]["focus"] == 0)
    page.order("key", name="down")
    page.order("key", name="ok")
    page.until(lambda: page.state["popup"] is None)
    assert page.state["launched"] is None, "the focus was on Cancel"
    page.order("plugSample", id="one-photo")
    page.until_popup("browse")
    page.order("key", name="back")
    page.until(lambda: page.state["popup"] is None)
    page.order("key", name="power")
    page.until(lambda: page.state["power"] == "off")


def test_an_undisturbed_tv_shows_nothing(page):
    page.order("context", bits=0x80)
    page.order("plugSample", id="one-photo")
    page.until(lambda: any("ignore popup launch" in line["message"] for line in page.log))
    assert page.state["context"]["distraction"] == 0x80
    assert page.state["popup"] is None


def test_services_can_fail_and_recover(page):
    page.order("fault", service="notification", on=True)
    page.order("plugSample", id="mixed")
    page.until(lambda: any(line["message"] == "notification save error2" for line in page.log))
    assert page.state["popup"] is None
    page.order("fault", service="notification", on=False)
    page.order("fault", service="launch", on=True)
    page.order("plugSample", id="one-photo")
    page.until_popup("browse")
    page.order("press", button=0)
    page.until(lambda: any(line["message"] == "clicked first button." for line in page.log))
    assert page.state["launched"] is None
    assert page.state["context"]["faults"] == {"notification": False, "launch": True, "scanSilent": False}


def test_a_scan_that_says_nothing_answers_when_it_may(page):
    page.order("fault", service="scanSilent", on=True)
    page.order("plugSample", id="one-photo")
    page.until_popup("browse")
    page.until(lambda: page.state["ports"] and page.state["ports"][0]["busy"] is True)
    page.order("fault", service="scanSilent", on=False)
    page.until_popup("play")
    page.until(lambda: page.state["ports"][0]["busy"] is False)
