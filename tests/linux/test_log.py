"""The daemon's log lines: which are written, where, and in which form, whatever is in them."""

import os
import subprocess

import pytest
from journal_helpers import Journal
from settings_helpers import Store, complaints

LEVEL = "db/portmeld/log_level"
DEBUG, INFO, WARNING = 3, 4, 5
LONGEST = 64 * 1024


@pytest.fixture
def store(root):
    """The settings of the machine."""
    return Store(root)


@pytest.fixture
def journal(tmp_path):
    """A journal; a probe that is started with its wrapper() writes to it."""
    journal = Journal(tmp_path)
    yield journal
    journal.close()


@pytest.fixture
def logging(probe, store, journal):
    """A probe that writes all it has to say to the journal."""
    store(LEVEL, "debug\n")
    return probe(wrapper=journal.wrapper())


@pytest.fixture
def quiet(probe, start_bus):
    """Starts a probe that finds the buses of its machine, and so has nothing to say of them."""

    def start(wrapper):
        return probe(session_bus=start_bus(), system_bus=start_bus(), wrapper=wrapper)

    return start


def taken(journal):
    """The next line of the daemon; the machine has its own to say in between."""
    return journal.take(lambda entry: "PORTMELD_TAG" in entry)


# ---- with a journal


@pytest.mark.parametrize(
    "priority, syslog, function",
    [(DEBUG, "7", "m_Look"), (INFO, "6", "operator()"), (WARNING, "4", "m_Look")],
)
def test_a_line_goes_to_the_journal_with_its_place_in_fields(
    logging, journal, priority, syslog, function
):
    logging.call("log", priority, "three devices: 100%s")
    assert taken(journal) == {
        "MESSAGE": "three devices: 100%s",
        "PRIORITY": syslog,
        "SYSLOG_IDENTIFIER": "portmeld",
        "CODE_FILE": "Room.cpp",
        "CODE_FUNC": function,
        "CODE_LINE": "12",
        "PORTMELD_TAG": "PORTMELD",
    }
    assert logging.error_lines() == []


def test_an_entry_trace_is_told_by_the_functions_name(logging, journal):
    logging.call("log", DEBUG, "")
    assert taken(journal)["MESSAGE"] == "m_Look()"


@pytest.mark.parametrize(
    "text, message",
    [
        ("end\n", "end"),
        ("two\nlines\n", "two lines"),
        ("\033[31mred\033[0m!", " [31mred [0m!"),
        ("tab\tand\rreturn\x7f", "tab and return "),
        ("ends like a place) > really", "ends like a place) > really"),
        ("Room.cpp: m_Look(12) > ", "Room.cpp: m_Look(12) > "),
    ],
)
@pytest.mark.parametrize("priority", [DEBUG, INFO])
def test_a_message_is_one_line_without_escapes(logging, journal, priority, text, message):
    logging.call("log", priority, text)
    entry = taken(journal)
    assert (entry["MESSAGE"], entry["CODE_LINE"]) == (message, "12")


def test_bytes_that_are_no_text_are_made_harmless(logging, journal):
    every = bytes(range(1, 256))
    logging.call("log-bytes", WARNING, every.hex())
    message = taken(journal)["MESSAGE"]
    message.encode()  # raises for what is not UTF-8
    assert "ABC" in message and "\ufffd" in message
    assert not any(ord(character) < 0x20 for character in message)


@pytest.mark.parametrize("count", [LONGEST - 200, LONGEST, LONGEST + 1, 4 * 1024 * 1024])
def test_a_long_line_is_cut(logging, journal, count):
    logging.call("log-long", WARNING, "x", count)
    message = taken(journal)["MESSAGE"]
    assert set(message) == {"x"}
    assert min(count, LONGEST - 100) <= len(message) <= min(count, LONGEST)


def test_a_line_in_another_form_is_a_message_without_a_place(logging, journal):
    for text in ["bare", "no place(here) > x", ": (1) > "]:
        logging.call("log-bare", WARNING, text)
        entry = taken(journal)
        assert (entry["MESSAGE"], entry["CODE_FUNC"], entry["PORTMELD_TAG"]) == (text, "", "")


def test_the_machines_own_lines_go_to_the_journal_as_well(logging, journal, store):
    store("db/x", "one\n")
    assert logging.call("get-int", "db/x") is None
    entry = journal.take(lambda entry: "PORTMELD_SETTING" in entry)
    assert "db/x" in entry["MESSAGE"]
    assert (entry["PRIORITY"], entry["PORTMELD_SETTING"]) == ("4", "db/x")
    assert logging.error_lines() == []


def test_a_journal_that_hangs_delays_nobody_and_is_told_how_many_lines_it_missed(
    quiet, store, tmp_path
):
    store(LEVEL, "debug\n")
    hanging = Journal(tmp_path, reading=False)
    one = quiet(wrapper=hanging.wrapper())
    for number in range(600):
        one.call("log", WARNING, f"line {number}")
    hanging.read()
    hanging.take(lambda entry: entry["MESSAGE"] == "line 0")
    one.call("log", WARNING, "afterwards")
    missing = hanging.take(lambda entry: "missing" in entry["MESSAGE"])
    assert missing["PRIORITY"] == "4"
    hanging.take(lambda entry: entry["MESSAGE"] == "afterwards")
    came = len([entry for entry in hanging.entries() if entry["MESSAGE"].startswith("line ")])
    assert missing["MESSAGE"].split()[-1] == str(600 - 1 - came)
    one.call("log", WARNING, "nothing was lost since")
    hanging.take(lambda entry: entry["MESSAGE"] == "nothing was lost since")
    assert not any("missing" in entry["MESSAGE"] for entry in hanging.entries())
    assert one.error_lines() == []
    hanging.close()


