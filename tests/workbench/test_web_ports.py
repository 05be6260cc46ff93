"""Which port is busy, and pulling one that is."""

import pytest

from web_process import Failed


def busy(page):
    """The ports that are busy."""
    return [port["port"] for port in page.state["ports"] if port["busy"]]


def test_a_refused_pull_changes_nothing(page, tmp_path):
    page.order("plugFolder", path=str(tmp_path), mounted=False)
    page.until(lambda: page.state["ports"])
    before = page.state["ports"]
    with pytest.raises(Failed, match="it is not busy"):
        page.order("pull", port=1, busy=True)
    page.order("fault", service="launch", on=True)
    page.until(lambda: page.state["context"]["faults"]["launch"])
    assert page.state["ports"] == before and not before[0]["mounted"]
    page.order("mount", port=1)
    page.until_popup("browse")


def test_of_two_sticks_with_the_same_content_one_is_scanned(page, stick):
    folder = str(stick())
    page.order("fault", service="scanSilent", on=True)
    page.order("plugFolder", path=folder, title="A")
    page.until(lambda: busy(page) == [1])
    page.order("call", client=1, member="SetEnablePopUP", arguments=[False])
    page.order("plugFolder", path=folder, title="B")
    page.until(lambda: len(page.state["devices"]) == 2)
    page.until(lambda: len(page.state["ports"]) == 2 and page.state["ports"][1]["mounted"])
    assert busy(page) == [1]
    with pytest.raises(Failed, match="the last content scan was not of this one"):
        page.order("pull", port=2, busy=True)
    page.order("pull", port=1, busy=True)
    page.until(lambda: [port["port"] for port in page.state["ports"]] == [2])
