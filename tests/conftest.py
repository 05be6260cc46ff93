"""What several suites use: modules to import (buses, child processes, clients), and buses that end with the test."""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "support"))

from private_bus import PrivateBus  # noqa: E402 (the path comes first)


@pytest.fixture
def start_bus(tmp_path):
    """Starts a bus; `names` tells whether it lets anybody own a name."""
    buses = []

    def start(names=True):
        buses.append(PrivateBus(tmp_path / f"bus{len(buses)}", names))
        return buses[-1]

    yield start
    for bus in buses:
        bus.stop()
