"""The check of the rooms, on small houses: each rule with what it accepts and what it refuses.

The forbidden words are put together here, so that this file does not hold them either.
"""

import pytest
import rooms

OPENING = "// What lives here: a sample for the check.\n"


def wrong(tree, files):
    """What the check finds in a house of these files."""
    return rooms.judge(tree(files))[1]


def lines(count):
    """A C++ file of that many lines."""
    return OPENING + "int f();\n" * (count - 1)


def test_a_file_of_400_lines_is_accepted(tree):
    assert wrong(tree, {"src/A.cpp": lines(400)}) == []


@pytest.mark.parametrize("name", ["src/A.cpp", "src/A.h"])
def test_a_file_of_401_lines_is_refused(tree, name):
    found = wrong(tree, {name: lines(401)})
    assert found == [f"{name}: 401 lines; more than 400 need a reason in {rooms.REASONS}"]


@pytest.mark.parametrize("name", ["tests/a.py", "tools/a.sh", "workbench/a.js", "workbench/a.css"])
def test_the_limit_holds_for_every_language(tree, name):
    assert len(wrong(tree, {name: "x\n" * 401})) == 1
    assert wrong(tree, {name: "x\n" * 400}) == []


def test_a_large_file_with_a_reason_is_accepted(tree):
    reasons = "# why\n\nsrc/A.cpp: one table, which is read as a whole\n"
    assert wrong(tree, {"src/A.cpp": lines(401), rooms.REASONS: reasons}) == []


@pytest.mark.parametrize("house", [{"src/A.cpp": lines(400)}, {"README.md": "x\n"}])
def test_a_reason_that_is_not_needed_is_refused(tree, house):
    found = wrong(tree, {**house, rooms.REASONS: "src/A.cpp: it is long\n"})
    assert found == [f"{rooms.REASONS}: src/A.cpp has no more than 400 lines, or is not there"]


@pytest.mark.parametrize("line", ["src/A.cpp", "src/A.cpp:", "src/A.cpp:   "])
def test_a_reason_that_says_nothing_is_refused(tree, line):
    found = wrong(tree, {"src/A.cpp": lines(401), rooms.REASONS: line + "\n"})
    assert f"{rooms.REASONS}:1: not of the form 'file: reason'" in found


@pytest.mark.parametrize(
    "text",
    [
        "as the " + "speci" + "fication says",
        "as the " + "Speci" + "fication says",
        "see " + "spe" + "c.md",
        "as the " + "spe" + "c says",
        "see " + "Part" + " 3.6",
        "see " + "Part" + "s 4.1 and 4.2",
        "closes " + "issue" + " #2",
        "closes " + "issue" + " 12",
        "/wor" + "k/main/src",
        "in /wor" + "k",
        "/far" + "m/x",
        "/roo" + "t/checkout",
        "'/home/" + "somebody/project'",
        ".libr" + "ary",
        "far" + "m-studio",
    ],
)
def test_a_forbidden_word_is_refused_in_text_of_any_kind(tree, text):
    for name, content in {
        "src/A.cpp": OPENING + "// " + text + "\n",
        "docs/page.md": "\n" + text + "\n",
        "tools/a.sh": "#!/bin/sh\n# " + text + "\n",
    }.items():
        found = wrong(tree, {name: content})
        assert len(found) == 1, found
        assert found[0].startswith(f"{name}:2: ")
        (tree({}) / name).unlink()


@pytest.mark.parametrize(
    "text",
    [
        "the Desktop Notifications " + "Speci" + "fication",
        "follows the Desktop Entry " + "Speci" + "fication",
        "the special case",
        "a specific device",
        "part 3 of 6",
        "an issue with the hub",
        "build/wor" + "kbench and ./root/opt",
        "at work, on a farm",
        "${folder}/root/x",
        "/opt/data/demo_movie/",
    ],
)
def test_a_harmless_word_is_accepted(tree, text):
    assert wrong(tree, {"docs/page.md": text + "\n"}) == []


def test_an_allowed_name_excuses_nothing_else_on_its_line(tree):
    text = "the Desktop Entry {0} and the {0}\n".format("Speci" + "fication")
    assert len(wrong(tree, {"docs/page.md": text})) == 1


def test_a_forbidden_word_is_refused_in_a_file_name(tree):
    name = "docs/" + "spe" + "c.md"
    assert wrong(tree, {name: "x\n"})[0].startswith(f"{name}: the name holds ")


def test_files_that_are_no_text_are_not_read(tree):
    picture = b"\x89PNG\0" + b"the " + b"spe" + b"c\n" * 500
    assert wrong(tree, {"res/a.png": picture, "README.md": "x\n"}) == []


@pytest.mark.parametrize("folder", ["build", ".git", "src/__pycache__"])
def test_what_is_not_ours_is_not_read(tree, folder):
    assert wrong(tree, {f"{folder}/A.cpp": "int x;\n", "README.md": "x\n"}) == []


def test_a_folder_named_build_elsewhere_is_read(tree):
    assert len(wrong(tree, {"tools/build/A.cpp": "int x;\n"})) == 1


@pytest.mark.parametrize(
    "text",
    [
        OPENING + "int x;\n",
        "/* What lives here: a sample for the check. */\nint x;\n",
        "/*\n * What lives here:\n * a sample for the check.\n */\n",
        "\n\n// What lives here:\n// a sample for the check.\n#pragma once\n",
        "// SPDX-License-Identifier: Apache-2.0\n// What lives here: a sample for the check.\n",
    ],
)
def test_a_file_that_begins_with_a_comment_paragraph_is_accepted(tree, text):
    assert wrong(tree, {"src/A.h": text}) == []


@pytest.mark.parametrize(
    "text",
    [
        "",
        "int x;\n",
        "#pragma once\n" + OPENING,
        "// A.h\n\n// What lives here: a sample for the check.\n",
        "//\n//////////////////\n//\nint x;\n",
        "// SPDX-License-Identifier: Apache-2.0\n// Copyright of all the portmeld developers\n",
    ],
)
def test_a_file_that_does_not_say_what_lives_in_it_is_refused(tree, text):
    found = wrong(tree, {"src/A.h": text})
    assert found == ["src/A.h:1: does not begin with a comment that says what lives here"]


def test_an_empty_house_is_refused(tree):
    assert wrong(tree, {}) == ["there is no file to judge"]


def test_the_exit_status_tells_the_outcome(tree, capsys):
    assert rooms.main([str(tree({"src/A.h": OPENING}))]) == 0
    assert "1 files" in capsys.readouterr().out
    assert rooms.main([str(tree({"src/B.h": ""}))]) == 1
