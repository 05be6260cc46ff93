"""What the viewer is doing: a setting, and the do-not-disturb of the notification server."""

import pytest

pytest_plugins = ["notification_helpers"]

DO_NOT_DISTURB = 0x80


def query(stage):
    """The state; asking never fails."""
    answer = stage.probe.call("tv-context")
    assert answer["result"] == 0
    return answer["state"]


def write_state(root, value):
    """Sets the state as any program would."""
    file = root / "run" / "portmeld" / "memory" / "tv_context" / "state"
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(f"{value}\n")


def test_unless_somebody_says_otherwise_the_viewer_may_be_disturbed(stage):
    stage.begin(None)
    assert query(stage) == 0


@pytest.mark.parametrize("bits", [0x80, 0x400, 0x800, 0xC80, 5])
def test_the_setting_is_the_state(stage, root, bits):
    write_state(root, bits)
    stage.begin(None)
    assert query(stage) == bits


def test_a_changed_setting_is_seen_by_the_next_query(stage, root):
    stage.begin(None)
    write_state(root, 0x400)
    assert query(stage) == 0x400
    write_state(root, 0)
    assert query(stage) == 0


def test_a_setting_that_is_no_number_disturbs_nobody(stage, root):
    write_state(root, "much")
    stage.begin(None)
    assert query(stage) == 0


def known(stage, start_bus, **options):
    """A server whose property the probe has read."""
    server = stage.with_server(start_bus(), **options)
    server.next("Get", property="Inhibited")
    stage.pass_bus()
    return server


def test_do_not_disturb_of_the_server_is_added_to_the_setting(stage, start_bus, root):
    write_state(root, 0x401)
    known(stage, start_bus, inhibited=True)
    assert query(stage) == 0x401 | DO_NOT_DISTURB


def test_a_server_that_may_disturb_adds_nothing(stage, start_bus):
    known(stage, start_bus, inhibited=False)
    assert query(stage) == 0


def test_changes_of_the_server_are_followed(stage, start_bus):
    server = known(stage, start_bus, inhibited=False)
    for value in (True, False, True):
        server.order("inhibit", value)
        stage.pass_bus()
        assert query(stage) == (DO_NOT_DISTURB if value else 0)


def test_a_change_that_is_told_without_its_value_is_asked_for(stage, start_bus):
    server = known(stage, start_bus, inhibited=False)
    server.order("inhibit", True, False)
    server.next("Get", property="Inhibited")
    stage.pass_bus()
    assert query(stage) == DO_NOT_DISTURB


def test_strangers_cannot_change_it(stage, start_bus):
    known(stage, start_bus, inhibited=False)
    stranger = stage.server(owns=False)
    stranger.order("inhibit", True)
    stage.pass_bus()
    assert query(stage) == 0


def test_do_not_disturb_goes_with_its_server(stage, start_bus):
    server = known(stage, start_bus, inhibited=True)
    server.order("release")
    stage.pass_bus()
    assert query(stage) == 0


def test_a_server_without_the_property_is_normal_and_not_worth_a_word(stage, start_bus):
    known(stage, start_bus)
    assert query(stage) == 0
    words = ("nhibit", "otific", "roperty")
    assert not [line for line in stage.probe.error_lines() if any(word in line for word in words)]


def test_a_property_of_another_kind_is_taken_for_no(stage, start_bus):
    known(stage, start_bus, inhibited="yes")
    assert query(stage) == 0


def test_the_context_is_known_without_the_notification_service(stage, start_bus, probe):
    stage.bus = start_bus()
    server = stage.server(inhibited=True)
    stage.probe = probe(session_bus=stage.bus)
    assert query(stage) == 0
    server.next("Get", property="Inhibited")
    stage.probe.call("watch-bus")
    stage.probe.event("bus-connected")
    assert query(stage) == DO_NOT_DISTURB


def test_it_is_still_known_after_the_end_of_the_notification_service(stage, start_bus):
    server = known(stage, start_bus, inhibited=True)
    assert stage.probe.call("notification-close") == 0
    assert query(stage) == DO_NOT_DISTURB
    server.order("inhibit", False)
    stage.pass_bus()
    assert query(stage) == 0


def test_a_query_does_not_wait_for_a_hung_server(stage, start_bus):
    stage.bus = start_bus()
    server = stage.server(inhibited=True)
    server.stop()
    stage.begin(stage.bus)
    stage.probe.event("bus-connected")
    assert query(stage) == 0
    server.go_on()
    server.next("Get", property="Inhibited")
    stage.pass_bus()
    assert query(stage) == DO_NOT_DISTURB
