"""A browser for the session; for each test a television, pages of it and a client of its bus."""

import pathlib
import re
import sys

import pytest

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent), str(HERE.parent.parent / "support")]

import client  # noqa: E402 (the path comes first)
from browser import WATCH, Browser  # noqa: E402

# The picture of a pop-up that is gone again before it was fetched is not there any more.
GONE = re.compile(r"status of 404 .*/icon\?path=")


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
    complaints = [text for page in pages for text in page.complaints() if not GONE.search(text)]
    missing = sum(page.count(".popup .missing") for page in pages)
    for page in pages:
        page.close()
    assert not complaints
    assert missing == 0, "a pop-up in view lacks a picture"


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
