"""Notification servers that are missing, come late, hang, refuse or die.

The daemon goes on at once, and every pop-up that was taken has an end.
"""

import os
import pathlib
import sys

import pytest

pytest_plugins = ["notification_helpers"]

NOTHING_WAS_SAID = []
PEER = pathlib.Path(__file__).with_name("notification_peer.py")


def test_without_a_bus_no_pop_up_is_taken(stage):
    stage.begin(None)
    assert stage.show() != 0
    assert stage.probe.events_so_far() == []
    assert stage.losses() == NOTHING_WAS_SAID


def test_a_removal_notice_that_is_not_taken_counts_as_hidden_so_that_the_next_is_not_held_back(stage):
    stage.begin(None)
    assert stage.show_removal() != 0
    stage.probe.event("hidden")
    assert stage.show_removal() != 0
    stage.probe.event("hidden")
    assert stage.probe.events_so_far() == []


def test_a_bus_that_comes_later_is_found(stage, start_bus):
    bus = start_bus()
    bus.stop()
    stage.begin(bus)
    assert stage.show() != 0
    bus.start()
    stage.probe.event("bus-connected")
    server = stage.server()
    server.next("GetCapabilities")
    assert stage.shown(server, title="Late")["title"] == "Late"


def test_a_bus_whose_coming_cannot_be_seen_is_looked_for_with_each_pop_up(
    stage, start_other_bus, tmp_path
):
    bus = start_other_bus(listen=f"unix:abstract={tmp_path}/socket")
    bus.stop()
    stage.begin(bus)
    bus.start()
    server = stage.server()
    stage.show_until_taken(title="First")
    assert server.next("Notify")["title"] == "First"


def test_without_a_server_no_pop_up_is_taken(stage, start_bus):
    stage.begin(start_bus())
    stage.probe.event("bus-connected")
    assert stage.show() != 0
    assert stage.news() == []
    assert stage.show_removal() != 0
    stage.probe.event("hidden")
    assert stage.losses() == NOTHING_WAS_SAID


def test_a_server_that_comes_later_is_used(stage, start_bus):
    stage.begin(start_bus())
    stage.probe.event("bus-connected")
    assert stage.show() != 0
    server = stage.server()
    server.next("GetCapabilities")
    assert stage.shown(server, title="Late")["title"] == "Late"


def test_after_a_server_that_gave_its_name_back_no_pop_up_is_taken(stage, start_bus):
    server = stage.with_server(start_bus())
    server.order("release")
    stage.pass_bus()
    assert stage.show() != 0
    server.order("own")
    server.next("GetCapabilities")
    stage.shown(server)


@pytest.mark.parametrize("item_type", [1, 2])
def test_a_pop_up_whose_server_dies_is_hidden_and_one_line_says_why(stage, start_bus, item_type):
    server = stage.with_server(start_bus())
    stage.shown(server, type=item_type)
    server.kill()
    stage.lost("the notification server is gone")
    assert stage.news() == []
    assert stage.show() != 0


def test_a_server_that_dies_without_a_pop_up_is_not_worth_a_word(stage, start_bus):
    server = stage.with_server(start_bus())
    popup = stage.shown(server)
    server.order("close", popup["id"], 2)
    stage.probe.event("hidden")
    server.order("release")
    assert stage.news() == []
    assert stage.losses() == NOTHING_WAS_SAID


def test_the_next_server_is_asked_anew_and_knows_nothing_of_the_old_pop_up(stage, start_bus):
    server = stage.with_server(start_bus(), capabilities=("actions",))
    stage.shown(server, body="<A>")
    server.kill()
    stage.probe.event("hidden")
    server = stage.server(capabilities=("body-markup",))
    server.next("GetCapabilities")
    popup = stage.shown(server, body="<B>")
    assert (popup["replaces"], popup["actions"], popup["body"]) == (0, [], "&lt;B&gt;")


def test_a_server_that_takes_the_place_of_another_is_asked_anew(stage, start_bus):
    old = stage.with_server(start_bus())
    popup = stage.shown(old, type=2)
    new = stage.server(capabilities=())
    old.order("release")
    stage.probe.event("hidden")
    new.next("GetCapabilities")
    old.order("close", popup["id"], 1)
    old.order("press", popup["id"], "2:0")
    assert stage.shown(new)["actions"] == []
    assert stage.news() == []


def test_the_successor_of_a_server_is_not_told_to_close_what_the_old_one_showed(stage, start_bus):
    old = stage.with_server(start_bus())
    stage.shown(old)
    old.order("hold")
    assert stage.show() == 0
    old.next("Notify")
    new = stage.server()
    old.order("release")
    stage.probe.event("hidden")
    new.next("GetCapabilities")
    old.kill()
    popup = stage.shown(new)
    assert popup["replaces"] == 0
    assert new.calls_so_far("CloseNotification") == []


