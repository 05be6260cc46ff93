"""Whoever watches a key is told when its value has become another one, however that came about, and not
otherwise."""

import os
import shutil
import subprocess

import pytest
from machine import Machine, Mounts
from programs import built
from settings_helpers import STATE, Store, complaints

KEY = "db/menu_widget/language"


@pytest.fixture
def store(root):
    """The settings of the machine."""
    return Store(root)


@pytest.fixture
def one(probe, store):
    """A probe that watches a key with the value "old"."""
    store(KEY, "old\n")
    watching = probe()
    assert watching.call("watch", KEY, "first") == 0
    return watching


def told(probe, value, listener="first", key=KEY):
    """Waits for the news that the key has this value, which must be the next."""
    event = probe.event("setting")
    assert (event["listener"], event["key"], event["value"]) == (listener, key, value)


def nothing_more(probe, store, key=KEY, last="last"):
    """Nothing was told but what was waited for: the next news is of a change made now."""
    assert probe.call("store-write", key, last) == ""
    told(probe, last, key=key)
    assert probe.events_so_far() == []


def test_a_replaced_file_is_told(one, store):
    assert one.call("store-write", KEY, "new") == ""
    told(one, "new")
    assert one.call("get-str", KEY) == "new"
    nothing_more(one, store)


def test_a_file_that_is_written_in_its_place_is_told_when_it_is_closed(one, store):
    with open(store.path(KEY), "w") as file:
        file.write("half")
        file.flush()
        one.call("settle")
        file.write(" and whole\n")
    told(one, "half and whole")
    nothing_more(one, store)


def test_a_new_file_is_told_when_it_is_written_and_not_before(probe, store):
    store("db/menu_widget/other", "\n")
    watching = probe()
    assert watching.call("watch", KEY, "first") == 0
    with open(store.path(KEY), "w") as file:
        assert watching.events_so_far() == []
        file.write("new\n")
    told(watching, "new")
    assert complaints(watching) == []


def test_a_second_name_of_a_file_is_told(probe, store):
    store("db/menu_widget/other", "new\n")
    watching = probe()
    assert watching.call("watch", KEY, "first") == 0
    os.link(store.path("db/menu_widget/other"), store.path(KEY))
    told(watching, "new")


def test_a_tool_that_writes_a_copy_and_renames_it_is_told(one, store):
    subprocess.run(["sed", "-i", "s/old/new/", str(store.path(KEY))], check=True)
    told(one, "new")
    nothing_more(one, store)


def test_every_change_is_told(one, store):
    for number in range(50):
        assert one.call("store-write", KEY, f"{number}") == ""
        told(one, f"{number}")
    nothing_more(one, store)


def test_the_last_of_many_quick_changes_is_told(one, store):
    file = store.path(KEY)
    for number in range(200):
        other = file.with_name(".other")
        other.write_text(f"{number}\n")
        other.rename(file)
    while one.event("setting")["value"] != "199":
        pass
    nothing_more(one, store)


def test_the_value_that_it_had_is_not_told(one, store):
    assert one.call("store-write", KEY, "old") == ""
    one.call("settle")  # the news of the writing: it is not to be mixed with the next
    store.path(KEY).write_text("old")
    os.utime(store.path(KEY))
    store.path(KEY).chmod(0o600)
    nothing_more(one, store)


def test_another_key_of_the_folder_is_not_told(one, store):
    store("db/menu_widget/other", "new\n")
    store("db/menu_widget/language2", "new\n")
    nothing_more(one, store)


def test_a_removed_key_is_told_without_a_value(one, store):
    store.path(KEY).unlink()
    told(one, None)
    nothing_more(one, store)
    assert complaints(one) == []


def test_a_key_that_cannot_be_read_any_more_is_told_without_a_value(one, store):
    other = store.path(KEY).with_name(".other")
    other.write_bytes(b"\xff\n")
    other.rename(store.path(KEY))
    told(one, None)
    assert len(complaints(one)) == 1
    nothing_more(one, store)


def test_a_folder_in_the_place_of_the_key_is_told_and_so_is_its_end(one, store):
    store.path(KEY).unlink()
    told(one, None)
    store.path(KEY).mkdir()
    store.path(KEY).rmdir()
    nothing_more(one, store)


def test_a_moved_key_is_gone_and_one_moved_back_is_there(one, store):
    elsewhere = store.path(KEY).with_name("elsewhere")
    store.path(KEY).rename(elsewhere)
    told(one, None)
    elsewhere.rename(store.path(KEY))
    told(one, "old")
    nothing_more(one, store)


