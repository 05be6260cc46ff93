"""The workbench with its page, without a browser: a child process, HTTP requests to it, and pages that
speak its protocol over a WebSocket of their own making."""

import base64
import contextlib
import http.client
import json
import os
import pathlib
import signal
import socket
import struct
import subprocess
import threading
import time
import urllib.parse

from workbench_process import bus_daemons, environment, program, temporary_folder, until

TIME_LIMIT = float(os.environ.get("PORTMELD_TEST_LIMIT", "30"))


class Failed(Exception):
    """An order could not be carried out."""


class WebWorkbench:
    """A run of the web form."""

    def __init__(self, *arguments):
        self._folders = contextlib.ExitStack()
        self.temporary = self._folders.enter_context(temporary_folder())
        self._pages = []
        self._complaints = self.temporary.parent / (self.temporary.name + ".errors")
        with open(self._complaints, "wb") as complaints:
            self.process = subprocess.Popen(
                [program(), *map(str, arguments)],
                stdin=subprocess.DEVNULL,
                stdout=subprocess.PIPE,
                stderr=complaints,
                env=environment(self.temporary),
            )
        line = self.process.stdout.readline().decode()
        assert line.startswith("Open http://127.0.0.1:"), line + self.errors
        self.address = urllib.parse.urlsplit(line.removeprefix("Open ").strip())
        self.port = self.address.port
        self.token = urllib.parse.parse_qs(self.address.query)["token"][0]

    @property
    def errors(self):
        """What it complained of."""
        return self._complaints.read_text()

    def get(self, path, method="GET", token=True, **headers):
        """Makes a request; returns the response, read to its end as `text`."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=TIME_LIMIT)
        if token:
            path += ("&" if "?" in path else "?") + "token=" + self.token
        connection.putrequest(method, path, skip_host="Host" in headers)
        for name, value in headers.items():
            connection.putheader(name, value)
        connection.endheaders()
        response = connection.getresponse()
        response.bytes = response.read()
        connection.close()
        return response

    def page(self, **options):
        """Opens one more page."""
        page = WebPage(self, **options)
        self._pages.append(page)
        return page

    def finish(self, number=signal.SIGTERM):
        """Switches it off; returns the exit status."""
        if self.process.poll() is None and number is not None:
            self.process.send_signal(number)
        return self.process.wait(TIME_LIMIT)

    def close(self):
        """Ends whatever is left."""
        try:
            self.finish()
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        assert until(lambda: not bus_daemons(self.temporary)), "the bus is still there"
        self.process.stdout.close()
        for page in self._pages:
            page.close()
        self._complaints.unlink()
        self._folders.close()


class WebPage:
    """One page: `state` is what it was told, `log` and `wire` the lines, `messages` everything."""

    def __init__(self, workbench, acknowledges=True, reads=True):
        self._changed = threading.Condition()
        self._acknowledges = acknowledges
        self._next = 0
        self.hello = None
        self.state = {}
        self.history = []  # (path, value) of every change
        self.log = []
        self.wire = []
        self.messages = []
        self.is_open = True
        self.socket = socket.create_connection(("127.0.0.1", workbench.port), TIME_LIMIT)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self._stream = self.socket.makefile("rb")
        key = base64.b64encode(os.urandom(16)).decode()
        self.socket.sendall(
            f"GET /ws?token={workbench.token} HTTP/1.1\r\nHost: 127.0.0.1:{workbench.port}\r\n"
            f"Origin: http://127.0.0.1:{workbench.port}\r\nUpgrade: websocket\r\n"
            f"Connection: Upgrade\r\nSec-WebSocket-Key: {key}\r\n"
            "Sec-WebSocket-Version: 13\r\n\r\n".encode()
        )
        status = self._stream.readline().split()[1]
        assert status == b"101", status
        while self._stream.readline() != b"\r\n":
            pass
        self.socket.settimeout(None)
        if reads:
            self.read()

    # ---- what the page is told

    def read(self):
        """Begins to read what is sent."""
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        self.until(lambda: self.state)

    def until(self, condition, what="what was waited for", limit=TIME_LIMIT):
        """Waits until a condition holds, and returns its value."""
        end = time.monotonic() + limit
        with self._changed:
            while not (value := condition()):
                left = end - time.monotonic()
                assert left > 0 and self.is_open, f"{what} has not come; state: {self.state}"
                self._changed.wait(left)
            return value

    def until_popup(self, kind):
        """Waits for a pop-up of a kind, and returns it."""
        return self.until(
            lambda: (self.state["popup"] or {}).get("kind") == kind and self.state["popup"], kind
        )

    def until_gone(self):
        """Waits until the program closes the connection."""
        with self._changed:
            assert self._changed.wait_for(lambda: not self.is_open, TIME_LIMIT)

    # ---- what the page says

    def order(self, name, /, **values):
        """Gives an order, waits for it to be carried out, and returns the result."""
        number = self.send(name, **values)
        answer = self.until(
            lambda: next((m for m in self.messages if m.get("id") == number), None), name
        )
        if answer["type"] == "failed":
            raise Failed(answer["error"])
        return answer["result"]

    def send(self, name, /, **values):
        """Gives an order and returns its number."""
        self._next += 1
        self.write(json.dumps({"id": self._next, "do": name, "with": values}))
        return self._next

    def write(self, text):
        """Sends a text."""
        data = text.encode()
        mask = os.urandom(4)
        head = b"\x81" + (
            struct.pack("!B", 0x80 | len(data))
            if len(data) < 126
            else struct.pack("!BH", 0xFE, len(data))
            if len(data) < 65536
            else struct.pack("!BQ", 0xFF, len(data))
        )
        self.socket.sendall(head + mask + bytes(b ^ mask[i % 4] for i, b in enumerate(data)))

    def close(self):
        """Leaves without a word, as a page that is reloaded does."""
        with contextlib.suppress(OSError):
            self.socket.shutdown(socket.SHUT_RDWR)
        self.socket.close()

    # ---- reading

    def _read(self):
        with contextlib.suppress(OSError, ValueError, struct.error):
            while True:
                first, second = struct.unpack("!BB", self._stream.read(2))
                size = second & 0x7F
                if size == 126:
                    (size,) = struct.unpack("!H", self._stream.read(2))
                elif size == 127:
                    (size,) = struct.unpack("!Q", self._stream.read(8))
                data = self._stream.read(size)
                if first & 0x0F == 8:
                    break
                if first & 0x0F == 1:
                    self._take(json.loads(data))
        with self._changed:
            self.is_open = False
            self._changed.notify_all()

    def _take(self, message):
        with self._changed:
            self.messages.append(message)
            kind = message["type"]
            if kind == "hello":
                self.hello = message
            elif kind == "state":
                self.state = message["state"]
            elif kind == "change":
                self.state[message["path"]] = message["value"]
                self.history.append((message["path"], message["value"]))
            elif kind == "log":
                self.log += message["lines"]
            elif kind == "wire":
                self.wire += message["messages"]
            elif kind == "logCleared":
                self.log = []
            self._changed.notify_all()
        if self._acknowledges:
            with contextlib.suppress(OSError):
                self.write(json.dumps({"do": "ack", "with": {"seq": message["seq"]}}))


def replayed(text, folder, *arguments):
    """Replays a scenario without a page: (exit status, lines, complaints)."""
    file = pathlib.Path(folder) / "test.scenario"
    file.write_text(text)
    with temporary_folder() as temporary:
        done = subprocess.run(
            [program(), "--replay", str(file), "--headless", *arguments],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            env=environment(temporary),
            timeout=2 * TIME_LIMIT,
            check=False,
        )
        assert not list(temporary.iterdir()), "files were left behind"
    return done.returncode, done.stdout.splitlines(), done.stderr
