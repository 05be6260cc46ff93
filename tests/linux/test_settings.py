"""Settings are files: what is in them, what is refused, and what many writers at once do to them."""

import os
import signal
import stat
import subprocess

import pytest
from settings_helpers import RUNTIME, STATE, Store, complaints

LIMIT = 64 * 1024


@pytest.fixture
def store(root):
    """The settings of the machine."""
    return Store(root)


# ---- values


@pytest.mark.parametrize("content", ["de_DE\n", "de_DE"])
def test_a_text_is_the_files_content_without_the_line_feed_at_its_end(probe, store, content):
    store("db/menu_widget/language", content)
    one = probe()
    assert one.call("get-str", "db/menu_widget/language") == "de_DE"
    assert complaints(one) == []


@pytest.mark.parametrize(
    "content, text", [("\n", ""), ("a\n\n", "a\n"), (" a \n", " a "), ("ä\u2028€\n", "ä\u2028€")]
)
def test_nothing_but_one_line_feed_is_taken_off(probe, store, content, text):
    store("db/x", content)
    assert probe().call("get-str", "db/x") == text


@pytest.mark.parametrize("key", ["db/menu/support/use_mode", "memory/portmeld/number"])
@pytest.mark.parametrize("number", [0, 1, -1, 2147483647, -2147483648])
def test_a_number_is_decimal(probe, store, key, number):
    store(key, f"{number}\n")
    assert probe().call("get-int", key) == number


@pytest.mark.parametrize(
    "content", ["", "one\n", "1.5\n", "2147483648\n", "0x10\n", "1 \n", "+1\n", "\n", "1\n2\n"]
)
def test_what_is_no_number_is_a_failed_read_with_one_line(probe, store, content):
    store("db/x", content)
    one = probe()
    assert one.call("get-int", "db/x") is None
    (line,) = complaints(one)
    assert "db/x" in line and "write" in line


@pytest.mark.parametrize("content, truth", [("0", 0), ("1\n", 1), ("true\n", 1), ("false\n", 0)])
def test_a_truth_value_is_a_digit_or_a_word(probe, store, content, truth):
    store("db/x", content)
    assert probe().call("get-bool", "db/x") == truth


@pytest.mark.parametrize("content", ["2\n", "yes\n", "TRUE\n", "-1\n", "\n"])
def test_what_is_no_truth_value_is_a_failed_read_with_one_line(probe, store, content):
    store("db/x", content)
    one = probe()
    assert one.call("get-bool", "db/x") is None
    assert len(complaints(one)) == 1


def test_a_long_or_hostile_value_is_not_told_in_full(probe, store):
    store("db/x", "\033[2J" + "x" * 60_000 + "\n")
    one = probe()
    assert one.call("get-int", "db/x") is None
    (line,) = complaints(one)
    assert len(line) < 300 and "\033" not in line


def test_an_unset_key_is_a_failed_read_without_a_line(probe, store):
    one = probe()
    store("db/file", "1\n")
    for key in ["db/x", "db/x/y", "memory/x", "db/file/below"]:
        for get in ["get-int", "get-bool", "get-str"]:
            assert one.call(get, key) is None
    assert complaints(one) == []


def test_a_fault_is_told_once_until_it_is_another_or_was_mended(probe, store):
    store("db/x", "one\n")
    one = probe()
    for _ in range(3):
        assert one.call("get-int", "db/x") is None
    assert len(complaints(one)) == 1
    store("db/x", "two\n")
    one.call("get-int", "db/x")
    assert len(complaints(one)) == 2
    store("db/x", "2\n")
    assert one.call("get-int", "db/x") == 2
    store("db/x", "two\n")
    one.call("get-int", "db/x")
    assert len(complaints(one)) == 3


# ---- files that are no settings


def unreadable(probe, key, *words):
    """One failed read of each kind, and the line about it, which names the key and all the words."""
    for get in ["get-str", "get-int", "get-bool"]:
        assert probe.call(get, key) is None
    (line,) = complaints(probe)
    for word in [key, *words]:
        assert word in line
    return line


@pytest.mark.parametrize(
    "content, cause",
    [
        (b"", "empty"),
        (b"a\xffb\n", "UTF-8"),
        (b"de\xc3", "UTF-8"),
        (b"1\0\n", "NUL"),
        (b"x" * (LIMIT + 1), "64 KiB"),
        (b"x" * 1024 * 1024, "64 KiB"),
    ],
    ids=["half written", "not UTF-8", "half a character", "NUL", "a byte too long", "1 MB"],
)
def test_a_file_that_holds_no_value_is_a_failed_read_with_one_line(probe, store, content, cause):
    store("db/a/x", content)
    unreadable(probe(), "db/a/x", cause)


def test_a_file_of_the_largest_size_is_read(probe, store):
    store("db/x", b"x" * (LIMIT - 1) + b"\n")
    assert probe().call("get-str", "db/x") == "x" * (LIMIT - 1)


