"""The packages as dpkg installs, upgrades, removes and purges them, on a machine with a service manager."""

import shutil

import booted
import installed
import pytest

UNIT = "portmeld@kiosk.service"
STATE = "/var/lib/portmeld"
LINK = "/etc/systemd/system/multi-user.target.wants/portmeld@kiosk.service"


@pytest.fixture
def machine(tmp_path):
    """A machine without the packages, but with their files in /packages."""
    stage = tmp_path / "stage"
    (stage / "packages").mkdir(parents=True)
    installed.settle(stage, members=False)
    for file in installed.packages().values():
        shutil.copy(file, stage / "packages")
    made = booted.Booted(stage)
    yield made
    made.close()


def install(machine):
    """Installs the packages, or installs them again."""
    machine.succeed("root", "sh", "-c", "dpkg --install /packages/*.deb")


def exists(machine, path):
    """Whether there is a file, a folder or a link of that name."""
    return machine.run("root", "sh", "-c", f"test -e {path} || test -L {path}").returncode == 0


@pytest.fixture
def service(machine):
    """The service, enabled and started as the manual tells it: its process."""
    install(machine)
    machine.succeed("root", "usermod", "--append", "--groups", "portmeld", "kiosk")
    machine.succeed("root", "systemctl", "enable", "--now", "portmeld@kiosk")
    return machine.property(UNIT, "MainPID")


def test_installing_makes_the_group_and_its_folders_and_starts_nothing(machine):
    install(machine)
    assert machine.succeed("root", "getent", "group", "portmeld").startswith("portmeld:")
    for folder in (f"{STATE}/db/menu/support", "/run/portmeld/memory/tv_context"):
        told = machine.succeed("root", "stat", "-c", "%U %G %a", folder)
        assert told == "root portmeld 2775\n"
    assert machine.succeed("root", "systemctl", "list-units", "--plain", "--no-legend", "portmeld@*") == ""


def test_an_upgrade_starts_the_services_that_run_anew_and_no_other(machine, service):
    install(machine)
    assert machine.property(UNIT, "ActiveState") == "active"
    assert machine.property(UNIT, "MainPID") != service
    machine.succeed("root", "systemctl", "stop", UNIT)
    install(machine)
    assert machine.property(UNIT, "ActiveState") == "inactive"


def test_removing_ends_the_service_and_keeps_the_settings_which_purging_takes(machine, service):
    setting = f"{STATE}/db/portmeld/automount"
    machine.succeed("root", "tee", setting, text="0\n")
    machine.succeed("root", "dpkg", "--remove", "portmeld")
    assert machine.property(UNIT, "MainPID") == "0"
    assert machine.property(UNIT, "LoadState") == "not-found"
    assert exists(machine, setting) and exists(machine, LINK)
    machine.succeed("root", "dpkg", "--purge", "portmeld")
    assert not [path for path in (STATE, "/run/portmeld", LINK) if exists(machine, path)]
