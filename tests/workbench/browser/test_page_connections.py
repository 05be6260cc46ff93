"""Several pages, pages that come late, pages that may not come in, and the end of the program."""

import http.server
import threading

import pytest

from browser import WATCH


def origin(television):
    """The address without path and token."""
    return f"http://127.0.0.1:{television.port}"


def seconds(page):
    """The seconds that a pop-up still has."""
    return int(page.see(".popup-seconds").split()[0])


def test_a_second_page_shows_and_does_the_same(page, open_page):
    other = open_page()
    page.click("[data-sample=one-photo]")
    other.see(".popup-button.chosen", text="Play")
    other.press("t", "ArrowRight")
    page.see(".popup-button.chosen", text="Cancel")
    other.press("ArrowLeft", "Enter")
    page.see(".launched-name", text="Photo player")
    assert other.see(".track-name") == page.see(".track-name")
    page.stop_time()
    page.click("role=button[name='Home']")
    other.gone(".launched")
    other.click("role=button[name='Pull port 1']")
    page.see(".popup.notice")


def test_a_reload_finds_the_popup_with_the_time_that_is_left(page):
    page.click("role=button[name='10×']")
    page.click("[data-sample=mixed]")
    page.see(".popup")
    whole = seconds(page)
    page.until(f"parseInt(document.querySelector('.popup-seconds').innerText) < {whole - 2}")
    page.stop_time()
    left = seconds(page)
    page.do("reload")
    assert page.see(".popup-title") == "New device connected: Holiday"
    assert left - 2 <= seconds(page) <= left
    page.press("Enter")
    page.see(".launched-name", text="Content browser")


def test_a_late_page_is_told_log_wire_and_devices_of_before(page, open_page):
    page.click("[data-sample=mixed]")
    page.see(".popup")
    late = open_page()
    late.see(".device summary", text="Holiday")
    late.see(".wire-row .row-member >> nth=0", text="Connect")
    late.click("role=tab[name='Log']")
    late.until("Number(document.querySelector('#panel-log .stream-count').innerText) > 20")


def test_the_token_stays_neither_in_the_address_nor_in_the_history(page, television):
    assert page.run("location.href") == origin(television) + "/"
    assert page.run("navigation.entries().filter(({ url }) => url.includes('token')).length") == 0
    page.do("reload")
    page.see(".status[data-status=open]")
    page.see("[data-sample=one-photo]")
    assert page.run("document.cookie + JSON.stringify({ ...sessionStorage, ...localStorage })").count(
        television.token
    ) == 0


def test_a_page_of_another_server_gets_neither_in_nor_the_cookie_by_script(browser, page, television):
    # Cookies know no ports: this one's requests carry the cookie, and only the gate keeps it out.
    class Elsewhere(http.server.BaseHTTPRequestHandler):
        def do_GET(self):
            self.send_response(200)
            self.end_headers()

        def log_message(self, *_):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Elsewhere)
    threading.Thread(target=server.serve_forever).start()
    try:
        address = f"http://127.0.0.1:{server.server_port}/"
        stranger = browser.open(address, beside=page.name)
        outcome = stranger.run(
            f"""new Promise((resolve) => {{
                  const socket = new WebSocket("ws://127.0.0.1:{television.port}/ws");
                  socket.onopen = () => resolve("open");
                  socket.onerror = () => resolve("refused");
                }})"""
        )
        assert outcome == "refused"
        assert stranger.run("document.cookie") == ""
        read = f'fetch("{origin(television)}/").then((r) => r.text(), () => "refused")'
        assert stranger.run(read) == "refused"
        stranger.close()
    finally:
        server.shutdown()
        server.server_close()


def count_changes(page):
    """Has the page count what changes in its veil and in the words of its status."""
    page.run(
        """(() => {
          window.changes = [];
          const observer = new MutationObserver((all) => all.forEach((one) => window.changes.push(
            one.type === "attributes" ? `veil ${one.target.hidden}` : one.target.className || one.target.id)));
          const veil = document.querySelector("#veil");
          observer.observe(veil, { attributes: true, childList: true });
          observer.observe(document.querySelector(".status"), { childList: true, characterData: true, subtree: true });
        })()"""
    )