@pytest.mark.parametrize("key", ["db/a/b/c/x", "memory/a/x", "db/x"])
def test_a_key_whose_folders_come_after_the_watch_is_told(probe, root, key):
    (root / STATE / "db").mkdir(parents=True)
    watching = probe()
    assert watching.call("watch", key, "first") == 0
    assert watching.call("store-write", key, "new") == ""
    told(watching, "new", key=key)
    assert watching.call("store-write", key, "newer") == ""
    told(watching, "newer", key=key)


def test_a_key_is_told_on_a_machine_that_had_no_folder_at_all(probe, root):
    watching = probe()
    assert watching.call("watch", "db/x", "first") == 0
    assert watching.call("watch", "memory/x", "second") == 0
    for key, listener in [("db/x", "first"), ("memory/x", "second")]:
        assert watching.call("store-write", key, "new") == ""
        told(watching, "new", listener, key)
    assert len(complaints(watching)) == 1  # the missing state folder


def test_folders_that_come_one_by_one_are_followed(probe, root):
    watching = probe()
    assert watching.call("watch", "db/a/b/x", "first") == 0
    folder = root
    for name in ["var", "lib", "portmeld", "db", "a", "b"]:
        folder = folder / name
        folder.mkdir()
        watching.call("settle")
    (folder / "x").write_text("new\n")
    told(watching, "new", key="db/a/b/x")


@pytest.mark.parametrize("removed", ["menu_widget", ".", ".."])
def test_removed_folders_are_told_and_new_ones_followed(one, store, root, removed):
    for number in range(3):
        shutil.rmtree((root / STATE / "db" / removed).resolve())
        told(one, None)
        store(KEY, f"{number}\n")
        told(one, f"{number}")
    nothing_more(one, store)


@pytest.mark.parametrize("moved", ["var/lib/portmeld/db/menu_widget", STATE, "var"])
def test_folders_that_are_moved_away_and_back_are_followed(one, store, root, moved):
    (root / moved).rename(root / "elsewhere")
    told(one, None)
    (root / "elsewhere" / "other").write_text("\n")
    (root / "elsewhere").rename(root / moved)
    told(one, "old")
    nothing_more(one, store)


def test_a_folder_that_is_removed_while_somebody_stands_in_it_is_followed(one, store):
    folder = store.path(KEY).parent
    with subprocess.Popen(["cat"], cwd=folder, stdin=subprocess.PIPE) as standing:
        shutil.rmtree(folder)
        told(one, None)
        one.call("settle")
        store(KEY, "new\n")
        told(one, "new")
        standing.stdin.close()
    nothing_more(one, store)


def test_a_folder_that_is_replaced_by_another_is_told(one, store, root):
    folder = store.path(KEY).parent
    (root / "prepared").mkdir()
    (root / "prepared" / "language").write_text("new\n")
    folder.rename(root / "elsewhere")
    (root / "prepared").rename(folder)
    while one.event("setting")["value"] != "new":
        pass
    nothing_more(one, store)


# ---- listeners


def test_all_listeners_of_a_key_are_told_in_their_order(one, store):
    assert one.call("watch", KEY, "second") == 0
    assert one.call("store-write", KEY, "new") == ""
    told(one, "new", "first")
    told(one, "new", "second")


def test_an_ignored_key_is_not_told_any_more_even_of_an_earlier_change(one, store):
    assert one.call("watch", KEY, "second") == 0
    # Two orders in one go: between them the probe does not look for news.
    one.send(f"store-write {KEY} new\nignore {KEY} first")
    told(one, "new", "second")
    assert [one.take()["result"] for _ in range(2)] == ["", 0]
    assert one.call("ignore", KEY, "second") == 0
    store(KEY, "newer\n")
    assert one.call("watch", "db/other", "first") == 0
    nothing_more(one, store, "db/other")


def test_ignoring_what_is_not_watched_is_harmless(one, store):
    one.call("ignore", KEY, "second")
    one.call("ignore", "db/never", "first")
    one.call("ignore", "nonsense", "first")
    nothing_more(one, store)


def test_a_listener_may_end_itself_and_others_while_it_is_told(one, store):
    assert one.call("watch", KEY, "last") == 0
    assert one.call("watch", KEY, "second") == 0
    assert one.call("store-write", KEY, "new") == ""
    told(one, "new", "first")
    told(one, "new", "last")
    nothing_more(one, store)


