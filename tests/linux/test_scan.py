"""The content scan: which device is reported as one with a single media file, which is not, and what
hostile and dying devices can do to it."""

import contextlib
import json
import os
import pathlib
import shutil
import socket
import tempfile
import time

import pytest
from programs import built
from settings_helpers import Store, complaints

SINGLE_MEDIA = 25
PHOTO, VIDEO, MUSIC = 2, 3, 5

LIMIT = 60  # seconds
MOST_ENTRIES = 200_000
MOST_FOLDERS = 64


@pytest.fixture
def store(root):
    """The settings of the machine."""
    return Store(root)


@pytest.fixture
def disk(tmp_path):
    """A mounted device; removed at once, since some tests fill it."""
    folder = tmp_path / "disk"
    folder.mkdir()
    yield folder
    shutil.rmtree(folder, ignore_errors=True)


@pytest.fixture
def stubborn(probe, tmp_path):
    """Starts a probe that sees stubborn disks; `gate` is the pipe that opens theirs."""
    gate = tmp_path / "gate"
    os.mkfifo(gate)

    def start(**variables):
        options = os.environ.get("ASAN_OPTIONS", "")
        one = probe(
            env={
                "LD_PRELOAD": str(built("linux", "libstubborn-disk.so")),
                "ASAN_OPTIONS": f"{options}:verify_asan_link_order=0",
                "PORTMELD_TEST_GATE": str(gate),
                **variables,
            }
        )
        one.gate = gate
        return one

    return start


def threads(probe):
    """How many threads of its own it has; those of libraries have names."""
    process, count = pathlib.Path(f"/proc/{probe.process.pid}"), 0
    for name in process.glob("task/*/comm"):
        with contextlib.suppress(OSError):  # it has ended
            count += name.read_text() == (process / "comm").read_text()
    return count


def nothing_found(probe, *folders):
    """Scans folders to their end: nothing is told."""
    probe.call("settle")
    before = threads(probe)
    for folder in folders:
        assert probe.call("scan", folder) is not None
    end_of_threads(probe, before)
    assert probe.events_so_far() == []


def end_of_threads(probe, number):
    """Waits until a program has so many threads; the kernel tells nobody of their end."""
    end = time.monotonic() + LIMIT
    while threads(probe) > number:
        assert time.monotonic() < end, "the scan does not end"
        time.sleep(0.002)


def found(probe, folder):
    """Scans a folder with a single media file; returns what is told of it."""
    handle = probe.call("scan", folder)
    event = probe.event("scan")
    assert (event["handle"], event["user"], event["what"]) == (handle, 7, SINGLE_MEDIA)
    assert probe.events_so_far() == []
    return json.loads(event["json"])


# ---- what is found


@pytest.mark.parametrize(
    "name, kind", [("a.jpg", PHOTO), ("b.MP4", VIDEO), ("c.ts", VIDEO), ("d.mp3", MUSIC)]
)
def test_a_single_media_file_is_reported_wherever_it_is(probe, disk, name, kind):
    folder = disk / "one" / "two"
    folder.mkdir(parents=True)
    (disk / "text.txt").write_text("x")
    (folder / name).write_text("four")
    os.utime(folder / name, (1, 1_700_000_000))
    report = found(probe(), disk)
    tags = {"TITLE": "", "ARTIST": "", "ALBUM": ""} if kind == MUSIC else {}
    assert report == {
        "MEDIA_TYPE": kind,
        "DISPLAY_NAME": name,
        "FILE_PATH": str(folder / name),
        "SIZE": 4,
        "MODIFIED_TIME": 1_700_000_000,
        **tags,
    }


def test_a_name_of_any_bytes_is_reported_as_text(probe, disk):
    with open(os.fsencode(disk) + b"/\xff\n\x1f\"'{1}%s.jpg", "w"):
        pass
    report = found(probe(), disk)
    assert report["DISPLAY_NAME"].endswith("\"'{1}%s.jpg")


def test_no_media_file_and_several_are_no_result(probe, disk):
    none, two, far = disk / "none", disk / "two", disk / "far"
    for folder in [none / "empty", two / "x", far / "x" / "y"]:
        folder.mkdir(parents=True)
    for file in [none / "a.txt", two / "a.jpg", two / "b.jpg", far / "a.jpg", far / "x/y/b.mp3"]:
        file.touch()
    nothing_found(probe(), none, two, far)


def test_several_scans_report_for_themselves(probe, disk):
    one = probe()
    wanted = {}
    for number in range(8):
        folder = disk / f"{number}"
        folder.mkdir()
        (folder / "a.jpg").touch()
        wanted[one.call("scan", folder)] = str(folder / "a.jpg")
    assert len(wanted) == 8
    events = [one.event("scan") for _ in wanted]
    got = {event["handle"]: json.loads(event["json"])["FILE_PATH"] for event in events}
    assert got == wanted


