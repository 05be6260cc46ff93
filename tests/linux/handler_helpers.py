"""What the tests of the ready-made handlers stand on: running one on a machine whose default
applications are the test's, and the launch data that the daemon gives."""

import json
import os
import pathlib
import subprocess

import child
import pytest
from application_helpers import write_entry

FOLIAN = "org.quillon.folian"
LUMET = "org.norvane.lumet"
VIDREEL = "org.norvane.vidreel"
PICREEL = "org.norvane.picreel"
SHOPREEL = "org.norvane.shopreel"
FLOORREEL = "org.norvane.floorreel"
ALL = {FOLIAN, LUMET, VIDREEL, PICREEL, SHOPREEL, FLOORREEL}

OPENED, NOT_STARTED, REFUSED, NOTHING_OPENS_IT = range(4)

BUILT = pathlib.Path(os.environ["PORTMELD_BUILD_DIR"]).resolve() / "handlers"


class Handlers:
    """The handlers on a machine whose default applications are the test's."""

    def __init__(self, root, surroundings, programs):
        self.root = root
        self.programs = programs
        self._surroundings = surroundings
        self._defaults = []
        data = root.parent / "data"
        data.mkdir()
        # The machine's own content types, and none of its applications.
        data.joinpath("mime").symlink_to("/usr/share/mime")

    def default(self, content_type, name="viewer", **keys):
        """Installs an application and makes it the default for a content type."""
        program = self.programs.make(name)
        write_entry(self.root, name, **{"Exec": f"{program} %U", **keys})
        self._defaults.append(f"{content_type}={name}.desktop")
        folder = self.root.parent / "config-home"
        folder.mkdir(exist_ok=True)
        lines = ["[Default Applications]", *self._defaults, ""]
        folder.joinpath("mimeapps.list").write_text("\n".join(lines))

    def open(self, application, data=None, session_bus=None, env=None):
        """Runs the handler of an application with these launch data (what is no text is made JSON);
        returns its exit status and what it said."""
        environment = self._surroundings(session_bus=session_bus, env=env)
        environment.pop("PORTMELD_LAUNCH_DATA", None)
        if data is not None:
            text = data if isinstance(data, (str, bytes)) else json.dumps(dict(data))
            environment["PORTMELD_LAUNCH_DATA"] = text
        ended = subprocess.run(
            [BUILT / "portmeld-open", application],
            cwd=self.root.parent,
            env=environment,
            capture_output=True,
            stdin=subprocess.DEVNULL,
            timeout=child.LIMIT,
            check=False,
        )
        return ended.returncode, ended.stderr.decode()

    def refuses(self, application, data=None):
        """What the handler says when it must refuse, in one line and without starting anything."""
        status, said = self.open(application, data)
        assert (status, said.count("\n")) == (REFUSED, 1), said
        assert said.startswith(f"portmeld-open: {application}: ")
        assert self.programs.nothing_started()
        return said


@pytest.fixture
def handlers(root, surroundings, programs):
    """The handlers, and default applications that a test installs."""
    return Handlers(root, surroundings, programs)


@pytest.fixture
def stick(tmp_path):
    """A stick's mount path, with a name that needs care."""
    folder = tmp_path / "media" / "Joe's 50% stick, ümläut"
    folder.mkdir(parents=True)
    return folder


def file_in(folder, name):
    """Makes a file; returns its path."""
    path = folder / name
    path.write_bytes(b"")
    return str(path)


def browse(path):
    """What the content browser is launched with for a stick."""
    return [
        ("called_app", LUMET),
        ("device_path", str(path)),
        ("device_name", "Stick"),
        ("device_type", "USB"),
        ("device_busnumber", "-1"),
        ("device_addressnumber", "-1"),
        ("content_type", "all"),
    ]


def browse_camera(busnumber="1", address="23"):
    """What the content browser is launched with for a camera."""
    return [
        ("called_app", LUMET),
        ("device_path", ""),
        ("device_name", "Camera"),
        ("device_type", "PTP"),
        ("device_busnumber", busnumber),
        ("device_addressnumber", address),
        ("content_type", "all"),
    ]


def music(path):
    """What the content browser is launched with for a stick with one piece of music."""
    return [("file_name", "Song"), ("music_url", path), ("called_app", LUMET)]


def one_after_the_other(*launches):
    """The data of the last of several launches through one request."""
    data = {}
    for key, value in (item for launch in launches for item in launch):
        data.pop(key, None)
        data[key] = value
    return data


def play_list(*paths, root=None):
    """What the players are launched with."""
    items = [{"file_name": os.path.basename(path), "file_path": path} for path in paths]
    place = {"root_path": str(root)} if root else {}
    return {"play_list_data": json.dumps({**place, "play_index": 0, "items": items})}


def connected(path="", device_class="8", action="ADD", number="1", address="2"):
    """What the companion application is launched with."""
    return {
        "called_app": "portmeld",
        "device_action": action,
        "device_mountpath": str(path),
        "device_bus_num": number,
        "device_address": address,
        "device_class": device_class,
    }