def test_lines_that_a_journal_which_was_gone_has_missed_are_told_to_the_next(
    quiet, store, tmp_path
):
    store(LEVEL, "debug\n")
    gone = Journal(tmp_path)
    one = quiet(wrapper=gone.wrapper())
    one.call("log", WARNING, "first")
    taken(gone)
    gone.close()
    for _ in range(3):
        one.call("log", WARNING, "lost")
    following = Journal(tmp_path)
    one.call("log", WARNING, "second")
    assert following.take()["MESSAGE"].endswith("missing here: 3")
    assert taken(following)["MESSAGE"] == "second"
    following.close()


def test_a_value_that_is_too_long_for_the_socket_is_cut_between_two_characters(logging, journal):
    key = "db/" + "/".join(["ä" * 100] * 600)
    assert logging.call("get-str", key) is None
    entry = journal.take(lambda entry: "PORTMELD_SETTING" in entry)
    assert len(entry["PORTMELD_SETTING"].encode()) <= LONGEST
    entry["PORTMELD_SETTING"].encode()  # raises for half a character


# ---- without one


def test_without_a_journal_lines_go_to_standard_error_with_their_place(probe, store):
    store(LEVEL, "debug\n")
    one = probe()
    for priority in [DEBUG, INFO, WARNING]:
        one.call("log", priority, "two\nlines\n")
    assert complaints(one) == [
        "portmeld: Room.cpp: m_Look(12) > two lines",
        "portmeld: Room.cpp: operator()(12) > two lines",
        "portmeld: Room.cpp: m_Look(12) > two lines",
    ]


def test_standard_error_that_leads_elsewhere_is_used(probe, store, journal):
    one = probe(wrapper=[*journal.wrapper(), "env", "JOURNAL_STREAM=1:1"])
    one.call("log", WARNING, "here")
    one.wait_for_error_line("> here")
    assert journal.entries() == []


def test_a_journal_that_is_gone_is_no_reason_to_lose_lines(probe, store):
    stream = 'JOURNAL_STREAM=$(stat -L -c %d:%i /proc/self/fd/2) exec "$@"'
    rights = [] if os.geteuid() == 0 else ["-r"]
    alone = ["unshare", *rights, "-m", "sh", "-c", f"mount -t tmpfs tmpfs /run && {stream}", "sh"]
    one = probe(wrapper=alone)
    one.call("log", WARNING, "here")
    one.wait_for_error_line("> here")


# ---- the level


def written(probe):
    """The priorities of which lines are written now."""
    before = len(probe.error_lines())
    for priority in [DEBUG, INFO, WARNING]:
        probe.call("log", priority, f"{priority}")
    mark = f"marked {before}"
    # The mark is written whatever the level: it is the machine's own.
    probe.call("get-int", mark)
    probe.wait_for_error_line(mark)
    lines = probe.error_lines()[before:]
    return {int(line.split()[-1]) for line in lines if "Room.cpp" in line}


@pytest.mark.parametrize(
    "level, priorities",
    [
        ("debug", {DEBUG, INFO, WARNING}),
        ("info", {INFO, WARNING}),
        ("warning", {WARNING}),
        ("off", set()),
    ],
)
def test_lines_below_the_level_are_dropped(probe, store, level, priorities):
    store(LEVEL, level)
    assert written(probe()) == priorities


def test_without_a_level_warnings_are_written(probe, store):
    assert written(probe()) == {WARNING}


def test_a_level_that_is_none_is_told_and_taken_for_warning(probe, store):
    store(LEVEL, "loud\n")
    one = probe()
    assert written(one) == {WARNING}
    (line,) = [line for line in one.error_lines() if LEVEL in line]
    assert "loud" in line and "debug" in line


def test_a_level_that_changes_is_followed(probe, store):
    one = probe()
    assert written(one) == {WARNING}
    for level, priorities in [("debug", {DEBUG, INFO, WARNING}), ("off", set())]:
        assert one.call("store-write", LEVEL, level) == ""
        one.call("settle")
        assert written(one) == priorities
    assert one.call("store-remove", LEVEL) == ""
    one.call("settle")
    assert written(one) == {WARNING}


def test_a_dropped_line_is_not_even_formatted(probe, store):
    """Its argument is an address at which nothing is: formatting it would end the process."""
    one = probe()
    assert one.call("log-without-memory", INFO) == 0
    assert written(one) == {WARNING}


def test_a_dropped_line_costs_a_comparison(probe, store):
    """Ten million of them take less than a second even where each instruction is checked."""
    one = probe()
    one.call("log", WARNING, "the level is read now")
    seconds = float(one.call("time-dropped-lines", 10_000_000))
    assert seconds < 1, f"{seconds} s"


def test_the_settings_folder_is_not_needed(probe, root):
    one = probe()
    assert written(one) == {WARNING}
    assert subprocess.run(["ls", str(root)], capture_output=True, text=True).stdout == ""
