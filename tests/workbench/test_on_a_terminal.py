"""The workbench as a person sees it: a transcript with the state of the TV below it, single keys, and
a terminal that is afterwards as it was before."""

import re
import signal
import subprocess

import pytest

from workbench_process import bus_daemons, until


def ready(run):
    """Waits until the first pop-up of the stick is up and told."""
    run.shows(r"^ │ .*photo.jpg +│$")
    run.shows(r'"DeviceKey": "/dev/sda1"')


def test_the_pop_up_is_drawn_with_its_time_running_down(stick, terminal):
    run = terminal(stick())
    ready(run)
    run.shows(r"^ │ New device connected: Holiday +│$")
    run.shows(r"^ │ \[1 Play\]  \[2 Cancel\] +━+ +2[0-9] s │$")
    run.shows(r"^ TV +0:3\d  on · English$")
    run.shows(r"^ USB ▸ ● Holiday$")
    run.shows(r"^ Keys  1 Play   2 Cancel   b hide   p pull ")
    seconds = re.search(r" (\d+) s │", "\n".join(run.screen().lines()))[1]
    run.shows(rf" {int(seconds) - 1} s │$")


@pytest.mark.parametrize("key", ["1", "\r"])
def test_one_key_press_answers_the_pop_up(stick, terminal, key):
    run = terminal(stick())
    ready(run)
    run.press(key)
    run.shows(r"pressed: Play$")
    run.shows(r"launched: the photo player")
    run.shows_no(r"\[1 Play\]")
    run.shows(r"on, photo player in front")


@pytest.mark.parametrize("key", ["b", "\x1b"])
def test_back_hides_the_pop_up(stick, terminal, key):
    run = terminal(stick())
    ready(run)
    run.press(key)
    run.shows(r"back: the pop-up is hidden$")
    run.shows_no(r"\[1 Play\]")


def test_arrows_and_letters_of_other_alphabets_are_one_unknown_key_each(stick, terminal):
    run = terminal(stick())
    ready(run)
    run.press("\x1b[A")
    run.shows(r"nothing is on that key")
    run.press("\x1bOP\u00fc\u65e5?")
    run.shows(r"remote  the keys:$")
    unknown = [line for line in run.screen().lines() if "nothing is on that key" in line]
    assert len(unknown) == 4
    assert any("[1 Play]" in line for line in run.screen().lines())


def test_there_is_one_state_area_after_many_lines(stick, terminal):
    run = terminal(stick(), rows=30)
    ready(run)
    run.press("L???prpr")
    run.shows(r'"DeviceKey": "/dev/sdc1"')
    screen = run.screen()
    assert sum(line.startswith(" Keys  ") for line in screen.lines()) == 1
    assert screen.lines()[-1].startswith(" Keys  ")
    assert sum(set(line) == {"─"} for line in screen.gone + screen.lines()) == 1
    assert not [line for line in screen.gone if line.startswith((" Keys  ", " TV ", " USB "))]


def test_another_size_is_drawn_anew(stick, terminal):
    run = terminal(stick())
    ready(run)
    run.resize(60, 24)
    run.shows(r"^ └─+┘$")
    run.shows(r"^ Keys  1 Play .*q quit$")
    assert max(map(len, run.screen().lines())) <= 60
    run.resize(60, 12)
    run.shows(r"^ New device connected: Holiday  \[1 Play\] \[2 Cancel\]$")
    run.resize(120, 45)
    run.shows(r"^ │ \[1 Play\]")
    run.shows(r"New device connected: Holiday$")


@pytest.mark.parametrize("end", ["q", "\x03", "\x04"])
def test_the_terminal_is_as_before_after_quitting(stick, terminal, end):
    run = terminal(stick())
    ready(run)
    assert run.settings() != run.settings_before
    run.press(end)
    assert run.finish() == 0
    assert run.settings() == run.settings_before
    run.shows(r"tv +is switched off$")
    run.shows_no(r"^ Keys  ")
    assert not list(run.temporary.iterdir())
    assert not bus_daemons(run.temporary)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP, signal.SIGINT])
def test_the_terminal_is_as_before_after_a_signal(stick, terminal, number):
    run = terminal(stick())
    ready(run)
    run.process.send_signal(number)
    assert run.finish() == 0
    assert run.settings() == run.settings_before


@pytest.mark.parametrize("number", [signal.SIGABRT, signal.SIGSEGV])
def test_the_terminal_is_as_before_after_a_crash(stick, terminal, sanitizer_options, number):
    sanitizer_options("handle_segv=0")
    run = terminal(stick())
    ready(run)
    run.process.send_signal(number)
    assert run.finish() != 0
    assert run.settings() == run.settings_before
    assert until(lambda: not bus_daemons(run.temporary))


def test_the_terminal_is_as_before_after_a_call_that_ends_the_daemon(stick, terminal):
    run = terminal(stick(), columns=200)
    ready(run)
    lines = "\n".join(run.screen().gone + run.screen().lines())
    address = re.search(r"Bus address: (\S+)", lines)[1]
    subprocess.run(
        ["gdbus", "call", "--address", address, "--dest", "com.norvane.portmeld"]
        + ["--object-path", "/com/norvane/portmeld"]
        + ["--method", "com.norvane.portmeld.GetPhotoBGMPlayListItem", "5"],
        capture_output=True,
        timeout=20,
        check=False,
    )
    assert run.finish() == -signal.SIGABRT
    assert run.settings() == run.settings_before
    run.shows(r"^portmeld ended the process, as it would on a TV")
    assert not list(run.temporary.iterdir())


def test_colours_are_used_and_can_be_refused(stick, terminal):
    run = terminal(stick("Colourful"))
    run.shows(r"\[1 Play\]")
    assert {"1", "2", "7", "32"} <= run.screen().styles
    plain = terminal(stick("Plain"), env={"NO_COLOR": "1"})
    plain.shows(r"\[1 Play\]")
    assert not plain.screen().styles


def test_keys_pressed_too_early_wait_for_the_tv(stick, terminal):
    run = terminal(stick())
    run.press("1")
    run.shows(r"launched: the photo player")
