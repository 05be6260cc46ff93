"""The tests' hold on a browser: pages that are clicked, typed into and looked at.

A node process with playwright-core drives the distribution's Chromium. playwright-core is fetched
from npm into the build folder, in the version and with the checksum of package-lock.json; nothing
else is.
"""

import itertools
import json
import os
import pathlib
import shutil
import subprocess

import child

HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parents[2]
BUILD = PROJECT / "build" / "browser"


# Keeps what a page sends, and its connections: window.orders holds [name, values] of each order.
WATCH = """
window.sockets = [];
window.orders = [];
window.WebSocket = class extends WebSocket {
  constructor(...given) {
    super(...given);
    window.sockets.push(this);
  }
  send(text) {
    const order = JSON.parse(text);
    if (order.do !== "ack") {
      window.orders.push([order.do, order.with]);
    }
    super.send(text);
  }
};
"""


class BrowserError(Exception):
    """The browser could not do what was asked, or what was awaited did not come."""


def source_folder():
    """The project's folder."""
    return PROJECT


def modules():
    """The folder with playwright-core, fetched when it is not there in the wanted version."""
    lock = (HERE / "package-lock.json").read_bytes()
    mark = BUILD / "installed-lock.json"
    if not mark.exists() or mark.read_bytes() != lock:
        BUILD.mkdir(parents=True, exist_ok=True)
        for name in ("package.json", "package-lock.json"):
            shutil.copy(HERE / name, BUILD / name)
        subprocess.run(
            ["npm", "ci", "--ignore-scripts", "--no-audit", "--no-fund"],
            cwd=BUILD,
            check=True,
            timeout=300,
        )
        mark.write_bytes(lock)
    return BUILD


class Browser(child.Child):
    """One Chromium."""

    def __init__(self):
        program = shutil.which("chromium")
        assert program, "chromium is not installed"
        super().__init__(
            ["node", str(HERE / "driver.mjs")],
            env={
                **os.environ,
                "BROWSER_MODULES": str(modules() / "package.json"),
                "BROWSER_PROGRAM": program,
            },
        )
        self._numbers = itertools.count(1)

    def order(self, page, action, *arguments, selector=None, text=None):
        """Has something done and returns what came of it."""
        number = next(self._numbers)
        order = {"id": number, "page": page, "do": action, "args": arguments}
        self.send(json.dumps({**order, "selector": selector, "text": text}))
        answer = self.take(lambda one: one["id"] == number)
        if "error" in answer:
            raise BrowserError(answer["error"])
        return answer["result"]

    def open(self, address, **options):
        """Opens a page with cookies and storage of its own, or with those of the page `beside`;
        `script` is evaluated before its own. Other options are Playwright's."""
        return Page(self, f"page {next(self._numbers)}", address, options)


class Page:
    """One page. Selectors are Playwright's: CSS, and "text=…", "role=button[name=…]" and the like."""

    def __init__(self, browser, name, address, options):
        self._browser = browser
        self.name = name
        answer = self.do("open", address, options)
        self.status = answer["status"]
        self.answer = answer["text"]

    def do(self, action, *arguments, selector=None, text=None):
        """Any method of the page, or of what a selector finds."""
        return self._browser.order(self.name, action, *arguments, selector=selector, text=text)

    def click(self, selector):
        """Clicks; waits until that is possible."""
        self.do("click", selector=selector)

    def fill(self, selector, text):
        """Types into a field, in place of what it holds."""
        self.do("fill", text, selector=selector)

    def choose(self, selector, value):
        """Chooses an option of a list."""
        self.do("selectOption", value, selector=selector)

    def press(self, *keys):
        """Presses keys, one after the other."""
        for key in keys:
            self.do("keyboard.press", key)

    def see(self, selector, text=None):
        """Waits until exactly one such element is visible; returns its text."""
        self.do("waitFor", {"state": "visible"}, selector=selector, text=text)
        return self.do("innerText", selector=selector, text=text)

    def gone(self, selector, text=None):
        """Waits until no such element is visible."""
        self.do("waitFor", {"state": "hidden"}, selector=selector, text=text)

    def count(self, selector):
        """How many there are now."""
        return self.do("count", selector=selector)

    def box(self, selector):
        """Where it stands: x, y, width, height."""
        return self.do("boundingBox", selector=selector)

    def run(self, expression):
        """Evaluates JavaScript in the page."""
        return self.do("evaluate", expression)

    def stop_time(self):
        """Stops the television's clock, so that what is shown stays."""
        self.click("role=button[name='Stop']")
        self.see(".segments [data-value=stopped][aria-pressed=true]")

    def until(self, expression):
        """Waits until JavaScript in the page is true."""
        self.do("until", expression)

    def focused(self):
        """What has the focus, in words: its name, else its text."""
        return self.run(
            "document.activeElement.getAttribute('aria-label') || document.activeElement.innerText"
        )

    def complaints(self):
        """Errors in the page's console so far, refused content among them."""
        return self.do("complaints")

    def screenshot(self, path):
        """Stores what is seen as a PNG file."""
        self.do("screenshot", {"path": str(path)})

    def close(self):
        """Closes it."""
        self.do("close")
