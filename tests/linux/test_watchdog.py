"""What the service manager is told: that the daemon is ready, and that it is alive."""

import socket

import pytest


@pytest.fixture
def service_manager(tmp_path):
    """The socket at which a service manager listens, with a time limit."""
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as listener:
        listener.bind(str(tmp_path / "notify"))
        listener.settimeout(60)
        yield listener


@pytest.fixture
def one(probe, service_manager):
    """A probe that the service manager has started."""
    return probe(env={"NOTIFY_SOCKET": service_manager.getsockname()})


def next_state(service_manager):
    """The next thing that was told, as a dictionary."""
    lines = service_manager.recv(4096).decode().splitlines()
    return dict(line.split("=", 1) for line in lines)


def test_the_registration_says_that_the_daemon_is_ready(one, service_manager):
    assert one.call("register-watchdog") == 0
    state = next_state(service_manager)
    assert state.pop("STATUS")
    assert state == {"READY": "1"}


def test_each_feed_says_that_it_is_alive(one, service_manager):
    assert one.call("register-watchdog") == 0
    next_state(service_manager)
    for _ in range(3):
        assert one.call("feed-watchdog") == 0
        assert next_state(service_manager) == {"WATCHDOG": "1"}


def test_nothing_is_said_before_the_registration(one, service_manager):
    one.call("settle")
    service_manager.setblocking(False)
    with pytest.raises(BlockingIOError):
        service_manager.recv(4096)


def test_without_a_service_manager_both_are_harmless(probe):
    one = probe()
    assert one.call("register-watchdog") == 0
    assert one.call("feed-watchdog") == 0


def test_a_service_manager_that_is_gone_is_a_failure_and_no_disaster(probe, tmp_path):
    one = probe(env={"NOTIFY_SOCKET": str(tmp_path / "nobody")})
    assert one.call("register-watchdog") != 0
    assert one.call("feed-watchdog") != 0
