"""Pages: what they are told when they come, that all are told the same, that one that hangs is nobody's
harm, and the passing of time."""

import json
import pathlib
import time

import pytest

from web_process import Failed


def flood(page, lines):
    """Lets the daemon log until its lines have that number."""
    while page.log[-1]["n"] < lines:
        told = len(page.messages)
        for _ in range(200):
            number = page.send("call", client=1, member="GetDeviceCount", arguments=[1, -1])
        page.until(lambda: any(m.get("id") == number for m in page.messages[told:]))


def test_a_page_is_greeted_with_all_it_can_choose_from(page):
    hello = page.hello
    assert page.messages[0] is hello
    assert page.messages[1]["type"] == "state"
    assert {"code": "ar", "name": "العربية", "rtl": True} in hello["languages"]
    assert len(hello["languages"]) > 50
    assert [sample["id"] for sample in hello["samples"]] == [
        "one-photo", "one-film", "one-song", "mixed", "empty", "demo", "damaged", "two-partitions", "equal-products"
    ]
    scenarios = {scenario["id"]: scenario for scenario in hello["scenarios"]}
    assert scenarios["browse"]["text"].startswith("portmeld-scenario 1\n")
    assert scenarios["browse"]["title"] == "A stick with this and that is browsed"


def test_every_message_has_the_next_number(page):
    page.order("plugSample", id="one-photo")
    page.until_popup("play")
    assert [m["seq"] for m in page.messages] == list(range(1, len(page.messages) + 1))


def test_a_fresh_tv_shows_a_sample_stick_when_the_first_page_comes(web):
    run = web("--language", "de")
    time.sleep(0.3)
    page = run.page()
    assert page.until_popup("play")["buttons"][0]["label"] == "Wiedergeben"
    assert page.state["popup"]["leftMs"] > 29000
    assert len(run.page().state["ports"]) == 1, "the second page plugs nothing in"


def test_folders_are_plugged_in_one_after_the_other(web, stick):
    page = web(stick("One", "a.jpg"), stick("Two", "a.jpg", "b.jpg")).page()
    page.until(lambda: [port["title"] for port in page.state["ports"]] == ["One", "Two"])
    page.until(lambda: len(page.state["devices"]) == 2)


def test_a_second_page_sees_and_does_the_same(web):
    run = web()
    first, second = run.page(), run.page()
    first.order("plugSample", id="one-film")
    second.until_popup("play")
    second.order("press", button=0)
    assert first.until(lambda: first.state["launched"])["app"] == "org.norvane.vidreel"
    assert second.until(lambda: second.state["launched"]) == first.state["launched"]
    assert [line["n"] for line in first.log[:50]] == [line["n"] for line in second.log[:50]]


def test_a_page_that_is_reloaded_amid_a_pop_up_shows_it_again(web):
    run = web()
    page = run.page()
    page.order("plugSample", id="one-film")
    before = page.until_popup("play")
    page.until(lambda: page.state["devices"])
    page.close()
    again = run.page()
    after = again.state["popup"]
    assert {**after, "leftMs": 0} == {**before, "leftMs": 0}
    assert 0 < after["leftMs"] <= 30000
    assert again.state["devices"][0]["product"] == "Film Stick"
    again.until(lambda: len(again.log) > 50 and again.log[0]["n"] == 0, "the log so far")
    again.until(lambda: again.wire and again.wire[0]["member"] == "Connect", "the wire so far")
    again.order("press", button=0)
    again.until(lambda: again.state["launched"])


@pytest.mark.parametrize("code, rtl, label", [("ar", True, "تشغيل"), ("de", False, "Wiedergeben"), ("en", False, "Play")])
def test_the_next_pop_up_is_in_the_language_that_was_chosen(page, code, rtl, label):
    page.order("setting", key="language", value=code)
    page.until(lambda: page.state["settings"]["language"] == code and page.state["settings"]["rtl"] is rtl)
    page.order("plugSample", id="one-film")
    popup = page.until_popup("play")
    assert (popup["rtl"], popup["language"]) == (rtl, code)
    assert popup["buttons"][0]["label"] == label
    page.order("setting", key="language", value="fr")
    page.until(lambda: page.state["settings"]["language"] == "fr")
    assert page.state["popup"]["rtl"] is rtl, "a pop-up stays as it came up"


def test_a_language_without_texts_is_refused(page):
    with pytest.raises(Failed, match='no texts in the language "xx"'):
        page.order("setting", key="language", value="xx")
    assert page.state["settings"]["language"] == "en"


# Sanitizers that find the way back of every allocation take minutes for so many lines; what leaks shows
# in the cases with few as well.
QUICKLY = "fast_unwind_on_malloc=1:detect_leaks=0"


