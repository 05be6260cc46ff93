"""A stick that is mounted where the daemon may not look, and opened to it later."""

import pathlib

import pytest
from road import is_question
from stick import NAME, NODE
from world import BROWSER


@pytest.fixture
def world(start_world):
    """A world whose daemon has no more rights than its user's."""
    return start_world(wrapper=["setpriv", "--bounding-set", "-dac_override,-dac_read_search"])


def threads_of_its_own(process):
    """How many threads a process has beside those of its libraries, which have other names."""
    names = [task.joinpath("comm").read_text() for task in pathlib.Path(f"/proc/{process}/task").iterdir()]
    return names.count(pathlib.Path(f"/proc/{process}/comm").read_text())


def test_a_forbidden_stick_is_offered_for_browsing_and_not_searched_again_when_it_is_opened(
    world, tmp_path
):
    world.plug()
    point = tmp_path / "forbidden"
    point.mkdir()
    world.mounts.run("mount", "-t", "tmpfs", "-o", "mode=0", NODE, str(point))
    popup = world.screen.take(is_question("Browse"))
    world.client.round_trip()  # the search has begun
    world.wait_for(lambda: threads_of_its_own(world.daemon.process.pid) == 1)
    world.mounts.run("sh", "-c", f": >{point}/holiday.jpg; chmod 755 {point}")
    world.client.round_trip()
    assert world.screen.calls_so_far("Notify") == []

    world.screen.order("press", popup["id"], popup["actions"][0])
    unit, _, data = world.manager.unit()
    assert unit.startswith(f"app-{BROWSER}-")
    assert data["device_path"] == str(point)
    world.machine.unplug(NAME)
    world.take_notice()
    world.take_signal()
