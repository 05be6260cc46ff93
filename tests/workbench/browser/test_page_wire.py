"""The bus as the page shows it, and calls made from the page; what the daemon really did is asked by
a client of its own."""

import subprocess
import xml.etree.ElementTree

import client
import pytest

from browser import source_folder


def choose_method(page, member):
    """Opens the form of a method."""
    page.click("role=tab[name='Call']")
    page.choose("select.methods", {"label": member})
    page.see(".call-does", text=member)


def call(page, member, number=1, **fields):
    """Makes a call from the form; returns what the form says then."""
    choose_method(page, member)
    page.fill("role=spinbutton[name='as client']", str(number))
    for name, value in fields.items():
        page.fill(f".call-arguments label:has(.field-name:text-is('{name}')) input", str(value))
    page.click("role=button[name='Call']")
    page.until("!['', '…'].includes(document.querySelector('.call-result').innerText.trim())")
    return page.see(".call-result")


def described_methods():
    """{member: [(argument, type)]} of the interface description."""
    tree = xml.etree.ElementTree.parse(source_folder() / "res" / "portmeld.interface.xml")
    return {
        method.get("name"): [
            [argument.get("name"), argument.get("type")]
            for argument in method.iter("arg")
            if argument.get("direction") == "in"
        ]
        for method in tree.iter("method")
    }


def test_there_is_a_form_for_each_method_with_its_arguments(page):
    forms = page.run(
        """import("/methods.js").then(({ METHODS }) => METHODS.map((method) =>
             [method.member, method.takes.map(({ name, type }) => [name, type])]))"""
    )
    assert dict(forms) == described_methods()
    assert len(forms) == 12


def test_a_call_registers_the_client_that_it_is_made_as(page, bus_client):
    assert call(page, "Connect", 41) == "41"
    page.click("role=tab[name='State']")
    name = page.see(".clients tr:has(td:text-is('41')) td >> nth=2")
    assert bus_client.call_bus("NameHasOwner", name, signature="(s)") == [True]
    assert name != bus_client.unique_name


def test_a_count_is_answered_as_to_anybody_else(page, bus_client):
    page.click("[data-sample=mixed]")
    page.see(".popup")
    assert call(page, "GetDeviceCount", 5, fs_type=3) == "1"
    assert bus_client.call("GetDeviceCount", 6, 3) == [1]


def test_music_that_the_page_adds_is_there_for_others(page, bus_client):
    call(page, "SetPhotoBGMPlayList", 1, first="/m/é.mp3", second='a "b"', third="c")
    assert bus_client.call("GetPhotoBGMPlayListItem", 0) == ["/m/é.mp3", 'a "b"', "c"]
    assert '"/m/é.mp3"' in call(page, "GetPhotoBGMPlayListItem", 1, index=0)
    assert call(page, "ClearPhotoBGMPlayList") == "Answered, without a value."


def test_popups_are_held_back_and_shown_again(page):
    choose_method(page, "SetEnablePopUP")
    page.do("uncheck", selector="role=checkbox[name='enable']")
    page.click("role=button[name='Call']")
    page.click("role=tab[name='State']")
    page.see(".tile:has-text('Pop-ups')", text="held back")


@pytest.mark.parametrize("member", ["GetDeviceInfo", "LaunchPopup", "SwitchToContent"])
def test_a_method_that_never_answers_is_called_without_waiting(page, member):
    assert call(page, member) == "Sent."
    page.see(f".wire-row.call:has-text('{member}')")


@pytest.mark.parametrize("member", ["RequesAll", "GetDeviceListByFsType", "DisConnect"])
def test_a_method_without_a_value_says_that_it_was_answered(page, member):
    assert call(page, member, 9) == "Answered, without a value."


def test_the_gdbus_line_does_the_same_from_a_terminal(page):
    page.click("[data-sample=one-photo]")
    page.see(".popup")
    choose_method(page, "GetDeviceCount")
    page.fill("role=spinbutton[name='as client']", "63")
    page.until("document.querySelector('.gdbus').innerText.includes('63')")
    done = subprocess.run(
        page.see(".gdbus"), shell=True, capture_output=True, text=True, timeout=30, check=False
    )
    assert (done.returncode, done.stdout.strip()) == (0, "(1,)"), done.stderr


WRONG_NUMBERS = {
    "fs_type": ["1e3", "1.5", "", "2147483648", "-2147483649"],
    "as client": ["1000", "-1", "1e1", ""],
}


