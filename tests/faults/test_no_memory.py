"""No memory for a JSON text: GLib ends the process and says so, and the service manager starts it again."""

import signal

import pytest
from client import Refused
from programs import built
from road import Road, is_question
from stick import NAME

FAILED = "failed to allocate"


@pytest.fixture
def scarce(tmp_path):
    """A file: while it is there, memory is not."""
    return tmp_path / "scarce"


@pytest.fixture
def world(start_world, scarce):
    """A world in which memory can become scarce."""
    return start_world(
        preload=[built("faults", "libno-memory.so")], env={"PORTMELD_TEST_NO_MEMORY": str(scarce)}
    )


def plug(world):
    """A stick is plugged in and mounted, and its search for media stands at the gate. Returns where it is
    mounted, and the question about it."""
    world.plug()
    point = world.mount()
    popup = world.screen.take(is_question("Browse"))
    world.stick.wait_until_searched()
    return point, popup


def a_list_is_asked_for(world, _popup):
    with pytest.raises(Refused, match="NoReply"):
        world.client.call("RequesAll", 1)


def the_stick_is_pulled(world, _popup):
    world.machine.unplug(NAME)


def the_search_ends(world, _popup):
    world.stick.open_gate()


def an_application_is_launched(world, popup):
    world.screen.order("press", popup["id"], popup["actions"][0])


@pytest.mark.parametrize(
    "something",
    [a_list_is_asked_for, the_stick_is_pulled, the_search_ends, an_application_is_launched],
)
def test_without_memory_for_a_text_the_daemon_ends_says_so_and_is_back(world, scarce, something):
    point, popup = plug(world)
    scarce.touch()
    something(world, popup)
    world.service.wait_for("ended", 1)
    scarce.unlink()
    assert world.service.ends() == [-signal.SIGTRAP]
    assert any(FAILED in line for line in world.service.lives[0].error_lines())
    world.service.wait_for("ready", 2)
    world.listen()
    world.machine.unplug(NAME)
    world.stick.unmount(world.mounts, point)
    world.stick.open_gate()
    world.screen.calls_so_far("Notify")
    world.client.round_trip()
    world.client.news()
    Road(world).go()


def test_with_memory_again_nothing_has_happened(world, scarce):
    scarce.touch()
    scarce.unlink()
    Road(world).go()
    assert world.service.ends() == []
