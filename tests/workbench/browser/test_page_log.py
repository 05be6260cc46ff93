"""The log: ten thousand lines, searched, filtered, paused, read by keys."""

import pytest

LINES = 10000

LIST = "#log-list"
COUNT = "#panel-log .stream-count"


def total(page):
    """How many lines the page holds, as its bar says."""
    return int(page.see(COUNT).split()[-1])


@pytest.fixture
def log(page):
    """A page that shows its log."""
    page.click("role=tab[name='Log']")
    page.see(".log-row >> nth=0")
    return page


def fill_log(page, bus_client, lines):
    """Has the daemon write lines, by calls of another client, until the page holds as many."""
    for _ in range(40):
        if total(page) >= lines:
            return
        for _ in range(250):
            bus_client.send("SetEnablePopUP", True, no_reply=True)
        bus_client.round_trip()
        page.run("new Promise((resolve) => requestAnimationFrame(resolve))")
    raise AssertionError(f"only {total(page)} lines after 10,000 calls")


def test_ten_thousand_lines_are_few_nodes(log, bus_client):
    few = log.run("document.querySelectorAll('*').length")
    fill_log(log, bus_client, LINES)
    assert total(log) >= LINES
    assert log.count(".log-row") < 60
    assert log.run("document.querySelectorAll('*').length") < few + 300
    # The list is as high as all its lines, and shows the last of them at its end.
    log.until(f"[...document.querySelectorAll('.log-row')].at(-1).ariaPosInSet === '{total(log)}'")
    assert log.run(f"document.querySelector('{LIST}').scrollHeight") >= LINES * 22
    at_end = f"(() => {{ const l = document.querySelector('{LIST}'); return l.scrollHeight - l.scrollTop - l.clientHeight < 23; }})()"
    assert log.run(at_end)
    log.run(f"document.querySelector('{LIST}').scrollTop = 0")
    log.until("document.querySelector('.log-row[aria-posinset=\"1\"]') !== null")
    assert log.count(".log-row") < 60


def test_a_hidden_log_costs_no_node_at_all(page, bus_client):
    page.click("role=tab[name='Log']")
    page.see(".log-row >> nth=0")
    page.click("role=tab[name='Timers']")
    nodes = page.run("document.querySelectorAll('.log-row').length")
    for _ in range(250):
        bus_client.send("SetEnablePopUP", True, no_reply=True)
    bus_client.round_trip()
    page.run("new Promise((resolve) => setTimeout(resolve, 300))")
    assert page.run("document.querySelectorAll('.log-row').length") <= nodes


def test_a_reader_who_scrolled_up_is_left_where_he_is(log, bus_client):
    fill_log(log, bus_client, 500)
    log.run(f"document.querySelector('{LIST}').scrollTop = 100")
    log.until("[...document.querySelectorAll('.log-row')].some((row) => row.ariaPosInSet === '6')")
    before = total(log)
    fill_log(log, bus_client, before + 100)
    assert log.run(f"document.querySelector('{LIST}').scrollTop") == 100
    log.click("#panel-log >> role=button[name='To the end']")
    log.until(f"[...document.querySelectorAll('.log-row')].some((row) => row.ariaPosInSet === '{total(log)}')")


def test_the_search_finds_lines_whatever_their_case(log, bus_client):
    log.click("[data-sample=mixed]")
    log.see(".popup")
    log.fill("role=searchbox[name='Search: Log of the daemon']", "hOLIDAY")
    log.see(COUNT, text=" of ")
    texts = log.run("[...document.querySelectorAll('.log-row .row-text')].map((text) => text.innerText)")
    assert texts and all("holiday" in text.lower() for text in texts)


def test_priorities_are_left_out_one_by_one(log):
    log.click("[data-sample=mixed]")
    log.see(".popup")
    log.see(".log-row.info >> nth=0")
    log.click("#panel-log .chip:has-text('info')")
    log.until("document.querySelectorAll('.log-row.info').length === 0")
    log.see(".log-row.debug >> nth=0")
    log.click("#panel-log .chip:has-text('debug')")
    log.until("document.querySelectorAll('.log-row.debug').length === 0")


def test_a_paused_log_stands_still_and_tells_what_waits(log, bus_client):
    log.click("#panel-log >> role=button[name='Pause']")
    bus_client.call("SetEnablePopUP", True)
    log.see(COUNT, text="newer")
    rows = log.run("document.querySelector('#log-list .list-space').style.height")
    bus_client.call("SetEnablePopUP", True)
    assert log.run("document.querySelector('#log-list .list-space').style.height") == rows
    log.click("#panel-log >> role=button[name='Go on']")
    log.gone(f"{COUNT}:has-text('newer')")


def test_clearing_empties_the_log_of_every_page(log, open_page):
    other = open_page()
    other.click("role=tab[name='Log']")
    other.see(".log-row >> nth=0")
    log.click("#panel-log >> role=button[name='Clear']")
    other.until("document.querySelectorAll('.log-row').length === 0")
    log.until("document.querySelector('#panel-log .stream-count').innerText === '0'")


def test_a_line_is_read_in_full_by_keys(log):
    log.do("focus", selector=LIST)
    log.press("Home", "ArrowDown")
    log.see(".log-row[aria-selected=true]")
    marked = log.run(f"document.getElementById(document.querySelector('{LIST}').getAttribute('aria-activedescendant')).ariaPosInSet")
    assert marked == "2"
    log.see("#panel-log .detail .detail-head", text=".cpp:")
    log.press("Escape")
    log.gone("#panel-log .detail")


def test_a_clicked_line_stays_in_view_above_its_detail(page):
    page.click("[data-sample=mixed]")
    page.see(".popup")
    page.stop_time()
    page.click("role=tab[name='Log']")
    last = page.run(
        """[...document.querySelectorAll(".log-row")]
           .sort((one, other) => one.ariaPosInSet - other.ariaPosInSet).at(-1).id"""
    )
    page.click(f"#{last}")
    page.see("#panel-log .detail")
    row, rows = page.box(".log-row[aria-selected=true]"), page.box("#log-list")
    assert rows["y"] <= row["y"] and row["y"] + row["height"] <= rows["y"] + rows["height"] + 1
