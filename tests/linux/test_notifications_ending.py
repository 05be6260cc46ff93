"""How pop-ups end, and what is told of it: a button, a time-out, a hiding, or another pop-up."""

import pathlib
import time

import pytest

pytest_plugins = ["notification_helpers"]


@pytest.mark.parametrize("button", [0, 1])
@pytest.mark.parametrize("item_type", [0, 1])
def test_a_button_is_told_and_the_closing_after_it_is_no_hiding(
    stage, start_bus, item_type, button
):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, type=item_type)
    server.order("press", popup["id"], popup["actions"][2 * button])
    server.order("close", popup["id"], 2)
    assert stage.news() == [{"event": "button", "type": item_type, "button": button}]


def test_a_button_takes_the_pop_up_away_from_servers_that_leave_it(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server)
    server.order("press", popup["id"], popup["actions"][0])
    assert server.next("CloseNotification")["id"] == popup["id"]


def test_a_button_that_is_told_before_the_server_has_answered_counts(stage, start_bus):
    server = stage.with_server(start_bus())
    server.order("hold")
    assert stage.show() == 0
    popup = server.next("Notify")
    server.order("press", popup["id"], popup["actions"][2])
    server.order("answer")
    assert stage.news() == [{"event": "button", "type": 1, "button": 1}]
    server.order("close", popup["id"], 2)
    assert stage.news() == []


def test_a_button_that_is_told_after_the_closing_is_lost(stage, start_bus):
    """It cannot be told from one that was pressed too late; servers tell of the button first."""
    server = stage.with_server(start_bus())
    popup = stage.shown(server)
    server.order("close", popup["id"], 2)
    server.order("press", popup["id"], popup["actions"][0])
    assert stage.news() == [{"event": "hidden"}]


def test_a_button_that_the_pop_up_does_not_have_is_ignored(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server)
    for key in ("default", "", popup["actions"][0] + "0", popup["actions"][0] + ":"):
        server.order("press", popup["id"], key)
    assert stage.news() == []


def test_a_button_counts_only_once(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server)
    server.order("press", popup["id"], popup["actions"][0])
    server.order("press", popup["id"], popup["actions"][2])
    assert [event["button"] for event in stage.news()] == [0]


@pytest.mark.parametrize("item_type", [0, 1, 2])
def test_a_time_out_of_the_server_is_told_with_the_kind_of_pop_up(stage, start_bus, item_type):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, type=item_type)
    server.order("close", popup["id"], 1)
    assert stage.news() == [{"event": "time-out", "type": item_type}]


@pytest.mark.parametrize("reason", [0, 2, 3, 4, 99])
@pytest.mark.parametrize("item_type", [1, 2])
def test_every_other_closing_is_a_hiding(stage, start_bus, item_type, reason):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, type=item_type)
    server.order("close", popup["id"], reason)
    assert stage.news() == [{"event": "hidden"}]


def test_an_ended_pop_up_ends_only_once(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server)
    server.order("close", popup["id"], 2)
    server.order("close", popup["id"], 1)
    server.order("press", popup["id"], popup["actions"][0])
    assert stage.news() == [{"event": "hidden"}]


def test_the_end_of_pop_ups_of_others_is_ignored(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server)
    server.order("close", popup["id"] + 1, 1)
    server.order("press", popup["id"] + 1, popup["actions"][0])
    assert stage.news() == []


def test_strangers_cannot_press_a_button_nor_end_a_pop_up(stage, start_bus):
    server = stage.with_server(start_bus())
    stranger = stage.server(owns=False)
    popup = stage.shown(server)
    stranger.order("press", popup["id"], popup["actions"][0])
    stranger.order("close", popup["id"], 1)
    assert stage.news() == []
    server.order("close", popup["id"], 2)
    assert stage.news() == [{"event": "hidden"}]


@pytest.mark.parametrize("item_type", [1, 2])
def test_a_server_that_ignores_time_outs_is_told_to_close(stage, start_bus, item_type):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, type=item_type, timeout=1)
    assert stage.probe.event("time-out")["type"] == item_type
    assert server.next("CloseNotification")["id"] == popup["id"]
    server.order("close", popup["id"], 3)
    assert stage.news() == []


def test_the_time_out_of_a_pop_up_that_ended_does_not_end_the_next(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, timeout=1)
    server.order("close", popup["id"], 2)
    stage.probe.event("hidden")
    stage.shown(server, timeout=0)
    last = stage.shown(server, type=2, timeout=1)
    assert stage.probe.event("time-out")["type"] == 2
    stage.pass_bus()  # the closing has passed the bus as well
    assert [call["id"] for call in server.calls_so_far("CloseNotification")] == [last["id"]]
    assert stage.news() == []


def wake_ups(process):
    """How often the main thread of a process has waited for something."""
    status = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/status").read_text()
    (line,) = [line for line in status.splitlines() if line.startswith("voluntary_ctxt_switches")]
    return int(line.split()[1])


def test_nothing_is_timed_while_nothing_is_on_the_screen(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server, timeout=1)
    server.order("close", popup["id"], 2)
    assert stage.news() == [{"event": "hidden"}]
    time.sleep(0.5)  # for the answer to the last order, which is printed before the loop waits again
    before = wake_ups(stage.probe.process)
    time.sleep(2.5)
    assert wake_ups(stage.probe.process) == before