def test_the_only_listener_may_end_itself_and_watch_again(probe, store):
    store(KEY, "old\n")
    watching = probe()
    assert watching.call("watch", KEY, "last") == 0
    assert watching.call("store-write", KEY, "new") == ""
    told(watching, "new", "last")
    assert watching.call("store-write", KEY, "newer") == ""
    assert watching.call("watch", KEY, "first") == 0
    assert watching.events_so_far() == []
    nothing_more(watching, store)


def test_a_key_that_is_watched_anew_is_compared_with_its_value_at_that_time(one, store):
    assert one.call("ignore", KEY, "first") == 0
    assert one.call("store-write", KEY, "new") == ""
    assert one.call("watch", KEY, "first") == 0
    assert one.call("store-write", KEY, "old") == ""
    told(one, "old")
    nothing_more(one, store)


def test_idle_watches_cost_nothing(probe, store, root):
    """No wake-up while nothing happens: neither while all is there nor while folders are missing."""
    store(KEY, "old\n")
    one = probe(wrapper=Machine.wrapper())  # others may mount what they like meanwhile
    assert one.call("watch", KEY, "first") == 0
    assert one.call("watch", "db/not/yet/there", "second") == 0
    shutil.rmtree(store.path(KEY).parent)
    told(one, None)
    one.call("settle")

    def switches():
        total = 0
        for thread in os.listdir(f"/proc/{one.process.pid}/task"):
            with open(f"/proc/{one.process.pid}/task/{thread}/status") as status:
                total += sum(int(line.split()[1]) for line in status if "ctxt_switches" in line)
        return total

    # The second is a longer one than the periods at which libraries look again for lost folders; the
    # first lets what was under way come to rest.
    for seconds in ["1", "5"]:
        before = switches()
        subprocess.run(["sleep", seconds], check=True)
    assert switches() == before


def test_a_folder_that_comes_while_the_folders_above_it_are_found_is_entered(probe, store):
    folder = store.path(KEY).parent
    folder.parent.mkdir(parents=True, exist_ok=True)
    race = {
        "LD_PRELOAD": str(built("linux", "liblate-folder.so")),
        "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0",
        "PORTMELD_TEST_LATE_FOLDER": str(folder),
    }
    watching = probe(env=race)
    assert not folder.exists()
    assert watching.call("watch", KEY, "first") == 0
    assert folder.is_dir()
    store(KEY, "inside\n")
    told(watching, "inside")


def test_a_file_system_that_is_mounted_over_a_folder_of_the_key_is_noticed(probe, store, root):
    # The folder of a user's session, where his bus is, is mounted when he logs in.
    store(KEY, "hidden\n")
    watching = probe(wrapper=Machine.wrapper())
    assert watching.call("watch", KEY, "first") == 0
    mounts = Mounts(watching.process.pid, root)
    folder = store.path(KEY).parent.parent
    mounts.run("mount", "-t", "tmpfs", "none", str(folder))
    told(watching, None)
    place = store.path(KEY).parent
    mounts.run("sh", "-c", f"mkdir {place} && echo mounted > {store.path(KEY)}")
    told(watching, "mounted")
    mounts.run("umount", "-l", str(folder))
    told(watching, "hidden")


# An administrator like any other user: what is not his, or not allowed to him, is forbidden to him.
WITHOUT_RIGHTS = ["setpriv", "--bounding-set", "-dac_override,-dac_read_search"]


def test_a_folder_that_was_forbidden_is_entered_when_it_is_not_any_more(probe, store):
    store(KEY, "inside\n")
    folder = store.path(KEY).parent
    folder.chmod(0)
    watching = probe(wrapper=WITHOUT_RIGHTS if os.geteuid() == 0 else [])
    assert watching.call("watch", KEY, "first") == 0
    assert watching.call("get-str", KEY) is None
    folder.chmod(0o755)
    told(watching, "inside")
    store(KEY, "new\n")
    told(watching, "new")


def test_a_file_system_that_is_given_to_its_owner_after_it_was_mounted_is_entered(
    probe, store, root
):
    """Nobody tells of that: the folder above belongs to another file system."""
    store(KEY, "hidden\n")
    watching = probe(wrapper=[*Machine.wrapper(), *WITHOUT_RIGHTS])
    assert watching.call("watch", KEY, "first") == 0
    mounts = Mounts(watching.process.pid, root)
    folder = store.path(KEY).parent.parent
    mounts.run("mount", "-t", "tmpfs", "-o", "mode=0", "none", str(folder))
    told(watching, None)
    place = store.path(KEY).parent
    mounts.run("sh", "-c", f"mkdir {place} && echo mounted > {store.path(KEY)}")
    mounts.run("chmod", "755", str(folder))
    told(watching, "mounted")
