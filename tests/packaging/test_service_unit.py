"""The service's unit file: that systemd understands it, and how little it leaves to the daemon."""

import pytest

UNIT = "/usr/lib/systemd/system/portmeld@.service"

# In tenths of the points that "systemd-analyze security" gives; 100 is no protection at all.
MOST_EXPOSURE = 20


@pytest.fixture
def instance(machine):
    """The unit as it runs for the kiosk."""
    path = "/run/test/portmeld@kiosk.service"
    machine.succeed("root", "cp", UNIT, path)
    return path


def test_systemd_finds_nothing_wrong_with_it(machine, instance):
    for file in (UNIT, instance):
        done = machine.run("root", "systemd-analyze", "verify", "--man=yes", file)
        said = [line for line in done.stderr.splitlines() if "portmeld" in line]
        assert (done.returncode, said) == (0, []), done.stderr


def test_its_exposure_is_low(machine, instance):
    limit = f"--threshold={MOST_EXPOSURE}"
    done = machine.run("root", "systemd-analyze", "security", "--offline=true", limit, instance)
    assert done.returncode == 0, done.stdout
    assert "Overall exposure level" in done.stdout


def test_it_runs_as_the_user_of_the_instance_with_the_group_and_a_watchdog(machine):
    lines = machine.succeed("root", "cat", UNIT).splitlines()
    for line in (
        "User=%i",
        "SupplementaryGroups=portmeld",
        "Type=notify",
        "WatchdogSec=60",
        "Restart=always",
        "ExecStart=/usr/bin/portmeld",
    ):
        assert line in lines
