"""Everything can be done without a mouse, and who looks always sees where he is."""

import pytest


def test_a_stick_is_plugged_played_and_left_by_keys_alone(page):
    page.press("1")
    page.see(".popup-button.chosen", text="Play")
    page.press("Enter")
    page.see(".launched-name", text="Photo player")
    page.press("h")
    page.gone(".launched")


def test_arrows_choose_and_enter_presses_what_is_chosen(page):
    page.press("4")
    page.see(".popup-button.chosen", text="Browse")
    page.press("ArrowRight")
    page.see(".popup-button.chosen", text="Cancel")
    page.press("ArrowLeft")
    page.see(".popup-button.chosen", text="Browse")
    page.press("ArrowRight", "Enter")
    page.gone(".popup")
    assert page.count(".launched") == 0


@pytest.mark.parametrize("key", ["Escape", "Backspace"])
def test_back_hides_the_popup(page, key):
    page.press("4")
    page.see(".popup")
    page.press(key)
    page.gone(".popup")


def test_power_goes_off_and_on_by_its_key(page):
    page.press("p")
    page.see(".tv-dark", text="Switched off")
    page.press("P")
    page.gone(".tv-dark")


def test_the_remote_on_the_page_does_what_the_keys_do(page):
    page.press("4")
    page.see(".popup-button.chosen", text="Browse")
    page.click("role=button[name='Right']")
    page.see(".popup-button.chosen", text="Cancel")
    page.click("role=button[name='Left']")
    page.see(".popup-button.chosen", text="Browse")
    page.click("role=button[name='OK']")
    page.see(".launched-name", text="Content browser")
    page.click("role=button[name='Back']")
    page.gone(".launched")


def test_a_steering_key_on_another_button_means_the_screen(page):
    page.do("focus", selector="[data-sample=one-photo]")
    page.press("Enter")
    page.see(".popup-button.chosen", text="Play")
    page.press("ArrowRight", "ArrowLeft", "Enter")
    page.see(".launched-name", text="Photo player")
    assert page.count(".port") == 1


def test_keys_that_are_typed_into_a_field_do_nothing_else(page):
    page.click("#panel-wire input[type=search]")
    page.press("1", "h", "p", "n", "t", "/", "?")
    assert page.run("document.activeElement.value") == "1hpnt/?"
    assert page.see(".plugged") == "All ports are free."
    assert page.count("dialog[open]") == 0
    page.gone(".tv-dark")


def test_a_switch_is_no_field_so_the_keys_work_from_it(page):
    page.click("role=tab[name='Settings']")
    page.do("focus", selector=".switch:has-text('Shop mode') input")
    page.press("4")
    page.see(".popup-button.chosen", text="Browse")
    page.press("Enter")
    page.see(".launched-name", text="Content browser")


def test_tabs_are_walked_by_arrows_home_and_end(page):
    page.do("focus", selector="role=tab[name='State']")
    page.press("ArrowRight", "ArrowRight")
    assert page.focused() == "Settings"
    page.see("#panel-settings")
    page.press("End")
    assert page.focused() == "Scenarios"
    page.press("ArrowRight")
    assert page.focused() == "State"
    page.press("Home", "ArrowLeft")
    assert page.focused() == "Scenarios"
    page.see("#panel-scenarios")
    page.gone("#panel-state")


def test_a_folder_is_plugged_by_keys_alone(page, stick):
    folder = stick("Photos of the cat")
    page.do("focus", selector=".segments [data-value=folder]")
    page.press("Enter")
    page.see(".folder", text="..")
    page.do("focus", selector=".plug-form input[required]:visible")
    page.press("Control+a")
    page.do("keyboard.type", str(folder))
    page.press("Enter")
    assert page.see(".popup-title") == "New device connected: Photos of the cat"


def test_slash_goes_to_the_search_of_the_log(page):
    page.press("/")
    assert page.focused() == "Search: Log of the daemon"


def test_the_keys_are_told_on_a_card_that_escape_closes(page):
    page.press("?")
    page.see("dialog[open]", text="plug the first, second")
    page.press("Escape")
    page.gone("dialog[open]")


def test_the_focus_stays_on_the_page_when_its_button_goes(page):
    page.press("4")
    page.do("focus", selector=".popup-button:has-text('Cancel')")
    page.press("Enter")
    page.gone(".popup")
    assert page.focused() == "Screen of the television"
    page.do("focus", selector="role=button[name='Pull port 1']")
    page.press("Enter")
    page.see(".plugged", text="All ports are free.")
    assert page.focused() == "Screen of the television"


def test_tab_reaches_every_control_in_view_and_each_shows_its_focus(page):
    page.press("4")
    page.see(".popup")
    page.run(
        """(() => {
          window.reached = new Set();
          window.unmarked = [];
          document.addEventListener("focusin", ({ target }) => {
            window.reached.add(target);
            const mark = target.matches("[role=switch]") ? target.nextElementSibling : target;
            const style = getComputedStyle(mark);
            if (style.outlineStyle === "none" || parseFloat(style.outlineWidth) < 2) {
              window.unmarked.push(target.outerHTML.slice(0, 120));
            }
          });
        })()"""
    )
    for _ in range(90):
        page.press("Tab")
    assert page.run("window.unmarked") == []
    missed = page.run(
        """[...document.querySelectorAll("button, input, select, textarea, a[href], summary")]
           .filter((one) => one.checkVisibility() && !one.disabled && one.tabIndex >= 0)
           .filter((one) => !window.reached.has(one))
           .map((one) => one.outerHTML.slice(0, 120))"""
    )
    assert missed == []


@pytest.mark.parametrize("control", ["role=tab[name='State']", ".device summary", "#wire-list"])
def test_keys_that_a_control_does_not_use_are_for_the_tv(page, control):
    page.press("4")
    page.see(".popup")
    page.see(".device summary")
    page.do("focus", selector=control)
    page.press("Escape")
    page.gone(".popup")
    page.do("focus", selector=control)
    page.press("p")
    page.see(".tv-dark")


def test_a_key_that_is_held_down_plugs_and_switches_once_and_steers_on(watched):
    page = watched
    for key in ["4", "p", "p", "ArrowRight"]:
        for _ in range(3):
            page.do("keyboard.down", key)
        page.do("keyboard.up", key)
    page.do("focus", selector="[data-sample=empty]")
    for _ in range(3):
        page.do("keyboard.down", "Enter")
    page.do("keyboard.up", "Enter")
    page.until("document.querySelectorAll('.port').length === 2")
    orders = page.run("window.orders.map(([name, values]) => values.name ?? name)")
    done = [name for name in orders if name in ("plugSample", "power", "right")]
    assert done == ["plugSample", "power", "power", "right", "right", "right", "plugSample"]