def test_a_pipe_is_a_failed_read_and_never_waited_for(probe, store):
    os.mkfifo(store.path("db/x"))
    unreadable(probe(), "db/x", "regular file")


def test_a_folder_is_a_failed_read(probe, store):
    store.path("db/x").mkdir()
    unreadable(probe(), "db/x", "regular file")


def test_a_device_is_a_failed_read(probe, store):
    store.path("db/x").symlink_to("/dev/zero")
    unreadable(probe(), "db/x", "regular file")


def test_a_link_to_a_file_is_read_and_one_to_itself_is_not(probe, store):
    store("db/real", "7\n")
    store.path("db/link").symlink_to("real")
    store.path("db/loop").symlink_to("loop")
    one = probe()
    assert one.call("get-int", "db/link") == 7
    unreadable(one, "db/loop", "cannot open")


# ---- folders


def test_a_missing_state_folder_is_told_once_for_all_keys(probe, store, root):
    (root / STATE / "db").rmdir()
    one = probe()
    for key in ["db/x", "db/y", "db/x"]:
        assert one.call("get-int", key) is None
    (line,) = complaints(one)
    assert f"{STATE}/db" in line


def test_a_missing_runtime_folder_is_no_fault(probe, store, root):
    (root / RUNTIME).rmdir()
    one = probe()
    assert one.call("get-str", "memory/x") is None
    assert complaints(one) == []


def test_a_forbidden_state_folder_is_told_once_for_all_keys(probe, store, root):
    store("db/x", "1\n")
    store("db/y", "1\n")
    # The administrator may read everything: he gives up that right for this.
    powerless = ["setpriv", "--bounding-set=-all", "--inh-caps=-all"] if os.geteuid() == 0 else []
    folder = root / STATE / "db"
    folder.chmod(0)
    try:
        one = probe(wrapper=powerless)
        assert one.call("get-int", "db/x") is None
        assert one.call("get-int", "db/y") is None
        (line,) = complaints(one)
        assert f"{STATE}/db" in line and "denied" in line
    finally:
        folder.chmod(0o755)


# ---- names

BAD_KEYS = [
    "",
    "db",
    "db/",
    "db//x",
    "db/x/",
    "/db/x",
    "x/y",
    "db/../x",
    "db/x/../../y",
    "db/./x",
    "db/.x",
    "memory/.x/y",
    "dbx/y",
    "../db/x",
    "db/" + "n" * 256,
]


@pytest.mark.parametrize("key", BAD_KEYS)
def test_a_bad_name_is_neither_read_nor_written_nor_watched(probe, store, root, key):
    (root / STATE / "x").write_text("1\n")
    before = sorted(root.rglob("*"))
    one = probe()
    assert one.call("get-str", key) is None
    assert one.call("watch", key, "first") != 0
    assert "no key" in one.call("store-write", key, "1")
    assert "no key" in one.call("store-remove", key)
    assert sorted(root.rglob("*")) == before
    assert len(complaints(one)) == 1


def test_the_longest_name_can_be_written_and_read(probe, store):
    key = "db/" + "n" * 255
    one = probe()
    assert one.call("store-write", key, "1") == ""
    assert one.call("get-int", key) == 1


# ---- writing


@pytest.mark.parametrize("value", ["de_DE", "", "a\n", "two\nlines", "ä€", "x" * (LIMIT - 1)])
def test_what_is_written_is_read(probe, store, value):
    one = probe()
    assert one.call("store-write", "db/a/b/c", value) == ""
    assert one.call("get-str", "db/a/b/c") == value
    assert store.path("db/a/b/c").read_bytes() == value.encode() + b"\n"


def test_a_value_that_could_not_be_read_is_not_written(probe, store):
    one = probe()
    assert "64 KiB" in one.call("store-write", "db/x", "x" * LIMIT)
    assert not store.path("db/x").exists()


@pytest.mark.parametrize("key", ["db/new/folder/x", "memory/new/folder/x"])
def test_files_and_folders_belong_to_the_group_whatever_the_umask(probe, root, key):
    one = probe(wrapper=["sh", "-c", 'umask 077; exec "$@"', "sh"])
    assert one.call("store-write", key, "1") == ""
    file = root / (STATE if key.startswith("db") else RUNTIME) / key
    assert stat.S_IMODE(file.stat().st_mode) == 0o664
    for folder in [file.parent, file.parent.parent]:
        assert stat.S_IMODE(folder.stat().st_mode) == 0o2775


def test_the_mode_of_a_folder_that_was_there_is_left_alone(probe, store, root):
    folder = root / STATE / "db"
    folder.chmod(0o700)
    assert probe().call("store-write", "db/x", "1") == ""
    assert stat.S_IMODE(folder.stat().st_mode) == 0o700


