"""portmeldctl watch: what comes, changes and goes, one line each, until it is ended."""

import json
import re
import signal
import subprocess
import time

import pytest
from ctl_process import until

FAT = 0
# Nothing that is told of at once waits for the next turn.
NEVER_AGAIN = "3600"


def event(line):
    """(event, node) of a line of JSON."""
    told = json.loads(line)
    assert set(told) == {"event", "device"}
    return told["event"], told["device"]["node"]


def left(daemon):
    """The client ids that took their leave."""
    return [int(found) for line in daemon.log() for found in re.findall(r"^I connetion : (.*)", line)]


def times_asked(daemon):
    """How often the daemon was asked for its devices so far."""
    return sum("RequesAll" in line for line in daemon.log())


def test_it_asks_no_more_often_than_it_is_told_to(daemon, start_ctl):
    daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    watch = start_ctl("watch", "--interval", "0.5")
    watch.take()
    began = time.monotonic()
    until(lambda: times_asked(daemon) >= 4)
    assert time.monotonic() - began > 1.4


def test_it_begins_with_the_devices_that_are_there(daemon, start_ctl):
    daemon.plug(devname="/dev/sdb1", fileSystem=FAT, product="One")
    daemon.plug(devname="/dev/sda1", fileSystem=FAT, product="Two")
    watch = start_ctl("watch", "--interval", NEVER_AGAIN)
    assert watch.take().split()[:3] == ["present", "/dev/sda1", "fat"]
    line = watch.take()
    assert line.split()[:3] == ["present", "/dev/sdb1", "fat"]
    assert " One " in line


def test_json_begins_with_them_too(daemon, start_ctl):
    daemon.plug(devname="/dev/sda1", fileSystem=FAT, product="One")
    watch = start_ctl("watch", "--json", "--interval", NEVER_AGAIN)
    line = watch.take()
    assert event(line) == ("present", "/dev/sda1")
    assert json.loads(line)["device"]["name"] == "One"


def test_devices_that_come_are_seen_by_asking_and_removals_too(daemon, start_ctl):
    watch = start_ctl("watch", "--interval", "0.1")
    until(lambda: times_asked(daemon) >= 1)
    stick = daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    assert watch.take().split()[:2] == ["attached", "/dev/sda1"]
    daemon.pull(stick)
    assert watch.take().split()[:2] == ["removed", "/dev/sda1"]
    daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    assert watch.take().split()[:2] == ["attached", "/dev/sda1"]


def test_a_removal_is_told_at_once_and_once(daemon, start_ctl):
    sticks = [daemon.plug(devname=f"/dev/sd{letter}1", fileSystem=FAT) for letter in "ab"]
    watch = start_ctl("watch", "--json", "--interval", NEVER_AGAIN)
    assert {event(watch.take()) for _ in "ab"} == {("present", "/dev/sda1"), ("present", "/dev/sdb1")}
    for stick, node in zip(sticks, ("/dev/sda1", "/dev/sdb1")):
        daemon.pull(stick)
        assert event(watch.take()) == ("removed", node)
    assert watch.end(signal.SIGTERM) == (0, [], "")


ONE = {"Action": 1, "Class": 8, "DeviceKey": "a", "DeviceName": "/dev/sda1", "TotalSize": 9}
OTHER = {**ONE, "DeviceKey": "b", "DeviceName": "/dev/sdb1"}


def test_a_device_that_vanished_without_a_word_is_told_as_removed(fake_daemon, start_ctl):
    fake_daemon(ONE, OTHER, "next", OTHER, "next", ONE, OTHER)
    watch = start_ctl("watch", "--json", "--interval", "0.1")
    assert {event(watch.take()) for _ in "ab"} == {("present", "/dev/sda1"), ("present", "/dev/sdb1")}
    assert event(watch.take()) == ("removed", "/dev/sda1")
    assert event(watch.take()) == ("attached", "/dev/sda1")


def test_the_removal_of_a_device_that_was_not_told_of_is_no_news(fake_daemon, start_ctl):
    fake_daemon({**OTHER, "Action": 2}, ONE)
    watch = start_ctl("watch", "--json", "--interval", NEVER_AGAIN)
    assert event(watch.take()) == ("present", "/dev/sda1")


