"""The command line itself: what is wrong with it, what help tells, the man page, the completion."""

import os
import pathlib
import re
import subprocess

import pytest

SOURCE = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"])
COMPLETION = SOURCE / "ctl" / "completion"
PAGE = SOURCE / "docs" / "man" / "portmeldctl.1"
NAMES = {
    "list": {"--fs"},
    "count": {"--fs", "--cameras"},
    "watch": {"--interval"},
    "popups": set(),
    "music add": set(),
    "music get": set(),
    "music clear": set(),
    "setting get": set(),
    "setting set": set(),
    "setting watch": set(),
}
COMMON = {"--json", "--bus", "--client-id", "--timeout", "--version", "--help"}
STATUSES = ["0", "1", "2", "3", "4", "5", "6"]


# ---- wrong command lines


@pytest.mark.parametrize(
    "arguments, cause",
    [
        ([], "no command given"),
        (["lsit"], '"lsit" is no command'),
        (["music"], "music: give one of add, get, clear"),
        (["music", "play"], 'music: "play" is none of add, get, clear'),
        (["setting", "--json"], 'setting: "--json" is none of get, set, watch'),
        (["list", "all"], 'list: "all" is one too many: list'),
        (["popups"], "popups: something is missing: popups on|off"),
        (["music", "add"], "music add: something is missing: music add URL [TITLE [ARTIST]]"),
        (["music", "add", "a", "b", "c", "d"], 'music add: "d" is one too many'),
        (["setting", "set", "db/a"], "setting set: something is missing: setting set KEY VALUE"),
        (["--colour", "list"], "Unknown option --colour"),
        (["list", "--cameras"], "Unknown option --cameras"),
        (["--fs", "fat", "list"], "Unknown option --fs"),
        (["list", "--fs"], "Missing argument for --fs"),
        (["list", "--fs", "FAT"], "--fs FAT: not the name of a file system; give fat, exfat, ext4"),
        (["count", "--fs", "fat", "--cameras"], "--fs and --cameras exclude each other"),
        (["list", "--client-id", "2147483648"], "--client-id 2147483648: not a number of 32 bits"),
        (["list", "--client-id", "-2147483649"], "--client-id -2147483649: not a number of 32 bits"),
        (["list", "--client-id", "x"], "Cannot parse integer value"),
        (["list", "--timeout", "0"], "--timeout 0: give seconds from 0.001 to 86400"),
        (["list", "--timeout", "-1"], "--timeout -1: give seconds from"),
        (["list", "--timeout", "nan"], "--timeout nan: give seconds from"),
        (["list", "--timeout", "1e9"], "--timeout 1e+09: give seconds from"),
        (["list", "--timeout", "soon"], "Cannot parse double value"),
        (["watch", "--interval", "0.01"], "--interval 0.01: give seconds from 0.1 to 86400"),
        (["list", "--bus", "nonsense"], "--bus nonsense: not a bus's address"),
        (["list", "--bus", ""], "--bus : not a bus's address"),
        (["--bus", "unix:path=/b", "setting", "get", "db/a"], "setting: --bus unix:path=/b: settings are"),
    ],
)
def test_a_command_line_that_cannot_be_followed(ctl, arguments, cause):
    status, message = ctl.failure(*arguments)
    assert status == 2
    assert message.startswith(cause)
    assert message.endswith('; "portmeldctl --help" tells more')


def test_what_was_typed_is_shown_without_what_harms_a_terminal(ctl):
    status, message = ctl.failure("a\x1b[2J\nb")
    assert (status, message.partition(" is ")[0]) == (2, r'"a\u001b[2J\u000ab"')


# ---- help


def test_help_names_every_command_and_every_common_option(ctl):
    text = ctl.answer("--help")
    assert re.findall(r"^  (\w+(?: (?:add|get|set|clear|watch))?)(?= |$)", text, re.M)[1:] == list(NAMES)
    assert set(re.findall(r"^ .*?(--[\w-]+)", text, re.M)) == COMMON
    assert re.findall(r"(?<=[:;\s])(\d) [a-z]", text.partition("Exit status")[2]) == STATUSES
    assert max(map(len, text.splitlines())) <= 100


@pytest.mark.parametrize("name, own", NAMES.items())
def test_help_of_a_command_names_its_options(ctl, name, own):
    text = ctl.answer(*name.split(), "--help")
    assert text.startswith(f"Usage:\n  portmeldctl {name} ")
    assert set(re.findall(r"^ .*?(--[\w-]+)", text, re.M)) == COMMON | own
    assert ctl.answer(*name.split(), "-h") == text
    assert max(map(len, text.splitlines())) <= 100


@pytest.mark.parametrize("group", ["music", "setting"])
def test_help_of_a_group_lists_its_commands(ctl, group):
    text = ctl.answer(group, "--help")
    assert re.findall(rf"^  ({group} \w+)", text, re.M) == [
        name for name in NAMES if name.startswith(group)
    ]


def test_help_of_music_get_says_what_a_wrong_number_does(ctl):
    assert "item that is not there ENDS THE DAEMON" in ctl.answer("music", "get", "--help")


@pytest.mark.parametrize("arguments", [["--version"], ["list", "--version"], ["--version", "nonsense"]])
def test_the_version_is_the_projects(ctl, arguments):
    version = re.search(r"version: '(.*?)'", (SOURCE / "meson.build").read_text())[1]
    assert ctl.answer(*arguments) == f"portmeldctl {version}\n"


