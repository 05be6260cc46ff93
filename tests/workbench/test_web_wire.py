"""The bus as pages see it: calls that they make, calls that others make, signals; compared with what a
client hears that knows nothing of the page."""

import json
import shlex
import subprocess

import pytest


def call(page, client, member, *arguments, **more):
    return page.order("call", client=client, member=member, arguments=list(arguments), **more)


def test_a_call_is_made_as_the_client_of_that_number(page, bus_client):
    assert call(page, 3, "Connect", "test", 3) == {"reply": [3], "signature": "(i)"}
    clients = page.until(lambda: len(page.state["daemon"]["clients"]) == 2 and page.state["daemon"]["clients"])
    assert [(client["id"], client["name"]) for client in clients] == [(1, "client 1"), (3, "client 3")]
    bus_client.call("Connect", "other", 9)
    other = page.until(lambda: len(page.state["daemon"]["clients"]) == 3 and page.state["daemon"]["clients"][2])
    assert other == {"id": 9, "name": "", "busName": bus_client.unique_name}
    assert call(page, 3, "DisConnect", 9) == {"reply": [], "signature": "()"}
    page.until(lambda: len(page.state["daemon"]["clients"]) == 2)


@pytest.mark.parametrize(
    "member, arguments, reply",
    [
        ("Connect", ["x", 2], [2]),
        ("GetDeviceCount", [2, -1], [0]),
        ("DisConnect", [2], []),
        ("RequesAll", [2], []),
        ("SetEnablePopUP", [False], []),
        ("GetDeviceListByFsType", [2, -1], []),
        ("SetPhotoBGMPlayList", ["a", "b", "c"], []),
        ("ClearPhotoBGMPlayList", [], []),
    ],
)
def test_each_method_that_answers_can_be_called(page, member, arguments, reply):
    assert call(page, 2, member, *arguments)["reply"] == reply
    page.until(lambda: any(m["kind"] == "reply" and m["member"] == member for m in page.wire if m["n"] > 1))


@pytest.mark.parametrize(
    "member, arguments", [("GetDeviceInfo", [2, "x"]), ("LaunchPopup", ["x"]), ("SwitchToContent", [])]
)
def test_each_method_that_never_answers_is_sent_without_waiting(page, member, arguments):
    assert call(page, 2, member, *arguments) == {"sent": True}
    message = page.until(lambda: next((m for m in page.wire if m["member"] == member), None))
    assert message["args"] == arguments


def test_a_call_that_is_not_answered_in_time_says_so(page):
    result = call(page, 2, "SwitchToContent", noReply=False)
    assert result["error"].startswith("org.freedesktop.DBus.Error.")
    assert "imeout" in result["message"]


def test_the_list_of_music_is_kept_by_the_daemon(page, bus_client):
    call(page, 1, "SetPhotoBGMPlayList", "http://x", "Title", "Ä")
    assert bus_client.call("GetPhotoBGMPlayListItem", 0) == ["http://x", "Title", "Ä"]
    assert call(page, 4, "GetPhotoBGMPlayListItem", 0)["reply"] == ["http://x", "Title", "Ä"]


def test_pop_ups_can_be_switched_off_by_any_client(page, bus_client):
    bus_client.call("SetEnablePopUP", False)
    page.until(lambda: page.state["daemon"]["activated"] is False)


def test_everything_that_is_said_is_seen_with_its_arguments(page, bus_client):
    page.order("plugSample", id="one-photo")
    page.until_popup("play")
    bus_client.call("GetDeviceListByFsType", 9, 0)
    ((_, device),) = bus_client.news()
    page.until(lambda: any(m["kind"] == "reply" and m["member"] == "GetDeviceListByFsType" for m in page.wire))
    asked, told, answered = [m for m in page.wire if m["client"] == 9 and m["member"] != "GetAll"]
    assert (asked["kind"], asked["args"], asked["signature"]) == ("call", [9, 0], "ii")
    assert (told["kind"], told["member"], told["signature"]) == ("signal", "mm_device_get_list", "s")
    assert json.loads(told["args"][0]) == device
    assert told["to"] == asked["from"] == bus_client.unique_name
    assert (answered["kind"], answered["replyTo"]) == ("reply", asked["serial"])


def test_an_error_is_seen_with_its_name(page, bus_client):
    serial = bus_client.send("Connect", 5, signature="(i)")
    reply = bus_client.reply_to(serial)
    message = page.until(lambda: next((m for m in page.wire if m["kind"] == "error"), None))
    assert (message["error"], message["member"]) == (reply["error"], "Connect")


def test_a_removal_is_told_to_every_client_by_number(page):
    call(page, 5, "Connect", "x", 5)
    page.order("plugSample", id="one-photo")
    page.until_popup("play")
    page.order("pull", port=1)
    page.until(lambda: len([m for m in page.wire if m["kind"] == "signal"]) == 2)
    assert [m["client"] for m in page.wire if m["kind"] == "signal"] == [1, 5]


@pytest.mark.parametrize(
    "member, arguments, answer",
    [
        ("GetDeviceCount", [7, -1], "(1,)"),
        ("SetPhotoBGMPlayList", ["a'b \"c\"", "$HOME", "`x`"], "()"),
        ("SetEnablePopUP", [False], "()"),
    ],
)
def test_the_line_for_a_terminal_makes_the_same_call(page, bus_client, member, arguments, answer):
    page.order("plugSample", id="one-photo")
    page.until_popup("play")
    line = page.order("gdbus", client=7, member=member, arguments=arguments)["line"]
    done = subprocess.run(["sh", "-c", line], capture_output=True, text=True, timeout=20, check=False)
    assert (done.stdout.strip(), done.stderr) == (answer, "")
    message = page.until(lambda: [m for m in page.wire if m["member"] == member and m["kind"] == "call"])[-1]
    assert message["args"] == arguments
    assert shlex.split(line)[0] == "gdbus"


def test_a_wrong_index_ends_the_program_as_it_would_on_a_tv(web):
    run = web()
    page = run.page()
    page.send("call", client=1, member="GetPhotoBGMPlayListItem", arguments=[3])
    page.until_gone()
    assert run.finish(None) < 0
    assert "portmeld ended the process" in run.errors
