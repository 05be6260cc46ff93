"""What a press of a button starts: an application of the kiosk's, by his own service manager."""

import re

# A unit that was made for one launch.
UNIT = r"/user\.slice/user-1000\.slice/user@1000\.service/app\.slice/app-{}-[0-9a-f]+\.service$"


def is_the_kiosks_own(launch, application):
    """True when it is a child of the kiosk's service manager, with nothing of the daemon's sandbox."""
    unit = UNIT.format(re.escape(application))
    return (
        launch["user"] == 1000 and not launch["sandboxed"] and re.search(unit, launch["group"])
    )


def test_play_opens_the_one_photo_of_a_stick(television):
    television.ports.plug("stick", "photo")
    first = television.screen.popup()
    popup = television.screen.popup()
    assert (first["actions"][1], popup["actions"][1]) == ("Browse", "Play")
    if popup["replaces"] != first["id"]:
        # It came before the first had an id: that one is closed as soon as it has.
        television.screen.wait_for_close(first)
    assert popup["body"].endswith("File name: Holiday 1.JPG")
    television.screen.press(popup, "Play")
    launch = television.launched()
    assert launch["arguments"] == ["/media/kiosk/ONEPHOTO/DCIM/Holiday 1.JPG"]
    assert is_the_kiosks_own(launch, "org.norvane.picreel")


def test_browse_opens_the_folder_of_a_stick(television):
    television.ports.plug("stick", "ntfs")
    television.screen.press(television.screen.popup(), "Browse")
    launch = television.launched()
    assert launch["arguments"] == ["/media/kiosk/Família"]
    assert is_the_kiosks_own(launch, "org.quillon.folian")


def test_cancel_opens_nothing(television):
    television.ports.plug("stick", "fat32")
    television.screen.press(television.screen.popup(), "Cancel")
    units = "systemctl --machine=kiosk@ --user list-units --all --no-legend 'app-*'"
    television.client.round_trip()
    assert television.guest.do(units) == ""
    television.ports.pull("stick")
    assert television.screen.notice()["body"] == "The device has been disconnected."
