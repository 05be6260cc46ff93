"""Scenarios on the page: recorded, saved, loaded ready-made, replayed with their verdict."""

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


@pytest.mark.parametrize("name", ["stick-with-one-film", "removal"])
def test_a_ready_made_scenario_holds_when_it_is_replayed(scenarios, name):
    page = scenarios
    page.click("role=button[name='30×']")
    page.choose("role=combobox[name='Ready-made scenario']", name)
    page.click("role=button[name='Replay']")
    page.until("document.querySelector('.verdict span') !== null")
    assert page.see(".verdict") == "Everything held."
    assert page.count(".replay .ok") > 2 and page.count(".replay .bad") == 0


def test_an_expectation_that_does_not_hold_is_marked_with_its_reason(scenarios):
    verdict = replay(
        scenarios, "portmeld-scenario 1\nplugSample mixed\nexpect popup browse\nexpect popup removal\n"
    )
    assert verdict != "Everything held."
    assert scenarios.see(".replay .bad", text="expect popup removal")
    assert scenarios.count(".replay .ok") >= 2


def test_a_text_that_cannot_be_read_names_its_line(scenarios):
    assert "line 3" in replay(scenarios, "portmeld-scenario 1\nplugSample mixed\nfrobnicate\n")


def test_every_ready_made_scenario_can_be_chosen(scenarios):
    shipped = {file.stem for file in (source_folder() / "workbench" / "scenarios").glob("*.scenario")}
    select = "role=combobox[name='Ready-made scenario']"
    offered = scenarios.run(
        "[...document.querySelectorAll('.scenario-bar select option')].map((o) => o.value).filter(Boolean)"
    )
    assert shipped and set(offered) == shipped
    for name in offered:
        scenarios.choose(select, name)
        assert scenarios.do("inputValue", selector=TEXT).startswith("portmeld-scenario 1")
