"""Usage records are entries of the journal, and nowhere else."""

import re

import pytest
from journal_helpers import Journal
from settings_helpers import complaints

PLAY_PRESSED, BROWSER_LAUNCHED = 36, 30


@pytest.fixture
def journal(tmp_path):
    """A journal; a probe that is started with its wrapper() writes to it."""
    journal = Journal(tmp_path)
    yield journal
    journal.close()


def record(journal):
    """The next usage record; the machine has its own lines to write in between."""
    return journal.take(lambda entry: "MESSAGE_ID" in entry)


def test_a_record_is_an_entry_with_fields(probe, journal):
    one = probe(wrapper=journal.wrapper())
    assert one.call("say-who-reports-usage") == 0
    assert one.call("report-usage", BROWSER_LAUNCHED, "USB") == 0
    entry = record(journal)
    assert re.fullmatch("[0-9a-f]{32}", entry["MESSAGE_ID"])
    assert entry["PRIORITY"] == "6"
    assert {name: value for name, value in entry.items() if "KPI" in name} == {
        "PORTMELD_KPI_APP": "3",
        "PORTMELD_KPI_TYPE": "30",
        "PORTMELD_KPI_TEXT": "USB",
        "PORTMELD_KPI_TEXT_2": "",
        "PORTMELD_KPI_TEXT_3": "",
    }


def test_all_records_are_of_one_kind_of_entry_whatever_the_log_level(probe, journal):
    one = probe(wrapper=journal.wrapper())
    assert one.call("store-write", "db/portmeld/log_level", "off") == ""
    one.call("say-who-reports-usage")
    for kind in [PLAY_PRESSED, BROWSER_LAUNCHED]:
        assert one.call("report-usage", kind, "") == 0
    ids = [record(journal)["MESSAGE_ID"] for _ in range(2)]
    assert ids[0] == ids[1]


@pytest.mark.parametrize("text", ["two\nlines", "a=b", "ä"])
def test_texts_are_kept_as_they_are(probe, journal, text):
    one = probe(wrapper=journal.wrapper())
    one.call("say-who-reports-usage")
    one.call("report-usage", BROWSER_LAUNCHED, text)
    assert record(journal)["PORTMELD_KPI_TEXT"] == text


def test_nothing_is_recorded_before_somebody_has_said_who_reports(probe, journal):
    one = probe(wrapper=journal.wrapper())
    assert one.call("report-usage", PLAY_PRESSED, "early") != 0
    one.call("say-who-reports-usage")
    one.call("report-usage", PLAY_PRESSED, "late")
    assert record(journal)["PORTMELD_KPI_TEXT"] == "late"


def test_without_a_journal_nothing_is_said(probe, root):
    (root / "var/lib/portmeld/db").mkdir(parents=True)
    one = probe()
    one.call("say-who-reports-usage")
    assert one.call("report-usage", PLAY_PRESSED, "x") != 0
    assert complaints(one) == []
