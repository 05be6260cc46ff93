"""Scenarios on the page: recorded, saved, loaded ready-made, replayed with their verdict."""

import json

import pytest

from browser import source_folder

TEXT = "role=textbox[name='Scenario']"


@pytest.fixture
def scenarios(page):
    """A page that shows its scenarios."""
    page.click("role=tab[name='Scenarios']")
    return page


def replay(page, text):
    """Replays a text; returns the verdict."""
    page.fill(TEXT, text)
    page.click("role=button[name='Replay']")
    page.until("document.querySelector('.verdict span') !== null")
    return page.see(".verdict")


def test_what_is_done_is_recorded_and_saved_as_a_text_file(scenarios):
    page = scenarios
    page.fill("role=textbox[name='Title']", "A photo, played")
    page.click("role=button[name='Record']")
    page.see(".record-note", text="0 steps")
    page.click("[data-sample=one-photo]")
    page.see(".popup-button.chosen", text="Play")
    page.click(".popup-button.chosen")
    page.see(".launched")
    page.click(".scenario-bar >> role=button[name='Stop']")
    page.until("document.querySelector('.scenarios textarea').value !== ''")
    saved = page.do("saved", selector="role=button[name='Save']")
    assert saved["name"] == "a-photo-played.scenario"
    lines = saved["text"].splitlines()
    assert lines[0] == "portmeld-scenario 1"
    assert "plugSample one-photo" in lines and "press 0" in lines
    assert any(line.startswith("expect launch org.norvane.picreel") for line in lines)


def use_up(page):
    """Leaves a television behind as somebody who has tried everything does."""
    page.click("role=tab[name='Settings']")
    page.click(".switch:has-text('Shop mode')")
    page.click(".switch:has-text('Distraction-free, bit 7')")
    page.click(".switch:has-text('Launching fails')")
    page.click(".switch:has-text('Companion application runs')")
    page.click(".switch:has-text('Notification server refuses')")
    page.choose("role=combobox[name='Language of the menu']", "de")
    page.click("[data-sample=mixed]")
    page.click("[data-sample=one-photo]")
    page.until("document.querySelectorAll('.port').length === 2")
    page.press("p")
    page.see(".tv-dark")
    page.click("role=tab[name='Scenarios']")


def test_every_ready_made_scenario_holds_on_a_used_television(scenarios):
    page = scenarios
    use_up(page)
    shipped = {file.stem for file in (source_folder() / "workbench" / "scenarios").glob("*.scenario")}
    select = "role=combobox[name='Ready-made scenario']"
    offered = page.run(
        "[...document.querySelectorAll('.scenario-bar select option')].map((o) => o.value).filter(Boolean)"
    )
    assert len(shipped) == 6 and set(offered) == shipped
    for name in offered:
        page.choose(select, name)
        lines = page.do("inputValue", selector=TEXT).splitlines()
        assert lines[0] == "portmeld-scenario 1"
        page.click("role=button[name='Replay']")
        last = max(number for number, line in enumerate(lines, 1) if line and not line.startswith("#"))
        page.see(f".replay [data-line='{last}']:has-text({json.dumps(lines[last - 1])})")
        page.see(".verdict .good, .verdict .bad")
        assert page.see(".verdict") == "Everything held.", (name, page.see(".replay"))
        steps = [line for line in lines[1:] if line and not line.startswith("#")]
        assert page.count(".replay .ok") == len(steps)
    page.see("[data-value=real][aria-pressed=true]")


def test_tidying_up_leaves_a_fresh_television_alone(scenarios):
    orders = "import('/afresh.js').then(({{ ordersAfresh }}) => ordersAfresh({}))"
    fresh = """{ power: "on", context: { distraction: 0, companionRunning: false, faults: {} }, ports: [],
      settings: { shopMode: false, demoMode: 0, language: "en" }, launched: null, popup: null,
      daemon: { activated: true } }"""
    assert scenarios.run(orders.format(fresh)) == []
    started = scenarios.run("import('/afresh.js').then(({ FIRST_SETTINGS }) => FIRST_SETTINGS)")
    scenarios.click("role=tab[name='Settings']")
    shown = "document.querySelector('#panel-settings {}').{}"
    assert scenarios.run(shown.format("select", "value")) == started["language"]
    assert scenarios.run(shown.format(".switch:nth-of-type(2) input", "checked")) is started["shopMode"]


def test_what_needs_a_television_just_started_is_told_with_the_failure(scenarios):
    page = scenarios
    page.click("[data-sample=one-photo]")
    page.see(".port")
    verdict = replay(
        page, "portmeld-scenario 1\nplugSample mixed\nexpect device /dev/sda1\n" + 30 * "key up\n"
    )
    assert verdict == "Something did not hold."
    assert "--headless starts one" in page.see(".replay .none")
    box, wrong = page.box(".replay"), page.box(".replay .bad >> nth=0")
    assert box["y"] <= wrong["y"] <= box["y"] + box["height"] / 2


