"""Scenarios: the files that come with the workbench hold; each kind of expectation can fail; what was
recorded can be replayed; the exit status tells how it went."""

import json
import pathlib
import re
import subprocess
import time

import pytest

from web_process import Failed, replayed
from workbench_process import environment, program, temporary_folder, until

SCENARIOS = pathlib.Path(__file__).resolve().parents[2] / "workbench" / "scenarios"

HEAD = "portmeld-scenario 1\n"


def failures(lines):
    """The steps that went wrong: (line number, why)."""
    found = [re.fullmatch(r"not ok (\d+) .* # (.*)", line) for line in lines]
    return [(int(match[1]), match[2]) for match in found if match]


# ---- the files


def test_there_is_one_for_each_road():
    assert {file.stem for file in SCENARIOS.glob("*.scenario")} >= {
        "stick-with-one-film", "browse", "removal", "companion-running", "shop-demo", "standby-and-wake"
    }


@pytest.mark.parametrize("file", sorted(SCENARIOS.glob("*.scenario")), ids=lambda file: file.stem)
def test_its_expectations_hold(file, tmp_path):
    status, lines, complaints = replayed(file.read_text(), tmp_path)
    assert (status, failures(lines), complaints) == (0, [], "")
    assert lines[-1] == "all expectations held"
    steps = [line for line in file.read_text().splitlines()[1:] if line and not line.startswith("#")]
    assert [line.split(" ", 2)[2] for line in lines[:-1]] == steps


# ---- exit status


def test_an_expectation_that_does_not_hold_is_told_and_the_rest_goes_on(tmp_path):
    text = HEAD + "plugSample one-film\nexpect popup browse\nexpect popup play\npress 7\npress 0\n"
    status, lines, _ = replayed(text, tmp_path)
    assert status == 1
    assert failures(lines) == [(3, "the pop-up is play"), (5, "the pop-up has no such button")]
    assert lines[-2:] == ["ok 6 press 0", "something went wrong"]


@pytest.mark.parametrize(
    "text, reason",
    [
        ("", "line 1: a scenario begins with"),
        ("portmeld-scenario 2\n", "line 1: a scenario begins with"),
        (HEAD + "nonsense\n", 'line 2: there is no step "nonsense"'),
        (HEAD + "\n# c\npress\n", "line 4: press lacks a button"),
        (HEAD + "press x\n", 'line 2: "x" is no number'),
        (HEAD + "press 1 2\n", 'line 2: "2" is too much for press'),
        (HEAD + 'plugSample "x\n', "line 2: a quote is not closed"),
        (HEAD + "plugSample %zz\n", "line 2: a percent sign"),
        (HEAD + "after -1\n", "line 2: after SECONDS"),
        (HEAD + "companion maybe\n", 'line 2: "maybe" is neither yes nor no'),
        (HEAD + "call 1 Nothing\n", 'line 2: the daemon has no method "Nothing"'),
        (HEAD + "call 1 Connect x\n", "line 2: Connect takes 2 arguments"),
        (HEAD + "call 1 Connect x y\n", 'line 2: "y" is no number'),
        (HEAD + "expect\n", "line 2: expect what?"),
        (HEAD + "expect popup green\n", "line 2: a pop-up is"),
        (HEAD + "expect launch x y\n", 'line 2: "y" is no condition'),
        (HEAD + "expect device\n", "line 2: device NODE"),
        (HEAD + "expect signal x client y\n", "line 2: client NUMBER"),
        (HEAD + "expect log loud x\n", "line 2: log debug|info|warning"),
        (HEAD + "setting demoMode x\n", 'line 2: "x" is no number'),
    ],
)
def test_a_file_that_cannot_be_understood_is_refused_before_anything_happens(tmp_path, text, reason):
    status, lines, complaints = replayed(text, tmp_path)
    assert (status, lines) == (2, [])
    assert reason in complaints and complaints.count("\n") == 1


