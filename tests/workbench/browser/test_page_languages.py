"""The screen speaks the language of the menu, from right to left where it must."""

import re

import pytest

from browser import source_folder


def catalogue_text(language, key):
    """A text of a catalogue."""
    catalogue = (source_folder() / "res" / "po" / f"{language}.po").read_text(encoding="utf-8")
    return re.search(rf'msgid "{key}"\nmsgstr "(.*)"', catalogue)[1]


def set_language(page, code):
    """Chooses a language in the settings."""
    page.click("role=tab[name='Settings']")
    page.choose("role=combobox[name='Language of the menu']", code)
    page.until(f"document.querySelector('#panel-settings select').value === '{code}'")


@pytest.mark.parametrize("language", ["de", "ja", "pt_BR"])
def test_a_popup_speaks_the_chosen_language(page, language):
    set_language(page, language)
    page.click("[data-sample=one-photo]")
    page.see(".popup-body", text=catalogue_text(language, "TV_SID_LIKE_TO_PLAY_FILE"))
    assert page.see(".popup-button.chosen") == catalogue_text(language, "SID_PLAY")
    assert page.run("document.querySelector('.popup').lang") == language.replace("_", "-")


def test_the_language_of_the_next_popup_changes_while_one_is_up(page):
    page.click("[data-sample=mixed]")
    page.see(".popup-button.chosen", text="Browse")
    set_language(page, "fr")
    page.click("[data-sample=one-photo]")
    page.see(".popup-button.chosen", text=catalogue_text("fr", "COM_COMMONCTRL_BROWSE"))


def test_all_languages_can_be_chosen(page):
    catalogues = [file.stem for file in (source_folder() / "res" / "po").glob("*.po")]
    page.click("role=tab[name='Settings']")
    offered = page.run("[...document.querySelector('#panel-settings select').options].map(o => o.value)")
    assert sorted(offered) == sorted(catalogues)


def test_arabic_is_laid_out_from_right_to_left(page):
    set_language(page, "ar")
    page.click("[data-sample=one-photo]")
    play = catalogue_text("ar", "SID_PLAY")
    page.see(".popup[dir=rtl] .popup-button.chosen", text=play)
    icon, title = page.box(".popup-source"), page.box(".popup-text")
    assert icon["x"] > title["x"]
    first, second = page.box(".popup-button >> nth=0"), page.box(".popup-button >> nth=1")
    assert first["x"] > second["x"]
    screen, popup = page.box(".tv-glass"), page.box(".popup")
    assert popup["x"] - screen["x"] < screen["width"] / 10


def test_on_a_screen_from_right_to_left_the_left_key_goes_left(page):
    set_language(page, "ar")
    page.click("[data-sample=one-photo]")
    page.see(".popup[dir=rtl]", text=catalogue_text("ar", "SID_PLAY"))
    page.press("t", "ArrowLeft")
    page.see(".popup-button.chosen", text=catalogue_text("ar", "COM_SID_CANCEL"))
    page.press("ArrowRight", "Enter")
    page.see(".launched-name", text="Photo player")


# What does not fit in a pop-up: clipped text, a word that is broken, a label or a time on two lines.
SPILLED = """(() => {
  const inside = document.querySelector(".popup").getBoundingClientRect();
  const clipped = (one) => one.scrollHeight > one.clientHeight + 1 || one.scrollWidth > one.clientWidth + 1;
  const wrong = [];
  for (const one of document.querySelectorAll(".popup-title, .popup-body, .popup-button bdi, .popup-left")) {
    const box = one.getBoundingClientRect();
    const isTall = one.matches("bdi, .popup-left") && box.height > 1.9 * parseFloat(getComputedStyle(one).fontSize);
    const isOut = box.left < inside.left || box.right > inside.right || box.bottom > inside.bottom;
    if (clipped(one) || isTall || isOut) {
      wrong.push(one.textContent);
    }
  }
  return wrong;
})()"""


def test_a_popup_has_room_for_the_texts_of_every_language(page):
    page.stop_time()
    spilled = {}
    # The longest labels and titles, and scripts of their own.
    for language in ["de", "fil", "ka", "ms", "ta"]:
        set_language(page, language)
        page.click("[data-sample=one-photo]")
        page.see(".popup-body", text=catalogue_text(language, "TV_SID_LIKE_TO_PLAY_FILE")[:12])
        page.until("[...document.querySelectorAll('.popup-icon')].every((one) => one.complete)")
        spilled[language] = page.run(SPILLED)
        page.click(".port [data-focus^=pull]")
        page.gone(".port")
    assert {language: texts for language, texts in spilled.items() if texts} == {}
