"""What the bus sees of each method: what it takes, what it replies, and what is refused."""

import xml.etree.ElementTree

import pytest
from client import ARGUMENTS, NAME, Refused

# Methods that are answered: arguments, types of the reply, the reply.
ANSWERED = {
    "Connect": (["player", 7], "i", [7]),
    "GetDeviceCount": ([7, -1], "i", [0]),
    "DisConnect": ([7], "", []),
    "RequesAll": ([7], "", []),
    "SetEnablePopUP": ([True], "", []),
    "GetDeviceListByFsType": ([7, 0], "", []),
    "SetPhotoBGMPlayList": (["a", "b", "c"], "", []),
    "GetPhotoBGMPlayListItem": ([0], "sss", ["a", "b", "c"]),
    "ClearPhotoBGMPlayList": ([], "", []),
}

# For each method a call whose arguments are not its own.
MISTYPED = {
    "Connect": ("(is)", [7, "player"]),
    "GetDeviceInfo": ("(s)", ["/dev/sda1"]),
    "GetDeviceCount": ("(i)", [7]),
    "DisConnect": ("(u)", [7]),
    "RequesAll": ("()", []),
    "SetEnablePopUP": ("(i)", [1]),
    "GetDeviceListByFsType": ("(is)", [7, "FAT"]),
    "LaunchPopup": ("(o)", ["/dev/sda1"]),
    "SwitchToContent": ("(s)", ["music"]),
    "SetPhotoBGMPlayList": ("(ss)", ["a", "b"]),
    "GetPhotoBGMPlayListItem": ("(x)", [0]),
    "ClearPhotoBGMPlayList": ("(b)", [True]),
}


@pytest.mark.parametrize("method", ANSWERED)
def test_an_answered_method_replies_with_its_types_and_values(daemon, client, method):
    if method == "GetPhotoBGMPlayListItem":
        client.call("SetPhotoBGMPlayList", "a", "b", "c")
    arguments, signature, values = ANSWERED[method]
    reply = client.reply_to(client.send(method, *arguments))
    assert (reply["type"], reply["signature"] or "", reply["body"]) == ("return", signature, values)
    assert reply["sender"] == client.owner_of(NAME)


@pytest.mark.parametrize("client_id", [7, 0, -1, 2**31 - 1, -(2**31)])
def test_connect_echoes_any_client_id(daemon, client, client_id):
    assert client.call("Connect", "player", client_id) == [client_id]


@pytest.mark.parametrize("name", ["", "Übersicht", "%s%n", "x" * 10_000])
def test_the_plug_in_name_of_connect_is_only_logged(daemon, client, name):
    assert client.call("Connect", name, 7) == [7]
    assert f"I szPluginName:{name},Client Id :7" in daemon.log()


def test_disconnect_of_an_unknown_id_is_answered(daemon, client):
    assert client.call("DisConnect", 4711) == []


def test_every_call_is_logged_with_its_method_and_what_it_brought(daemon, client):
    before = len(daemon.log())
    client.call("GetDeviceCount", 7, 0)
    client.call("DisConnect", 7)
    client.send("GetDeviceInfo", 8, "/dev/sda1")
    client.send("LaunchPopup", "/dev/sdb1")
    client.call("SetEnablePopUP", False)
    client.call("GetDeviceListByFsType", 7, 3)
    client.round_trip()
    log = daemon.log()[before:]
    expected = [
        "I szMethodName :GetDeviceCount",
        "I nHandleId:7",
        "I nCount:0",
        "I szMethodName :DisConnect",
        "I nHandleId:7",
        "I connetion : 7",
        "I szMethodName :GetDeviceInfo",
        "I szDeviceName:/dev/sda1,nHandleId:8",
        "I szMethodName :LaunchPopup",
        "I szDeviceName:/dev/sdb1",
        "I szMethodName :SetEnablePopUP",
        "I bEnable:0",
        "I bEnable:0",
        "I szMethodName :GetDeviceListByFsType",
        "I nHandleId:7,nFsType:3",
        "I nClient:7,nFsType:3",
    ]
    assert [line for line in log if line in expected] == expected


@pytest.mark.parametrize("method", MISTYPED)
def test_wrong_argument_types_are_refused_before_they_reach_the_daemon(daemon, client, method):
    signature, arguments = MISTYPED[method]
    with pytest.raises(Refused) as refused:
        client.call(method, *arguments, signature=signature)
    assert refused.value.name == "org.freedesktop.DBus.Error.InvalidArgs"
    assert f"I szMethodName :{method}" not in daemon.log()


def test_the_samples_above_leave_no_method_out():
    never_answered = {"GetDeviceInfo", "LaunchPopup", "SwitchToContent"}
    assert set(ANSWERED) | never_answered == set(MISTYPED) == set(ARGUMENTS)


@pytest.mark.parametrize("method", ["Disconnect", "RequestAll", "SetEnablePopUp", "connect"])
def test_a_method_that_is_not_declared_is_refused(daemon, client, method):
    with pytest.raises(Refused) as refused:
        client.call(method, signature="()")
    assert refused.value.name == "org.freedesktop.DBus.Error.UnknownMethod"
    assert f"I szMethodName :{method}" not in daemon.log()


def test_another_object_path_or_interface_is_refused(daemon, client):
    for path, interface in [
        ("/com/norvane", client.interface),
        (client.path + "/device", client.interface),
        (client.path, "com.norvane.other"),
    ]:
        where = (client.destination, path, interface)
        reply = client.reply_to(client.send_to(where, "RequesAll", 7, signature="(i)"))
        assert reply["type"] == "error"
    assert "I szMethodName :RequesAll" not in daemon.log()


def test_the_object_describes_itself(daemon, client):
    where = (client.destination, client.path, "org.freedesktop.DBus.Introspectable")
    reply = client.reply_to(client.send_to(where, "Introspect", signature="()"))
    node = xml.etree.ElementTree.fromstring(reply["body"][0])
    (interface,) = node.findall(f"interface[@name='{client.interface}']")
    methods = {
        method.get("name"): tuple(
            "".join(arg.get("type") for arg in method.findall(f"arg[@direction='{direction}']"))
            for direction in ("in", "out")
        )
        for method in interface.findall("method")
    }
    answers = {method: signature for method, (_, signature, _) in ANSWERED.items()}
    assert methods == {
        method: (signature[1:-1], answers.get(method, ""))
        for method, signature in ARGUMENTS.items()
    }
    signals = {
        signal.get("name"): [arg.get("type") for arg in signal.findall("arg")]
        for signal in interface.findall("signal")
    }
    assert signals == {"mm_device_action": ["s"], "mm_device_get_list": ["s"]}
