"""Devices that are no sticks: a camera, and a card reader whose cards come and go."""

READER = "/usr/local/lib/portmeld-tests/card_reader.sh"
CARD = "/var/tmp/card.img"


def test_a_camera_is_offered_listed_and_missed(television):
    television.ports.plug_camera("camera")
    popup = television.screen.popup()
    assert popup["title"] == "New device connected: QEMU filesharing"
    assert popup["icon"].endswith("camera.png")
    assert television.client.call("GetDeviceCount", 7, 6) == [1]
    (device,) = television.devices().values()
    assert (device["Class"], device["SubClass"], device["Protocol"]) == (6, 1, 1)
    assert (device["Mountpath"], device["FileSystem"]) == ("", 99)
    assert device["DeviceKey"] == device["Serial"]
    television.ports.pull("camera")
    notice = television.screen.notice()
    assert (notice["title"], notice["body"]) == (
        "QEMU filesharing",
        "The device has been disconnected.",
    )
    assert [action for _, action, _ in television.client.actions()] == [2]
    assert television.client.call("GetDeviceCount", 7, 6) == [0]


def test_a_card_is_a_stick_and_an_empty_reader_is_nothing(television):
    guest = television.guest
    guest.do(f"{READER} make {CARD}")
    guest.wait_until("test -b /dev/sda")
    assert television.screen.stays_empty()
    assert television.devices() == {}

    guest.do(f"{READER} insert {CARD}")
    assert television.screen.popup()["title"] == "New device connected: Card Reader"
    (device,) = television.devices().values()
    assert (device["DeviceName"], device["Mountpath"]) == ("/dev/sda1", "/media/kiosk/CARD")
    assert (device["Manufacturer"], device["VendorId"]) == ("Generic", 0x6366)

    # The kernel would not let go of a card that is in use.
    guest.do("udisksctl unmount -b /dev/sda1")
    guest.do(f"{READER} eject")
    assert television.screen.popup()["title"] == "Card Reader"
    assert television.client.actions() == [("mm_device_action", 2, "/dev/sda1")]

    guest.do(f"{READER} insert {CARD}")
    guest.wait_until("findmnt --source /dev/sda1")
    assert list(television.devices()) == ["/dev/sda1"]
