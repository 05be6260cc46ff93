"""Settings of the television and services that fail on demand, by the switches and forms of the page."""

import pytest

SWITCH = ".switch:has-text('{}') input"
FORM = ".any-key"


@pytest.fixture
def settings(watched):
    """A page that shows its settings and keeps what it sends."""
    watched.click("role=tab[name='Settings']")
    return watched


def is_on(page, name):
    """Whether a switch is on."""
    return page.do("isChecked", selector=SWITCH.format(name))


def write(page, key, kind, value):
    """Writes any key."""
    page.fill(f"{FORM} label:has-text('Key') input", key)
    page.choose(f"{FORM} select", kind)
    page.fill(f"{FORM} label:has-text('Value') input", value)
    page.click(f"{FORM} button")


def written(page):
    """The settings that were sent."""
    return page.run("window.orders.filter(([name]) => name === 'setting').map(([, values]) => values)")


def test_any_key_is_written_with_its_type(settings):
    page = settings
    write(page, "db/menu/support/use_mode", "int", " 1 ")
    page.until("document.querySelectorAll('#panel-settings .switch input')[0].checked")
    write(page, "db/floorreel/demo_mode", "int", " -1 ")
    page.until("!document.querySelectorAll('#panel-settings .switch input')[1].checked")
    write(page, "db/menu_widget/language", "string", "de")
    page.until("document.querySelector('#panel-settings select').value === 'de'")
    write(page, "db/somebody/else", "bool", " Yes ")
    page.until("window.orders.filter(([name]) => name === 'setting').length === 4")
    assert [one["value"] for one in written(page)] == [1, -1, "de", True]
    assert page.count(".notice:not(:empty)") == 0


WRONG = [
    ("a/b", "int", "1e3", "Value: a whole number"),
    ("a/b", "int", "", "Value: a whole number"),
    ("a/b", "int", "0x10", "Value: a whole number"),
    ("a/b", "int", "1.0", "Value: a whole number"),
    ("a/b", "int", "2147483648", "Value: a whole number from -2147483648 to 2147483647"),
    ("a/b", "bool", "perhaps", "Value: true or false"),
    ("a/b", "bool", "", "Value: true or false"),
    (" ", "string", "text", "Key: which one?"),
]


def test_a_value_that_does_not_fit_is_told_and_not_written(settings):
    page = settings
    for key, kind, value, told in WRONG:
        write(page, key, kind, value)
        page.see(f"{FORM} .notice", text=told)
        assert page.run("document.activeElement.getAttribute('aria-invalid')") == "true", value
        page.fill(f"{FORM} label:has-text('Value') input", "7")
        page.gone(f"{FORM} .notice:not(:empty)")
    assert written(page) == []


def test_what_the_program_refuses_is_told_at_the_foot(settings):
    write(settings, "db/menu_widget/language", "string", "xx")
    settings.see(".message .bad", text="xx")


def test_a_launch_that_fails_leaves_the_programme_on_the_screen(settings):
    page = settings
    page.click(SWITCH.format("Launching fails"))
    page.click("[data-sample=one-photo]")
    page.see(".popup-button.chosen", text="Play")
    page.press("Enter")
    page.gone(".popup")
    page.click("role=tab[name='Log']")
    page.fill("#panel-log input[type=search]", "launch")
    page.see(".log-row >> nth=0")
    assert page.count(".launched") == 0
    page.click(SWITCH.format("Launching fails"))
    page.click("role=button[name='Pull port 1']")
    page.see(".popup.notice")
    page.click("[data-sample=one-film]")
    page.see(".popup-body", text="bouncing-ball")
    page.press("Enter")
    page.see(".launched-name")
    assert not is_on(page, "Launching fails")


def test_a_scan_that_says_nothing_leaves_the_offer_to_browse(settings):
    page = settings
    page.click(SWITCH.format("Content scan says nothing"))
    page.click("[data-sample=one-photo]")
    page.see(".popup-button.chosen", text="Browse")
    page.see(".port", text="busy")
    page.click(SWITCH.format("Content scan says nothing"))
    page.see(".popup-button.chosen", text="Play")
    page.see(".popup-body", text="chelsea.jpg")


def test_a_notification_server_that_refuses_shows_no_popup(settings):
    page = settings
    page.click(SWITCH.format("Notification server refuses"))
    page.click("[data-sample=one-photo]")
    page.click("role=tab[name='State']")
    page.see(".device summary", text="Photo Stick")
    assert page.count(".popup") == 0


def test_enter_writes_any_key(settings):
    settings.fill(f"{FORM} label:has-text('Key') input", "db/somebody/else")
    settings.fill(f"{FORM} label:has-text('Value') input", "7")
    settings.press("Enter")
    settings.until("window.orders.some(([name]) => name === 'setting')")
    assert [one["value"] for one in written(settings)] == ["7"]
