"""The running of clang-tidy on a small build: what is clean, what is found, what is not compiled."""

import json
import shutil

import pytest
import tidy

CLEAN = "int twice(int number) {\n    return 2 * number;\n}\n"
UNCLEAN = "int* nothing() {\n    return 0;\n}\n"


@pytest.fixture
def judge(tree, project, capfd):
    """Judges files, {name: text}, of which some are compiled: (exit status, what was printed)."""

    def run(files, compiled):
        folder = tree(files)
        shutil.copy(project / ".clang-tidy", folder)
        commands = [
            {"directory": str(folder), "file": name, "command": f"c++ -c {name}"}
            for name in compiled
        ]
        (folder / "compile_commands.json").write_text(json.dumps(commands))
        status = tidy.main([str(folder), *(str(folder / name) for name in files)])
        return status, capfd.readouterr().out

    return run


def test_clean_sources_pass(judge):
    status, printed = judge({"A.cpp": CLEAN, "B.cpp": CLEAN}, ["A.cpp", "B.cpp"])
    assert (status, printed) == (0, "2 sources judged\n")


def test_a_finding_is_an_error_and_is_shown(judge):
    status, printed = judge({"A.cpp": CLEAN, "B.cpp": UNCLEAN}, ["A.cpp", "B.cpp"])
    assert status == 1
    assert "[modernize-use-nullptr,-warnings-as-errors]" in printed


def test_a_source_that_cannot_be_read_by_the_compiler_is_an_error(judge):
    status, printed = judge({"A.cpp": '#include "gone.h"\n'}, ["A.cpp"])
    assert status == 1
    assert "'gone.h' file not found" in printed


def test_a_source_that_nobody_compiles_is_an_error(judge):
    status, printed = judge({"A.cpp": CLEAN, "B.cpp": CLEAN}, ["A.cpp"])
    assert status == 1
    assert "B.cpp: no part of the build compiles this file\n" in printed


def test_headers_alone_are_nothing_to_judge(judge):
    assert judge({"A.h": CLEAN}, [])[0] == 1
