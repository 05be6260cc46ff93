"""What can be told of a 32-bit ARM television without one, and without its libraries: the contract's
headers are read by a compiler for that target, whose layout of the pop-up's record they assert.
"""

import shutil
import subprocess

import pytest

HEADERS = "platform/include/platform"
RECORD = "notification.h"
# Of C and C++ alike only what a compiler brings with itself is at hand for another machine.
CXX_ONLY = {"usage_statistics.h"}


def complaints(header):
    """What a compiler for the television says of a header."""
    done = subprocess.run(
        # The linter is what everybody here has of a compiler for other machines.
        ["clang-tidy", "--quiet", "--checks=-*,misc-static-assert", str(header), "--"]
        + ["--target=armv7a-linux-gnueabihf", "-ffreestanding", "-x", "c", "-std=c11"]
        + ["-I", str(header.parent.parent), "-ferror-limit=0"],
        capture_output=True,
        text=True,
        timeout=60,
        check=False,
    )
    return [line for line in done.stdout.splitlines() if " error: " in line]


@pytest.fixture
def changed_record(project, tmp_path):
    """Puts a text of the record's header in place of another; returns the changed copy."""

    def change(old, new):
        folder = tmp_path / "platform"
        shutil.copytree(project / HEADERS, folder)
        header = folder / RECORD
        text = header.read_text()
        assert text.count(old) == 1, old
        header.write_text(text.replace(old, new))
        return header

    return change


def test_the_headers_of_the_contract_are_c_for_a_32_bit_television(project):
    headers = sorted((project / HEADERS).glob("*.h"))
    assert CXX_ONLY < {header.name for header in headers}
    judged = [header for header in headers if header.name not in CXX_ONLY]
    assert {header.name: complaints(header) for header in judged} == {
        header.name: [] for header in judged
    }


def test_a_word_more_in_the_record_is_refused(changed_record):
    header = changed_record("int32_t nReserved84;", "int32_t nReserved84; int32_t nReserved88;")
    assert len(complaints(header)) == 1


def test_each_word_of_the_record_is_kept_at_its_place(changed_record):
    header = changed_record("int32_t nWord0;", "int32_t nReserved; int32_t nWord0;")
    # The size and all 22 offsets.
    assert len(complaints(header)) == 23


def test_words_that_changed_places_are_refused(changed_record):
    header = changed_record("const char* pTitle; ", "const char* pBodyToCome; ")
    text = header.read_text()
    header.write_text(text.replace("pBody; ", "pTitle; ", 1).replace("pBodyToCome", "pBody", 1))
    assert len(complaints(header)) == 2