@pytest.mark.parametrize(
    "arguments, reason",
    [
        (["--replay", "/nowhere", "--headless"], "No such file"),
        (["--headless"], "--headless goes with --replay"),
        (["--replay", "x", "--terminal"], "do not go with --terminal"),
        (["--replay", "x", "/"], "--replay plugs in what its scenario says"),
        (["--port", "70000"], "no port 70000"),
    ],
)
def test_a_command_line_that_cannot_be_followed_is_refused(arguments, reason):
    with temporary_folder() as temporary:
        done = subprocess.run(
            [program(), *arguments], capture_output=True, text=True, env=environment(temporary), timeout=30, check=False
        )
    assert done.returncode == 2
    assert reason in done.stderr


# ---- expectations


@pytest.mark.parametrize(
    "expectation",
    [
        "popup",
        "popup play",
        'popup title = "New device connected: Film Stick"',
        "popup buttons.1.label = Cancel rtl = no",
        "no popup browse",
        "no popup title ~ Nothing",
        "device /dev/sda1",
        "device /dev/sda1 fileSystemType = 1 damageFlag = no",
        "no device /dev/sdb1",
        "no device /dev/sda1 fileSystemType = 0",
        "no launch",
        "no signal",
        "log info Finde",
        'log debug "pcAction=mounted"',
        "no log warning Finde",
        "power = on daemon.counters.exfat = 1",
        "devices.0.product ~ Film launched = none",
        "no power = off",
    ],
)
def test_an_expectation_holds_and_its_opposite_does_not(tmp_path, expectation):
    opposite = expectation.removeprefix("no ") if expectation.startswith("no ") else "no " + expectation
    begin = HEAD + "plugSample one-film\n"
    assert replayed(begin + f"expect {expectation}\n", tmp_path)[0] == 0
    status, lines, _ = replayed(begin + f"expect {opposite}\n", tmp_path)
    assert status == 1
    assert failures(lines)[0][0] == 3


def test_launches_are_expected_in_their_order(tmp_path):
    begin = HEAD + "plugSample one-film\npress 0\nkey home\npull 1\nplugSample one-photo\npress 0\n"
    film, photo = "expect launch org.norvane.vidreel\n", "expect launch org.norvane.picreel\n"
    assert replayed(begin + film + photo, tmp_path)[0] == 0
    assert replayed(begin + photo + film, tmp_path)[0] == 1
    assert replayed(begin + film + film, tmp_path)[0] == 1
    last = "expect no launch org.norvane.vidreel\n"
    assert replayed(begin + last, tmp_path)[0] == 0, "it was launched before the last step"
    key = "expect launch org.norvane.picreel play_list_data.items.0.file_name ~ "
    assert replayed(begin + key + "chelsea\n", tmp_path)[0] == 0
    assert replayed(begin + key + "dog\n", tmp_path)[0] == 1


def test_signals_and_replies_are_expected_by_client(tmp_path):
    text = HEAD + (
        "plugSample one-film\ncall 5 RequesAll 5\n"
        "expect reply\nexpect signal mm_device_action client 5 Action = 1\n"
        "expect no signal client 1\ncall 5 GetDeviceCount 5 -1\nexpect reply 1\nexpect reply 2\n"
        "call 5 SetPhotoBGMPlayList \"a b\" %22 c\ncall 5 GetPhotoBGMPlayListItem 0\n"
        'expect reply "a b" %22 c\ncall 5 LaunchPopup x\nexpect no reply\n'
    )
    status, lines, _ = replayed(text, tmp_path)
    assert status == 1
    assert failures(lines) == [(9, "the reply was [1]")]


def test_time_passes_at_once(tmp_path):
    text = HEAD + "plugSample empty\nafter 29.9\nexpect popup\nafter 0.1\nexpect no popup\nafter 80000\n"
    assert replayed(text, tmp_path)[0] == 0


