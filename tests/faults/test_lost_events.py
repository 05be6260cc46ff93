"""Events of udev that were dropped, because there were more than the kernel keeps for a daemon that hung or was
too busy: the devices are looked for anew."""

import os
import pathlib
import subprocess

import pytest
from programs import Probe, built
from road import GOODS, Road, is_question
from stick import NAME
from udevd import Udevd

LOST = "events of udev were lost"
STORM = pathlib.Path(__file__).with_name("udev_storm.py")


@pytest.fixture
def world(start_world, tmp_path):
    """A world with a udevd whose events can be lost."""
    full = tmp_path / "full"
    made = start_world(
        preload=[built("faults", "libfull-socket.so")], env={"PORTMELD_TEST_FULL_SOCKET": str(full)}
    )
    made.full = full
    made.udevd = made.add("udevd", Udevd(made.machine.root))
    return made


def lose(world, happen):
    """Something happens of which the events are lost, and then something else."""
    world.udevd.lose(True)
    happen()
    world.udevd.lose(False)
    world.full.touch()
    world.machine.plug("kbd")
    world.wait_for_line(LOST)


def test_a_stick_whose_events_were_lost_is_offered(world):
    lose(world, lambda: world.machine.plug(NAME))
    point = world.mount()
    world.screen.take(is_question("Browse"))
    world.machine.unplug(NAME)
    world.take_notice()
    world.take_signal()
    world.stick.unmount(world.mounts, point)


def test_a_removal_whose_events_were_lost_is_told(world):
    world.plug()
    point = world.mount()
    world.screen.take(is_question("Browse"))
    lose(world, lambda: world.machine.unplug(NAME))
    world.take_notice()
    world.take_signal()
    world.stick.unmount(world.mounts, point)
    world.stick.open_gate()
    world.seen.clear()
    Road(world).go()
    assert tuple(world.seen) == GOODS


def test_a_stick_that_is_still_there_after_a_loss_is_no_news(world):
    world.plug()
    world.mount()
    world.screen.take(is_question("Browse"))
    lose(world, lambda: None)
    world.client.round_trip()
    assert world.client.news() == []
    assert world.screen.calls_so_far("Notify") == []
    assert world.client.call("GetDeviceCount", 1, -1) == [1]


def test_the_kernel_s_own_word_for_a_loss_is_understood(root, surroundings):
    """With real sockets: a daemon that was stopped, and more events than the kernel keeps for it."""
    rights = [] if os.geteuid() == 0 else ["-r"]
    probe = Probe(root.parent, surroundings(), ["unshare", *rights, "-n"])
    try:
        assert probe.call("usb_device_init") == 0
        probe.call("usb_mass_storage_foreach")  # who asks for devices has it listen from now on
        enter = ["nsenter", "-t", str(probe.process.pid), "-n"]
        if rights:
            enter += ["-U", "--preserve-credentials"]
        subprocess.run(
            [*enter, "/usr/bin/python3", str(STORM), str(probe.process.pid)], check=True, timeout=60
        )
        probe.wait_for_error_line(LOST)
        probe.finish()
    finally:
        probe.kill()
