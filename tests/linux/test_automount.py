"""Mounting what nobody has mounted: UDisks2 is asked, once, after two seconds, and never waited for.

Two seconds are half of one here.
"""

import pathlib

import child
import pytest

HASTE = {"PORTMELD_TEST_PORTS_HASTE": "4"}
SCRIPT = pathlib.Path(__file__).with_name("udisks_process.py")
REQUEST = {
    "object": "/org/freedesktop/UDisks2/block_devices/sda1",
    "options": {"auth.no_user_interaction": True},
}


@pytest.fixture
def system_bus(start_bus):
    """The bus that UDisks2 is on."""
    return start_bus()


@pytest.fixture
def udisks(system_bus):
    """Starts UDisks2, which answers every call in one way."""
    started = []

    def start(answer="ok"):
        started.append(child.Child(["/usr/bin/python3", str(SCRIPT), system_bus.address, answer]))
        assert started[-1].take() == "ready"
        return started[-1]

    yield start
    for each in started:
        each.close_input()
        each.kill()


@pytest.fixture
def ports(start_ports, system_bus):
    """The USB library, which finds UDisks2 on the bus."""
    return start_ports(system_bus=system_bus, env=HASTE)


def has_been_asked(udisks, seconds=1.5):
    """Whether UDisks2 was asked for anything, long enough after the plug to know."""
    try:
        udisks.take_within(seconds)
    except TimeoutError:
        return False
    return True


def test_a_file_system_that_nobody_has_mounted_is_mounted_by_udisks(machine, ports, udisks):
    server = udisks()
    machine.plug("fat32")
    assert server.take() == REQUEST
    assert ports.next_actions(1) == [("added", "/dev/sda1")]


def test_each_partition_is_asked_for_by_itself(machine, ports, udisks):
    server = udisks()
    machine.plug("two-partitions")
    asked = {server.take()["object"].rsplit("/", 1)[1] for _ in range(2)}
    assert asked == {"sda1", "sda2"}


def test_what_was_there_at_the_start_is_mounted_as_well(machine, start_ports, system_bus, udisks):
    server = udisks()
    machine.plug("fat32")
    start_ports(system_bus=system_bus, env=HASTE)
    assert server.take() == REQUEST


def test_udisks_is_not_asked_for_what_somebody_has_mounted(machine, ports, udisks):
    server = udisks()
    ports.mounts.mount("/dev/sda1")
    machine.plug("fat32")
    assert not has_been_asked(server)


def test_udisks_is_not_asked_for_a_stick_that_was_pulled_before(
    machine, start_ports, system_bus, udisks
):
    start_ports(system_bus=system_bus)  # with the whole two seconds to pull it in
    server = udisks()
    machine.plug("fat32")
    machine.unplug("fat32")
    assert not has_been_asked(server, 4)


def test_udisks_is_not_asked_again_after_the_viewer_has_unmounted_it(machine, ports, udisks):
    server = udisks()
    point = ports.mounts.mount("/dev/sda1")
    machine.plug("fat32")
    assert ports.next_actions(2) == [("added", "/dev/sda1"), ("mounted", "/dev/sda1")]
    ports.mounts.unmount(point)
    assert not has_been_asked(server)


def test_udisks_is_not_asked_for_a_partition_without_a_file_system(machine, ports, udisks):
    server = udisks()
    machine.plug("fat32")
    ports.next()
    path = machine.path_of("sda1")
    properties = {**machine.properties(path), "ID_FS_TYPE": "", "ID_FS_USAGE": ""}
    machine.change(path, properties)
    assert ports.next_actions(2) == [("removed", "/dev/sda1"), ("added", "/dev/sda1")]
    assert not has_been_asked(server)


