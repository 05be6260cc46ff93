"""Texts of a device are shown as text, whatever they hold, and turn nothing around beside them."""

import pytest

MARKUP = '<img src="/x" onerror="window.hit = 1"><script>window.hit = 1</script>&amp;'


def plug(page, folder, title):
    """Plugs a folder in under a title."""
    page.click(".segments [data-value=folder]")
    page.fill(".plug-form input[required]:visible", str(folder))
    page.fill("role=textbox[name='Product name'] >> visible=true", title)
    page.click("role=button[name='Plug in']")
    page.see(".popup-button.chosen", text="Play")


def test_markup_in_a_name_is_shown_letter_by_letter(page, stick, bus_client):
    plug(page, stick("S"), MARKUP)
    assert MARKUP in page.see(".popup-title")
    assert page.see(".port strong") == MARKUP
    bus_client.call("RequesAll", 9)
    page.see(".wire-row.signal .row-text", text=MARKUP)
    page.click(".wire-row.signal")
    page.see("#panel-wire .detail .json-line >> nth=10")
    page.click("role=tab[name='Log']")
    page.fill("#panel-log input[type=search]", "onerror")
    page.see(".log-row >> nth=0", text="onerror")
    assert page.run("window.hit") is None
    assert page.count("main img:not(.popup-source, .popup-icon)") == 0


def test_markup_in_a_file_name_is_shown_by_the_player(page, stick):
    name = "<b>bold<b> & \"quoted\".jpg"
    plug(page, stick("S", name), "Stick")
    page.click(".pad-ok")
    assert page.see(".track-name") == name


def test_marks_of_direction_turn_nothing_else_around(page, stick):
    plug(page, stick("S", "photo\u202egpj.exe.jpg"), "Evil\u202ekcits")
    where = page.run(
        """(() => {
          const style = getComputedStyle(document.querySelector(".popup-title bdi"));
          return [style.unicodeBidi, document.querySelector(".port strong").innerText];
        })()"""
    )
    assert where == ["isolate", "Evil⟨202E⟩kcits"]


@pytest.mark.parametrize("sign", ["\u200b", "\u2066", "\u061c"])
def test_invisible_signs_are_written_out_for_developers(page, stick, sign):
    plug(page, stick("S"), f"a{sign}b")
    assert page.see(".port strong") == f"a⟨{ord(sign):04X}⟩b"
    assert page.see(".device summary strong") == f"a⟨{ord(sign):04X}⟩b"


def test_a_very_long_name_leaves_the_buttons_on_the_screen(page, stick):
    plug(page, stick("S", "x" * 180 + ".jpg"), "W" * 600)
    screen, button = page.box(".tv-glass"), page.box(".popup-button >> nth=1")
    popup = page.box(".popup")
    assert popup["y"] >= screen["y"]
    assert button["y"] + button["height"] <= screen["y"] + screen["height"]
    assert page.run("document.documentElement.scrollWidth") <= 1280


def test_the_reference_in_an_equal_name_is_resolved_on_the_screen(page):
    page.click("[data-sample=equal-products]")
    page.until("document.querySelectorAll('.device').length === 2")
    # The card's title is the name as it is seen, its fields are what the daemon has.
    texts = "[...document.querySelectorAll('.device {}')].map((one) => one.textContent)"
    assert any(name.endswith("(2\u202d)") for name in page.run(texts.format("summary strong")))
    assert any(name.endswith("(2&#x202d;)") for name in page.run(texts.format("dd")))
    page.stop_time()
    page.press("t", "Escape")
    page.click("role=button[name='Pull port 2']")
    page.see(".popup.notice")
    assert "&#x202d;" not in page.see(".popup-title")
