"""portmeldctl setting: the files of the settings store, read, written and watched without any daemon."""

import json
import os
import select
import signal
import time

import child
import pytest

KEY = "db/menu_widget/language"
WITHOUT_POWERS = (
    ["setpriv", "--bounding-set=-all", "--inh-caps=-all"] if os.geteuid() == 0 else []
)


@pytest.fixture
def store(ctl):
    """The folder of the settings that last; nobody needs a bus."""
    ctl.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent/bus"
    return ctl.folder / "root" / "var" / "lib" / "portmeld" / "db"


def put(store, text, key="menu_widget/language"):
    """Writes the file of a setting as a person does."""
    file = store / key
    file.parent.mkdir(parents=True, exist_ok=True)
    (file.parent / ".new").write_bytes(text if isinstance(text, bytes) else text.encode())
    (file.parent / ".new").rename(file)
    return file


# ---- get and set


def test_a_value_is_shown(store, ctl):
    put(store, "de_DE\n")
    assert ctl.answer("setting", "get", KEY) == "de_DE\n"
    assert ctl.json("setting", "get", KEY) == {"key": KEY, "value": "de_DE"}


@pytest.mark.parametrize("form", [[], ["--json"]])
@pytest.mark.parametrize("value", ["de_DE", "", "-1", "two\nlines", "Ü"])
def test_a_value_that_is_set_is_in_the_file_and_shown_again(store, ctl, form, value):
    said = ctl.answer("setting", "set", *form, KEY, value)
    assert said == "" if not form else json.loads(said) == {"key": KEY, "value": value}
    assert (store / "menu_widget" / "language").read_text() == value + "\n"
    assert ctl.json("setting", "get", KEY) == {"key": KEY, "value": value}


def test_memory_keys_are_files_of_the_running_machine(store, ctl):
    ctl.answer("setting", "set", "memory/tv_context/state", "128")
    file = ctl.folder / "root" / "run" / "portmeld" / "memory" / "tv_context" / "state"
    assert file.read_text() == "128\n"


def test_a_pipe_gets_the_value_as_it_is_and_a_terminal_one_that_is_harmless(store, ctl):
    put(store, "a\x1b[2J\u202e\n")
    assert ctl.answer("setting", "get", KEY) == "a\x1b[2J\u202e\n"
    assert ctl.on_terminal("setting", "get", KEY) == rb"a\u001b[2J\u202e" + b"\n"


@pytest.mark.parametrize("verb", [["get"], ["set"], ["watch"]])
@pytest.mark.parametrize("key", ["", "db", "db/", "language", "db/../x", "/db/x", "db/.x", "other/x"])
def test_what_is_no_key_is_a_wrong_command_line(store, ctl, verb, key):
    status, message = ctl.failure("setting", *verb, key, *(["v"] if verb == ["set"] else []))
    assert status == 2
    assert f'"{key}" is no key; one is db/NAME or memory/NAME' in message


@pytest.mark.parametrize("form", [[], ["--json"]])
def test_a_setting_that_is_not_set_is_a_failure(store, ctl, form):
    store.mkdir(parents=True)
    assert ctl.failure("setting", "get", *form, KEY) == (1, f"the setting {KEY} is not set")


def test_a_store_that_is_not_there_is_told_as_the_reason(store, ctl):
    status, message = ctl.failure("setting", "get", KEY)
    assert status == 1
    assert message.startswith(f"the setting {KEY} is not set: cannot use the folder ")


@pytest.mark.parametrize(
    "content, cause", [(b"", "is empty"), (b"\xff\n", "not valid UTF-8"), (b"a\0b", "a NUL byte in it")]
)
def test_a_file_that_holds_no_value_is_a_failure_that_says_why(store, ctl, content, cause):
    put(store, content)
    status, message = ctl.failure("setting", "get", KEY)
    assert status == 1
    assert cause in message


def test_a_value_that_is_too_long_is_a_failure_and_the_old_one_stays(store, ctl):
    file = put(store, "de_DE\n")
    status, message = ctl.failure("setting", "set", KEY, "x" * 65536)
    assert status == 1
    assert "longer than 64 KiB" in message
    assert file.read_text() == "de_DE\n"


def test_a_file_that_this_user_may_not_read_is_told_so(store, ctl):
    put(store, "de_DE\n").chmod(0)
    status, message = ctl.failure("setting", "get", KEY, before=WITHOUT_POWERS)
    assert status == 4
    assert "Permission denied; root and members of the group portmeld may" in message


