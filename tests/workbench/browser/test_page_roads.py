"""What a viewer lives through, from the plug to the application and to the removal. What the daemon
tells of it on the bus is asked by a client of its own."""

import client


def plug(page, sample):
    """Plugs a ready-made stick in."""
    page.click(f"[data-sample={sample}]")


def test_one_photo_is_offered_and_played(page, bus_client):
    plug(page, "one-photo")
    assert page.see(".popup .popup-title") == "New device connected: Photo Stick"
    assert "chelsea.jpg" in page.see(".popup .popup-body", text="Would you like to play it?")
    assert page.see(".popup-button.chosen") == "Play"
    pictures = "[...document.querySelectorAll('.popup-button img')].map((one) => one.naturalWidth > 0)"
    page.until(f"String({pictures}) === 'true,true'")
    page.click(".popup-button:has-text('Play')")
    assert page.see(".launched-name") == "Photo player"
    assert page.see(".track.current .track-name") == "chelsea.jpg"
    assert page.see(".launched-id") == "org.norvane.picreel"
    page.gone(".popup")
    bus_client.call("RequesAll", 77)
    [(_, device)] = bus_client.news()
    root = page.see(".given dt:has-text('root_path') + dd")
    assert device["Product"] == "Photo Stick"
    assert device["Mountpath"] == root and root.endswith("/one-photo")


def test_one_film_is_played_with_what_the_player_may_do(page):
    plug(page, "one-film")
    page.see(".popup .popup-body", text="Would you like to play it?")
    page.click(".pad-ok")
    assert page.see(".launched-name") == "Video player"
    flags = page.run("[...document.querySelectorAll('.flag.on')].map(flag => flag.innerText)")
    assert sorted(flags) == [
        "function_pause",
        "function_repeat",
        "function_rotate",
        "function_scenesearch",
        "function_trickplay",
    ]


def test_one_song_goes_to_the_browser_with_title_and_artist(page):
    plug(page, "one-song")
    page.see(".popup .popup-body", text="Would you like to play it?")
    page.click(".pad-ok")
    page.see(".launched[data-app='org.quillon.folian']")
    title = page.see(".given dt:has-text('music_title') + dd")
    artist = page.see(".given dt:has-text('music_artist') + dd")
    assert title and artist and title in page.see(".song") and artist in page.see(".song")


def test_a_stick_with_many_files_is_offered_to_browse(page):
    plug(page, "mixed")
    page.see(".popup .popup-body", text="Would you like to browse the files on this device?")
    page.click(".popup-button:has-text('Browse')")
    page.see(".launched[data-app='org.quillon.folian']")
    assert page.see(".launched-device") == "Holiday"
    assert page.see(".given dt:has-text('content_type') + dd") == "all"


def test_cancel_closes_the_popup_and_launches_nothing(page):
    plug(page, "one-photo")
    page.click(".popup-button:has-text('Cancel')")
    page.gone(".popup")
    assert page.count(".launched") == 0


def test_a_pulled_stick_leaves_a_notice_and_every_client_is_told(page, bus_client):
    plug(page, "mixed")
    page.see(".popup")
    bus_client.call("Connect", "test", 7)
    page.stop_time()
    page.click("role=button[name='Pull port 1']")
    page.see(".popup.notice .popup-body", text="The device has been disconnected.")
    assert page.see(".popup.notice .popup-title") == "Holiday"
    assert page.count(".popup-button") == 0
    assert [news[:2] for news in bus_client.actions()] == [("mm_device_action", 2)]
    assert bus_client.call("GetDeviceCount", 7, 3) == [0]
    page.see(".plugged", text="All ports are free.")


def test_the_time_of_a_popup_runs_down_and_ends_it(page):
    plug(page, "mixed")
    page.stop_time()
    whole = page.see(".popup-seconds")
    assert int(whole.split()[0]) > 20
    page.run("new Promise((resolve) => setTimeout(resolve, 1300))")
    assert page.see(".popup-seconds") == whole
    page.click("role=button[name='10×']")
    page.until(f"parseInt(document.querySelector('.popup-seconds').innerText) < {whole.split()[0]} - 5")
    page.click("role=button[name='30×']")
    page.gone(".popup")


def test_the_clock_steps_to_the_end_of_a_popup(page):
    page.click("role=tab[name='Timers']")
    plug(page, "mixed")
    page.see(".timers tr", text="time-out of a pop-up")
    page.click("role=button[name='Next timer']")
    page.gone(".popup")
    page.see(".message", text="skipped: time-out of a pop-up")


def test_a_running_companion_is_told_instead_of_the_viewer(page):
    page.click("role=tab[name='Settings']")
    page.do("check", selector="role=switch[name=/Companion application runs/]")
    plug(page, "one-photo")
    page.see(".launched[data-app='org.norvane.lumet']")
    assert page.see(".given dt:has-text('device_action') + dd") == "ADD"
    assert page.count(".popup") == 0


def test_a_shop_plays_the_demo_of_a_demo_stick(page):
    page.click("role=tab[name='Settings']")
    page.do("check", selector="role=switch[name='Shop mode']")
    plug(page, "demo")
    page.see(".launched[data-app='org.norvane.shopreel']")


def test_a_viewer_who_wants_no_distraction_gets_no_popup(page, bus_client):
    page.click("role=tab[name='Settings']")
    page.do("check", selector="role=switch[name='Distraction-free, bit 10']")
    page.click("role=tab[name='State']")
    plug(page, "mixed")
    page.see(".device summary", text="Holiday")
    bus_client.round_trip()
    assert bus_client.call("GetDeviceCount", 7, 3) == [1]
    assert page.count(".popup") == 0


def test_the_television_sleeps_and_wakes_with_its_devices(page, bus_client):
    plug(page, "mixed")
    page.see(".popup")
    page.click("role=button[name='Power']")
    page.see(".tv-dark", text="Switched off")
    page.click("role=button[name='Wake']")
    page.gone(".tv-dark")
    bus_client.call("RequesAll", 7)
    assert [device["Product"] for _, device in bus_client.news()] == ["Holiday"]


def test_data_of_an_earlier_launch_is_not_taken_for_the_present_one(page):
    plug(page, "one-song")
    page.see(".popup-button.chosen", text="Play")
    page.click(".pad-ok")
    page.see(".song", text=page.see(".given dt:has-text('music_title') + dd"))
    page.press("h")
    page.gone(".launched")
    page.click("role=button[name='Pull port 1']")
    page.see(".popup.notice")
    plug(page, "mixed")
    page.see(".popup-button.chosen", text="Browse")
    page.click(".pad-ok")
    page.see(".launched[data-app='org.quillon.folian'] .launched-number", text="launch 2")
    assert page.count(".song") == 0
    page.see(".given dt:has-text('music_title')")
    assert page.see(".given dt:has-text('device_name') + dd") == "Holiday"
    page.see(".launched-body", text="what an earlier launch was given")


def test_standby_darkens_the_screen_and_wake_brings_it_back(page):
    page.click("role=button[name='Standby']")
    page.see(".tv-dark", text="Standby")
    page.click("role=button[name='Power']")
    page.gone(".tv-dark")


def test_a_refusing_notification_server_is_survived(page, bus_client):
    page.click("role=tab[name='Settings']")
    page.do("check", selector="role=switch[name='Notification server refuses']")
    plug(page, "mixed")
    page.click("role=tab[name='State']")
    page.see(".device summary", text="Holiday")
    assert page.count(".popup") == 0
    assert bus_client.owner_of(client.NAME)
