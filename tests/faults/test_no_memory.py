"""No memory to make or to read a JSON text: the daemon ends, says so if there is memory for the words, and the
service manager starts it again."""

import signal

import pytest
from client import Refused
from programs import built
from road import Road, is_question
from stick import NAME, NODE

# Who asks for a piece of memory in vain ends the process: GLib, by a trap, or by an abort when it is the stock
# of small pieces that it deals out itself; or the C++ library.
GLIB = ((signal.SIGTRAP, signal.SIGABRT), "failed to allocate")
CXX = ((signal.SIGABRT,), "std::bad_alloc")


@pytest.fixture
def scarce(tmp_path):
    """A file: while it is there, memory is not; no_memory.cpp says what is in it."""
    return tmp_path / "scarce"


@pytest.fixture
def world(start_world, scarce):
    """A world in which memory can become scarce."""
    return start_world(
        preload=[built("faults", "libno-memory.so")],
        # GLib deals out small pieces as it does where no test tells it otherwise.
        env={"PORTMELD_TEST_NO_MEMORY": str(scarce), "G_SLICE": ""},
    )


def begin(scarce, words):
    """Memory is scarce from now on."""
    prepared = scarce.with_name("prepared")
    prepared.write_text(words)
    prepared.rename(scarce)


def plug(world):
    """A stick is plugged in and mounted, and its search for media stands at the gate. Returns where it is
    mounted, and the question about it."""
    world.plug()
    point = world.mount()
    popup = world.screen.take(is_question("Browse"))
    world.stick.wait_until_searched()
    return point, popup


def a_list_is_asked_for(world, _popup):
    with pytest.raises(Refused, match="NoReply"):
        world.client.call("RequesAll", 1)


def the_stick_is_pulled(world, _popup):
    world.machine.unplug(NAME)


def the_search_ends(world, _popup):
    world.stick.open_gate()


def an_application_is_launched(world, popup):
    world.screen.order("press", popup["id"], popup["actions"][0])


EVERYTHING = [a_list_is_asked_for, the_stick_is_pulled, the_search_ends, an_application_is_launched]

# Each text is made; that of a search is also read. Not every text has so many pieces that it has a twentieth.
WITH_WORDS = [
    *[(something, "build 1", GLIB) for something in EVERYTHING],
    *[(something, "print 1", GLIB) for something in EVERYTHING],
    *[(something, "copy 1", CXX) for something in EVERYTHING],
    (a_list_is_asked_for, "build 20", GLIB),
    (a_list_is_asked_for, "print 20", GLIB),
    (the_search_ends, "parse 1", GLIB),
    (the_search_ends, "parse 20", GLIB),
    (the_search_ends, "read 1", CXX),
    (the_search_ends, "read 20", CXX),
]

# GLib's words need memory themselves, those of the C++ library do not.
WITHOUT_WORDS = [
    (a_list_is_asked_for, "build 1"),
    (a_list_is_asked_for, "print 1"),
    (the_stick_is_pulled, "build 1"),
    (the_search_ends, "parse 1"),
    (an_application_is_launched, "print 1"),
]


def last_words(world, scarce, words, something):
    """Something happens while memory is scarce, and the daemon ends: returns by which signal, and what it has
    printed. It is back, and the next plug is as ever."""
    point, popup = plug(world)
    begin(scarce, words)
    something(world, popup)
    world.service.wait_for("ended", 1)
    scarce.unlink()
    (status,) = world.service.ends()
    world.service.wait_for("ready", 2)
    world.listen()
    world.machine.unplug(NAME)
    world.stick.unmount(world.mounts, point)
    world.stick.open_gate()
    world.screen.calls_so_far("Notify")
    world.client.round_trip()
    world.client.news()
    Road(world).go()
    return -status, "\n".join(world.service.lives[0].error_lines())


@pytest.mark.parametrize(("something", "words", "end"), WITH_WORDS)
def test_without_memory_for_a_text_the_daemon_ends_says_so_and_is_back(
    world, scarce, something, words, end
):
    signals, complaint = end
    number, text = last_words(world, scarce, f"{words} once", something)
    assert number in signals
    assert complaint in text


@pytest.mark.parametrize(("something", "words"), WITHOUT_WORDS)
def test_without_memory_for_the_complaint_either_the_daemon_ends_without_a_word_and_is_back(
    world, scarce, something, words
):
    number, text = last_words(world, scarce, f"{words} ever", something)
    assert number == signal.SIGSEGV
    assert "alloc" not in text


def test_a_piece_that_the_c_library_can_do_without_is_not_missed(world, scarce):
    """The third one is what vasprintf(3) would move a number into, only to give the rest of a buffer back."""
    plug(world)
    world.client.call("RequesAll", 1)
    whole = world.client.news()
    begin(scarce, "print 3 once")
    world.client.call("RequesAll", 1)
    assert world.client.news() == whole
    assert [device["DeviceName"] for _, device in whole] == [NODE]
    assert world.service.ends() == []
    scarce.unlink()


def test_with_memory_again_nothing_has_happened(world, scarce):
    begin(scarce, "print 1 ever")
    scarce.unlink()
    Road(world).go()
    assert world.service.ends() == []