def test_a_folder_counts_from_the_scenarios_own(tmp_path):
    (tmp_path / "My Stick").mkdir()
    text = HEAD + 'plugFolder "My Stick"\nexpect popup browse title ~ "My Stick"\n'
    assert replayed(text, tmp_path)[0] == 0


def test_a_rule_that_the_daemon_breaks_or_its_end_is_no_success(tmp_path):
    status, _, complaints = replayed(HEAD, tmp_path)
    assert (status, complaints) == (0, "")
    file = tmp_path / "end.scenario"
    file.write_text(HEAD + "call 1 GetPhotoBGMPlayListItem 9\n")
    with temporary_folder() as temporary:
        done = subprocess.run(
            [program(), "--replay", str(file), "--headless"],
            capture_output=True, text=True, env=environment(temporary), timeout=30, check=False,
        )
    assert done.returncode < 0
    assert "portmeld ended the process" in done.stderr


# ---- recording


def record(page):
    """What a person does in a minute of the TV's time."""
    page.order("setting", key="shopMode", value=False)
    page.order("plugSample", id="one-film")
    page.until_popup("play")
    page.order("call", client=4, member="Connect", arguments=['with "quotes" & 100 %', 4])
    page.order("press", button=0)
    page.until(lambda: page.state["launched"])
    page.order("key", name="home")
    page.order("pull", port=len(page.state["ports"]))
    page.until_popup("removal")
    page.order("skip", ms=4000)
    page.until(lambda: page.state["popup"] is None)
    page.order("plugCamera", title="My Camera")
    page.until_popup("browse")
    page.order("step")
    page.until(lambda: page.state["popup"] is None)


def test_what_was_recorded_holds_when_it_is_replayed(page, tmp_path):
    page.order("record", on=True, title="a minute")
    record(page)
    page.until(lambda: page.state["recording"] and page.state["recording"]["steps"] == 8)
    text = page.order("record", on=False)
    page.until(lambda: page.state["recording"] is None)
    lines = text.splitlines()
    assert lines[:3] == ["portmeld-scenario 1", "# a minute", "setting language en"]
    for line in (
        "plugSample one-film",
        'expect popup play title = "New device connected: Film Stick"',
        "press 0",
        "expect launch org.norvane.vidreel",
        "expect signal mm_device_action client 4",
        "after 3.000",
        "expect popup none",
    ):
        assert line in lines, text
    status, shown, complaints = replayed(text, tmp_path)
    assert (status, failures(shown), complaints) == (0, [], ""), text


def test_a_recording_that_begins_later_plugs_in_what_is_there(page, tmp_path):
    page.order("plugSample", id="one-photo")
    page.order("plugSample", id="two-partitions")
    page.order("pull", port=1)
    page.order("pull", port=2)
    page.order("setting", key="language", value="de")
    page.until(lambda: page.state["settings"]["language"] == "de")
    page.order("record", on=True)
    page.order("pull", port=3)
    page.until(lambda: page.state["devices"] == [])
    text = page.order("record", on=False)
    assert "setting language de\nplugSample two-partitions\npull 1\n" in text
    assert "pull 2\n" in text and "pull 3\n" not in text
    status, shown, _ = replayed(text, tmp_path)
    assert (status, failures(shown)) == (0, []), text


def test_a_replay_that_meets_something_else_fails(page, tmp_path):
    page.order("record", on=True)
    record(page)
    text = page.order("record", on=False)
    status, shown, _ = replayed(text.replace("plugSample one-film", "plugSample mixed"), tmp_path)
    assert status == 1
    assert failures(shown)


def test_recording_to_a_file_keeps_all_up_to_a_crash(web, tmp_path):
    file = tmp_path / "new.scenario"
    run = web("--bare", "--record", file)
    page = run.page()
    page.order("plugSample", id="one-film")
    page.until_popup("play")
    page.send("call", client=1, member="GetPhotoBGMPlayListItem", arguments=[0])
    assert run.finish(None) < 0
    assert "plugSample one-film\n" in file.read_text()


