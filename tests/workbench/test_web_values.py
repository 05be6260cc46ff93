"""Values that do not fit: numbers, settings, texts and files that an order names are refused in words, or
made harmless; none of them is quietly taken for something else."""

import os
import struct
import zlib

import pytest

from web_process import Failed, replayed

HEAD = "portmeld-scenario 1\n"


def raw(page, text):
    """Sends the JSON text of an order with the id "raw" and returns the answer."""
    told = len(page.messages)
    page.write(text)
    return page.until(lambda: next((m for m in page.messages[told:] if m.get("id") == "raw"), None), "an answer")


def order(name, values):
    """The JSON text of an order whose values are JSON already."""
    return '{"id": "raw", "do": "%s", "with": {%s}}' % (name, values)


NO_NUMBERS = ["4294967297", "-2147483649", "1e3", "1e300", "1.5", "1.0", '"1"', "true"]


@pytest.mark.parametrize(
    "name, values",
    [
        ("hub", '"count": NUMBER'),
        ("mount", '"port": NUMBER'),
        ("press", '"button": NUMBER'),
        ("clock", '"mode": "fast", "factor": NUMBER'),
        ("skip", '"ms": NUMBER'),
        ("context", '"bits": NUMBER'),
        ("setting", '"key": "demoMode", "value": NUMBER'),
        ("setting", '"key": "any/key", "type": "int", "value": NUMBER'),
        ("call", '"client": NUMBER, "member": "ClearPhotoBGMPlayList"'),
    ],
)
def test_what_is_no_whole_number_of_32_bits_is_refused(page, name, values):
    for number in NO_NUMBERS:
        answer = raw(page, order(name, values.replace("NUMBER", number)))
        assert answer["type"] == "failed", number
        assert answer["error"].endswith("is no number that fits: whole, and of 32 bits"), number


def test_an_argument_that_does_not_fit_is_not_sent(page):
    for number in NO_NUMBERS:
        values = '"client": 1, "member": "GetDeviceCount", "arguments": [1, %s]' % number
        assert raw(page, order("call", values))["type"] == "failed", number
    assert not [m for m in page.wire if m["member"] == "GetDeviceCount"]


def test_a_number_of_too_many_digits_is_no_json(page):
    page.write(order("context", '"bits": 18446744073709551617'))
    page.until(lambda: any("too many digits" in m.get("error", "") for m in page.messages))
    assert page.order("gdbus", member="Connect", arguments=["1" * 30, 1])["line"].count("1" * 30) == 1
    assert page.state["context"]["distraction"] == 0


@pytest.mark.parametrize(
    "key, kind, value, right",
    [
        ("language", "int", 1, "string"),
        ("demoMode", "bool", True, "int"),
        ("shopMode", "string", "x", "bool"),
        ("db/menu_widget/language", "int", 1, "string"),
        ("db/floorreel/demo_mode", "string", "1", "int"),
        ("db/menu/support/use_mode", "bool", True, "int"),
    ],
)
def test_a_setting_of_another_type_than_the_tv_gives_it_is_refused(page, key, kind, value, right):
    before = page.state["settings"]
    with pytest.raises(Failed, match=f"{key} has the type {right}"):
        page.order("setting", key=key, type=kind, value=value)
    assert page.state["settings"] == before


def test_a_setting_can_be_made_by_its_key_in_the_store(page):
    page.order("setting", key="db/floorreel/demo_mode", type="int", value=3)
    page.order("setting", key="db/menu/support/use_mode", value=1)
    page.until(lambda: (page.state["settings"]["demoMode"], page.state["settings"]["shopMode"]) == (3, True))
    with pytest.raises(Failed, match="no texts in the language"):
        page.order("setting", key="db/menu_widget/language", value="xx")


@pytest.mark.parametrize(
    "line",
    ["press 4294967296", "context 99999999999999999999", "context 1e3", "expect signal x client 4294967297",
     "call 4294967297 ClearPhotoBGMPlayList", "call 1 GetDeviceCount 1 4294967295", 'hub " 3"'],
)
def test_a_scenario_with_a_number_that_does_not_fit_is_refused(tmp_path, line):
    status, lines, complaints = replayed(HEAD + line + "\n", tmp_path)
    assert (status, lines) == (2, [])
    assert "line 2: " in complaints


def test_a_key_into_a_list_is_a_number(tmp_path):
    text = HEAD + "plugSample one-film\nexpect devices.0.product ~ Film\n"
    assert replayed(text, tmp_path)[0] == 0
    status, lines, _ = replayed(text.replace("devices.0", "devices.first"), tmp_path)
    assert status == 1
    assert 'devices.first.product is "none"' in lines[1]


HALVES = [
    (r"\udc00", "\ufffd"),
    (r"\ud800", "\ufffd"),
    (r"a\udc00\ud800b", "a\ufffd\ufffdb"),
    (r"\ud800\u0041", "\ufffdA"),
    (r"\ud83d\ude00", "\U0001f600"),
    (r"\\ud800", "\\ud800"),
    (r"a\u0000b", "a\ufffdb"),
]


def test_half_a_character_reaches_nobody(page, bus_client):
    for number, (escaped, received) in enumerate(HALVES):
        values = '"client": 1, "member": "SetPhotoBGMPlayList", "arguments": ["%s", "", ""]' % escaped
        assert raw(page, order("call", values))["type"] == "done"
        assert bus_client.call("GetPhotoBGMPlayListItem", number) == [received, "", ""]


def test_half_a_character_in_a_name_or_an_id_harms_nobody(page):
    page.write(r'{"id": "\udc00", "do": "\ud800", "with": {"\udc00": 1}}')
    answer = page.until(lambda: next((m for m in page.messages if m.get("id") == "\ufffd"), None))
    assert answer["error"] == 'there is no order "\ufffd"'


# ---- pictures


def picture(size):
    """The bytes of a PNG picture of that size."""
    chunk = lambda kind, data: struct.pack("!I", len(data)) + kind + data + struct.pack("!I", zlib.crc32(kind + data))  # noqa: E731
    head = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack("!IIBBBBB", 1, 1, 8, 0, 0, 0, 0))
    return head + b"\0" * (size - len(head))


def ask(run, page, path):
    """Has a pop-up name a picture; returns the status of the request for it."""
    page.order("setting", key="dlnaIcon", value=str(path))
    page.order("setting", key="dlnaName", value="Media Server")
    page.until(lambda: (page.state["popup"] or {}).get("sourceIcon") == str(path), "the pop-up")
    return run.get(f"/icon?path={path}").status


@pytest.mark.parametrize("kind", ["pipe", "device", "folder", "nothing"])
def test_a_picture_that_is_no_file_holds_up_nobody(web, tmp_path, kind):
    path = tmp_path / "icon.png"
    if kind == "pipe":
        os.mkfifo(path)
    elif kind == "folder":
        path.mkdir()
    elif kind == "device":
        path = "/dev/zero"
    run = web()
    page = run.page()
    assert ask(run, page, path) == 404
    page.order("companion", running=True)


@pytest.mark.parametrize("size, status", [(1 << 20, 200), ((1 << 20) + 1, 404)])
def test_a_picture_may_have_a_mebibyte(web, tmp_path, size, status):
    path = tmp_path / "icon.png"
    path.write_bytes(picture(size))
    run = web()
    assert ask(run, run.page(), path) == status
