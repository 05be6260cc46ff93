"""The daemon's own account of itself: what the panel shows, and what lights up when it changes."""

STATE = ".{}:has(dt:text-is('{}'))"


def value(page, name, text, kind="pointer"):
    """Waits until a fact of the panel has a value and has lit up for it."""
    page.see(f"{STATE.format(kind, name)}.lit dd:text-is('{text}')")


def test_a_scan_its_find_the_devices_and_the_removal_notice_light_up(page, bus_client):
    page.click("role=tab[name='Settings']")
    page.click(".switch:has-text('Content scan says nothing')")
    page.click("role=tab[name='State']")
    page.stop_time()
    assert page.see(STATE.format("tile", "USB events")) == "USB events\ntaken"
    page.click("[data-sample=one-photo]")
    value(page, "Scan", "running", "tile")
    value(page, "current device", "/dev/sda1")
    value(page, "last displayed", "/dev/sda1")
    assert page.see(STATE.format("pointer", "last scan found") + " dd") == "nothing yet"
    page.click("role=tab[name='Settings']")
    page.click(".switch:has-text('Content scan says nothing')")
    page.click("role=tab[name='State']")
    value(page, "Scan", "none", "tile")
    value(page, "last scan found", "photo chelsea.jpg")
    page.click("role=button[name='Pull port 1']")
    value(page, "current device", "none")
    value(page, "removal notice", "Photo Stick")
    bus_client.call("RequesAll", 9)
    assert bus_client.news() == []
    page.click("role=button[name='Next timer']")
    page.gone(".popup")
    value(page, "removal notice", "none")


def test_a_device_that_follows_another_lights_up_as_the_current_one(page):
    page.click("[data-sample=mixed]")
    value(page, "current device", "/dev/sda1")
    page.click("[data-sample=mixed]")
    value(page, "current device", "/dev/sdb1")
    value(page, "last displayed", "/dev/sdb1")


def test_the_panel_tells_whether_the_daemon_takes_usb_events(page):
    """At the start a page comes too late to see it, so the panel is given the state of before."""
    shown = page.run(
        """import("/state-view.js").then(({ StateView }) => {
              const listeners = {};
              const view = new StateView({ on: (member, listener) => { listeners[member] = listener; } });
              const tell = (listening) => listeners.daemon({ running: true, listening, activated: false, standby: false,
                notificationKind: -1, counters: {}, clients: [], displayedDevice: null, currentDevice: null,
                removalNotice: null, scanning: false, scan: null, breaches: [] });
              return [false, true].map((listening) => {
                tell(listening);
                return [...view.node.querySelectorAll(".tile")].map((one) => one.textContent);
              });
            })"""
    )
    assert "USB eventsnot yet" in shown[0] and "USB eventstaken" in shown[1]


HINT = ".tv-hint"


def test_after_switching_on_the_screen_says_how_long_nothing_is_offered(page):
    page.stop_time()
    page.see(HINT, text="Nothing is plugged in")
    page.press("p")
    page.see(".tv-dark")
    page.press("p")
    page.see(HINT, text="Just switched on: for a minute nothing is offered. Next timer (N)")
    page.click("[data-sample=one-photo]")
    page.see(".port")
    assert page.count(".popup") == 0
    page.press("n")
    page.gone(HINT)
    page.click("[data-sample=mixed]")
    page.see(".popup")


REASONS = {
    "Companion application runs": "The companion application runs",
    "Distraction-free, bit 10": "Distraction-free",
    "Notification server refuses": "The notification server refuses",
}


def test_the_screen_says_why_nothing_pops_up(page):
    page.click("role=tab[name='Settings']")
    for switch, text in REASONS.items():
        page.click(f".switch:has-text('{switch}')")
        page.see(HINT, text=text)
        page.click(f".switch:has-text('{switch}')")
        page.see(HINT, text="Nothing is plugged in")


def test_the_card_of_the_companion_says_why_browse_opened_it_and_what_is_left_of_a_song(page):
    page.click("[data-sample=one-song]")
    page.see(".popup-body", text="Would you like to play it?")
    page.press("Enter")
    page.see(".launched-name", text="Content browser")
    assert page.count(".launched-why") == 0
    assert "earlier launch" not in page.see(".launched")
    page.press("h")
    page.gone(".launched")
    page.click("[data-sample=mixed]")
    page.see(".popup-button.chosen", text="Browse")
    page.see(".plugged .none", text="With more than one device")
    page.press("Enter")
    page.see(".launched-name", text="Companion application")
    assert "Browse opens it when more than one device is connected" in page.see(".launched-why")
    card = page.see(".launched")
    assert "music_title" in card and "what an earlier launch was given, a song for instance" in card