def test_a_replay_can_be_watched_at_the_clocks_pace_and_stopped(scenarios):
    page = scenarios
    page.do("uncheck", selector="role=checkbox[name='no waiting']")
    page.fill(TEXT, "portmeld-scenario 1\nplugSample one-film\nexpect popup play\nafter 3000\npress 0\n")
    page.click("role=button[name='Replay']")
    page.see(".replay .ok", text="expect popup play")
    page.click(".scenario-bar:has(select) >> role=button[name='Stop']")
    page.see(".scenario-bar >> role=button[name='Replay']")
    assert page.see(".popup-button.chosen") == "Play"
    page.click("role=button[name='Next timer']")
    page.gone(".popup")
    assert page.count(".launched") == 0
    assert page.count(".replay [data-line='5']") == 0
    page.see("[data-value=real][aria-pressed=true]")


def test_a_scenario_file_is_loaded_and_replayed(scenarios, tmp_path):
    page = scenarios
    text = "portmeld-scenario 1\nplugSample mixed\nexpect popup browse title ~ Holiday\n"
    file = tmp_path / "a bug – 100 %.scenario"
    file.write_text(text)
    page.do("setInputFiles", str(file), selector="input[type=file]")
    page.until(f"document.querySelector('.scenarios textarea').value === {json.dumps(text)}")
    page.click("role=button[name='Replay']")
    page.see(".verdict .good")
    page.see(".popup-title", text="Holiday")
    # The same file, changed, is read again.
    file.write_text(text + "hide\n")
    page.do("setInputFiles", str(file), selector="input[type=file]")
    page.until("document.querySelector('.scenarios textarea').value.endsWith('hide\\n')")


def test_an_expectation_that_does_not_hold_is_marked_with_its_reason(scenarios):
    verdict = replay(
        scenarios, "portmeld-scenario 1\nplugSample mixed\nexpect popup browse\nexpect popup removal\n"
    )
    assert verdict != "Everything held."
    assert scenarios.see(".replay .bad", text="expect popup removal")
    assert scenarios.count(".replay .ok") >= 2


def test_a_text_that_cannot_be_read_names_its_line(scenarios):
    assert "line 3" in replay(scenarios, "portmeld-scenario 1\nplugSample mixed\nfrobnicate\n")


# Counts frames, reads of measures that have the page laid out, and rounds of changes on the screen.
COUNT = """
window.frames_ = window.measured = window.drawn = 0;
for (const [owner, name] of [[HTMLElement.prototype, "offsetWidth"], [Element.prototype, "scrollHeight"]]) {
  const { get } = Object.getOwnPropertyDescriptor(owner, name);
  Object.defineProperty(owner, name, { get() { window.measured += 1; return get.call(this); } });
}
(function next() { window.frames_ += 1; requestAnimationFrame(next); })();
new MutationObserver(() => { window.drawn += 1; })
  .observe(document.querySelector(".plugged"), { childList: true });
"""


def test_a_long_replay_is_drawn_once_in_a_frame_and_can_be_stopped(scenarios):
    page = scenarios
    cycles = "".join(
        f"plugSample mixed\nexpect popup browse\npull {port}\nkey up\n" for port in range(1, 31)
    )
    page.run(f"(() => {{ {COUNT} }})()")
    assert replay(page, f"portmeld-scenario 1\n{cycles}") == "Everything held.", page.do("allInnerTexts", selector=".replay .bad")
    assert page.count(".replay .ok") == 120
    frames, measured, drawn = page.run("[window.frames_, window.measured, window.drawn]")
    assert drawn > 0 and measured > 0
    assert max(measured, drawn) <= frames
    page.do("uncheck", selector=".check:has-text('no waiting') input")
    page.fill(TEXT, f"portmeld-scenario 1\nplugSample empty\nafter 3600\n{cycles}")
    page.click("role=button[name='Replay']")
    page.see(".verdict", text="Line 3 of")
    page.click(".scenario-bar >> role=button[name='Stop']")
    page.see(".verdict", text="it was stopped")


def test_a_replay_of_another_page_begins_with_an_empty_list(scenarios, open_page):
    other = open_page()
    other.click("role=tab[name='Scenarios']")
    assert replay(scenarios, "portmeld-scenario 1\nkey up\nkey up\nkey up\n") == "Everything held."
    other.see(".verdict .good")
    assert other.count(".replay li") == 3
    assert replay(other, "portmeld-scenario 1\nkey down\n") == "Everything held."
    scenarios.see(".replay .ok", text="key down")
    assert scenarios.count(".replay li") == 1