def test_ten_thousand_lines_are_kept_and_told_in_order_and_hold_up_nothing(web, sanitizer_options):
    sanitizer_options(QUICKLY)
    run = web()
    page = run.page()
    page.order("clock", mode="stopped")
    flood(page, 12000)
    numbers = [line["n"] for line in page.log]
    assert numbers == list(range(len(numbers))), "a page that keeps up misses nothing"
    late = run.page()
    late.until(lambda: len(late.log) >= 10000 and late.log[-1]["n"] >= numbers[-1])
    assert len(late.log) < 10500
    assert max(len(m["lines"]) for m in late.messages if m["type"] == "log") <= 500
    late.order("plugSample", id="one-photo")
    late.until_popup("play")


def memory(process):
    """Its resident memory in KiB."""
    status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    return int(next(line.split()[1] for line in status.splitlines() if line.startswith("VmRSS")))


def test_a_page_that_hangs_stalls_nobody_and_costs_little(web, sanitizer_options):
    sanitizer_options(f"{QUICKLY}:quarantine_size_mb=1:thread_local_quarantine_size_kb=1")
    run = web()
    page = run.page()
    page.order("clock", mode="stopped")
    flood(page, 20000)
    full = memory(run.process)
    deaf = run.page(reads=False)
    mute = run.page(acknowledges=False)
    flood(page, 40000)
    page.order("plugSample", id="one-photo")
    page.until_popup("play")
    assert memory(run.process) - full < 20000
    assert len(mute.messages) <= 260
    assert sum(len(str(m)) for m in mute.messages) < 3_000_000
    # Once it listens again it is told how things stand now; what is lost of the log shows in the numbers.
    deaf.read()
    deaf.until(lambda: deaf.state["ports"] and deaf.state["popup"])
    deaf.until(lambda: deaf.log[-1]["n"] >= page.log[-1]["n"])
    numbers = [line["n"] for line in deaf.log]
    assert numbers == sorted(set(numbers)) and len(numbers) < numbers[-1]


def test_a_page_that_was_held_back_is_told_as_soon_as_it_catches_up(web):
    run = web()
    page, mute = run.page(), run.page(acknowledges=False)
    page.order("clock", mode="stopped")
    # Nothing of this is logged: only the state tells it.
    for number in range(300):
        page.order("companion", running=number % 2 == 1)
        page.until(lambda: page.state["context"]["companionRunning"] is (number % 2 == 1))
    assert len(mute.messages) == 256
    running = not mute.state["context"]["companionRunning"]
    page.order("companion", running=running)
    page.until(lambda: page.state["context"]["companionRunning"] is running)
    mute.write(json.dumps({"do": "ack", "with": {"seq": mute.messages[-1]["seq"]}}))
    mute.until(lambda: mute.messages[-1]["seq"] > 256)
    assert mute.state["context"] == page.state["context"]


def test_clearing_the_log_clears_it_for_all(web):
    run = web()
    first, second = run.page(), run.page()
    second.until(lambda: len(second.log) > 30)
    first.order("clock", mode="stopped")
    first.order("clearLog")
    second.until(lambda: second.log == [])
    first.order("plugSample", id="empty")
    second.until(lambda: second.log and second.log[0]["n"] > 30)
    late = run.page()
    late.until(lambda: late.log)
    assert late.log[0]["n"] == second.log[0]["n"]


def test_time_passes_faster_when_told_to(web):
    page = web().page()
    page.order("clock", mode="fast", factor=60)
    page.until(lambda: page.state["clock"]["rate"] == 60)
    page.order("plugSample", id="empty")
    page.until_popup("browse")
    began = time.monotonic()
    page.until(lambda: page.state["popup"] is None)
    assert time.monotonic() - began < 25, "it stands for 30 s of the TV's time"


def test_time_that_is_skipped_is_told_even_when_nothing_was_due(page):
    page.until(lambda: page.state["clock"]["mode"] == "stopped")
    for _ in range(2):
        now = page.state["clock"]["now"]
        page.order("skip", ms=1)
        page.until(lambda: page.state["clock"]["now"] == now + 1)
    page.order("clock", mode="real")
    before = page.state["clock"]["now"]
    page.order("skip", ms=60)
    page.until(lambda: page.state["clock"]["now"] >= before + 60)


def test_the_clock_is_told_before_what_is_reckoned_from_it(page):
    page.order("skip", ms=2000)
    told = len(page.history)
    page.order("plugSample", id="one-film")
    page.until_popup("play")
    paths = [path for path, _ in page.history[told:]]
    assert "clock" in paths[: paths.index("popup")]
    assert list(page.messages[1]["state"])[0] == "clock"


