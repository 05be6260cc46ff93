"""What a notification server is asked to show."""

import pytest

pytest_plugins = ["notification_helpers"]

FIRST_STRONG_ISOLATE = "\u2068"
POP_ISOLATE = "\u2069"


def test_a_pop_up_carries_its_texts_its_time_out_and_what_it_is(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, title="New device: Stick", body="Browse?", timeout=30)
    assert (popup["app"], popup["title"], popup["body"]) == (
        "portmeld",
        "New device: Stick",
        "Browse?",
    )
    assert popup["timeout"] == 30_000
    assert popup["replaces"] == 0
    assert popup["hints"] == {"urgency": 1, "category": "device.added", "transient": True}


def test_a_removal_notice_says_that_it_is_one(stage, start_bus):
    server = stage.with_server(start_bus())
    assert stage.show_removal(title="Stick") == 0
    popup = server.next("Notify")
    assert popup["hints"]["category"] == "device.removed"
    assert popup["timeout"] == 3_000
    assert popup["actions"] == []


@pytest.mark.parametrize(
    ("seconds", "milliseconds"),
    [(0, 0), (-5, 0), (2_000_000, 2_000_000_000), (2**31 - 1, 2_147_482_000)],
)
def test_a_time_out_of_any_size_fits_into_the_message(stage, start_bus, seconds, milliseconds):
    server = stage.with_server(start_bus())
    assert stage.shown(server, timeout=seconds)["timeout"] == milliseconds


def test_the_buttons_are_actions_whose_keys_no_other_pop_up_has(stage, start_bus):
    server = stage.with_server(start_bus())
    first = stage.shown(server, first="Play", second="Cancel")["actions"]
    second = stage.shown(server, first="Browse", second="Cancel")["actions"]
    assert (first[1::2], second[1::2]) == (["Play", "Cancel"], ["Browse", "Cancel"])
    assert len({*first[0::2], *second[0::2]}) == 4


def test_a_button_without_a_label_is_left_out_and_the_other_keeps_its_place(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, first=None, second="Cancel")
    ((key, label),) = [popup["actions"]]
    assert label == "Cancel"
    server.order("press", popup["id"], key)
    assert stage.probe.event("button")["button"] == 1


def test_no_more_buttons_are_offered_than_the_record_counts(stage, start_bus):
    server = stage.with_server(start_bus())
    assert stage.shown(server, buttons=1)["actions"][1::2] == ["Browse"]
    assert stage.shown(server, buttons=0)["actions"] == []


def test_a_server_without_buttons_gets_none_and_shows_the_pop_up_all_the_same(stage, start_bus):
    server = stage.with_server(start_bus(), capabilities=("body", "body-markup"))
    popup = stage.shown(server)
    assert popup["actions"] == []
    server.order("close", popup["id"], 1)
    assert stage.probe.event("time-out")["type"] == 1


@pytest.mark.parametrize(
    ("capabilities", "body"),
    [
        (("body", "body-markup"), "&lt;b&gt;A &amp; &apos;B&apos;&lt;/b&gt;"),
        (("body",), "<b>A & 'B'</b>"),
    ],
)
def test_only_the_body_is_escaped_and_only_for_a_server_that_reads_markup(
    stage, start_bus, capabilities, body
):
    server = stage.with_server(start_bus(), capabilities=capabilities)
    popup = stage.shown(server, title="<i>&", body="<b>A & 'B'</b>", first=None)
    assert (popup["title"], popup["body"]) == ("<i>&", body)


@pytest.mark.parametrize(
    ("text", "harmless"),
    [
        ("two\nlines\r\tand\x1b[31m\x7f", "two lines  and [31m "),
        ("\x85next \u2028line \u2029paragraph", " next  line  paragraph"),
        ("gpj\u202e.exe\u202c \u202a\u202b\u202d", "gpj.exe "),
        ("\u2066left\u2067right", "leftright"),
        ("Namé \U0001f4be \u05d0", "Namé \U0001f4be \u05d0"),
        ("closed\u2069 twice\u2069", "closed twice"),
    ],
)
def test_a_device_cannot_break_the_line_nor_turn_the_direction_of_other_text(
    stage, start_bus, text, harmless
):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, title=text, body=text, first=text, second=None)
    assert (popup["title"], popup["body"], popup["actions"][1]) == (harmless,) * 3


def isolated(text):
    """What the catalogues of languages that run from right to left make of a name."""
    return f"\u05e9\u05dd: {FIRST_STRONG_ISOLATE}{text}{POP_ISOLATE}"


@pytest.mark.parametrize(
    ("name", "harmless"),
    [
        ("Stick", "Stick"),
        ("A\u2069B", "AB"),
        ("A\u2068B", "AB"),
        ("A\u202eB\u2067C\u2069\u2069", "ABC"),
    ],
)
def test_the_catalogue_isolates_a_name_that_cannot_break_out(stage, start_bus, name, harmless):
    server = stage.with_server(start_bus())
    assert stage.shown(server, title=isolated(name))["title"] == isolated(harmless)


def test_an_isolate_whose_end_was_cut_off_is_closed(stage, start_bus):
    server = stage.with_server(start_bus())
    assert stage.shown(server, title=isolated("Sti")[:-1])["title"] == isolated("Sti")


def test_missing_texts_are_empty(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, title=None, body=None, sender=None, buttons=0)
    assert (popup["app"], popup["title"], popup["body"], popup["icon"]) == ("", "", "", "")


def test_the_picture_is_named_once_as_the_address_of_a_file(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, icon="/media/a b/100%é#?.png")
    assert popup["icon"] == "file:///media/a%20b/100%25%C3%A9%23%3F.png"
    assert not {"image-path", "image-data", "desktop-entry"} & set(popup["hints"])


def test_a_picture_below_the_working_folder_is_found_by_the_server_too(stage, start_bus, root):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, icon="./root/usb.png")
    assert popup["icon"] == f"file://{root}/usb.png"


def test_what_the_server_can_is_asked_once(stage, start_bus):
    server = stage.with_server(start_bus())
    for _ in range(3):
        stage.shown(server)
    assert server.calls_so_far("GetCapabilities") == []


def test_a_pop_up_waits_until_the_server_has_told_what_it_can(stage, start_bus):
    server = stage.with_server(start_bus(), capabilities=None)
    assert stage.show(body="<A>") == 0
    stage.pass_bus()
    assert server.calls_so_far("Notify") == []
    server.order("able", ["body-markup"])
    server.order("answer")
    popup = server.next("Notify")
    assert (popup["body"], popup["actions"]) == ("&lt;A&gt;", [])


def test_of_pop_ups_that_wait_only_the_last_is_shown(stage, start_bus):
    server = stage.with_server(start_bus(), capabilities=None)
    assert stage.show(title="One") == 0
    assert stage.show_removal(title="Two") == 0
    assert stage.show(title="Three") == 0
    assert [event["event"] for event in stage.news()] == ["hidden"]
    server.order("able", ["actions"])
    server.order("answer")
    assert server.next("Notify")["title"] == "Three"
    assert server.calls_so_far("Notify") == []


def test_a_server_that_does_not_tell_what_it_can_gets_buttons_and_no_markup(stage, start_bus):
    server = stage.with_server(start_bus(), capabilities=None)
    assert stage.show(body="<A>") == 0
    popup = server.next("Notify")
    assert (popup["body"], popup["actions"][1::2]) == ("<A>", ["Browse", "Cancel"])