def test_a_number_that_is_none_for_the_bus_is_told_and_not_sent(watched):
    page = watched
    choose_method(page, "GetDeviceCount")
    page.until("document.querySelector('.gdbus').innerText.includes('GetDeviceCount')")
    page.run("window.orders = []")
    for field, texts in WRONG_NUMBERS.items():
        wrong = f".call-arguments label:has(.field-name:text-is('{field}')) input"
        for text in texts:
            page.fill(wrong, text)
            page.click("role=button[name='Call']")
            notice = page.see(".call-form .notice", text=f"{field}: a whole number from")
            focused = "document.activeElement.getAttribute('{}')"
            assert page.run(focused.format("aria-invalid")) == "true", text
            told = page.run(f"document.getElementById({focused.format('aria-describedby')}).innerText")
            assert told == notice and page.see(".gdbus") == notice
            assert page.run("window.orders") == [], text
        page.fill(wrong, "3")
        assert page.count("[aria-invalid=true]") == 0
        page.run("window.orders = []")
    page.click("role=button[name='Call']")
    page.see(".call-result", text="0")
    [(_, called)] = page.run("window.orders.filter(([name]) => name === 'call')")
    assert called == {"client": 3, "member": "GetDeviceCount", "arguments": [3, 3]}


def test_the_ends_of_the_range_are_sent(watched):
    for number in (2**31 - 1, -(2**31)):
        assert call(watched, "GetDeviceCount", 5, fs_type=number) == "0"
    called = watched.run("window.orders.filter(([name]) => name === 'call').map(([, values]) => values.arguments)")
    assert called == [[5, 2**31 - 1], [5, -(2**31)]]


def test_the_gdbus_line_is_copied(open_page):
    page = open_page(permissions=["clipboard-read", "clipboard-write"])
    choose_method(page, "GetDeviceCount")
    page.until("document.querySelector('.gdbus').innerText.includes('GetDeviceCount')")
    page.click("role=button[name='Copy the gdbus line']")
    page.see(".call-result", text="Copied.")
    assert page.run("navigator.clipboard.readText()") == page.see(".gdbus")


def test_a_line_that_may_not_be_copied_is_selected(page):
    choose_method(page, "GetDeviceCount")
    page.until("document.querySelector('.gdbus').innerText.includes('GetDeviceCount')")
    page.run("navigator.clipboard.writeText = () => Promise.reject(new Error('no'))")
    page.click("role=button[name='Copy the gdbus line']")
    page.see(".call-result", text="Ctrl+C")
    assert page.run("getSelection().toString()") == page.see(".gdbus")


def test_every_call_reply_and_signal_of_another_client_is_shown(page, bus_client):
    page.click("[data-sample=mixed]")
    page.see(".popup")
    bus_client.call("RequesAll", 88)
    rows = [
        page.see(f".wire-row.{kind}:has-text('client 88')") for kind in ("call", "signal", "reply")
    ]
    assert ["RequesAll" in rows[0], "mm_device_action" in rows[1], "RequesAll" in rows[2]] == [
        True,
        True,
        True,
    ]
    assert "there · /dev/sda1 · Holiday" in rows[1]


def test_a_refused_call_is_an_error_on_the_wire(page, bus_client):
    with pytest.raises(client.Refused):
        bus_client.call("Connect", 3, signature="(i)")
    page.click(".wire-row.error")
    page.see("#panel-wire .detail", text="org.freedesktop.DBus.Error.InvalidArgs")


def test_the_device_of_a_signal_is_json_that_folds(page, bus_client):
    page.click("[data-sample=mixed]")
    page.see(".popup")
    bus_client.call("RequesAll", 88)
    page.click(".wire-row.signal")
    detail = "#panel-wire .detail"
    page.see(f"{detail} .json-line", text='Product: "Holiday"')
    page.click(f"{detail} summary")
    page.gone(f"{detail} .json-line:has-text('Product')")


def test_kinds_of_messages_can_be_left_out_and_searched(page, bus_client):
    bus_client.call("GetDeviceCount", 88, 0)
    page.see(".wire-row.reply:has-text('GetDeviceCount')")
    page.click("#panel-wire .chip:has-text('reply')")
    page.gone(".wire-row.reply:has-text('GetDeviceCount')")
    page.fill("#panel-wire input[type=search]", "getdevicecount")
    page.until("document.querySelectorAll('.wire-row').length === 1")
    page.see(".wire-row.call:has-text('GetDeviceCount')")
