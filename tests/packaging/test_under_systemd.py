"""The installed service under a real service manager: in its sandbox, with every system call that the
unit does not allow turned into the end of the process, it starts, serves, shows and sees what it must.
"""

import json
import os
import pathlib
import time

import booted
import pytest
from client import INTERFACE, NAME, PATH
from installed import number_of

SOURCE = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"])
SCREEN = SOURCE / "tests" / "linux" / "notification_peer.py"
UNIT = "portmeld@kiosk.service"
SESSION = f"/run/user/{number_of('kiosk')}"
COUNT = ("busctl", "--system", "call", NAME, PATH, INTERFACE, "GetDeviceCount", "ii", "7", "0")


@pytest.fixture(scope="module")
def machine(stage):
    """The machine; the service is not started yet."""
    made = booted.Booted(stage)
    yield made
    made.close()


@pytest.fixture
def service(machine):
    """The service, started: its process, as the machine numbers it."""
    machine.succeed("root", "systemctl", "start", UNIT)
    yield machine.property(UNIT, "MainPID")
    machine.succeed("root", "systemctl", "stop", UNIT)
    assert machine.property(UNIT, "Result") == "success", log(machine)


def log(machine):
    """What the service wrote to the journal."""
    machine.succeed("root", "journalctl", "--sync")
    return machine.succeed("root", "journalctl", "--no-pager", "-o", "cat", "-u", UNIT)


def test_it_says_that_it_is_ready_and_serves_the_members_of_the_group(machine, service):
    assert machine.property(UNIT, "ActiveState") == "active"
    assert machine.property(UNIT, "WatchdogUSec") == "1min"
    assert machine.succeed("viewer", *COUNT) == "i 0\n"
    assert "Access denied" in machine.run("guest", *COUNT).stderr


def test_it_runs_as_the_kiosk_without_any_privilege(machine, service):
    status = machine.succeed("root", "cat", f"/proc/{service}/status")
    facts = dict(line.split(":\t", 1) for line in status.splitlines() if ":\t" in line)
    assert facts["Uid"].split() == [str(number_of("kiosk"))] * 4
    assert (facts["NoNewPrivs"], facts["Seccomp"]) == ("1", "2")
    assert {facts[name] for name in ("CapEff", "CapPrm", "CapBnd", "CapAmb")} == {"0" * 16}


def test_a_file_system_that_is_mounted_later_reaches_it(machine, service):
    machine.succeed("root", "mkdir", "-p", "/media/kiosk/STICK")
    machine.succeed("root", "mount", "-t", "tmpfs", "tmpfs", "/media/kiosk/STICK")
    machine.succeed("root", "tee", "/media/kiosk/STICK/film.mp4", text="moving")
    assert " /media/kiosk/STICK " in machine.succeed("root", "cat", f"/proc/{service}/mountinfo")
    seen = f"/proc/{service}/root/media/kiosk/STICK/film.mp4"
    assert machine.succeed("root", "cat", seen) == "moving"
    machine.succeed("root", "umount", "/media/kiosk/STICK")
    assert " /media/kiosk/STICK " not in machine.succeed("root", "cat", f"/proc/{service}/mountinfo")


def test_it_hears_of_devices(machine, service):
    machine.succeed("viewer", *COUNT)
    # Protocol 15 are the kernel's and udev's events; a socket's number is that of its process. It listens
    # from a tenth of a second after its start.
    for _ in range(300):
        table = machine.succeed("root", "cat", "/proc/net/netlink").splitlines()
        if any(line.split()[1:3] == ["15", service] for line in table):
            break
        time.sleep(0.1)
    else:
        raise AssertionError(table)
    # udev's library believes only root, which must therefore be known to the service as such.
    users = machine.succeed("root", "cat", f"/proc/{service}/uid_map").splitlines()
    assert ["0", "0", "1"] in [line.split() for line in users]


def test_it_shows_pop_ups_to_a_user_who_logs_in_later(machine, service, start):
    # As the login does it: the folder of the session is a file system of its own.
    machine.succeed("root", "mkdir", "-p", SESSION)
    machine.succeed("viewer", *COUNT)  # the service has seen the folder before another hides it
    kiosk = number_of("kiosk")
    options = f"mode=700,uid={kiosk},gid={kiosk}"
    machine.succeed("root", "mount", "-t", "tmpfs", "-o", options, "tmpfs", SESSION)
    bus = f"unix:path={SESSION}/bus"
    # It prints where it listens as soon as it does.
    options = ("--session", "--nofork", "--print-address=2", f"--address={bus}")
    start("kiosk", "dbus-daemon", *options).wait_for_error_line(bus)
    screen = start("kiosk", "/usr/bin/python3", machine.place(SCREEN), bus, json.dumps({"capabilities": []}))
    screen.take(lambda line: line.get("call") == "GetCapabilities")
    machine.succeed("viewer", "tee", "/run/portmeld/memory/portmeld/removed_dlna_device", text="Server")
    assert screen.take(lambda line: line.get("call") == "Notify")["title"] == "Server"


def test_it_writes_to_the_journal_what_the_setting_asks_for(machine, service):
    machine.succeed("viewer", "tee", "/var/lib/portmeld/db/portmeld/log_level", text="info\n")
    machine.succeed("viewer", *COUNT)
    machine.succeed("root", "systemctl", "stop", UNIT)
    assert "szMethodName :GetDeviceCount" in log(machine)
    machine.succeed("viewer", "rm", "/var/lib/portmeld/db/portmeld/log_level")


def test_it_comes_back_when_it_ends(machine, service, start_client):
    client = start_client("viewer")
    client.listen_to_everything()
    machine.succeed("root", "kill", "-KILL", service)
    owner, nobody = client.wait_for_owner_change(NAME)
    assert (owner != "", nobody) == (True, "")
    assert client.wait_for_owner_change(NAME)[1] != ""
    assert machine.property(UNIT, "NRestarts") == "1"
    assert machine.property(UNIT, "MainPID") != service
