"""Where the resources lie, for the tests of this folder, and how they run a tool.

PORTMELD_SOURCE_DIR names the root of the sources, PORTMELD_BUILD_DIR the build folder. Without one
of them every test that needs it fails.
"""
import os
import pathlib
import subprocess


def folder(variable):
    value = os.environ.get(variable)
    assert value, f"{variable} is not set"
    path = pathlib.Path(value)
    assert path.is_dir(), f"{variable}: no folder {value}"
    return path


def source(*parts):
    return folder("PORTMELD_SOURCE_DIR").joinpath("res", *parts)


def built(*parts):
    return folder("PORTMELD_BUILD_DIR").joinpath("res", *parts)


def run(*command, **environment):
    return subprocess.run(
        [str(word) for word in command],
        check=False,
        capture_output=True,
        encoding="utf-8",
        timeout=60,
        env={**os.environ, "LC_ALL": "C.UTF-8", "LANGUAGE": "", **environment},
    )