def test_a_device_that_is_mounted_later_is_a_change(daemon, start_ctl, tmp_path):
    stick = daemon.insert(devname="/dev/sda1", fileSystem=FAT)
    daemon.announce(stick, "added")
    watch = start_ctl("watch", "--json", "--interval", "0.1")
    told = json.loads(watch.take())
    assert (told["event"], told["device"]["mount"]) == ("present", "")
    daemon.mount(stick, str(tmp_path))
    told = json.loads(watch.take())
    assert (told["event"], told["device"]["mount"]) == ("changed", str(tmp_path))


@pytest.mark.parametrize(
    "change",
    [{"DeviceName": "/dev/sdc1"}, {"DisplayName": "b"}, {"FileSystem": 3}, {"TotalSize": 10}],
    ids=lambda change: next(iter(change)),
)
def test_another_node_name_file_system_or_size_is_a_change(fake_daemon, start_ctl, change):
    fake_daemon(ONE, "next", {**ONE, **change})
    watch = start_ctl("watch", "--json", "--interval", "0.1")
    assert event(watch.take())[0] == "present"
    assert event(watch.take()) == ("changed", change.get("DeviceName", "/dev/sda1"))


def test_how_full_a_device_is_is_no_change(fake_daemon, start_ctl):
    fake_daemon(ONE, "next", {**ONE, "UsedSize": 5}, "next", {**ONE, "UsedSize": 6}, OTHER)
    watch = start_ctl("watch", "--json", "--interval", "0.1")
    assert event(watch.take()) == ("present", "/dev/sda1")
    assert event(watch.take()) == ("attached", "/dev/sdb1")


def test_a_standby_in_which_nothing_was_pulled_is_told_of_in_no_line(daemon, start_ctl):
    daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    watch = start_ctl("watch", "--json", "--interval", "0.1")
    assert event(watch.take()) == ("present", "/dev/sda1")
    daemon.order("standby")
    daemon.order("wake")
    asked = times_asked(daemon)
    until(lambda: times_asked(daemon) >= asked + 2)
    daemon.plug(devname="/dev/sdb1", fileSystem=FAT)
    assert event(watch.take()) == ("attached", "/dev/sdb1")


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
@pytest.mark.parametrize("form", [[], ["--json"]])
def test_a_signal_ends_it_well_and_the_daemon_forgets_it(daemon, start_ctl, number, form):
    daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    watch = start_ctl("--client-id", "4711", "watch", *form)
    watch.take()
    assert left(daemon) == []
    assert watch.end(number) == (0, [], "")
    until(lambda: left(daemon) == [4711])


def test_a_reader_that_has_seen_enough_ends_it_well(daemon, ctl):
    daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    with subprocess.Popen(
        [ctl.program, "--client-id", "4711", "watch", "--interval", NEVER_AGAIN],
        cwd=ctl.folder,
        env=ctl.environment,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
    ) as watch:
        try:
            assert watch.stdout.readline().startswith(b"present")
            watch.stdout.close()
            assert watch.wait(20) == 0
            assert watch.stderr.read() == b""
        finally:
            watch.kill()
    until(lambda: left(daemon) == [4711])


def test_the_end_of_the_daemon_ends_it(daemon, start_ctl):
    daemon.plug(devname="/dev/sda1", fileSystem=FAT)
    watch = start_ctl("watch", "--interval", NEVER_AGAIN)
    watch.take()
    daemon.process.kill()
    daemon.see_end()
    done = watch.finish()
    assert (done.status, done.out) == (3, [])
    assert done.err.startswith("portmeldctl: portmeld left the bus; start it")
    assert done.err.count("\n") == 1


def test_the_end_of_the_bus_ends_it(fake_daemon, start_ruled_bus, start_ctl):
    bus = start_ruled_bus()
    fake_daemon({"Action": 1, "DeviceKey": "a"}, address=bus.address)
    watch = start_ctl("watch", "--interval", NEVER_AGAIN, "--bus", bus.address)
    watch.take()
    bus.kill()
    assert watch.finish() == (
        3,
        [],
        f"portmeldctl: the bus at {bus.address} ended; try again when it is back\n",
    )


def test_hostile_names_stay_on_their_line(fake_daemon, start_ctl):
    fake_daemon({"Action": 1, "DeviceKey": "a", "DisplayName": "x\nremoved  /dev/sda1\x1b[2J"})
    line = start_ctl("watch", "--interval", NEVER_AGAIN).take()
    assert line.startswith("present ")
    assert r"x\u000aremoved  /dev/sda1\u001b[2J" in line
