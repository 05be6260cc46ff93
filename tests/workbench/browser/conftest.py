"""A browser for the session; for each test a television, pages of it and a client of its bus."""

import pathlib
import sys

import pytest

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent), str(HERE.parent.parent / "support")]

import client  # noqa: E402 (the path comes first)
from browser import WATCH, Browser  # noqa: E402


@pytest.fixture(scope="session")
def browser():
    """One Chromium for all tests."""
    one = Browser()
    yield one
    one.close_input()
    one.wait_for_end()
    one.kill()


@pytest.fixture
def television(web):
    """A television with nothing plugged in, in real time."""
    return web()


@pytest.fixture
def open_page(browser, television):
    """Opens a page of the television: open_page(**options). No page may complain of anything."""
    pages = []

    def begin(**options):
        page = browser.open(television.address.geturl(), **options)
        pages.append(page)
        page.see(".status[data-status=open]")
        page.see("[data-sample=one-photo]")
        return page

    yield begin
    # The picture of a pop-up that is gone again before it was fetched is not there any more.
    complaints = [text for page in pages for text in page.complaints() if "/icon?" not in text]
    for page in pages:
        page.close()
    assert not complaints


@pytest.fixture
def page(open_page):
    """A page of the television."""
    return open_page()


@pytest.fixture
def watched(open_page):
    """A page that keeps what it sends: see WATCH."""
    return open_page(script=WATCH)


@pytest.fixture
def bus_client(page):
    """A client of the daemon's bus, in a process of its own."""
    process = client.ClientProcess(page.see(".bus"))
    yield process.clients[0]
    process.kill()
