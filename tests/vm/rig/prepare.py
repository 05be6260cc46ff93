#!/usr/bin/python3
"""Makes the machine that every scenario goes on from. Usage: prepare.py IMAGES PACKAGE...

Boots the guest, installs the packages there as people do, lets the daemon get through its first seconds,
and saves the machine in the folder "saved" of IMAGES.
"""

import pathlib
import shutil
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parents[1] / "support")]

from client import SCRIPT  # noqa: E402 (the path comes first)
from guest_programs import PROGRAMS, SCREEN  # noqa: E402
from television import Television  # noqa: E402

# An application for whatever a stick holds; it tells the tests what it was started with.
APPLICATION = """[Desktop Entry]
Type=Application
Name=Recorder
Exec=/usr/local/bin/recorder %U
MimeType=image/jpeg;audio/mpeg;inode/directory;
"""
DEFAULTS = """[Default Applications]
image/jpeg=recorder.desktop
audio/mpeg=recorder.desktop
inode/directory=recorder.desktop
"""
MODULES = "usb_storage sd_mod vfat exfat ntfs3 fuse nls_utf8 nls_ascii nls_cp437"


def install(television, packages):
    """Installs the packages, and enables the service as the manual says."""
    guest = television.guest
    guest.do("mkdir /var/tmp/packages")
    for package in packages:
        guest.put(package, f"/var/tmp/packages/{pathlib.Path(package).name}")
    guest.do("dpkg --install /var/tmp/packages/*.deb", 300)
    guest.do("useradd --create-home --uid 1000 kiosk; useradd --create-home --uid 1001 viewer")
    guest.do("useradd --create-home --uid 1002 guest")
    guest.do("adduser --quiet kiosk portmeld; adduser --quiet viewer portmeld")
    guest.do("loginctl enable-linger kiosk")
    guest.do("systemctl enable --now portmeld@kiosk")


def equip(television):
    """Puts the tests' own programs into the guest."""
    guest = television.guest
    guest.do(f"mkdir -p {PROGRAMS}")
    for script in (SCRIPT, SCREEN, HERE / "guest_files" / "card_reader.sh"):
        guest.put(script, f"{PROGRAMS}/{script.name}", 0o755)
    guest.put(HERE / "guest_files" / "recorder.py", "/usr/local/bin/recorder", 0o755)
    folder = "~kiosk/.local/share/applications"
    guest.do(
        f"mkdir -p {folder} ~kiosk/.config; echo '{APPLICATION}' >{folder}/recorder.desktop; "
        f"echo '{DEFAULTS}' >~kiosk/.config/mimeapps.list; chown -R kiosk: ~kiosk; "
        "mkfifo -m 600 /run/user/1000/launches; chown kiosk: /run/user/1000/launches"
    )
    guest.wait_until("test -S /run/user/1000/bus")
    television.start_programs()


def main(images, *packages):
    """Makes the saved machine anew."""
    images = pathlib.Path(images).resolve()
    television = Television(images)
    try:
        television.boot()
        install(television, packages)
        equip(television)
        # What is started by the first stick of all is there already: that one takes no longer.
        television.guest.do(f"modprobe -a {MODULES}; systemctl start udisks2 polkit", 120)
        television.wait_until_listening()
        television.guest.do("udevadm settle; sync; echo 1 >/proc/sys/vm/drop_caches")
        folder = television.save()
    except BaseException:
        sys.stderr.write(television.qemu.console()[-3000:])
        raise
    finally:
        television.close()
    shutil.rmtree(images / "saved", ignore_errors=True)
    folder.rename(images / "saved")


if __name__ == "__main__":
    main(*sys.argv[1:])