def test_hidden_files_and_what_desktops_threw_away_do_not_count(probe, disk):
    for folder in [".hidden", ".Trash-1000", "$RECYCLE.BIN"]:
        (disk / folder).mkdir()
        (disk / folder / "a.mp4").touch()
    (disk / ".b.mp4").touch()
    (disk / "shown.mp4").touch()
    assert found(probe(), disk)["DISPLAY_NAME"] == "shown.mp4"


# ---- hostile devices


def test_what_is_no_regular_file_is_no_media(probe, disk):
    os.mkfifo(disk / "pipe.mp4")
    (disk / "folder.mp4").mkdir()
    (disk / "null.mp4").symlink_to("/dev/null")
    with socket.socket(socket.AF_UNIX) as listener:
        os.chdir(disk)  # the path of a socket must be short
        listener.bind("socket.mp4")
        nothing_found(probe(), disk)


def test_links_are_not_followed(probe, disk, tmp_path):
    (tmp_path / "outside").mkdir()
    (tmp_path / "outside" / "a.mp4").touch()
    (disk / "out").symlink_to(tmp_path / "outside")
    (disk / "file.mp4").symlink_to(tmp_path / "outside" / "a.mp4")
    (disk / "loop").symlink_to(".")
    (disk / "up").symlink_to("..")
    (disk / "x").mkdir()
    (disk / "x" / "loop").symlink_to("..")
    (disk / "x" / "real.jpg").touch()
    assert found(probe(), disk)["DISPLAY_NAME"] == "real.jpg"


def test_too_many_files_are_no_result_and_one_line(probe, store):
    one = probe()
    # In memory, where so many files are made in no time.
    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        for number in range(MOST_ENTRIES + 1):
            os.mknod(f"{folder}/{number}.txt")
        one.call("scan", folder)
        one.wait_for_error_line("too many files")
    assert len(complaints(one)) == 1
    assert one.events_so_far() == []


def test_endless_folders_are_no_result_and_one_line(probe, store, disk):
    (disk / "a.jpg").touch()
    (disk / "/".join(["d"] * (MOST_FOLDERS + 1))).mkdir(parents=True)
    one = probe()
    one.call("scan", disk)
    one.wait_for_error_line("too many files")
    assert len(complaints(one)) == 1
    assert one.events_so_far() == []


@pytest.mark.parametrize("mebibytes, title", [(64, "Song"), (65, "")])
def test_a_file_that_is_too_large_for_small_boards_is_music_without_tags(
    probe, disk, mebibytes, title
):
    frame = b"TIT2\0\0\0\5\0\0\0Song"
    with open(disk / "large.mp3", "wb") as file:
        file.write(b"ID3\3\0\0\0\0\0" + bytes([len(frame)]) + frame)
        file.truncate(mebibytes * 1024 * 1024)  # sparse
    assert found(probe(), disk)["TITLE"] == title


def test_a_music_file_of_zeros_is_music_without_tags(probe, disk):
    with open(disk / "zeros.mp3", "wb") as file:
        file.write(bytes(20 * 1024 * 1024))
    one = probe()
    start = time.monotonic()
    one.call("scan", disk)
    one.call("settle")
    answered = time.monotonic() - start
    report = json.loads(one.event("scan")["json"])
    whole = time.monotonic() - start
    assert (report["MEDIA_TYPE"], report["TITLE"]) == (MUSIC, "")
    assert answered < whole / 2, "the tags were read on the main thread"


def test_folders_that_cannot_be_read_are_left_out(probe, disk):
    # The administrator may read everything: he gives up that right for this.
    powerless = ["setpriv", "--bounding-set=-all", "--inh-caps=-all"] if os.geteuid() == 0 else []
    (disk / "locked").mkdir()
    (disk / "locked" / "a.jpg").touch()
    (disk / "b.jpg").touch()
    (disk / "locked").chmod(0)
    try:
        assert found(probe(wrapper=powerless), disk)["DISPLAY_NAME"] == "b.jpg"
    finally:
        (disk / "locked").chmod(0o700)


def test_a_device_that_is_not_there_is_no_result(probe, disk):
    (disk / "file.jpg").touch()
    nothing_found(probe(), disk / "nowhere", disk / "file.jpg", "")


def test_another_file_system_is_not_entered(probe, disk):
    (disk / "other").mkdir()
    (disk / "own.jpg").touch()
    rights = [] if os.geteuid() == 0 else ["-r"]
    # What would be found in there: a second file, and folders without end.
    mount = 'mount -t tmpfs tmpfs "$1" && touch "$1/a.jpg" && mkdir -p "$1/$2" && shift 2 && exec "$@"'
    endless = "/".join(["d"] * (MOST_FOLDERS + 1))
    namespace = ["unshare", *rights, "-m", "--propagation", "private"]
    wrapper = [*namespace, "sh", "-c", mount, "sh", disk / "other", endless]
    assert found(probe(wrapper=wrapper), disk)["DISPLAY_NAME"] == "own.jpg"