@pytest.mark.parametrize("forbidden", ["db", "db/menu_widget"])
def test_a_folder_that_this_user_may_not_write_is_told_so(store, ctl, forbidden):
    folder = store.parent / forbidden
    folder.mkdir(parents=True)
    folder.chmod(0o500)
    try:
        status, message = ctl.failure("setting", "set", KEY, "de_DE", before=WITHOUT_POWERS)
    finally:
        folder.chmod(0o700)
    assert status == 4
    assert "Permission denied; root and members of the group portmeld may" in message
    assert not (store / "menu_widget" / "language").exists()


def test_a_folder_in_the_place_of_the_file_is_a_failure_but_none_of_permission(store, ctl):
    (store / "menu_widget" / "language").mkdir(parents=True)
    assert ctl.failure("setting", "get", KEY)[0] == 1
    assert ctl.failure("setting", "set", KEY, "de_DE")[0] == 1


def test_links_that_lead_nowhere_are_a_failure_but_none_of_permission(store, ctl):
    (store / "menu_widget").mkdir(parents=True)
    (store / "menu_widget" / "language").symlink_to("language")
    status, message = ctl.failure("setting", "get", KEY)
    assert (status, "Too many levels of symbolic links" in message) == (1, True)


# ---- watch


def test_the_value_is_shown_and_then_each_new_one(store, ctl, start_ctl):
    file = put(store, "de_DE\n")
    watch = start_ctl("setting", "watch", KEY)
    assert watch.take() == "de_DE"
    ctl.answer("setting", "set", KEY, "fr_FR")
    assert watch.take() == "fr_FR"
    file.unlink()
    assert watch.take() == "(not set)"
    put(store, "it_IT")
    assert watch.take() == "it_IT"
    assert watch.end(signal.SIGINT) == (0, [], "")


def test_json_tells_key_and_value(store, ctl, start_ctl):
    watch = start_ctl("setting", "watch", "--json", KEY)
    assert json.loads(watch.take()) == {"key": KEY, "value": None}
    ctl.answer("setting", "set", KEY, "")
    assert json.loads(watch.take()) == {"key": KEY, "value": ""}
    assert watch.end(signal.SIGTERM) == (0, [], "")


def test_the_same_value_again_is_no_news(store, start_ctl):
    put(store, "de_DE\n")
    watch = start_ctl("setting", "watch", KEY)
    assert watch.take() == "de_DE"
    put(store, "de_DE")
    put(store, "de_DE\n")
    put(store, "fr_FR\n")
    assert watch.take() == "fr_FR"


def next_complaint(watch):
    """What comes next on standard error."""
    stream = watch.process.stderr.fileno()
    assert select.select([stream], [], [], child.LIMIT)[0], "no complaint came"
    return os.read(stream, 4096).decode()


def test_a_value_that_cannot_be_read_is_told_once_and_the_watch_goes_on(store, start_ctl):
    put(store, "de_DE\n")
    watch = start_ctl("setting", "watch", KEY)
    assert watch.take() == "de_DE"
    put(store, b"\xff\n")
    told = next_complaint(watch)
    assert told.startswith(f"portmeldctl: the setting {KEY}: ")
    assert "not valid UTF-8" in told and told.count("\n") == 1
    put(store, b"\xfe\n")
    time.sleep(0.3)  # nothing tells that it has looked and said nothing
    put(store, "fr_FR\n")
    assert watch.take() == "fr_FR"
    assert watch.end(signal.SIGTERM) == (0, [], "")


def test_a_fault_that_comes_back_is_told_again(store, start_ctl):
    put(store, "de_DE\n")
    watch = start_ctl("setting", "watch", KEY)
    assert watch.take() == "de_DE"
    put(store, b"\xff\n")
    told = next_complaint(watch)
    put(store, "fr_FR\n")
    assert watch.take() == "fr_FR"
    put(store, b"\xff\n")
    assert next_complaint(watch) == told


def test_a_watch_with_a_value_that_cannot_be_read_at_the_beginning_goes_on(store, start_ctl):
    put(store, b"\xff\n")
    watch = start_ctl("setting", "watch", KEY)
    assert "not valid UTF-8" in next_complaint(watch)
    put(store, "de_DE\n")
    assert watch.take() == "de_DE"


# ---- left out


@pytest.mark.parametrize("arguments", [["get", KEY], ["set", KEY, "v"], ["watch", KEY]])
def test_a_build_for_a_platform_of_its_own_has_no_settings_and_says_so(store, ctl, arguments):
    put(store, "de_DE\n")
    status, message = ctl.failure("setting", *arguments, program=ctl.without_settings)
    assert status == 1
    assert "left out of this build" in message
    assert (store / "menu_widget" / "language").read_text() == "de_DE\n"


def test_the_rest_of_that_build_works(daemon, ctl):
    daemon.plug(devname="/dev/sda1")
    done = ctl("list", program=ctl.without_settings)
    assert (done.status, done.err) == (0, "")
    assert "/dev/sda1" in done.out
