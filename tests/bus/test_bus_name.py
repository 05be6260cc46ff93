"""The bus and the daemon's name on it: not there, refused, taken by somebody else, and dying."""

import signal

import pytest
from client import NAME, Refused

ACQUIRED = f"I {NAME} NameAcquired."
LOST = f"I {NAME} NameLost."


def test_the_name_is_acquired_once_the_object_is_there(daemon, client):
    log = daemon.log()
    (registered,) = (n for n, line in enumerate(log) if line.startswith("I nRegistrationId : "))
    assert log[registered] != "I nRegistrationId : 0"
    assert log.index(f"I szName:{NAME}") < registered < log.index(ACQUIRED)
    assert LOST not in log
    assert client.owner_of(NAME) is not None


def test_the_service_owns_the_one_name_of_its_own(daemon, client):
    unique = client.owner_of(NAME)
    (names,) = client.call_bus("ListNames", signature="()")
    well_known = [name for name in names if not name.startswith(":")]
    assert [name for name in well_known if client.owner_of(name) == unique] == [NAME]


# ---- no bus


@pytest.mark.parametrize("address", ["unix:path=/nonexistent/bus", "nonsense"])
def test_without_a_bus_the_daemon_works_on(start_daemon, address):
    daemon = start_daemon(bus_address=address)
    daemon.wait_for_log(f"{NAME} NameLost.")
    assert daemon.works_for_the_viewer()
    log = daemon.log()
    assert f"I szName:{NAME}" not in log
    assert log.count(LOST) == 1


def test_a_bus_that_comes_later_is_not_noticed(bus, start_daemon, start_client):
    bus.stop()
    daemon = start_daemon()
    daemon.wait_for_log(f"{NAME} NameLost.")
    bus.start()
    daemon.advance(600)
    assert start_client().owner_of(NAME) is None
    assert ACQUIRED not in daemon.log()


# ---- a bus that refuses the name


def test_a_refused_name_is_logged_and_the_object_is_served_all_the_same(
    start_bus, start_daemon, start_client
):
    strict = start_bus(names=False)
    client = start_client(bus_address=strict.address)
    daemon = start_daemon(bus_address=strict.address)
    daemon.wait_for_log(f"{NAME} NameLost.")
    assert client.owner_of(NAME) is None
    (names,) = client.call_bus("ListNames", signature="()")
    (unique,) = {name for name in names if name.startswith(":")} - {client.unique_name}
    client.destination = unique
    assert client.call("Connect", "player", 7) == [7]
    daemon.start_up()
    daemon.pull(daemon.plug(devname="/dev/sda1"))
    assert client.actions() == [("mm_device_action", 2, "/dev/sda1")]


# ---- a name that somebody else has


def test_a_taken_name_is_waited_for_and_had_when_it_becomes_free(start_daemon, client, other):
    assert other.call_bus("RequestName", NAME, 0, signature="(su)") == [1]
    daemon = start_daemon()
    daemon.wait_for_log(f"{NAME} NameLost.")
    assert client.owner_of(NAME) == other.unique_name
    (queued,) = client.call_bus("ListQueuedOwners", NAME, signature="(s)")
    assert queued[0] == other.unique_name and len(queued) == 2

    assert other.call_bus("ReleaseName", NAME, signature="(s)") == [1]
    daemon.wait_for_name()
    assert client.owner_of(NAME) == queued[1]
    assert client.call("Connect", "player", 7) == [7]
    assert daemon.works_for_the_viewer()


def test_a_second_daemon_takes_over_when_the_first_one_ends(start_daemon, client):
    first = start_daemon()
    first.wait_for_name()
    second = start_daemon()
    second.wait_for_log(f"{NAME} NameLost.")
    client.call("SetPhotoBGMPlayList", "kept", "by", "the first")
    assert first.quit().status == 0
    second.wait_for_name()
    client.call("SetPhotoBGMPlayList", "kept", "by", "the second")
    assert client.call("GetPhotoBGMPlayListItem", 0) == ["kept", "by", "the second"]


def test_nobody_can_take_the_name_away(daemon, client, other):
    owner = client.owner_of(NAME)
    replace_existing, do_not_queue = 2, 4
    flags = replace_existing | do_not_queue
    exists = 3
    assert other.call_bus("RequestName", NAME, flags, signature="(su)") == [exists]
    assert client.owner_of(NAME) == owner
    assert LOST not in daemon.log()


# ---- a bus that dies


def test_the_death_of_the_bus_ends_the_daemon_by_a_signal(bus, daemon):
    bus.stop()
    assert daemon.see_end() == -signal.SIGTERM
    assert daemon.error_lines()[-1].endswith(f": {NAME} NameLost.")


def test_the_death_of_the_bus_ends_a_daemon_that_has_clients(bus, daemon, client):
    daemon.plug()
    client.call("RequesAll", 7)
    bus.stop()
    assert daemon.see_end() == -signal.SIGTERM


def test_the_death_of_the_bus_ends_a_daemon_that_waits_for_its_name(bus, start_daemon, client):
    client.call_bus("RequestName", NAME, 0, signature="(su)")
    daemon = start_daemon()
    daemon.wait_for_log(f"{NAME} NameLost.")
    bus.stop()
    assert daemon.see_end() == -signal.SIGTERM


def test_an_orderly_end_gives_the_name_back(daemon, client):
    assert daemon.quit().status == 0
    with pytest.raises(Refused) as refused:
        client.call("Connect", "player", 7)
    assert refused.value.name == "org.freedesktop.DBus.Error.ServiceUnknown"