# ---- the man page


def page():
    """The man page as a reader sees it, its layout taken out."""
    text = subprocess.run(
        ["man", "--encoding=UTF-8", "--local-file", PAGE],
        env={**os.environ, "MANWIDTH": "200", "MAN_KEEP_FORMATTING": ""},
        capture_output=True,
        text=True,
        check=True,
    ).stdout
    return re.sub("\x1b\\[[\\d;]*m|.\x08", "", text)


def test_the_man_page_is_formatted_without_a_warning():
    for command in (
        ["groff", "-ww", "-mandoc", "-Tutf8", "-z", PAGE],
        ["man", "--warnings", "--encoding=UTF-8", "--local-file", PAGE],
    ):
        done = subprocess.run(
            command, capture_output=True, text=True, check=False, env={**os.environ, "MANWIDTH": "80"}
        )
        assert (done.returncode, done.stderr) == (0, ""), command


def test_the_man_page_describes_every_option_and_no_other(ctl):
    options = page().partition("\n   Options\n")[2].partition("\n   JSON\n")[0]
    told = set(re.findall(r"^     (?:-h, )?(--[\w-]+)(?: \w+)?$", options, re.M))
    offered = COMMON.union(*NAMES.values())
    assert told == offered
    offers = " ".join(ctl.answer(*name.split(), "--help") for name in NAMES)
    assert set(re.findall(r"^ .*?(--[\w-]+)", offers, re.M)) == offered


def test_the_man_page_describes_every_command():
    commands = page().partition("\n   Commands\n")[2].partition("\n   Options\n")[0]
    told = re.findall(r"^     (\w+(?: (?:add|get|set|clear|watch))?)(?= |$)", commands, re.M)
    assert [name for name in told if name in NAMES] == list(NAMES)


def test_the_man_page_tells_every_exit_status_and_what_a_wrong_number_does():
    text = page()
    assert re.findall(r"^     (\d)  ", text.partition("EXIT STATUS")[2], re.M) == STATUSES
    assert "A wrong number ends the daemon:" in text


# ---- completion


def completed(*words, cursor=None):
    """What bash offers for the last of some words, or for the one at the cursor."""
    script = """
        source "$0"
        COMP_WORDS=("$@") COMP_CWORD=$CURSOR
        $(complete -p portmeldctl | sed 's/.*-F \\([^ ]*\\).*/\\1/')
        printf '%s\\n' "${COMPREPLY[@]}"
    """
    done = subprocess.run(
        ["bash", "--norc", "-u", "-c", script, COMPLETION, "portmeldctl", *words],
        env={**os.environ, "CURSOR": str(len(words) if cursor is None else cursor)},
        capture_output=True,
        text=True,
        check=True,
    )
    assert done.stderr == ""
    return done.stdout.split()


def test_the_completion_is_sound_bash():
    done = subprocess.run(["bash", "-n", COMPLETION], capture_output=True, text=True, check=False)
    assert (done.returncode, done.stderr) == (0, "")


def test_commands_are_completed():
    firsts = list(dict.fromkeys(name.split()[0] for name in NAMES))
    assert completed("") == firsts
    assert completed("mu") == ["music"]
    assert completed("--json", "--bus", "list", "--client-id=7", "") == firsts
    for group in ("music", "setting"):
        assert completed(group, "") == [name.split()[1] for name in NAMES if name.startswith(group)]
    assert completed("popups", "") == ["on", "off"]
    assert completed("popups", "of") == ["off"]
    assert completed("list", "") == completed("popups", "on", "") == completed("music", "get", "") == []


def test_a_word_in_the_middle_is_completed_by_what_stands_before_it():
    assert completed("mus", "--json", cursor=1) == ["music"]


@pytest.mark.parametrize("name, own", NAMES.items())
def test_options_are_completed_for_each_command(name, own):
    assert set(completed(*name.split(), "-")) == COMMON | own
    assert set(completed("-")) == COMMON


def test_values_of_options_are_completed():
    names = ["fat", "exfat", "ext4", "ntfs"]
    assert completed("list", "--fs", "") == names
    assert completed("count", "--fs", "ex") == ["exfat", "ext4"]
    assert completed("list", "--fs", "=", "nt") == completed("list", "--fs", "nt") == ["ntfs"]
    assert completed("list", "--fs", "=") == names
    assert completed("watch", "--interval", "") == completed("--bus", "") == []


def test_settings_are_completed_with_the_keys_of_the_manual():
    manual = (SOURCE / "docs" / "man" / "portmeld-settings.5").read_text()
    keys = re.findall(r"^\.It Li ((?:db|memory)/\S+)", manual, re.M)
    assert keys
    for verb in ("get", "set", "watch"):
        assert sorted(completed("setting", verb, "")) == sorted(keys)
    assert completed("setting", "get", "db/menu_w") == ["db/menu_widget/language"]
    assert completed("setting", "set", keys[0], "") == []


def test_it_is_loaded_for_the_program_under_its_name():
    done = subprocess.run(
        ["bash", "-c", 'source "$0"; complete -p portmeldctl', COMPLETION],
        capture_output=True,
        text=True,
        check=True,
    )
    assert done.stdout.split()[-1] == "portmeldctl"