@pytest.mark.parametrize(
    "properties",
    [
        {"ID_FS_TYPE": "crypto_LUKS", "ID_FS_USAGE": "crypto"},
        {"ID_FS_TYPE": "swap", "ID_FS_USAGE": "other"},
        {"ID_FS_TYPE": "linux_raid_member", "ID_FS_USAGE": "raid"},
    ],
)
def test_udisks_is_not_asked_for_what_is_no_file_system(machine, ports, udisks, properties):
    def change(_path, known, _attributes):
        if known["DEVTYPE"] == "partition":
            known.update(properties)

    server = udisks()
    machine.plug("fat32", change=change)
    assert ports.next_actions(1) == [("added", "/dev/sda1")]
    assert not has_been_asked(server)


def test_a_table_that_is_read_again_is_no_reason_to_mount_what_the_viewer_has_unmounted(
    machine, ports, udisks
):
    server = udisks()
    point = ports.mounts.mount("/dev/sda1")
    machine.plug("fat32")
    assert ports.next_actions(2) == [("added", "/dev/sda1"), ("mounted", "/dev/sda1")]
    ports.mounts.unmount(point)
    path = machine.path_of("sda1")
    properties = machine.properties(path)
    machine.remove(path)
    machine.add(path, properties, machine.attributes_of(path))
    assert not has_been_asked(server)


def test_a_udisks_that_does_not_know_the_device_yet_is_asked_again(machine, ports, udisks):
    server = udisks("late")
    machine.plug("fat32")
    assert [server.take() for _ in range(3)] == [REQUEST] * 3
    assert not has_been_asked(server)
    assert not any("cannot mount" in line for line in ports.probe.error_lines())


@pytest.mark.parametrize(("value", "asked"), [("0", False), ("false", False), ("1", True), ("x", True)])
def test_a_setting_switches_it_off(machine, root, ports, udisks, value, asked):
    key = root / "var" / "lib" / "portmeld" / "db" / "portmeld" / "automount"
    key.parent.mkdir(parents=True)
    key.write_text(value + "\n")
    server = udisks()
    machine.plug("fat32")
    assert has_been_asked(server) == asked


# ---- failures, none of which keeps anybody waiting

ERROR = "org.freedesktop.UDisks2.Error."


@pytest.mark.parametrize(
    ("name", "answer", "words"),
    [
        pytest.param(
            "ntfs",
            ERROR + "Failed=Error mounting /dev/sda1 at /media/x: The disk contains an unclean file "
            "system (0, 0).",
            "was not removed safely from Windows",
            id="NTFS that was not removed safely",
        ),
        pytest.param(
            "ntfs",
            ERROR + "Failed=Windows is hibernated, refused to mount. hibernated",
            "run ntfsfix",
            id="NTFS with a sleeping Windows",
        ),
        pytest.param(
            "ntfs",
            ERROR + "Failed=Error mounting: wrong fs type, bad option, bad superblock on /dev/sda1",
            "was not removed safely from Windows",
            id="NTFS that the kernel refuses",
        ),
        pytest.param(
            "exfat",
            ERROR + "Failed=Error mounting /dev/sda1 at /media/x: unknown filesystem type 'exfat'.",
            "this machine cannot mount the file system exfat; install",
            id="unknown file system",
        ),
        pytest.param(
            "ext4",
            ERROR + "Failed=Error mounting: wrong fs type, bad option, bad superblock on /dev/sda1",
            "the file system ext4 is damaged",
            id="damaged file system",
        ),
        pytest.param(
            "fat32",
            ERROR + "NotAuthorizedCanObtain=Not authorized to perform operation",
            'not authorised; the user who runs portmeld must be in the group "portmeld"',
            id="not authorised, though somebody could be asked",
        ),
        pytest.param(
            "fat32", ERROR + "NotAuthorized=No", "not authorised", id="not authorised at all"
        ),
        pytest.param(
            "fat32", ERROR + "Failed=the moon is full", "the moon is full", id="any other reason"
        ),
    ],
)
def test_a_failure_is_logged_once_with_its_cause_in_words(
    machine, ports, udisks, name, answer, words
):
    server = udisks(answer)
    machine.plug(name)
    server.take()
    ports.probe.wait_for_error_line(words)
    lines = [line for line in ports.probe.error_lines() if "cannot mount" in line]
    assert len(lines) == 1
    assert "cannot mount /dev/sda1 (QEMU USB HARDDRIVE): " in lines[0]


