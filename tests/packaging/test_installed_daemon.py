"""The daemon as the package installs it, under the absolute paths that are compiled into it: on the system
bus, with its texts, pictures and settings.
"""

import gettext
import json
import os
import pathlib
import re
import signal

import pytest
from client import INTERFACE, NAME, PATH, Refused

SOURCE = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"])
SCREEN = SOURCE / "tests" / "linux" / "notification_peer.py"
STATE = "/var/lib/portmeld"
RUNTIME = "/run/portmeld"


@pytest.fixture
def daemon(start_system_bus, start_daemon):
    """The daemon, with its name on a bus that allows only what the installed policy allows."""
    start_system_bus("strict")
    started = start_daemon()
    started.wait_for_error_line("NameAcquired")
    return started


def test_it_answers_who_is_allowed_and_nobody_else(daemon, start_client):
    assert start_client("viewer").call("GetDeviceCount", 7, -1) == [0]
    with pytest.raises(Refused) as refused:
        start_client("guest").call("GetDeviceCount", 7, -1)
    assert refused.value.name == "org.freedesktop.DBus.Error.AccessDenied"


def test_an_ordinary_tool_can_call_it(daemon, machine):
    words = ("busctl", "--system", "call", NAME, PATH, INTERFACE, "GetDeviceCount", "ii", "7", "0")
    assert machine.succeed("viewer", *words) == "i 0\n"


def test_it_ends_by_sigterm(daemon):
    daemon.process.send_signal(signal.SIGTERM)
    assert daemon.wait_for_end() == -signal.SIGTERM


def test_every_file_that_it_looks_for_is_there_and_can_be_read(machine):
    header = (SOURCE / "src" / "util" / "MMPaths.h").read_text()
    paths = [path for path in re.findall(r'"(/[^"]+)"', header) if not path.startswith("/opt/")]
    assert len(paths) == 6
    for path in [*paths, "/usr/bin/portmeld.interface.xml"]:
        machine.succeed("kiosk", "test", "-r", path)


def test_a_pop_up_speaks_the_menu_language_on_the_bus_of_a_session_that_began_later(
    daemon, machine, start, start_session_bus
):
    def write(user, file, text):
        machine.succeed(user, "tee", file, text=text)

    bus = start_session_bus("kiosk")
    options = json.dumps({"capabilities": ["actions", "body"]})
    screen = start("kiosk", "/usr/bin/python3", machine.place(SCREEN), bus.address, options)
    # The daemon has found the bus and the server.
    screen.take(lambda line: line.get("call") == "GetCapabilities")
    # The settings are written by another member of the group than the one that the daemon runs as.
    write("viewer", f"{STATE}/db/menu_widget/language", "de_DE\n")
    daemon.wait_for_error_line("vconf key value : [de_DE]")
    picture = "/usr/apps/portmeld/res/images/noti_source_icon_usb.png"
    write("viewer", f"{RUNTIME}/memory/portmeld/removed_dlna_device_icon_path", picture)
    write("viewer", f"{RUNTIME}/memory/portmeld/removed_dlna_device", "Küche")

    shown = screen.take(lambda line: line.get("call") == "Notify")
    catalogue = machine.stage / "usr/apps/portmeld/res/locale/de/LC_MESSAGES/portmeld.mo"
    with catalogue.open("rb") as file:
        text = gettext.GNUTranslations(file).gettext("TV_SID_DEVICE_BEEN_DISCONNECTED")
    assert text != "TV_SID_DEVICE_BEEN_DISCONNECTED"
    assert (shown["title"], shown["body"]) == ("Küche", text)
    assert picture in json.dumps(shown)


@pytest.mark.parametrize("folder", [f"{STATE}/db/portmeld", f"{RUNTIME}/memory/tv_context"])
def test_settings_are_written_by_the_group_and_stay_its_own(machine, folder):
    machine.succeed("viewer", "sh", "-c", f"umask 002; echo 1 >{folder}/.new; mv {folder}/.new {folder}/key")
    assert machine.succeed("kiosk", "stat", "-c", "%U %G %a", f"{folder}/key") == "viewer portmeld 664\n"
    machine.succeed("kiosk", "sh", "-c", f"echo 2 >{folder}/key")
    machine.succeed("kiosk", "mkdir", f"{folder}/more")
    assert machine.succeed("viewer", "stat", "-c", "%G", f"{folder}/more") == "portmeld\n"


@pytest.mark.parametrize("folder", [f"{STATE}/db/portmeld", f"{RUNTIME}/memory/tv_context"])
def test_settings_are_not_written_by_anybody_else(machine, folder):
    machine.succeed("viewer", "sh", "-c", f"umask 002; echo 1 >{folder}/key")
    for order in (f"echo 2 >{folder}/key", f"echo 2 >{folder}/other", f"rm -f {folder}/key"):
        assert machine.run("guest", "sh", "-c", order).returncode != 0, order
    assert machine.succeed("guest", "cat", f"{folder}/key") == "1\n"