def test_a_line_that_is_back_at_once_is_no_news(watched):
    page = watched
    count_changes(page)
    for tries in (2, 3):
        page.run("window.sockets.at(-1).close()")
        page.until(f"window.sockets.length === {tries} && window.sockets.at(-1).readyState === 1")
    page.click("[data-sample=one-photo]")
    page.see(".popup-button.chosen", text="Play")
    assert page.run("window.changes") == []
    assert page.see(".status[data-status=open]") == "Connected"


def test_a_line_that_stays_away_is_told_once_however_often_it_is_tried(browser, television):
    # Opened without the check for complaints: the browser complains of each try.
    page = browser.open(television.address.geturl(), script=WATCH)
    page.see(".status[data-status=open]")
    count_changes(page)
    page.run(
        "window.WebSocket = class extends WebSocket { constructor() { super(`ws://${location.host}/none`); } }"
    )
    page.run("window.sockets.at(-1).close()")
    page.see("#veil [role=alert]", text="does not answer")
    tried = page.run("window.sockets.length")
    page.until(f"window.sockets.length >= {tried + 2}")
    assert page.run("window.changes") == ["status", "veil false", "veil"]
    page.close()


@pytest.mark.parametrize("query", ["", "?token=", "?token=wrong"])
def test_without_the_right_token_one_line_tells_what_is_missing(browser, television, query):
    page = browser.open(f"{origin(television)}/{query}")
    assert page.status == 403
    assert "token" in page.answer and len(page.answer.strip().splitlines()) == 1
    assert page.count("#tv") == 0
    page.close()


def test_another_page_of_this_machine_cannot_drive_the_television(browser, television, page):
    # "localhost" is another origin than the address, so cookies and rights of it do not count.
    stranger = browser.open(television.address.geturl().replace("127.0.0.1", "localhost"))
    assert stranger.status == 200
    address = television.address.geturl().replace("http:", "ws:").replace("/?", "/ws?")
    outcome = stranger.run(
        f"""new Promise((resolve) => {{
              let socket;
              try {{ socket = new WebSocket("{address}"); }} catch (error) {{ resolve("refused"); return; }}
              socket.onopen = () => resolve("open");
              socket.onerror = () => resolve("refused");
            }})"""
    )
    assert outcome == "refused"
    stranger.close()


def test_a_wrong_token_opens_no_websocket(browser, television):
    page = browser.open(origin(television) + "/?token=wrong")
    address = origin(television).replace("http:", "ws:") + "/ws?token=wrong"
    outcome = page.run(
        f"""new Promise((resolve) => {{
              const socket = new WebSocket("{address}");
              socket.onopen = () => resolve("open");
              socket.onerror = () => resolve("refused");
            }})"""
    )
    assert outcome == "refused"
    page.close()


def test_the_end_of_the_program_is_told_on_the_page(browser, television):
    page = browser.open(television.address.geturl())
    page.see(".status[data-status=open]")
    assert television.finish() == 0
    page.see("#veil [role=alert]", text="does not answer")
    assert page.see(".status") == "Not connected"
    page.close()


def test_a_call_that_ends_the_daemon_is_only_made_on_purpose_and_told_as_the_reason(browser, television):
    page = browser.open(television.address.geturl())
    page.click("role=tab[name='Call']")
    page.choose("select.methods", {"label": "GetPhotoBGMPlayListItem"})
    page.click("role=button[name='Call']")
    page.see(".call-form .notice", text="index: a whole number")
    page.click("role=tab[name='Log']")
    page.see(".log-row >> nth=0")
    page.fill("role=spinbutton[name='index']", "3")
    page.click("role=button[name='Call']")
    told = page.see("#veil [role=alert]", text="does not answer")
    assert "during: GetPhotoBGMPlayListItem" in told
    assert "The last line of the daemon's log: " in told
    page.close()


def test_the_page_takes_nothing_from_elsewhere(page, television):
    page.click("[data-sample=one-photo]")
    page.see(".popup-source")
    page.until("document.querySelector('.popup-source').naturalWidth > 0")
    sources = page.run("performance.getEntriesByType('resource').map((entry) => entry.name)")
    assert len(sources) > 20
    assert [source for source in sources if not source.startswith(origin(television))] == []