def test_a_new_pop_up_takes_the_place_of_the_one_before(stage, start_bus):
    server = stage.with_server(start_bus())
    first = stage.shown(server, title="One")
    second = stage.shown(server, title="Two")
    assert second["replaces"] == first["id"]
    assert stage.news() == []


def test_the_place_of_a_pop_up_that_ended_is_nobodys(stage, start_bus):
    server = stage.with_server(start_bus())
    first = stage.shown(server)
    server.order("close", first["id"], 2)
    stage.probe.event("hidden")
    assert stage.shown(server)["replaces"] == 0


def test_of_a_replaced_question_nothing_is_heard_any_more(stage, start_bus):
    server = stage.with_server(start_bus())
    first = stage.shown(server, type=0)
    second = stage.shown(server, type=1)
    assert second["id"] == first["id"]
    server.order("press", second["id"], first["actions"][0])
    assert stage.news() == []
    server.order("press", second["id"], second["actions"][0])
    assert stage.news() == [{"event": "button", "type": 1, "button": 0}]


@pytest.mark.parametrize("next_type", [1, 2])
def test_a_replaced_removal_notice_is_told_to_be_hidden_later(stage, start_bus, next_type):
    server = stage.with_server(start_bus())
    stage.shown(server, type=2)
    # The order's own answer comes first: the callback was not made inside the call.
    stage.shown(server, type=next_type)
    assert stage.news() == [{"event": "hidden"}]
    stage.shown(server, type=1)
    assert len(stage.news()) == next_type - 1


def test_a_hiding_is_never_told_inside_the_call_that_brings_it_about(stage, start_bus):
    server = stage.with_server(start_bus())
    stage.shown(server, type=2)
    stage.probe.send("notification-show type=1 title=Two")
    first = stage.probe.take(lambda line: "result" in line or line.get("event") == "hidden")
    assert first == {"result": 0}
    stage.probe.event("hidden")


def test_the_end_of_a_replaced_pop_up_that_crosses_the_new_one_is_not_taken_for_its_end(
    stage, start_bus
):
    server = stage.with_server(start_bus())
    first = stage.shown(server)
    server.order("hold")
    assert stage.show(title="Two") == 0
    server.next("Notify")
    server.order("close", first["id"], 1)
    server.order("answer")
    assert stage.news() == []
    server.order("close", first["id"], 1)
    assert stage.news() == [{"event": "time-out", "type": 1}]


def test_a_pop_up_that_was_replaced_before_it_had_an_id_is_closed_when_it_has_one(
    stage, start_bus
):
    server = stage.with_server(start_bus())
    server.order("hold")
    assert stage.show(title="One") == 0
    assert stage.show(title="Two") == 0
    first, second = server.next("Notify"), server.next("Notify")
    assert (first["replaces"], second["replaces"]) == (0, 0)
    server.order("answer")
    assert server.next("CloseNotification")["id"] == first["id"]
    server.order("press", second["id"], second["actions"][0])
    assert [event["event"] for event in stage.news()] == ["button"]


def test_a_pop_up_that_the_server_did_not_replace_is_closed(stage, start_bus):
    server = stage.with_server(start_bus(), keeps_ids=False)
    first = stage.shown(server)
    second = stage.shown(server)
    assert server.next("CloseNotification")["id"] == first["id"]
    server.order("close", first["id"], 3)
    assert stage.news() == []
    server.order("close", second["id"], 2)
    assert stage.news() == [{"event": "hidden"}]


def test_the_end_of_the_service_takes_the_pop_up_away_and_nothing_more_is_told(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server)
    assert stage.probe.call("notification-close") == 0
    assert server.next("CloseNotification")["id"] == popup["id"]
    server.order("press", popup["id"], popup["actions"][0])
    server.order("close", popup["id"], 2)
    assert stage.news() == []


def test_a_hiding_that_was_due_is_not_told_after_the_end_of_the_service(stage, start_bus):
    server = stage.with_server(start_bus())
    stage.shown(server, type=2)
    # In one piece, so that the main loop has no turn between the two.
    stage.probe.send("notification-show type=1\nnotification-close")
    assert [stage.probe.take(lambda line: "result" in line)["result"] for _ in "12"] == [0, 0]
    assert stage.news() == []


def test_outside_of_the_service_no_pop_up_is_taken(stage, start_bus, probe):
    server = stage.with_server(start_bus())
    assert stage.probe.call("notification-close") == 0
    assert stage.show() != 0
    assert stage.probe.call("notification-init") == 0
    assert stage.probe.call("notification-register") == 0
    popup = stage.shown(server)
    server.order("close", popup["id"], 2)
    assert stage.news() == [{"event": "hidden"}]


def test_without_callbacks_pop_ups_end_unheard(stage, start_bus):
    server = stage.with_server(start_bus())
    assert stage.probe.call("notification-close") == 0
    assert stage.probe.call("notification-init") == 0
    for ending in ("press", "close", "replaced", "close"):
        popup = stage.shown(server, type=1)
        if ending == "press":
            server.order("press", popup["id"], popup["actions"][0])
        elif ending == "close":
            server.order("close", popup["id"], 1)
    assert stage.news() == []


def test_a_process_that_ends_without_ending_the_service_ends_well(stage, start_bus):
    server = stage.with_server(start_bus())
    stage.shown(server, type=2)
    server.order("hold")
    assert stage.show() == 0
    stage.probe.close_input()
    assert stage.probe.see_end() == 0
    assert stage.losses() == []
