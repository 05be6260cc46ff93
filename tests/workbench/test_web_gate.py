"""Who may come in: the token, and the headers that tell a browser's other pages from the workbench's
own."""

import pathlib
import re
import socket

import pytest

PAGE = pathlib.Path(__file__).resolve().parents[2] / "workbench" / "web" / "page"

UPGRADE = {
    "Upgrade": "websocket",
    "Connection": "Upgrade",
    "Sec-WebSocket-Key": "dGhlIHNhbXBsZSBub25jZQ==",
    "Sec-WebSocket-Version": "13",
}


@pytest.fixture
def run(web):
    return web()


def test_the_printed_address_opens_the_page(run):
    response = run.get("/")
    assert response.status == 200
    assert response.headers["Content-Type"] == "text/html; charset=utf-8"
    assert b"<!doctype html>" in response.bytes[:200].lower()


def test_the_page_may_run_nothing_but_its_own_files(run):
    policy = run.get("/").headers["Content-Security-Policy"]
    assert policy.startswith("default-src 'self';")
    assert "unsafe" not in policy
    assert "frame-ancestors 'none'" in policy


def test_the_first_answer_lets_the_browser_in_for_the_rest(run):
    cookie = run.get("/").headers["Set-Cookie"]
    assert "HttpOnly" in cookie and "SameSite=Strict" in cookie
    value = cookie.partition(";")[0]
    assert run.get("/", token=False, Cookie=f"other=1; {value}").status == 200
    assert run.get("/", token=False, Cookie=f"{value}x").status == 403


@pytest.mark.parametrize("path", ["/", "/ws", "/index.html", "/icon?path=x"])
def test_without_a_token_nobody_comes_in(run, path):
    response = run.get(path, token=False, **(UPGRADE if path == "/ws" else {}))
    assert response.status == 403
    assert response.bytes.count(b"\n") == 1
    assert b"token" in response.bytes


@pytest.mark.parametrize("token", ["", "0", "../", "é"])
def test_with_a_wrong_token_nobody_comes_in(run, token):
    assert run.get(f"/?token={token.encode().hex()}", token=False).status == 403
    wrong = run.token[:-1] + ("0" if run.token[-1] != "0" else "1")
    assert run.get(f"/?token={wrong}", token=False).status == 403


def test_a_wrong_token_is_not_helped_by_the_cookie(run):
    value = run.get("/").headers["Set-Cookie"].partition(";")[0]
    assert run.get("/?token=wrong", token=False, Cookie=value).status == 403


def test_each_run_has_a_token_of_its_own(run, web):
    other = web()
    assert re.fullmatch(r"[0-9a-f]{48}", run.token)
    assert other.token != run.token
    assert other.get(f"/?token={run.token}", token=False).status == 403


@pytest.mark.parametrize("host", ["evil.example", "evil.example:{port}", "127.0.0.1", "127.0.0.1:1", "[::1]:{port}"])
@pytest.mark.parametrize("path", ["/", "/ws"])
def test_another_host_name_is_refused(run, path, host):
    headers = UPGRADE if path == "/ws" else {}
    response = run.get(path, Host=host.format(port=run.port), **headers)
    assert response.status == 421
    assert "Set-Cookie" not in response.headers


def test_the_name_localhost_will_do(run):
    assert run.get("/", Host=f"localhost:{run.port}").status == 200


@pytest.mark.parametrize(
    "origin", ["http://evil.example", "http://127.0.0.1", "https://127.0.0.1:{port}", "null", "http://localhost:{port}"]
)
@pytest.mark.parametrize("path", ["/", "/ws"])
def test_a_request_of_another_page_is_refused(run, path, origin):
    headers = UPGRADE if path == "/ws" else {}
    response = run.get(path, Origin=origin.format(port=run.port), **headers)
    assert response.status == 403


def test_the_own_page_may_open_the_websocket(run):
    response = run.get("/ws", Origin=f"http://127.0.0.1:{run.port}", **UPGRADE)
    assert response.status == 101


@pytest.mark.parametrize("method", ["POST", "PUT", "DELETE", "OPTIONS"])
def test_there_is_nothing_to_do_but_to_get(run, method):
    assert run.get("/", method=method).status == 405


@pytest.mark.parametrize(
    "path", ["/nothing.js", "/../main.cpp", "/%2e%2e/main.cpp", "/..%2fmain.cpp", "//etc/passwd", "/ws/x"]
)
def test_no_other_file_is_given_out(run, path):
    assert run.get(path).status in (400, 404)


def test_every_file_of_the_page_is_in_the_program(run):
    files = [file for file in PAGE.rglob("*") if file.is_file()]
    assert files
    for file in files:
        response = run.get("/" + str(file.relative_to(PAGE)))
        assert response.status == 200, file
        assert response.bytes == file.read_bytes(), file
        assert "octet-stream" not in response.headers["Content-Type"], file


def test_a_folder_can_take_the_place_of_the_files_in_the_program(web, tmp_path):
    (tmp_path / "index.html").write_text("my own page")
    (tmp_path / "one.js").write_text("1")
    run = web("--bare", "--page", tmp_path)
    assert run.get("/").bytes == b"my own page"
    assert run.get("/one.js").headers["Content-Type"] == "text/javascript; charset=utf-8"
    assert run.get("/app.js").status == 404


def test_pictures_are_given_out_until_the_next_pop_up(run):
    page = run.page()
    page.order("plugSample", id="one-photo")
    popup = page.until_popup("play")
    paths = [popup["sourceIcon"], *(button["icon"] for button in popup["buttons"])]
    assert len(paths) == 3
    for path in paths:
        response = run.get("/icon?path=" + path)
        assert response.status == 200
        assert response.bytes.startswith(b"\x89PNG")
        assert response.headers["Content-Type"] == "image/png"
    page.order("hide")
    page.until(lambda: page.state["popup"] is None)
    assert [run.get("/icon?path=" + path).status for path in paths] == [200] * 3, "a page may still show it"
    page.order("pull", port=1)
    notice = page.until_popup("removal")
    gone = set(paths) - {notice["sourceIcon"]}
    assert gone and {run.get("/icon?path=" + path).status for path in gone} == {404}


@pytest.mark.parametrize("path", ["/etc/passwd", "", "./root/usr/bin/portmeld.interface.xml"])
def test_no_other_file_is_a_picture(run, path):
    page = run.page()
    page.order("plugSample", id="one-photo")
    page.until_popup("play")
    assert run.get("/icon?path=" + path).status == 404


def test_a_pop_up_cannot_make_a_picture_of_any_file(run):
    page = run.page()
    page.order("setting", key="dlnaIcon", value="/etc/passwd")
    page.order("setting", key="dlnaName", value="Media Server")
    assert page.until_popup("removal")["sourceIcon"] == "/etc/passwd"
    assert run.get("/icon?path=/etc/passwd").status == 404


def test_it_listens_on_the_loopback_address_only(run):
    lines = pathlib.Path("/proc/net/tcp").read_text().splitlines()[1:]
    listening = [line.split()[1] for line in lines if line.split()[3] == "0A"]
    ours = [place for place in listening if int(place.partition(":")[2], 16) == run.port]
    assert ours == [f"0100007F:{run.port:04X}"]
    lines = pathlib.Path("/proc/net/tcp6").read_text().splitlines()[1:]
    assert not [line for line in lines if line.split()[1].endswith(f":{run.port:04X}")]


def test_the_port_can_be_chosen(web):
    with socket.socket() as free:
        free.bind(("127.0.0.1", 0))
        port = free.getsockname()[1]
    assert web("--bare", "--port", port).port == port