def test_recording_to_a_file_ends_with_the_program(web, tmp_path):
    file = tmp_path / "new.scenario"
    run = web("--bare", "--record", file)
    page = run.page()
    page.order("clock", mode="stopped")
    record(page)
    assert run.finish() == 0
    assert replayed(file.read_text(), tmp_path)[0] == 0


# ---- replaying in a page


def ends(page):
    """What the page was told of ends of replays."""
    return [(m["ok"], m["error"]) for m in page.messages if m["type"] == "replayEnd"]


def test_a_page_sees_the_steps_of_a_replay(page):
    page.order("plugSample", id="empty")
    text = (SCENARIOS / "removal.scenario").read_text()
    page.order("replay", text=text)
    end = page.until(lambda: next((m for m in page.messages if m["type"] == "replayEnd"), None))
    steps = [m for m in page.messages if m["type"] == "replay"]
    assert [m["text"] for m in steps] == [
        line for line in text.splitlines()[1:] if line and not line.startswith("#")
    ]
    # The stick of before is in the way of what the scenario expects of nodes, not of ports.
    assert next(m for m in steps if m["text"] == "pull 1")["ok"]
    assert end["ok"] is False
    page.until(lambda: page.state["replaying"] is None)
    assert [port["title"] for port in page.state["ports"]] == ["Empty Stick"]


def test_a_replay_in_a_page_takes_its_time_and_can_be_stopped(web):
    page = web().page()
    page.order("replay", text=HEAD + "plugSample empty\nafter 3600\nexpect no popup\n")
    page.until_popup("browse")
    page.until(lambda: page.state["replaying"] == {"line": 3, "lines": 4})
    with pytest.raises(Failed, match="is being replayed"):
        page.order("replay", text=HEAD)
    waits = "the scenario that is replayed goes on"
    page.until(lambda: waits in [timer["what"] for timer in page.state["clock"]["timers"]])
    page.order("stopReplay")
    page.until(lambda: page.state["replaying"] is None)
    page.until(lambda: waits not in [timer["what"] for timer in page.state["clock"]["timers"]])
    page.order("stopReplay")
    page.order("replay", text=HEAD + "expect popup browse\n")
    page.until(lambda: page.state["replaying"] is None and len(ends(page)) == 2)
    assert ends(page) == [(False, "it was stopped"), (True, None)]


def test_a_replay_can_be_watched_from_the_beginning(web, tmp_path):
    file = tmp_path / "film.scenario"
    file.write_text((SCENARIOS / "stick-with-one-film.scenario").read_text())
    run = web("--replay", file)
    told = "portmeld-workbench: the scenario is replayed as soon as the page is open\n"
    assert until(lambda: run.errors == told), run.errors
    time.sleep(0.3)
    page = run.page()
    page.until(lambda: page.state["launched"] and page.state["launched"]["app"] == "org.norvane.vidreel")
    assert json.dumps(page.state["ports"]).count('"port"') == 1
    page.until(lambda: ends(page))
    assert ends(page) == [(True, None)]
    lines = file.read_text().splitlines()[1:]
    assert [m["text"] for m in page.messages if m["type"] == "replay"] == [
        line for line in lines if line and not line.startswith("#")
    ]


def test_a_replay_without_waiting_gives_the_clock_back_also_when_its_page_is_gone(web):
    run = web()
    page, other = run.page(), run.page()
    page.order("clock", mode="fast", factor=2)
    other.until(lambda: other.state["clock"]["mode"] == "fast")
    page.order("replay", text=HEAD + "plugSample empty\nafter 600\n" + 50 * "expect popup browse\n", noWaiting=True)
    page.close()
    other.until(lambda: ends(other))
    other.until(lambda: other.state["clock"]["mode"] == "fast")
    assert other.state["clock"]["now"] > 600 * 1000
    other.order("replay", text=HEAD + "expect popup removal\n", noWaiting=True)
    other.order("stopReplay")
    other.until(lambda: other.state["replaying"] is None and other.state["clock"]["mode"] == "fast")
