"""What can be measured of good looks: contrast, names of controls, steady places, calm, pictures."""

import pathlib
import struct

import pytest

from browser import source_folder

CONTRAST = pathlib.Path(__file__).with_name("contrast.js").read_text(encoding="utf-8")
PANELS = ["State", "Call", "Settings", "Scenarios", "Wire", "Log", "Timers"]
# What lights up is as it was again, what rises has risen. The bar of a pop-up never rests.
SETTLED = "document.getAnimations().every((one) => !one.animationName || one.playState === 'finished')"
KINDS = ["samples", "folder", "camera", "hub"]


def set_up(page):
    """Gives every panel something to show."""
    page.click("[data-sample=mixed]")
    page.see(".popup")
    page.click(".device summary")
    page.click("role=tab[name='Call']")
    page.choose("select.methods", {"label": "RequesAll"})
    page.click("role=button[name='Call']")
    page.click(".wire-row.signal")
    page.see("#panel-wire .detail .json-line >> nth=5")
    page.until(SETTLED)


def low_contrast(page):
    """Texts in view whose contrast falls short."""
    result = page.run(CONTRAST)
    assert result["count"] > 40
    return result["short"]


@pytest.mark.parametrize("scheme", ["light", "dark"])
def test_every_text_has_the_contrast_of_level_aa(open_page, scheme):
    page = open_page(colorScheme=scheme, reducedMotion="reduce")
    assert low_contrast(page) == []
    set_up(page)
    for panel in PANELS:
        page.click(f"role=tab[name='{panel}']")
        assert low_contrast(page) == [], panel
    for kind in KINDS:
        page.click(f".segments [data-value={kind}]")
        assert low_contrast(page) == [], kind
    page.click(".popup-button.chosen")
    page.see(".launched")
    assert low_contrast(page) == []
    page.press("?")
    page.see("dialog[open]")
    assert low_contrast(page) == []
    page.press("Escape", "p")
    page.see(".tv-dark")
    assert low_contrast(page) == []


def test_the_contrast_check_finds_a_pale_text(page):
    page.run("document.querySelector('.panel-title').style.color = '#bbb'")
    assert [entry[0] for entry in low_contrast(page)] == ["Remote"]


def test_light_and_dark_follow_the_system_until_a_person_chooses(open_page):
    page = open_page(colorScheme="dark")
    ground = "getComputedStyle(document.body).backgroundColor"
    dark = page.run(ground)
    page.click("role=button[name='Colours: as the system']")
    light = page.run(ground)
    assert light != dark
    page.do("reload")
    page.see("role=button[name='Colours: light']")
    assert page.run(ground) == light
    page.click("role=button[name='Colours: light']")
    assert page.run(ground) == dark


def test_every_control_has_a_name_and_every_reference_a_target(page):
    set_up(page)
    nameless = page.run(
        """[...document.querySelectorAll("button, input, select, textarea, [role=listbox]")]
           .filter((one) => !(one.hidden || one.getAttribute("aria-label") || one.innerText.trim()
             || one.labels?.length))
           .map((one) => one.outerHTML.slice(0, 120))"""
    )
    assert nameless == []
    broken = page.run(
        """[...document.querySelectorAll("[aria-labelledby], [aria-describedby], [aria-controls],"
             + "[aria-activedescendant]")]
           .flatMap((one) => ["aria-labelledby", "aria-describedby", "aria-controls",
             "aria-activedescendant"].map((name) => one.getAttribute(name)).filter(Boolean))
           .filter((id) => document.getElementById(id) === null)"""
    )
    assert broken == []
    ids = page.run("[...document.querySelectorAll('[id]')].map((one) => one.id)")
    assert len(ids) == len(set(ids))


def test_there_are_landmarks_headings_and_a_way_past_the_bar(page):
    for landmark in ("header", "main", "footer"):
        assert page.count(landmark) >= 1
    assert page.count("h1") == 1
    assert page.run("document.documentElement.lang") == "en"
    page.press("Tab")
    assert page.focused() == "To the screen"
    page.press("Enter", "Tab")
    assert page.run("document.querySelector('.bar').contains(document.activeElement)") is False


def test_a_popup_is_announced_as_a_dialog_with_title_and_body(page):
    page.click("[data-sample=mixed]")
    page.see("role=alertdialog[name='New device connected: Holiday']")
    described = page.run(
        "document.getElementById(document.querySelector('.popup').getAttribute('aria-describedby')).innerText"
    )
    assert described == "Would you like to browse the files on this device?"


def test_nothing_moves_when_content_changes(page):
    frames = "[...document.querySelectorAll('#bar > *, .panel, .tv, .foot, .dock-head > *, .pad')]" \
        ".map((one) => { const b = one.getBoundingClientRect(); return [b.x, b.y, b.width, b.height]; })"
    before = page.run(frames)
    assert len(before) > 10
    set_up(page)
    for panel in PANELS:
        page.click(f"role=tab[name='{panel}']")
        assert page.run(frames) == before, panel
    page.click(".popup-button.chosen")
    page.see(".launched")
    page.click(".segments [data-value=hub]")
    page.click("role=button[name='Plug the hub in']")
    page.until("document.querySelectorAll('.port').length === 5")
    page.press("p")
    page.see(".tv-dark")
    assert page.run(frames) == before


