"""What a page, or a bus that goes away, can do to the program: no more than a little."""

import contextlib
import ctypes
import json
import os
import signal
import socket
import stat
import subprocess

import pytest

from web_process import Failed
from workbench_process import bus_daemons, environment, program, temporary_folder

HEAD = "portmeld-scenario 1\n"

PIDFD_GETFD = 438


@contextlib.contextmanager
def silent_bus(run):
    """The bus of a run carries nothing meanwhile."""
    (bus,) = bus_daemons(run.temporary)
    os.kill(bus, signal.SIGSTOP)
    try:
        yield
    finally:
        os.kill(bus, signal.SIGCONT)


def sockets_to_the_bus(process):
    """Copies of the connections of a process to its bus."""
    found = []
    process_file = os.pidfd_open(process.pid)
    for number in sorted(int(name) for name in os.listdir(f"/proc/{process.pid}/fd")):
        copy = ctypes.CDLL(None, use_errno=True).syscall(PIDFD_GETFD, process_file, number, 0)
        assert copy >= 0, os.strerror(ctypes.get_errno())
        if not stat.S_ISSOCK(os.fstat(copy).st_mode):
            os.close(copy)
            continue
        one = socket.socket(fileno=copy)
        with contextlib.suppress(OSError):
            if one.family == socket.AF_UNIX and b"portmeld-workbench" in os.fsencode(one.getpeername()):
                found.append(one)
                continue
        one.close()
    os.close(process_file)
    return found


def waiting(one):
    """How many bytes wait to be read from a socket."""
    with contextlib.suppress(BlockingIOError):
        return len(one.recv(1 << 20, socket.MSG_PEEK | socket.MSG_DONTWAIT))
    return 0


def deafen(process):
    """Cuts the connection by which a process hears what others say on its bus: while the process sleeps, a
    word to the bus alone waits for it there and nowhere else."""
    os.kill(process.pid, signal.SIGSTOP)
    connections = sockets_to_the_bus(process)
    path = os.fsdecode(connections[0].getpeername())
    ask = ["gdbus", "call", "--address", f"unix:path={path}", "--dest", "org.freedesktop.DBus",
           "--object-path", "/org/freedesktop/DBus", "--method", "org.freedesktop.DBus.GetId"]
    # The first word is behind whatever the process itself had said.
    subprocess.run(ask, check=True, capture_output=True, timeout=30)
    before = [waiting(one) for one in connections]
    subprocess.run(ask, check=True, capture_output=True, timeout=30)
    (ear,) = [one for one, size in zip(connections, before) if waiting(one) > size]
    ear.shutdown(socket.SHUT_RDWR)
    os.kill(process.pid, signal.SIGCONT)
    for one in connections:
        one.close()


# ---- orders that wait


def test_orders_that_wait_are_limited(web):
    run = web()
    page = run.page()
    page.order("record", on=True)
    long = "x" * 1000000
    with silent_bus(run):
        numbers = [page.send("hide", long=long) for _ in range(5)]
        refused = page.until(lambda: [m for m in page.messages if m.get("id") in numbers])
        assert [(m["id"], m["error"]) for m in refused] == [(numbers[-1], "too many orders wait for their turn")]
    page.until(lambda: len([m for m in page.messages if m.get("id") in numbers]) == 5)
    with pytest.raises(Failed, match="there is no pop-up"):
        page.order("hide", long=long)


def test_a_page_that_never_acknowledges_long_answers_is_let_go(web, tmp_path):
    for number in range(4000):
        (tmp_path / (str(number) * 50)).mkdir()
    run = web()
    page = run.page(acknowledges=False)
    for _ in range(20):
        with contextlib.suppress(OSError):
            answer = page.send("folders", path=str(tmp_path))
            with page._changed:
                page._changed.wait_for(lambda: not page.is_open or page.messages[-1].get("id") == answer, 60)
    page.until_gone()
    assert 7_000_000 < sum(len(json.dumps(m)) for m in page.messages) < 9_000_000
    run.page().order("companion", running=True)


# ---- a bus that goes away


def test_a_replay_without_a_page_ends_with_its_bus(tmp_path):
    file = tmp_path / "long.scenario"
    file.write_text(HEAD + "after 1\n" * 200000)
    with temporary_folder() as temporary:
        run = subprocess.Popen(
            [program(), "--replay", str(file), "--headless"],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=environment(temporary),
        )
        try:
            assert run.stdout.readline() == b"ok 2 after 1\n"
            (bus,) = bus_daemons(temporary)
            os.kill(bus, signal.SIGKILL)
            lines, complaints = run.communicate(timeout=60)
        finally:
            run.kill()
            run.wait()
    assert run.returncode == 1
    assert b"the scenario was not replayed to its end" in complaints
    assert b"expectations held" not in lines


def test_a_page_is_told_that_nothing_is_heard_any_more(web):
    run = web()
    page = run.page()
    page.order("record", on=True)
    deafen(run.process)
    page.until(lambda: any("nothing of the bus is heard any more" in line["message"] for line in page.log))
    page.order("plugSample", id="one-film")
    page.until_popup("play")
    page.order("replay", text=HEAD + "expect popup play\n")
    page.until(lambda: any(m["type"] == "replayEnd" and m["ok"] for m in page.messages))
    assert run.finish() == 0
    assert "nothing of the bus is heard any more" in run.errors


def test_a_replay_without_a_page_that_cannot_listen_any_more_fails(tmp_path):
    file = tmp_path / "long.scenario"
    file.write_text(HEAD + "after 1\n" * 200000)
    with temporary_folder() as temporary:
        run = subprocess.Popen(
            [program(), "--replay", str(file), "--headless"],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=environment(temporary),
        )
        try:
            assert run.stdout.readline() == b"ok 2 after 1\n"
            deafen(run)
            _, complaints = run.communicate(timeout=60)
        finally:
            run.kill()
            run.wait()
    assert run.returncode == 1
    assert b"nothing of the bus is heard any more" in complaints
