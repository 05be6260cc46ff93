"""What a recording begins with: whatever was done before it, it can be replayed on a fresh TV."""

import pytest

from web_process import replayed

HEAD = "portmeld-scenario 1\n"


def call(page, client, member, *arguments):
    return page.order("call", client=client, member=member, arguments=list(arguments))


def recorded(page, *orders):
    """Records some orders, each (name, values); returns the scenario."""
    page.order("record", on=True)
    for name, values in orders:
        page.order(name, **values)
    return page.order("record", on=False)


def assert_holds(text, folder, *expected):
    """Replays a scenario with further lines at its end."""
    status, lines, complaints = replayed(text + "".join(line + "\n" for line in expected), folder)
    assert (status, complaints) == (0, ""), "\n".join(lines)


def test_settings_of_before_are_made_again(page, tmp_path):
    page.order("setting", key="demoMode", value=2)
    page.order("setting", key="some/key", type="int", value=7)
    page.order("setting", key="some/key", type="string", value="two words")
    page.order("context", bits=128)
    page.order("companion", running=True)
    text = recorded(page)
    assert 'setting some/key "two words" type=string\n' in text and "type=int" not in text
    assert_holds(
        text, tmp_path, "expect settings.demoMode = 2 context.distraction = 128 context.companionRunning = yes"
    )


def test_a_stick_that_was_mounted_later_is_mounted_again(page, tmp_path):
    page.order("plugFolder", path=str(tmp_path), title="A", mounted=False)
    page.order("mount", port=1)
    page.order("plugFolder", path=str(tmp_path), title="B", mounted=False)
    page.until(lambda: len(page.state["devices"]) == 2)
    text = recorded(page, ("mount", {"port": 2}), ("pull", {"port": 1}))
    assert "mount 1\n" in text
    assert_holds(text, tmp_path, "expect devices.0.product = B devices.1.product = none")


def test_a_pop_up_that_has_gone_is_not_in_the_way(page, tmp_path):
    page.order("plugSample", id="one-film")
    page.until_popup("play")
    page.order("skip", ms=40000)
    page.until(lambda: page.state["popup"] is None)
    text = recorded(page, ("key", {"name": "ok"}))
    assert_holds(text, tmp_path, "expect no launch", "expect popup none", "expect devices.0.product ~ Film")


def test_the_name_of_a_media_server_is_told_again(page, tmp_path):
    page.order("setting", key="dlnaIcon", value="/nowhere.png")
    page.order("setting", key="dlnaName", value="Media Server")
    page.until_popup("removal")
    assert_holds(
        recorded(page), tmp_path, "expect popup removal sourceIcon = /nowhere.png", 'expect settings.dlnaName ~ "Media Server"'
    )


@pytest.mark.parametrize("service", ["notification", "launch", "scanSilent"])
def test_a_service_that_fails_fails_again(page, tmp_path, service):
    page.order("plugSample", id="one-film")
    page.until_popup("play")
    page.order("fault", service=service, on=True)
    assert_holds(recorded(page), tmp_path, f"expect context.faults.{service} = yes", "expect popup play")


@pytest.mark.parametrize("order, power, activated", [("standby", "standby", "yes"), ("powerOff", "off", "no")])
def test_a_tv_that_was_not_on_is_so_again(page, tmp_path, order, power, activated):
    page.order(order)
    page.until(lambda: page.state["power"] == power)
    page.until(lambda: page.state["daemon"]["activated"] == (activated == "yes"))
    assert_holds(recorded(page), tmp_path, f"expect power = {power} daemon.activated = {activated}")


def test_pop_ups_that_were_switched_off_stay_off(page, tmp_path):
    call(page, 3, "SetEnablePopUP", False)
    text = recorded(page, ("plugSample", {"id": "one-film"}))
    assert_holds(text, tmp_path, "expect popup none", "expect daemon.activated = no")


def test_the_list_of_music_is_the_same(page, bus_client, tmp_path):
    call(page, 1, "SetPhotoBGMPlayList", "old", "", "")
    call(page, 1, "ClearPhotoBGMPlayList")
    bus_client.call("SetPhotoBGMPlayList", "http://x", "A song", "Ä")
    call(page, 1, "SetPhotoBGMPlayList", "http://y", "", "")
    text = recorded(page)
    assert_holds(
        text,
        tmp_path,
        "call 1 GetPhotoBGMPlayListItem 0",
        'expect reply http://x "A song" Ä',
        "call 1 GetPhotoBGMPlayListItem 1",
        'expect reply http://y "" ""',
    )


def test_clients_are_registered_in_the_same_order(page, tmp_path):
    call(page, 4, "Connect", "x", 40)
    call(page, 1, "DisConnect", 1)
    call(page, 1, "Connect", "again", 1)
    text = recorded(page, ("plugSample", {"id": "one-film"}), ("pull", {"port": 1}), ("hub", {"count": 1}))
    assert "expect signal mm_device_action client 4\nexpect signal mm_device_action client 1\n" in text
    assert_holds(text, tmp_path, "expect daemon.clients.0.id = 40 daemon.clients.1.id = 1")


def test_clients_of_other_programs_are_nobody_that_a_replay_could_hear(page, bus_client, tmp_path):
    bus_client.call("Connect", "other", 7)
    page.order("record", on=True)
    page.order("plugSample", id="one-film")
    page.until_popup("play")
    page.order("pull", port=1)
    page.until(lambda: len([m for m in page.wire if m["kind"] == "signal"]) == 2)
    text = page.order("record", on=False)
    assert "client 1" in text and "client 7" not in text
    assert_holds(text, tmp_path)


def test_what_is_replayed_meanwhile_is_recorded(page, tmp_path):
    page.order("plugSample", id="empty")
    page.order("pull", port=1)
    page.order("record", on=True)
    page.order("replay", text=HEAD + "plugSample one-film\nafter 40\npull 1\nexpect no device /dev/sda1\n")
    page.until(lambda: any(m["type"] == "replayEnd" for m in page.messages))
    page.order("plugSample", id="one-photo")
    page.until_popup("play")
    text = page.order("record", on=False)
    assert "plugSample one-film\n" in text and "pull 1\n" in text and "expect no device" not in text
    assert_holds(text, tmp_path, "expect devices.0.product ~ Photo devices.1.product = none")


def test_a_file_that_is_recorded_to_only_grows(web, tmp_path):
    file = tmp_path / "new.scenario"
    run = web("--bare", "--record", file)
    page = run.page()
    seen = [file.read_text()]
    first = file.stat().st_ino
    for order in ({"id": "one-film"}, {"id": "empty"}, {"id": "mixed"}):
        page.order("plugSample", **order)
        seen.append(file.read_text())
        assert seen[-1].startswith(seen[-2]) and seen[-1].endswith("\n")
        assert f"plugSample {order['id']}\n" in seen[-1], "it is there as soon as it was done"
    assert file.stat().st_ino == first
    assert page.order("record", on=False) == file.read_text()
    page.order("record", on=True)
    page.order("plugSample", id="demo")
    assert run.finish() == 0
    assert "demo" not in file.read_text(), "a later recording is another"
    assert run.errors == ""


def test_a_file_that_cannot_be_recorded_to_is_told_at_once(tmp_path):
    status, lines, complaints = replayed(HEAD, tmp_path, "--record", tmp_path / "no" / "x")
    assert (status, lines) == (1, [])
    assert "No such file" in complaints and complaints.count("\n") == 1
