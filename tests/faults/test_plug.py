"""A plug during which somebody fails, at each step: what the viewer gets, late or not at all, what the log says,
and that the next plug is as if nothing had been. docs/reliability.md holds the table of it."""

import os
import pathlib
import signal

import peers
import pytest
from outcomes import ENDS, EXPECTED, LINES, MANAGER, SAID
from reliability import Run, cell, documented, table
from road import GOODS, LAUNCH, NOTICE, SIGNAL, Road, is_question
from service_manager import Unit

PEERS = {
    "notification server": peers.Screen,
    "UDisks2": peers.Disks,
    "udevd": peers.DeviceEvents,
    MANAGER: peers.UserManager,
    "application": peers.Application,
    "user's bus": peers.SessionBus,
    "system bus": peers.SystemBus,
    "logind": peers.LoginManager,
    "journald": peers.JournalSocket,
    "portmeld itself": peers.Daemon,
}
CELLS = [(who, how, step) for (who, how), row in EXPECTED.items() for step in row]

# Somebody has to be asked for the mount, two seconds after the plug.
HASTE = {"UDisks2": {"PORTMELD_TEST_PORTS_HASTE": "10"}}

DOCUMENT = pathlib.Path("docs", "reliability.md")


def document():
    """The document, as it is in the project."""
    return pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"]) / DOCUMENT


def take_late(world, outcome):
    """Takes what comes when the peer is well again."""
    takes = {NOTICE: world.take_notice, SIGNAL: world.take_signal, LAUNCH: world.take_launch}
    for good in outcome.late:
        takes[good]()


def nothing_else_came(world):
    """What was not expected has not come; questions that nobody can answer any more are taken back."""
    world.client.round_trip()
    assert world.client.news() == []
    assert world.manager.calls_so_far() == []
    for call in world.screen.calls_so_far("Notify"):
        assert is_question("Browse")(call) or is_question("Play")(call), call
        world.screen.next("CloseNotification", id=call["id"])


def said_so_far(world):
    """Which lines the daemon and its service manager have written, by their letters."""
    lines = world.lines()
    ends = [signal.Signals(-status).name for status in world.service.ends()]
    assert set(ends) <= set(ENDS.values()), "it did not end as it may"
    return "".join(
        [letter for letter, words in LINES.items() if any(words in line for line in lines)]
        + [letter for letter, name in ENDS.items() if name in ends]
    )


def times_away(world):
    """How long the daemon was away each time: from its end to the moment in which it was ready again. It was
    not started before its unit says so."""
    log = world.service.log()
    times = []
    for number, (what, _, ended) in enumerate(log):
        if what == "ended":
            (started, _, then), (ready, _, now) = log[number + 1 : number + 3]
            assert (started, ready) == ("started", "ready")
            assert then - ended >= world.service.unit.restart_seconds
            times.append(now - ended)
    return times


@pytest.mark.parametrize(("who", "how", "step"), CELLS)
def test_a_plug_with_a_fault(start_world, who, how, step):
    outcome = EXPECTED[who, how][step]
    said = SAID.get((who, how), {}).get(step, "")
    run = Run(os.environ["PORTMELD_BUILD_DIR"])
    run.forget((who, how, step))
    world = start_world(env=HASTE.get(who), journal=who == "journald")
    peer = PEERS[who](world, step)
    peer.begin()
    Road(
        world,
        step,
        lambda: peer.fail(how),
        outcome.lost + outcome.late,
        hears=LAUNCH not in outcome.lost or who == MANAGER,
        first=who == "notification server",
    ).go()
    in_time = list(world.seen)
    peer.heal()
    world.screen.order("answer")
    take_late(world, outcome)
    nothing_else_came(world)
    late = world.seen[len(in_time) :]
    world.seen.clear()
    Road(world).go()
    assert tuple(world.seen) == GOODS, "the next plug is not as ever"
    world.wait_for(lambda: set(said) <= set(said_so_far(world)))
    assert said_so_far(world) == said

    lost = [good for good in GOODS if good not in in_time and good not in late]
    text = cell(lost, late, said)
    run.add((who, how, step), text, times_away(world))
    assert text == cell(outcome.lost, outcome.late, said)


def test_the_unit_restarts_the_daemon_after_half_a_second_at_most_however_often():
    unit = Unit()
    assert unit.restart == "always"
    # The rest of a second is for its start; reliability.py refuses a run in which it took longer.
    assert 0 < unit.restart_seconds <= 0.5
    assert unit.start_limit_seconds == 0


def test_the_document_tells_what_is_run():
    """Each cell is what its test sees; a cell more or less is a difference as well."""
    cells = {}
    for who, how, step in CELLS:
        outcome = EXPECTED[who, how][step]
        said = SAID.get((who, how), {}).get(step, "")
        cells[who, how, step] = cell(outcome.lost, outcome.late, said)
    assert documented(document()) == table(cells)


def test_the_document_tells_every_line():
    text = document().read_text()
    for letter, words in LINES.items():
        assert f"| {letter} | `{words.strip()}" in text
