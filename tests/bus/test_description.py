"""The interface description: what the daemon serves is what the file says, sound or not."""

import pytest
from client import NAME, Refused

METHOD = '<method name="Connect"><arg type="s" direction="in"/><arg type="i" direction="in"/>' + (
    '<arg type="i" direction="out"/></method>'
)
LIST = '<method name="RequesAll"><arg type="i" direction="in"/></method>'
FAILED = [
    "W m_InitMMDeviceDbus fail",
    "W Create CMMDeviceDbusServer instance fail",
    "W Create dbus fail",
]


def description(root='name="/com/norvane/portmeld"', interfaces=None):
    """An interface description; `interfaces` are (name, members)."""
    if interfaces is None:
        interfaces = [(NAME, METHOD)]
    body = "".join(f'<interface name="{name}">{text}</interface>' for name, text in interfaces)
    return f"<node {root}>{body}</node>"


def warnings(daemon):
    """Every warning so far."""
    return [line for line in daemon.log() if line.startswith("W")]


def with_members(text, interface=NAME):
    """A description with these methods."""
    return description(interfaces=[(interface, text)])


def is_not_served(client):
    """Whether the object is not there."""
    with pytest.raises(Refused) as refused:
        client.call("Connect", "player", 7)
    return refused.value.name in (
        "org.freedesktop.DBus.Error.UnknownMethod",
        "org.freedesktop.DBus.Error.UnknownObject",
    )


# ---- a description that is none


def test_without_a_description_the_daemon_works_without_the_bus(start_daemon, client):
    daemon = start_daemon(description=None)
    daemon.order("settle")
    assert warnings(daemon) == [
        "W load portmeld.interface.xml fail.",
        "W init_introspection_xml error.",
        *FAILED,
    ]
    assert daemon.works_for_the_viewer()
    assert client.owner_of(NAME) is None


@pytest.mark.parametrize("text", ["", "no XML", "<node>", "<node/><node/>", "<nodes/>", "\x01\x02"])
def test_with_a_description_that_cannot_be_parsed_it_works_without_the_bus(
    start_daemon, client, text
):
    daemon = start_daemon(description=text)
    daemon.order("settle")
    assert "I load portmeld.interface.xml ok." in daemon.log()
    assert warnings(daemon) == ["W g_dbus_node_info_new_for_xml fail", *FAILED]
    assert daemon.works_for_the_viewer()
    assert client.owner_of(NAME) is None


def test_a_failed_bus_service_can_be_tried_again(start_daemon, client):
    daemon = start_daemon(description=None)
    assert daemon.order("bus-service", "1") is False
    assert warnings(daemon).count("W init_introspection_xml error.") == 2
    daemon.write_description(description())
    assert daemon.order("bus-service", "1") is True
    daemon.wait_for_name()
    assert client.call("Connect", "player", 7) == [7]
    daemon.order("bus-service", "0")


def test_a_daemon_without_bus_service_ends_in_an_orderly_way(start_daemon):
    daemon = start_daemon(description=None)
    end = daemon.quit()
    assert (end.status, end.breaches) == (0, [])
    assert end.calls[-1] == 'vconf_ignore_key_changed("db/menu_widget/language")'


# ---- a description without a usable object


@pytest.mark.parametrize(
    "text",
    [
        pytest.param(description(root=""), id="root without a name"),
        pytest.param(description(root='name=""'), id="empty name"),
        pytest.param(description(root='name="portmeld"'), id="relative name"),
        pytest.param(description(root='name="/com/norvane/"'), id="name ends with a slash"),
        pytest.param(description(root='name="/com/nor vane"'), id="name with a blank"),
        pytest.param(description(interfaces=[]), id="no interface"),
        pytest.param(with_members(METHOD, interface="portmeld"), id="interface name without a dot"),
        pytest.param(with_members(METHOD, interface=""), id="empty interface name"),
    ],
)
def test_no_object_is_served_but_the_name_is_kept(start_daemon, client, text):
    daemon = start_daemon(description=text)
    daemon.wait_for_name()
    assert "I nRegistrationId : 0" in daemon.log()
    assert warnings(daemon) == []
    assert client.owner_of(NAME) is not None
    assert is_not_served(client)
    assert daemon.works_for_the_viewer()


# ---- a description of one's own


def test_path_and_interface_are_those_of_the_description(start_daemon, client):
    text = description('name="/org/example/tv/usb"', [("org.example.Usb", METHOD + LIST)])
    daemon = start_daemon(description=text)
    daemon.wait_for_name()
    assert is_not_served(client)
    client.path = "/org/example/tv/usb"
    client.interface = "org.example.Usb"
    assert client.call("Connect", "player", 7) == [7]
    daemon.start_up()
    stick = daemon.plug()
    client.call("RequesAll", 7)
    daemon.pull(stick)
    signals = [(signal["path"], signal["interface"]) for signal in client.signals()]
    assert signals == [("/org/example/tv/usb", "org.example.Usb")] * 2


def test_only_the_first_interface_is_served(start_daemon, client):
    text = description(interfaces=[(NAME, METHOD), ("org.example.Second", METHOD)])
    start_daemon(description=text).wait_for_name()
    assert client.call("Connect", "player", 7) == [7]
    client.interface = "org.example.Second"
    assert is_not_served(client)


def test_the_object_can_be_the_root_of_the_tree(start_daemon, client):
    start_daemon(description=description('name="/"')).wait_for_name()
    client.path = "/"
    assert client.call("Connect", "player", 7) == [7]


def test_a_declared_method_that_the_daemon_does_not_know_is_answered_empty(start_daemon, client):
    text = with_members('<method name="Eject"><arg type="s" direction="in"/></method>')
    daemon = start_daemon(description=text)
    daemon.wait_for_name()
    reply = client.reply_to(client.send("Eject", "/dev/sda1", signature="(s)"))
    assert (reply["type"], reply["body"]) == ("return", [])
    log = daemon.log()
    called = log.index("I szMethodName :Eject")
    assert log[called + 1 : called + 2] == ["I unkown method call.\n"]


def test_a_known_method_that_is_not_declared_is_refused(start_daemon, client):
    start_daemon(description=description()).wait_for_name()
    with pytest.raises(Refused) as refused:
        client.call("RequesAll", 7)
    assert refused.value.name == "org.freedesktop.DBus.Error.UnknownMethod"


def test_the_arguments_of_switch_to_content_are_free(start_daemon, client):
    text = with_members('<method name="SwitchToContent"><arg type="as" direction="in"/></method>')
    daemon = start_daemon(description=text)
    daemon.wait_for_name()
    client.send("SwitchToContent", ["music", "photos"], signature="(as)")
    client.round_trip()
    assert "I szMethodName :SwitchToContent" in daemon.log()
