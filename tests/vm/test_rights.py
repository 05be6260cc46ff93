"""Who may talk to the daemon: root and the group, and nobody else."""

CALL = (
    "busctl call com.norvane.portmeld /com/norvane/portmeld com.norvane.portmeld GetDeviceCount ii -- 9 -1"
)


def test_a_user_outside_the_group_is_refused(television):
    for user, allowed in (("viewer", True), ("kiosk", True), ("guest", False)):
        status, said = television.guest.run(f"runuser -u {user} -- {CALL}")
        assert (status == 0) == allowed, said
        assert allowed or "Access denied" in said
    assert television.guest.do(CALL) == "i 0\n"


def test_a_user_outside_the_group_takes_neither_the_name_nor_a_setting(television):
    own = (
        "import sys; from gi.repository import Gio, GLib; bus = Gio.bus_get_sync(1); "
        "print(bus.call_sync('org.freedesktop.DBus', '/', 'org.freedesktop.DBus', 'RequestName', "
        "GLib.Variant('(su)', ('com.norvane.portmeld', 2)), None, 0, -1, None))"
    )
    status, said = television.guest.run(f'runuser -u guest -- python3 -c "{own}"')
    assert status != 0 and "AccessDenied" in said
    setting = "/var/lib/portmeld/db/portmeld/automount"
    for user, allowed in (("guest", False), ("viewer", True)):
        status, _ = television.guest.run(f"runuser -u {user} -- sh -c 'echo 1 >{setting}'")
        assert (status == 0) == allowed


def test_a_user_outside_the_group_may_not_mount_and_the_group_may(television):
    at = television.ports.plug("stick", "fat32")
    television.screen.popup()
    television.udev.wait_for("add", "block", at, DEVNAME="/dev/sda1")
    television.guest.do("udisksctl unmount -b /dev/sda1")
    mount = "udisksctl mount --no-user-interaction -b /dev/sda1"
    status, said = television.guest.run(f"runuser -u guest -- {mount}")
    assert status != 0 and "NotAuthorized" in said
    assert "/media/viewer/KINGSTON" in television.guest.do(f"runuser -u viewer -- {mount}")