@pytest.mark.parametrize("width, height", [(1280, 720), (1280, 800), (1920, 1080), (2560, 1440)])
def test_the_page_fills_a_window_and_never_needs_scroll_bars(open_page, width, height):
    page = open_page(viewport={"width": width, "height": height})
    page.click("[data-sample=one-photo]")
    page.see(".popup")
    assert page.run("[document.documentElement.scrollWidth, document.documentElement.scrollHeight]") == [
        width,
        height,
    ]
    wide = page.run(
        """[...document.querySelectorAll(".panel, .tab-panel, .stream-bar, .ports-body, .plug-in,"
             + ".remote-body, .plugged, .port-actions, .dock-head, .bar, .popup-foot")]
           .filter((one) => one.checkVisibility() && one.scrollWidth > one.clientWidth)
           .map((one) => one.className)"""
    )
    assert wide == []
    pad = page.box(".pad")
    assert abs(pad["width"] - pad["height"]) < 1
    page.click("role=tab[name='Call']")
    page.choose("select.methods", {"label": "GetPhotoBGMPlayListItem"})
    line, form = page.box(".gdbus-box"), page.box(".call-form")
    assert line["height"] >= 60 and line["y"] + line["height"] <= form["y"] + form["height"] + 1
    tv, remote = page.box(".tv"), page.box(".remote")
    assert tv["y"] + tv["height"] <= remote["y"]
    ok = page.box(".pad-ok")
    assert ok["height"] >= 40 and ok["width"] >= 40
    # Legible from two metres: a body of at least a thirtieth of the screen's height.
    size = page.run("parseFloat(getComputedStyle(document.querySelector('.popup-body')).fontSize)")
    assert size >= page.box(".tv-glass")["height"] / 24


def test_a_dock_can_be_enlarged_and_comes_back(page):
    before = page.box("#dock-then")["height"]
    page.click("role=button[name='Enlarge: What happened']")
    assert page.box("#dock-then")["height"] > before + 200
    page.see("#dock-now .tabs")
    page.click("role=button[name='Enlarge: What happened']")
    assert page.box("#dock-then")["height"] == before


def test_reduced_motion_stops_what_moves(open_page):
    page = open_page(reducedMotion="reduce")
    page.click("[data-sample=mixed]")
    page.see(".popup")
    moving = page.run(
        """document.getAnimations()
           .filter((one) => !one.animationName?.startsWith("lit") || one.effect.getKeyframes().length === 0)
           .map((one) => one.animationName ?? one.transitionProperty)"""
    )
    assert moving == []
    assert page.run("getComputedStyle(document.querySelector('.popup-bar')).transitionProperty") == "none"
    steps = page.run("getComputedStyle(document.querySelector('.lit')).animationTimingFunction")
    assert steps.startswith("steps(1")


def picture(page, name):
    """Stores a picture of the page; returns its size in pixels."""
    folder = source_folder() / "build" / "results" / "screenshots"
    folder.mkdir(parents=True, exist_ok=True)
    file = folder / f"{name}.png"
    page.until(SETTLED)
    page.screenshot(file)
    head = file.read_bytes()[:24]
    assert head.startswith(b"\x89PNG")
    return struct.unpack(">II", head[16:24])


@pytest.mark.parametrize("scheme", ["light", "dark"])
def test_pictures_of_the_main_states_are_made(open_page, scheme):
    page = open_page(colorScheme=scheme)
    taken = [picture(page, f"{scheme}-idle")]
    page.click("[data-sample=one-photo]")
    page.see(".popup-button.chosen", text="Play")
    page.click("role=tab[name='Call']")
    page.choose("select.methods", {"label": "RequesAll"})
    page.click("role=button[name='Call']")
    page.click(".wire-row.signal")
    page.see("#panel-wire .detail .json-line >> nth=5")
    page.click("role=tab[name='State']")
    taken.append(picture(page, f"{scheme}-offer"))
    page.click(".popup-button.chosen")
    page.see(".launched")
    page.click("role=tab[name='Log']")
    page.click("role=tab[name='Settings']")
    taken.append(picture(page, f"{scheme}-played"))
    page.choose("role=combobox[name='Language of the menu']", "ar")
    page.press("t", "h", "4")
    page.see(".popup[dir=rtl]")
    taken.append(picture(page, f"{scheme}-arabic"))
    page.stop_time()
    page.click("role=button[name='Pull port 1']")
    page.see(".popup.notice")
    taken.append(picture(page, f"{scheme}-removal"))
    page.press("p")
    page.see(".tv-dark")
    taken.append(picture(page, f"{scheme}-off"))
    assert taken == [(1280, 800)] * 6