def test_it_is_no_failure_when_somebody_was_faster(machine, ports, udisks):
    server = udisks(ERROR + "AlreadyMounted=Device /dev/sda1 is already mounted")
    machine.plug("fat32")
    server.take()
    assert not has_been_asked(server)
    assert not any("cannot mount" in line for line in ports.probe.error_lines())


def test_the_failed_mount_of_a_stick_that_was_pulled_meanwhile_is_no_failure(
    machine, ports, udisks, system_bus
):
    server = udisks("hang")
    machine.plug("fat32")
    server.take()
    machine.unplug("fat32")
    assert ports.next_actions(2) == [("added", "/dev/sda1"), ("removed", "/dev/sda1")]
    server.kill()  # the bus answers in its place: no reply
    ports.probe.call("settle")
    assert not any("cannot mount" in line for line in ports.probe.error_lines())


def test_a_failure_that_is_told_before_the_pull_that_caused_it_is_no_failure(
    machine, start_ports, system_bus, udisks
):
    ports = start_ports(system_bus=system_bus)  # with a whole second to pull it in
    server = udisks(ERROR + "Failed=wrong fs type, bad option, bad superblock on /dev/sda1")
    machine.plug("ext4")
    server.take()
    machine.unplug("ext4")
    assert ports.next_actions(2) == [("added", "/dev/sda1"), ("removed", "/dev/sda1")]
    assert not has_been_asked(server, 2)
    assert not any("cannot mount" in line for line in ports.probe.error_lines())


def test_a_hanging_udisks_keeps_nobody_waiting(machine, ports, udisks):
    server = udisks("hang")
    machine.plug("fat32")
    server.take()
    ports.mounts.mount("/dev/sda1")
    assert ports.next_actions(2) == [("added", "/dev/sda1"), ("mounted", "/dev/sda1")]
    machine.unplug("fat32")
    assert ports.next_actions(1) == [("removed", "/dev/sda1")]


def test_a_udisks_that_dies_while_it_is_asked_is_logged(machine, ports, udisks):
    server = udisks("hang")
    machine.plug("fat32")
    server.take()
    server.kill()
    ports.probe.wait_for_error_line("cannot mount /dev/sda1 (QEMU USB HARDDRIVE): UDisks2 has not answered")


def test_a_udisks_that_dies_while_it_is_asked_and_is_back_is_asked_again_once(
    machine, start_ports, system_bus, udisks
):
    ports = start_ports(system_bus=system_bus)  # with whole seconds to come back in
    first = udisks("hang")
    machine.plug("fat32")
    assert first.take() == REQUEST
    first.kill()
    second = udisks("hang")
    assert second.take() == REQUEST
    second.kill()
    third = udisks()
    ports.probe.wait_for_error_line("cannot mount /dev/sda1 (QEMU USB HARDDRIVE): UDisks2 has not answered")
    assert not has_been_asked(third)


@pytest.mark.parametrize("bus", ["with a bus", "without a bus"])
def test_without_udisks_nothing_happens(machine, root, start_ports, system_bus, bus):
    (root / "var" / "lib" / "portmeld" / "db").mkdir(parents=True)
    ports = start_ports(system_bus=system_bus if bus == "with a bus" else None, env=HASTE)
    machine.plug("fat32")
    assert ports.next_actions(1) == [("added", "/dev/sda1")]
    with pytest.raises(TimeoutError):
        ports.probe.take_within(1.5)
    assert ports.probe.error_lines() == []
