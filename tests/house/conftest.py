"""Lets the tests of the house checks import them, and gives them a small tree to judge."""

import pathlib
import sys

import pytest

HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parent.parent

sys.path[:0] = [str(HERE), str(PROJECT / "tools")]


@pytest.fixture
def tree(tmp_path):
    """Writes files below a fresh folder, {name: text}, and returns that folder."""

    def plant(files):
        for name, text in files.items():
            file = tmp_path / name
            file.parent.mkdir(parents=True, exist_ok=True)
            if isinstance(text, bytes):
                file.write_bytes(text)
            else:
                file.write_text(text)
        return tmp_path

    return plant


@pytest.fixture
def project():
    """The folder of the project itself."""
    return PROJECT