def test_a_stopped_clock_moves_by_steps_only(page):
    page.order("plugSample", id="empty")
    page.until_popup("browse")
    page.until(lambda: len(page.state["clock"]["timers"]) == 2)
    assert {timer["what"] for timer in page.state["clock"]["timers"]} == {"watchdog", "time-out of a pop-up"}
    assert [timer["everyMs"] for timer in page.state["clock"]["timers"]] == [5000, None]
    now = page.state["clock"]["now"]
    time.sleep(0.2)
    assert page.order("step") == {"skippedMs": 30000, "what": "time-out of a pop-up"}
    page.until(lambda: page.state["popup"] is None)
    page.until(lambda: page.state["clock"]["now"] == now + 30000)
    with pytest.raises(Failed, match="nothing waits"):
        page.order("step")


@pytest.mark.parametrize(
    "order, values, reason",
    [
        ("nonsense", {}, 'there is no order "nonsense"'),
        ("press", {"button": 0}, "there is no pop-up"),
        ("press", {}, "which button"),
        ("hide", {}, "there is no pop-up"),
        ("pull", {"port": 1}, "there is no port 1"),
        ("mount", {"port": -1}, "there is no port -1"),
        ("hub", {"count": 33}, "1 to 32"),
        ("plugSample", {"id": "x"}, 'no sample "x"'),
        ("plugFolder", {"path": "/nowhere"}, "No such file"),
        ("plugFolder", {"path": "/etc/passwd"}, "Not a directory"),
        ("plugFolder", {"path": "/", "fileSystem": "zfs"}, 'no file system "zfs"'),
        ("key", {"name": "red"}, "no such key"),
        ("wake", {}, "the TV is on"),
        ("clock", {"mode": "fast", "factor": 1}, "2 to 600"),
        ("clock", {}, "real, fast and stopped"),
        ("skip", {"ms": -1}, "at most a day"),
        ("setting", {"key": "x", "value": 1}, "bool, int or string"),
        ("setting", {"key": "shopMode", "value": 1}, "neither true nor false"),
        ("context", {"bits": "x"}, "no number"),
        ("fault", {"service": "x", "on": True}, "what can fail"),
        ("folders", {"path": "/nowhere"}, "cannot be looked into"),
        ("record", {"on": False}, "nothing is being recorded"),
        ("replay", {"text": "nonsense"}, "line 1: a scenario begins with"),
        ("call", {"client": 1, "member": "Nothing"}, 'no method "Nothing"'),
        ("call", {"client": 1000, "member": "Connect"}, "0 to 999"),
        ("call", {"client": 1, "member": "Connect", "arguments": ["x"]}, "takes 2 arguments"),
        ("call", {"client": 1, "member": "Connect", "arguments": [1, "x"]}, "are \\(si\\)"),
    ],
)
def test_an_order_that_cannot_be_carried_out_says_why_in_one_line(page, order, values, reason):
    with pytest.raises(Failed, match=reason) as failure:
        page.order(order, **values)
    assert "\n" not in str(failure.value)


@pytest.mark.parametrize("text", ["", "nonsense", "[]", "{}", "[" * 90000, '{"do": 5}', '"\\ud800"', '{"do":"press","with":[]}'])
def test_a_message_that_is_no_order_harms_nobody(page, text):
    page.write(text)
    page.order("plugSample", id="one-photo")
    page.until_popup("play")


def test_folders_can_be_chosen_from(page, tmp_path):
    for name in ("b", "a", ".hidden"):
        (tmp_path / name).mkdir()
    (tmp_path / "file").write_text("")
    assert page.order("folders", path=str(tmp_path)) == {
        "path": str(tmp_path), "parent": str(tmp_path.parent), "folders": ["a", "b"]
    }
    assert page.order("folders", path="/")["parent"] is None


def test_other_orders_do_not_wait_for_a_folder_to_be_read(page, tmp_path):
    for number in range(20000):
        (tmp_path / str(number)).mkdir()
    asked = [page.send("folders", path=str(tmp_path)), page.send("hide")]
    page.until(lambda: {m.get("id") for m in page.messages} >= set(asked))
    assert [m["id"] for m in page.messages if m.get("id") in asked] == asked[::-1]
    answer = next(m for m in page.messages if m.get("id") == asked[0])
    assert len(answer["result"]["folders"]) == 20000


def test_quitting_ends_the_program_in_order(web):
    run = web()
    page = run.page()
    page.send("quit")
    assert run.finish(None) == 0
    page.until_gone()
    assert not list(run.temporary.iterdir())


def test_a_signal_ends_the_program_in_order(web):
    run = web()
    run.page()
    assert run.finish() == 0
    assert run.errors == ""
    assert not list(run.temporary.iterdir())
