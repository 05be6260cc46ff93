"""What the tests of faults stand on: the Linux machine's helpers, and a world around the daemon in which
everybody can fail."""

import importlib.util
import pathlib
import sys

import pytest

LINUX = pathlib.Path(__file__).resolve().parents[1] / "linux"
sys.path[:0] = [str(pathlib.Path(__file__).resolve().parent), str(LINUX)]

# By its path: two files of this name cannot be imported by it.
_SPEC = importlib.util.spec_from_file_location("linux_fixtures", LINUX / "conftest.py")
linux_fixtures = importlib.util.module_from_spec(_SPEC)
_SPEC.loader.exec_module(linux_fixtures)

from held_bus import HeldBus  # noqa: E402 (the path comes first)
from world import World  # noqa: E402

machine = linux_fixtures.machine
root = linux_fixtures.root
surroundings = linux_fixtures.surroundings


@pytest.fixture
def start_world(tmp_path, root, surroundings, machine, request):
    """Starts a world, with the keywords of World."""
    linux_fixtures.install(root)
    buses = [HeldBus(tmp_path / name) for name in ("session", "system")]
    request.node.worlds = []

    def start(**options):
        world = World(tmp_path, root, surroundings, machine, *buses, **options)
        request.node.worlds.append(world)
        world.begin()
        return world

    try:
        yield start
        for world in request.node.worlds:
            world.close()
    finally:
        for world in request.node.worlds:
            world.kill()
        for bus in buses:
            bus.close()


@pytest.fixture
def world(start_world):
    """A world in which everybody is well."""
    return start_world()


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item):
    """Adds what the daemon printed to the report of a failed test."""
    report = (yield).get_result()
    if report.failed:
        for world in getattr(item, "worlds", []):
            report.sections.append(("the end of the daemon's log", "\n".join(world.lines()[-25:])))
