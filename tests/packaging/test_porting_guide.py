"""The guide to porting, followed word for word on a machine that has the headers from their package: what
it shows is compiled, what it says is run, and the daemon that comes out of it serves a client.
"""

import os
import pathlib
import re
import subprocess

import installed
import pytest

GUIDE = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"]) / "docs" / "porting.md"
LIMIT = 400  # seconds: it is a build

# The guide's own wishes do not depend on how well the compiler optimises.
QUICKLY = {"CXXFLAGS": "-O0 -g0 -Werror"}


def files_of_the_guide():
    """The files that it shows: {name: content}."""
    blocks = re.findall(r"^`([\w/.-]+)`\n\n```\w+\n(.*?)^```$", GUIDE.read_text(), re.M | re.S)
    return dict(blocks)


def commands_of_the_guide():
    """The commands that it tells to type, one text for each block."""
    return re.findall(r"^```sh\n(.*?)^```$", GUIDE.read_text(), re.M | re.S)


@pytest.fixture
def maker(machine):
    """Runs commands as the maker of a television, who has a checkout of the project at home."""
    home, _ = machine.home_of("viewer")
    (source,) = pathlib.Path(os.environ["PORTMELD_BUILD_DIR"]).glob("portmeld_*.tar.xz")
    unpacking = ["tar", "-xJ", "-C", home, "--transform=s|^[^/]*|portmeld|"]
    with source.open("rb") as archive:
        subprocess.run(machine.command("viewer", *unpacking), stdin=archive, check=True)

    def run(script):
        done = subprocess.run(
            machine.command("viewer", "bash", "-euc", script, env=QUICKLY),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            timeout=LIMIT,
            check=False,
        )
        assert done.returncode == 0, done.stdout[-3000:]
        return done.stdout

    return run


def test_following_the_guide_gives_a_daemon_that_serves_its_clients(machine, maker):
    build, trial = commands_of_the_guide()
    files = files_of_the_guide()
    assert set(files) == {"acme-tv/meson.build", "acme-tv/tv.cpp"}
    for name, content in files.items():
        file = f"/run/home/viewer/{name}"
        machine.succeed("viewer", "mkdir", "-p", os.path.dirname(file))
        machine.succeed("viewer", "tee", file, text=content)

    maker(build)
    assert "(0,)\n" in maker(trial)

    image = "DESTDIR=/run/home/viewer/image meson install -C ~/portmeld/build-acme >~/log"
    maker(f"{image} || {{ cat ~/log; exit 1; }}")
    table = re.findall(r"^\| `(/usr/[^`]+)` \|", GUIDE.read_text(), re.M)
    assert len(table) == 4
    for path in table:
        machine.succeed("viewer", "test", "-e", f"/run/home/viewer/image{path}")


def test_the_guide_shows_every_function_of_the_contract(stage):
    shown = files_of_the_guide()["acme-tv/tv.cpp"]
    for header in stage.joinpath("usr/include/portmeld/platform").glob("*.h"):
        assert f"<platform/{header.name}>" in shown
        code = re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.S)
        for name in re.findall(r"^(?:[\w ]+[ *])(\w+)\(", code, re.M):
            if not name.isupper() and name not in ("__attribute__",):
                assert re.search(rf"\b{name}\(", shown), f"{header.name}: {name}"


def test_the_pkg_config_file_leads_to_the_headers(machine):
    flags = machine.succeed("guest", "pkg-config", "--cflags", "portmeld-platform").strip()
    version = machine.succeed("guest", "pkg-config", "--modversion", "portmeld-platform").strip()
    folder = flags.removeprefix("-I")
    machine.succeed("guest", "test", "-r", f"{folder}/platform/usb.h")
    assert installed.packages()["portmeld-dev"].name.split("_")[1] == version