def test_a_pop_up_is_hidden_when_the_bus_dies_and_the_next_bus_is_used(stage, start_other_bus):
    bus = start_other_bus()
    server = stage.with_server(bus)
    stage.shown(server)
    bus.crash()
    stage.lost("the session bus is gone")
    stage.probe.event("bus-lost")
    assert stage.show() != 0
    bus.start()
    stage.probe.event("bus-connected")
    server = stage.server()
    server.next("GetCapabilities")
    assert stage.shown(server)["replaces"] == 0


def test_a_server_that_refuses_a_pop_up_hides_it_and_one_line_says_why(stage, start_bus):
    server = stage.with_server(start_bus())
    server.order("refuse")
    assert stage.show_removal() == 0
    stage.lost("the notification server refused it: no room")


def test_what_was_on_the_screen_goes_when_its_successor_is_refused(stage, start_bus):
    server = stage.with_server(start_bus())
    first = stage.shown(server)
    server.order("refuse")
    assert stage.show() == 0
    stage.probe.event("hidden")
    assert server.next("CloseNotification")["id"] == first["id"]


def test_a_server_that_gives_no_id_hides_the_pop_up(stage, start_bus):
    server = stage.with_server(start_bus(), gives_ids=False)
    assert stage.show() == 0
    stage.lost("it was given no id")


def test_a_hung_server_keeps_nobody_and_what_it_shows_too_late_is_closed(stage, start_bus):
    server = stage.with_server(start_bus())
    stage.shown(server, type=1)
    server.stop()
    assert stage.show_removal(title="Late", timeout=1) == 0
    assert stage.probe.call("tv-context") == {"result": 0, "state": 0}
    stage.lost("the notification server did not answer in time")
    assert stage.show(title="Later", timeout=30) == 0
    server.go_on()
    late = server.next("Notify", title="Late")
    later = server.next("Notify", title="Later")
    assert server.next("CloseNotification")["id"] == late["id"]
    server.order("close", later["id"], 2)
    assert stage.news() == [{"event": "hidden"}]


def test_a_server_that_hangs_from_the_start_keeps_nobody(stage, start_bus):
    stage.bus = start_bus()
    server = stage.server()
    server.stop()
    stage.begin(stage.bus)
    stage.probe.event("bus-connected")
    assert stage.show(title="Waits", timeout=1) == 0
    stage.lost("the notification server did not answer in time")
    server.go_on()
    late = server.next("Notify")
    assert (late["title"], late["actions"][1::2]) == ("Waits", ["Browse", "Cancel"])
    assert server.next("CloseNotification")["id"] == late["id"]


def test_a_server_that_dies_before_it_answers_hides_the_pop_up_once(stage, start_bus):
    server = stage.with_server(start_bus())
    server.order("hold")
    assert stage.show() == 0
    server.next("Notify")
    server.kill()
    stage.lost("")
    assert stage.news() == []


def test_a_server_that_the_bus_can_start_is_started_by_the_first_pop_up(
    stage, start_other_bus, tmp_path
):
    said = tmp_path / "said"
    script = tmp_path / "server"
    # The bus gives a program that it starts no input, and the server ends with its input.
    os.mkfifo(tmp_path / "orders")
    script.write_text(
        "#!/bin/sh\n"
        f'exec "{sys.executable}" "{PEER}" "$DBUS_STARTER_ADDRESS" '
        f"'{{\"capabilities\": []}}' <>'{tmp_path}/orders' >'{said}'\n"
    )
    script.chmod(0o755)
    stage.begin(start_other_bus(command=str(script)))
    stage.probe.event("bus-connected")
    assert stage.show(title="First", timeout=1) == 0
    assert stage.probe.event("time-out")["type"] == 1
    assert stage.losses() == NOTHING_WAS_SAID
    assert '"First"' in said.read_text()


def test_a_server_that_cannot_be_started_hides_the_pop_up_and_one_line_says_why(
    stage, start_other_bus
):
    stage.begin(start_other_bus(command="/bin/false"))
    stage.probe.event("bus-connected")
    assert stage.show() == 0
    stage.lost("the notification server did not start: ")


def test_a_server_that_cannot_be_started_is_not_hoped_for_until_the_services_of_the_bus_change(
    stage, start_other_bus
):
    bus = start_other_bus(command="/bin/false")
    stage.begin(bus)
    stage.probe.event("bus-connected")
    assert stage.show() == 0
    stage.probe.event("hidden")
    assert stage.show() != 0
    assert stage.news() == []
    bus.tell_of_services()
    stage.show_until_taken()
    stage.probe.event("hidden")


def test_a_server_that_is_installed_later_is_started(stage, start_other_bus):
    bus = start_other_bus()
    stage.begin(bus)
    stage.probe.event("bus-connected")
    assert stage.news() == []
    assert stage.show() != 0
    bus.install("/bin/false")
    stage.show_until_taken()
    stage.lost("the notification server did not start: ")


def test_a_server_that_does_not_come_after_its_start_hides_the_pop_up(
    stage, start_other_bus
):
    stage.begin(start_other_bus(command="/bin/sleep 15"))
    stage.probe.event("bus-connected")
    assert stage.show() == 0
    stage.lost("no notification server came in time")
