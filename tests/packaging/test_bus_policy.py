"""Who may own the daemon's name, call it and hear it: on the distribution's system bus, on one that denies
everything which the installed policy does not allow, and on one that allows what it does not deny.
"""

import pathlib

import pytest
from client import BUS, INTERFACE, NAME, PATH, Refused

DENIED = "org.freedesktop.DBus.Error.AccessDenied"
OWNER = pathlib.Path(__file__).with_name("owner_process.py")
PROPERTIES = (NAME, PATH, "org.freedesktop.DBus.Properties")


@pytest.fixture(params=["strict", "stock", "open"], autouse=True)
def bus(request, start_system_bus):
    """Every test is made on each kind of bus."""
    return start_system_bus(request.param)


@pytest.fixture
def daemon(start_daemon):
    """The daemon, which runs as the user of the kiosk, with its name."""
    started = start_daemon()
    started.wait_for_error_line("NameAcquired")
    return started


def request_name(client):
    """Asks for the daemon's name; 1 means: got it."""
    return client.call_bus("RequestName", NAME, 0, signature="(su)")[0]


def refused(call, *arguments, **options):
    """The name of the error that a call is answered with."""
    with pytest.raises(Refused) as caught:
        call(*arguments, **options)
    return caught.value.name


@pytest.mark.parametrize("user", ["root", "kiosk", "viewer"])
def test_root_and_the_members_of_the_group_may_own_the_name(start_client, user):
    assert request_name(start_client(user)) == 1


def test_nobody_else_may_own_the_name(start_client):
    assert refused(request_name, start_client("guest")) == DENIED


@pytest.mark.parametrize("user", ["root", "kiosk", "viewer"])
def test_root_and_the_members_of_the_group_may_call_and_hear_their_signals(
    daemon, start_client, user
):
    client = start_client(user)
    assert client.call("Connect", "test", 7) == [7]
    assert client.call("GetDeviceCount", 7, -1) == [0]
    # The answer when no device is there at all is a signal, to this client alone.
    assert client.call("GetDeviceListByFsType", 7, -1) == []
    assert client.news() == [("mm_device_get_list", {"Action": 4})]


@pytest.mark.parametrize("user", ["root", "viewer"])
def test_they_may_ask_what_the_object_is(daemon, start_client, user):
    client = start_client(user)
    introspectable = (NAME, PATH, "org.freedesktop.DBus.Introspectable")
    peer = (NAME, PATH, "org.freedesktop.DBus.Peer")
    description = client.reply_to(client.send_to(introspectable, "Introspect", signature="()"))
    assert INTERFACE in description["body"][0]
    assert client.reply_to(client.send_to(peer, "Ping", signature="()"))["type"] == "return"
    everything = client.send_to(PROPERTIES, "GetAll", INTERFACE, signature="(s)")
    assert client.reply_to(everything)["body"] == [{}]
    # It has no property, and it is the daemon who says so.
    one = client.reply_to(client.send_to(PROPERTIES, "Get", INTERFACE, "Any", signature="(ss)"))
    assert one["type"] == "error" and one["error"] != DENIED


def test_they_may_call_nothing_else(daemon, start_client):
    client = start_client("viewer")
    for where, member in [
        ((NAME, PATH, "org.freedesktop.DBus.ObjectManager"), "GetManagedObjects"),
        ((NAME, PATH, "com.norvane.other"), "GetDeviceCount"),
        (PROPERTIES, "Set"),
    ]:
        answer = client.reply_to(client.send_to(where, member, signature="()"))
        assert answer["error"] == DENIED, (where, member)


def test_nobody_else_may_call(daemon, start_client):
    guest = start_client("guest")
    assert refused(guest.call, "GetDeviceCount", 7, -1) == DENIED
    for interface, member in [
        ("org.freedesktop.DBus.Introspectable", "Introspect"),
        ("org.freedesktop.DBus.Peer", "Ping"),
        ("org.freedesktop.DBus.Properties", "GetAll"),
    ]:
        answer = guest.reply_to(guest.send_to((NAME, PATH, interface), member, signature="()"))
        assert answer["error"] == DENIED, interface


def test_a_call_to_the_connection_itself_is_refused_just_the_same(daemon, start_client):
    daemon_connection = start_client("viewer").owner_of(NAME)
    guest = start_client("guest")
    guest.destination = daemon_connection
    assert refused(guest.call, "GetDeviceCount", 7, -1) == DENIED


def test_a_signal_reaches_members_of_the_group_and_nobody_else(machine, start, start_client):
    owner = start("kiosk", "/usr/bin/python3", machine.place(OWNER), NAME, PATH, INTERFACE)
    assert owner.take() == "owned"
    viewer, guest = start_client("viewer"), start_client("guest")
    for client in (viewer, guest):
        client.listen_to_everything()
    heard = {}
    for name, client in [("guest", guest), ("viewer", viewer)]:
        owner.send(client.unique_name)
        assert owner.take() == "sent"
        # What the bus lets through has come before its reply to this.
        messages = client.messages_until_reply(client.send_to(BUS, "GetId", signature="()"))
        heard[name] = [message["member"] for message in messages[:-1]]
    # One to everybody for the guest's sake, then one to the viewer alone and one to everybody.
    assert heard == {"guest": [], "viewer": ["mm_device_action"] * 3}
