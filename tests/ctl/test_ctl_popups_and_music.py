"""portmeldctl popups and music: what it switches and stores is what another client finds."""

import pytest

HOSTILE = "a\x1b[31m\nURL     fake\u202e\x7f"
HARMLESS = r"a\u001b[31m\u000aURL     fake\u202e\u007f"


def item(client, index):
    """An item as another client reads it."""
    return client.call("GetPhotoBGMPlayListItem", index)


# ---- popups


@pytest.mark.parametrize("form", [[], ["--json"]])
def test_pop_ups_are_switched_off_and_on(daemon, ctl, form):
    ctl.answer("popups", "off", *form)
    daemon.plug()
    assert daemon.popup() is None
    ctl.answer("popups", "on", *form)
    daemon.plug()
    assert daemon.popup()["type"] == 1


def test_switching_says_nothing_but_in_json(daemon, ctl):
    assert ctl.answer("popups", "off") == ""
    assert ctl.json("popups", "off") == {"popups": False}
    assert ctl.json("popups", "on") == {"popups": True}


@pytest.mark.parametrize("word", ["On", "1", "true", ""])
def test_pop_ups_are_on_or_off_and_nothing_else(daemon, ctl, word):
    status, message = ctl.failure("popups", word)
    assert status == 2
    assert f'"{word}" is neither on nor off' in message


# ---- music


@pytest.mark.parametrize("count", [1, 2, 3])
def test_an_item_is_added_and_what_is_left_out_is_empty(daemon, ctl, client, count):
    given = ["file:///a.mp3", "Ärger über Öl", "日本"][:count]
    kept = [*given, "", ""][:3]
    assert ctl.answer("music", "add", *given) == ""
    assert item(client, 0) == kept
    added = ctl.json("music", "add", *given)
    assert added == dict(zip(("url", "title", "artist"), kept))
    assert item(client, 1) == kept


def test_items_are_got_by_their_number(daemon, ctl, client):
    for number in range(11):
        client.call("SetPhotoBGMPlayList", f"u{number}", f"t{number}", f"a{number}")
    assert ctl.answer("music", "get", "0") == "URL     u0\nTITLE   t0\nARTIST  a0\n"
    assert ctl.json("music", "get", "10") == {
        "url": "u10",
        "title": "t10",
        "artist": "a10",
        "index": 10,
    }


def test_hostile_items_stay_in_their_line(daemon, ctl, client):
    client.call("SetPhotoBGMPlayList", HOSTILE, HOSTILE, HOSTILE)
    assert ctl.answer("music", "get", "0") == "".join(
        f"{title:8}{HARMLESS}\n" for title in ("URL", "TITLE", "ARTIST")
    )
    assert ctl.json("music", "get", "0")["artist"] == HOSTILE
    assert "\x7f" not in ctl.answer("--json", "music", "get", "0")


def test_what_looks_like_an_option_is_added_behind_two_dashes(daemon, ctl, client):
    ctl.answer("music", "add", "--json", "--", "--url", "-t", "--")
    assert item(client, 0) == ["--url", "-t", "--"]


def test_the_list_is_emptied(daemon, ctl, client):
    client.call("SetPhotoBGMPlayList", "a", "b", "c")
    assert ctl.answer("music", "clear") == ""
    client.call("SetPhotoBGMPlayList", "d", "e", "f")
    assert item(client, 0) == ["d", "e", "f"]
    assert ctl.json("music", "clear") == {"music": []}
    client.call("SetPhotoBGMPlayList", "g", "h", "i")
    assert item(client, 0) == ["g", "h", "i"]


@pytest.mark.parametrize("arguments", [["-1"], ["--", "-1"], ["-2147483648"]])
def test_negative_numbers_never_reach_the_daemon(daemon, ctl, arguments):
    status, message = ctl.failure("music", "get", *arguments)
    assert status == 2
    assert f"{arguments[-1]} is before the first item" in message
    assert "end the daemon" in message
    assert not any("GetPhotoBGMPlayListItem" in line for line in daemon.log())


@pytest.mark.parametrize("word", ["", "x", "1x", "1.0", " 1", "+1", "0x1", "2147483648", "-2147483649"])
def test_what_is_no_whole_number_of_32_bits_never_reaches_the_daemon(daemon, ctl, word):
    status, message = ctl.failure("music", "get", word)
    assert status == 2
    assert f'"{word}" is no whole number of 32 bits; give 0 or more' in message
    assert not any("GetPhotoBGMPlayListItem" in line for line in daemon.log())


@pytest.mark.parametrize("place", [0, 1, 2])
def test_a_text_that_is_no_utf_8_is_refused_before_the_bus(daemon, ctl, place):
    words = [b"a", b"b", b"c"]
    words[place] = b"\xff.mp3"
    status, message = ctl.failure("music", "add", *words)
    assert status == 2
    assert '"\ufffd.mp3" is not valid UTF-8; give it in that encoding, a URL percent-encoded' in message
