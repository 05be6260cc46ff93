"""Sticks to be plugged into the workbench, and runs of it that end with the test."""

import os
import pathlib
import shutil
import sys

import pytest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))

from workbench_process import Workbench  # noqa: E402 (the path comes first)
from terminal_process import TerminalWorkbench  # noqa: E402
from web_process import WebWorkbench  # noqa: E402
from client import ClientProcess  # noqa: E402

PHOTO = HERE.parent.parent / "workbench" / "samples" / "one-photo" / "chelsea.jpg"


@pytest.fixture
def stick(tmp_path):
    """Makes a folder that is a stick: stick(name, photo, photo, ...)."""

    def make(name="Holiday", *photos):
        folder = tmp_path / name
        folder.mkdir()
        for photo in photos or ("photo.jpg",):
            shutil.copy(PHOTO, folder / photo)
        return folder

    return make


@pytest.fixture
def start():
    """Starts the workbench with pipes."""
    runs = []

    def begin(*arguments, **more):
        run = Workbench(*arguments, **more)
        runs.append(run)
        return run

    yield begin
    for run in runs:
        run.close()


@pytest.fixture
def terminal():
    """Starts the workbench on a terminal of its own."""
    runs = []

    def begin(*arguments, **more):
        run = TerminalWorkbench(*arguments, **more)
        runs.append(run)
        return run

    yield begin
    for run in runs:
        run.close()


@pytest.fixture
def web():
    """Starts the workbench with its page; with nothing plugged in unless told otherwise."""
    runs = []

    def begin(*arguments):
        run = WebWorkbench(*(arguments or ("--bare",)))
        runs.append(run)
        return run

    yield begin
    for run in runs:
        run.close()


@pytest.fixture
def page(web):
    """A page of a fresh workbench, with its time stopped: nothing happens but what is ordered."""
    page = web().page()
    page.order("clock", mode="stopped")
    return page


@pytest.fixture
def bus_client(page):
    """A client of the bus that knows nothing of the page."""
    process = ClientProcess(page.hello["bus"])
    yield process.clients[0]
    process.kill()


@pytest.fixture
def sanitizer_options(monkeypatch):
    """Gives programs that are built with a sanitizer further options; others take no notice."""

    def give(options):
        before = os.environ.get("ASAN_OPTIONS", "")
        monkeypatch.setenv("ASAN_OPTIONS", f"{before}:{options}")

    return give