def test_a_file_system_that_tells_no_kinds_is_looked_through_all_the_same(stubborn, disk):
    (disk / "folder" / "below.mp4").mkdir(parents=True)
    os.mkfifo(disk / "folder" / "pipe.mp4")
    (disk / "link.mp4").symlink_to("folder/a.mp4")
    (disk / "folder" / "a.mp4").touch()
    one = stubborn(PORTMELD_TEST_KINDS="unknown")
    assert found(one, disk)["FILE_PATH"] == str(disk / "folder" / "a.mp4")
    (disk / "b.mp4").touch()
    nothing_found(one, disk)


# ---- stops, pulls and dead devices


def test_a_device_that_fails_in_the_middle_of_the_walk_is_no_result(stubborn, disk):
    for number in range(20):
        (disk / f"{number}.txt").touch()
    (disk / "a.mp4").touch()
    nothing_found(stubborn(PORTMELD_TEST_FAILS="22"), disk)
    whole = stubborn(PORTMELD_TEST_FAILS="1000")  # ".", "..", and all of them
    assert found(whole, disk)["DISPLAY_NAME"] == "a.mp4"


def test_a_stopped_scan_reports_nothing(stubborn, disk):
    (disk / "gate").mkdir()
    (disk / "a.jpg").touch()
    one = stubborn()
    one.call("settle")
    before = threads(one)
    handle = one.call("scan", disk)
    with open(one.gate, "w"):  # opens when the scan is at the gate, which opens at the end
        assert one.call("scan-stop", handle) == 0
        assert one.call("scan-stop", handle) == 0
    end_of_threads(one, before)
    assert one.events_so_far() == []


def test_a_scan_is_stopped_however_far_it_is(probe, disk):
    (disk / "a.jpg").touch()
    one = probe()
    one.call("settle")
    before = threads(one)
    first = one.call("scan", disk)
    one.event("scan")
    for handle in range(first + 1, first + 50):
        # Two orders in one go: what the scan has found in between cannot have been told.
        one.send(f"scan {disk}\nscan-stop {handle}")
        assert [one.take()["result"] for _ in range(2)] == [handle, 0]
        end_of_threads(one, before)
        assert one.events_so_far() == []


def test_a_scan_whose_result_is_on_its_way_can_still_be_stopped(probe, store, disk):
    store("db/x", "1\n")
    (disk / "a.jpg").touch()
    one = probe()
    # The main thread is busy while the scan comes to its end, and stops it without having looked.
    one.send(f"scan {disk}\nstore-values-seen db/x 20000\nscan-stop 1")
    assert [one.take()["result"] for _ in range(3)] == [1, ["1"], 0]
    assert one.events_so_far() == []


def test_any_handle_may_be_stopped_at_any_time(probe, disk):
    (disk / "a.jpg").touch()
    one = probe()
    for handle in [0, 1, 12345, -1]:
        assert one.call("scan-stop", handle) == 0
    first = one.call("scan", disk)
    one.event("scan")
    assert one.call("scan-stop", first) == 0
    second = one.call("scan", disk)
    assert second != first
    assert one.call("scan-stop", first) == 0
    assert one.event("scan")["handle"] == second


def a_file_before_the_gate(disk):
    """Makes a media file and a gate that a walk comes to in this order."""
    (disk / "gate").mkdir()
    for number in range(1000):
        file = disk / f"{number}.jpg"
        file.touch()
        if os.listdir(disk)[0] == file.name:
            return
        file.unlink()
    raise AssertionError("this file system always reads the folder first")


def test_a_stick_that_is_pulled_in_the_middle_of_the_scan_is_no_result(stubborn, disk):
    a_file_before_the_gate(disk)
    one = stubborn()
    one.call("settle")
    before = threads(one)
    assert one.call("scan", disk) is not None
    with open(one.gate, "w"):
        shutil.rmtree(disk)
    end_of_threads(one, before)
    assert one.events_so_far() == []


def test_a_device_that_never_answers_holds_nobody_up(stubborn, disk):
    """Neither the stop, nor another scan, nor the end of the process."""
    (disk / "dead" / "gate").mkdir(parents=True)
    (disk / "alive").mkdir()
    (disk / "alive" / "a.jpg").touch()
    one = stubborn()
    handle = one.call("scan", disk / "dead")
    assert one.call("scan-stop", handle) == 0
    assert one.call("scan", disk / "dead") is not None
    assert found(one, disk / "alive")["DISPLAY_NAME"] == "a.jpg"
    start = time.monotonic()
    one.close_input()
    assert one.see_end() == 0
    assert time.monotonic() - start < 20


def test_dead_devices_without_end_are_refused_with_one_line_each(stubborn, store, disk):
    (disk / "gate").mkdir()
    (disk / "a.jpg").touch()
    one = stubborn()
    for _ in range(16):
        assert one.call("scan", disk) is not None
    assert one.call("scan", disk) is None
    (line,) = complaints(one)
    assert "do not answer" in line


def test_the_process_may_end_in_the_middle_of_a_scan(probe, disk):
    for number in range(1000):
        (disk / f"{number}" / "x").mkdir(parents=True)
    with open(disk / "zeros.mp3", "wb") as file:
        file.write(bytes(20 * 1024 * 1024))
    for _ in range(5):
        one = probe()
        one.call("scan", disk)
        one.close_input()
        assert one.see_end() == 0
