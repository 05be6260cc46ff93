"""Whole roads on the Linux machine: from the plug to the launched application and the removal, as the viewer,
his applications and the clients of the bus see them."""

import json

from application_helpers import Peer, write_entry
from stage_helpers import PHOTO, buses, source, stage, start_client  # noqa: F401 (fixtures)


def test_a_stick_with_many_files_is_offered_for_browsing_and_its_folder_is_handed_over(
    machine, stage
):
    point = stage.plug_mounted(machine)
    popup = stage.popup()
    assert popup["title"] == "New device connected: QEMU USB HARDDRIVE"
    assert popup["actions"][1::2] == ["Browse", "Cancel"]
    assert popup["icon"].endswith("/usr/apps/portmeld/res/images/noti_source_icon_usb.png")
    stage.press(popup, 0)
    application, data = stage.launched()
    assert application == "org.quillon.folian"
    assert (data["device_path"], data["device_name"], data["device_type"]) == (
        point,
        "QEMU USB HARDDRIVE",
        "USB",
    )


def test_a_stick_with_one_photo_is_offered_for_playing_and_the_photo_is_handed_over(machine, stage):
    point = stage.plug_mounted(machine, files=[(source(PHOTO), "holiday.jpg")])
    stage.popup()  # browse, until the scan has come back
    popup = stage.popup()
    assert popup["actions"][1::2] == ["Play", "Cancel"]
    assert "holiday.jpg" in popup["body"]
    stage.press(popup, 0)
    application, data = stage.launched()
    assert application == "org.norvane.picreel"
    (item,) = json.loads(data["play_list_data"])["items"]
    assert (item["file_name"], item["file_path"]) == ("holiday.jpg", f"{point}/holiday.jpg")


def test_a_pulled_stick_is_told_to_the_viewer_and_to_the_clients(machine, stage):
    point = stage.plug_mounted(machine)
    stage.popup()
    machine.unplug("fat32")
    notice = stage.popup()
    assert (notice["title"], notice["body"], notice["actions"]) == (
        "QEMU USB HARDDRIVE",
        "The device has been disconnected.",
        [],
    )
    ((signal, device),) = stage.client.news()
    assert (signal, device["Action"], device["DeviceName"], device["Mountpath"]) == (
        "mm_device_action",
        2,
        "/dev/sda1",
        point,
    )


def test_clients_find_every_field_of_a_device_in_their_list(machine, stage):
    point = stage.plug_mounted(machine)
    stage.popup()
    stage.client.call("RequesAll", 1)
    ((signal, device),) = stage.client.news()
    assert signal == "mm_device_action"
    total, used = device.pop("TotalSize"), device.pop("UsedSize")
    assert total > used >= 0
    assert device == {
        "Action": 1,
        "Class": 8,
        "SubClass": 6,
        "Protocol": 80,
        "VendorId": 1,  # clients know the product's number by this name
        "Bus": 2,
        "Address": 2,
        "Number": 1,
        "FileSystem": 0,
        "Manufacturer": "QEMU",
        "Product": "QEMU USB HARDDRIVE",
        "DeviceName": "/dev/sda1",
        "DevicePath": machine.path_of("sda1"),
        "Mountpath": point,
        "Serial": "AA010203",
        "DisplayName": "QEMU USB HARDDRIVE",
        "DeviceKey": "/dev/sda1",
    }


def test_a_partition_table_that_is_read_again_causes_no_popup(machine, stage):
    stage.plug_mounted(machine)
    stage.popup()
    path = machine.path_of("sda1")
    properties = machine.properties(path)
    machine.remove(path)
    machine.add(path, properties, machine.attributes_of(path))
    stage.client.round_trip()
    assert stage.screen.calls_so_far("Notify") == []
    assert stage.client.news() == []


def test_a_running_companion_application_is_told_in_place_of_the_viewer(machine, stage, buses):
    companion = Peer(buses[0])
    companion.be_application("org.norvane.lumet", "/org/norvane/lumet")
    stage.plug_mounted(machine)
    call = companion.call()
    assert call["method"] == "ActivateAction"
    machine.unplug("fat32")
    assert companion.call()["method"] == "ActivateAction"
    assert stage.screen.calls_so_far("Notify") == []
    companion.close_input()
    companion.kill()


def test_in_shop_mode_the_demo_on_a_stick_is_played_without_a_popup(machine, root, stage):
    write_entry(root, "org.norvane.shopreel", Exec="/bin/true")
    mode = root / "var" / "lib" / "portmeld" / "db" / "menu" / "support" / "use_mode"
    mode.parent.mkdir(parents=True)
    mode.write_text("1\n")
    point = stage.plug_mounted(machine, files=[(source(PHOTO), "DEMO_LED.tp")])
    application, data = stage.launched()
    assert (application, data["root_path"]) == ("org.norvane.shopreel", f"{point}/DEMO_LED.tp")
    assert stage.screen.calls_so_far("Notify") == []


def test_a_viewer_who_must_not_be_disturbed_sees_nothing(machine, root, stage):
    state = root / "run" / "portmeld" / "memory" / "tv_context" / "state"
    state.parent.mkdir(parents=True)
    state.write_text("128\n")
    stage.plug_mounted(machine)
    stage.daemon.wait_for_error_line("Distraction Free Mode enabled")
    assert stage.screen.calls_so_far("Notify") == []


def test_popups_come_in_the_menu_language(machine, root, stage):
    language = root / "var" / "lib" / "portmeld" / "db" / "menu_widget" / "language"
    language.parent.mkdir(parents=True)
    language.write_text("de_DE\n")
    stage.client.round_trip()
    stage.plug_mounted(machine)
    assert stage.popup()["actions"][1::2] == ["Durchsuchen", "Abbrechen"]


def test_without_any_service_around_it_the_daemon_runs(machine, start_daemon):
    daemon = start_daemon()
    daemon.wait_until_it_takes_events()
    machine.plug("fat32")
    daemon.wait_for_error_line("Device count=")
    machine.unplug("fat32")
    daemon.wait_for_error_line("after delete")


def test_after_a_wake_up_devices_are_listed_anew_and_nobody_is_disturbed(
    machine, stage, buses, start_logind
):
    stage.plug_mounted(machine)
    stage.popup()
    logind = start_logind(buses[1])
    asleep = stage.daemon.has_logged("m_PoweroffChangedCB over")
    logind.tell_until("PrepareForSleep", True, asleep)
    logind.tell("PrepareForSleep", False)
    stage.daemon.wait_for_error_line("begin to set Enable false")
    (count,) = stage.client.call("GetDeviceCount", 7, -1)
    stage.client.call("RequesAll", 1)
    listed = [device["DeviceName"] for _, device in stage.client.news()]
    assert listed == ["/dev/sda1"]
    assert stage.screen.calls_so_far("Notify") == []