def test_a_write_that_fails_leaves_the_old_value_and_nothing_else(probe, store, root):
    store("db/x/y", "1\n")
    one = probe()
    assert "cannot write" in one.call("store-write", "db/x", "2")
    assert one.call("get-int", "db/x/y") == 1
    assert [file.name for file in (root / STATE / "db").iterdir()] == ["x"]


@pytest.mark.parametrize("key", ["db/link/x", "db/link/new/x", "memory/link/x"])
@pytest.mark.parametrize("target", ["there", "missing"])
def test_a_folder_that_is_a_link_is_neither_written_to_nor_removed_from(
    probe, store, root, tmp_path, key, target
):
    elsewhere = tmp_path / "elsewhere"
    elsewhere.mkdir(mode=0o700)
    (elsewhere / "x").write_text("precious\n")
    link = store.path("db/link") if key.startswith("db") else store.path("memory/link")
    link.parent.mkdir(parents=True, exist_ok=True)
    link.symlink_to(elsewhere if target == "there" else tmp_path / "nowhere")
    one = probe()
    for fault in [one.call("store-write", key, "1"), one.call("store-remove", key)]:
        assert f"{link} is a link"[len(str(root)) :] in fault
        assert "real folders" in fault
    assert (elsewhere / "x").read_text() == "precious\n"
    assert [file.name for file in elsewhere.iterdir()] == ["x"]
    assert stat.S_IMODE(elsewhere.stat().st_mode) == 0o700
    assert not (tmp_path / "nowhere").exists()


@pytest.mark.parametrize("key, folder", [("db/x", f"{STATE}/db"), ("memory/x", f"{RUNTIME}/memory")])
def test_the_folder_of_all_settings_is_no_link_either(probe, store, root, tmp_path, key, folder):
    if (root / folder).exists():
        (root / folder).rmdir()
    (root / folder).symlink_to(tmp_path)
    assert "is a link" in probe().call("store-write", key, "1")
    assert not (tmp_path / "x").exists()


def test_the_state_folder_may_be_on_another_disk(probe, store, root, tmp_path):
    (root / STATE / "db").rmdir()
    (root / STATE).rmdir()
    (tmp_path / "disk").mkdir()
    (root / STATE).symlink_to(tmp_path / "disk")
    assert probe().call("store-write", "db/x", "1") == ""
    assert (tmp_path / "disk" / "db" / "x").read_text() == "1\n"


def test_a_link_in_the_place_of_a_value_is_replaced_and_not_followed(probe, store, tmp_path):
    target = tmp_path / "target"
    target.write_text("precious\n")
    store.path("db/x").symlink_to(target)
    assert probe().call("store-write", "db/x", "1") == ""
    assert target.read_text() == "precious\n"
    assert not store.path("db/x").is_symlink()


def test_a_removed_key_is_unset_and_may_be_removed_again(probe, store):
    store("db/x", "1\n")
    one = probe()
    assert one.call("store-remove", "db/x") == ""
    assert one.call("store-remove", "db/x") == ""
    assert one.call("get-int", "db/x") is None
    assert complaints(one) == []


def test_a_folder_of_keys_is_not_removed_as_a_key(probe, store):
    store("db/f/x", "1\n")
    one = probe()
    assert "cannot remove" in one.call("store-remove", "db/f")
    assert one.call("get-int", "db/f/x") == 1


def test_readers_see_whole_values_while_several_write(probe, store):
    values = ["a" * 60_000, "b" * 30_000, "c"]
    store("db/x", values[0])
    writers = [probe() for _ in values]
    reader = probe()
    for writer, value in zip(writers, values, strict=True):
        writer.send(f"store-write-forever db/x {value}")
    seen = set()
    for _ in range(50):
        seen |= set(reader.call("store-values-seen", "db/x", 400))
        if seen == set(values):
            break
    for writer in writers:
        writer.process.kill()
        assert writer.see_end() == -signal.SIGKILL, writer.error_lines()
    assert seen == set(values)
    assert reader.call("get-str", "db/x") in values
    assert complaints(reader) == []


def test_what_a_killed_writer_left_is_no_setting(probe, store, root):
    store("db/x", "old\n")
    one = probe()
    assert one.call("watch", "db/x", "first") == 0
    # The kernel kills this writer in the middle of its file.
    writer = probe(wrapper=["prlimit", "--core=0", "--fsize=10"])
    writer.send("store-write db/x 123456789012345")
    assert writer.see_end() == -signal.SIGXFSZ
    left = [file.name for file in (root / STATE / "db").iterdir()]
    assert len(left) == 2 and all(name == "x" or name.startswith(".") for name in left)
    assert one.call("get-str", "db/x") == "old"
    assert one.call("store-write", "db/x", "newer") == ""
    assert one.event("setting")["value"] == "newer"
    assert complaints(one) == []


def test_people_may_write_with_their_own_tools(probe, store):
    store("db/x", "1\n")
    one = probe()
    subprocess.run(["sh", "-c", f"echo 2 > '{store.path('db/x')}'"], check=True)
    assert one.call("get-int", "db/x") == 2
