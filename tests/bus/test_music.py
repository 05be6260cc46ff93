"""The list of background music for the photo player, kept for the clients."""

import signal

import pytest
from client import NAME, Refused

ITEMS = [
    ("/media/a.mp3", "Title", "Artist"),
    ("", "", ""),
    ("", "only the second", ""),
    ("/media/Ärger über Öl.mp3", "日本語", "\u202eמוזיקה \U0001f3b5"),
    ("%s%n%x", '"quoted" \\ \n\t', "\x01\x1f\x7f"),
    ("x" * 100_000, "y" * 100_000, "z" * 100_000),
]


def read(client, index):
    """One item, as a tuple."""
    return tuple(client.call("GetPhotoBGMPlayListItem", index))


def test_items_are_kept_as_they_are_and_read_back_in_their_order(daemon, client):
    for item in ITEMS:
        client.call("SetPhotoBGMPlayList", *item)
    assert [read(client, index) for index in range(len(ITEMS))] == ITEMS
    assert [read(client, index) for index in reversed(range(len(ITEMS)))] == ITEMS[::-1]


def test_equal_items_are_separate_entries(daemon, client):
    for _ in range(3):
        client.call("SetPhotoBGMPlayList", "a", "b", "c")
    assert [read(client, index) for index in range(3)] == [("a", "b", "c")] * 3


def test_the_list_is_shared_by_all_clients(daemon, client, other):
    client.call("SetPhotoBGMPlayList", "a", "b", "c")
    other.call("SetPhotoBGMPlayList", "d", "e", "f")
    assert read(other, 0) == ("a", "b", "c")
    assert read(client, 1) == ("d", "e", "f")


def test_after_clearing_the_list_begins_anew(daemon, client):
    client.call("SetPhotoBGMPlayList", "a", "b", "c")
    client.call("ClearPhotoBGMPlayList")
    client.call("SetPhotoBGMPlayList", "d", "e", "f")
    assert read(client, 0) == ("d", "e", "f")


def test_clearing_an_empty_list_is_answered(daemon, client):
    assert client.call("ClearPhotoBGMPlayList") == []
    assert client.call("ClearPhotoBGMPlayList") == []


def test_a_thousand_items_find_room(daemon, client):
    for number in range(1000):
        client.send("SetPhotoBGMPlayList", str(number), "", "")
    assert [read(client, number)[0] for number in (0, 500, 999)] == ["0", "500", "999"]


def test_the_list_outlives_the_client_that_filled_it(daemon, client, other):
    client.call("SetPhotoBGMPlayList", "a", "b", "c")
    client.leave()
    assert read(other, 0) == ("a", "b", "c")


@pytest.mark.parametrize(
    "stored, cleared, index",
    [
        pytest.param(0, False, 0, id="the first of an empty list"),
        pytest.param(3, False, 3, id="one beyond the last"),
        pytest.param(3, False, 2**31 - 1, id="far beyond the last"),
        pytest.param(3, False, -1, id="before the first"),
        pytest.param(3, False, -(2**31), id="far before the first"),
        pytest.param(3, True, 0, id="the first of a cleared list"),
    ],
)
def test_an_index_out_of_range_ends_the_daemon_without_a_reply(
    daemon, client, other, stored, cleared, index
):
    for _ in range(stored):
        client.call("SetPhotoBGMPlayList", "a", "b", "c")
    if cleared:
        client.call("ClearPhotoBGMPlayList")
    owner = other.owner_of(NAME)
    other.call_bus("AddMatch", "type='signal',member='NameOwnerChanged'", signature="(s)")

    with pytest.raises(Refused) as refused:
        client.call("GetPhotoBGMPlayListItem", index)

    # The bus's own word for a peer that went away; nothing came from the daemon.
    assert refused.value.name == "org.freedesktop.DBus.Error.NoReply"
    assert refused.value.sender == "org.freedesktop.DBus"
    assert daemon.see_end() == -signal.SIGABRT
    assert other.wait_for_owner_change(NAME) == (owner, "")
    size = 0 if cleared else stored
    # The place is counted without a sign, in as many bits as the machine has.
    said = [
        f"vector::_M_range_check: __n (which is {place}) >= this->size() (which is {size})"
        for place in (index % 2**32, index % 2**64)
    ]
    log = "\n".join(daemon.error_lines())
    assert said[0] in log or said[1] in log
