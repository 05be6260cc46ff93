"""A machine on which the packages are installed, in a namespace of its own: root, the user of the kiosk,
another user in the group "portmeld", and a guest who is not in it.

What stands in the packages lies over the real /usr, so the daemon finds everything under the absolute
paths that are compiled into it. The namespace needs root, or a range of user ids of one's own (newuidmap,
/etc/subuid): without either it cannot be made, and the test fails with what to do.
"""

import os
import pathlib
import pwd
import shutil
import subprocess

import child

PREPARE = pathlib.Path(__file__).with_name("prepare.sh")
SYSTEM_BUS = "unix:path=/run/dbus/system_bus_socket"

# Name, user id, whether in the group.
KIOSK = ("kiosk", 61001, True)
VIEWER = ("viewer", 61002, True)
GUEST = ("guest", 61003, False)
USERS = (KIOSK, VIEWER, GUEST)


def packages():
    """The packages under test, by name."""
    folder = pathlib.Path(os.environ["PORTMELD_BUILD_DIR"])
    found = {file.name.split("_")[0]: file for file in folder.glob("portmeld*.deb")}
    assert found, f"there is no package in {folder}: run ./dev package"
    return {name: file for name, file in found.items() if not name.endswith("-dbgsym")}


def settle(stage, members=True):
    """Says below a folder who lives on a machine, in the words of sysusers.d(5)."""
    people = [f'u {name} {number} "" /run/home/{name}' for name, number, _ in USERS]
    people += [f"m {name} portmeld" for name, _, member in USERS if member and members]
    (stage / "etc").mkdir()
    (stage / "etc" / "people").write_text("\n".join(people) + "\n")
    for name in ("passwd", "group"):
        shutil.copy(pathlib.Path("/etc") / name, stage / "etc")


def unpack(stage):
    """Unpacks the packages into a folder, and lets people live there."""
    for file in packages().values():
        subprocess.run(["dpkg-deb", "--extract", file, stage], check=True)
    (stage / "var" / "lib" / "portmeld").mkdir(parents=True)
    settle(stage)
    return stage


def namespace():
    """How the namespace is made, and entered: (arguments of unshare, arguments of nsenter)."""
    if os.geteuid() == 0:
        return ["--mount"], ["--mount"]
    user = pwd.getpwuid(os.geteuid()).pw_name
    ranges = pathlib.Path("/etc/subuid")
    names = [line.split(":")[0] for line in ranges.read_text().splitlines()] if ranges.exists() else []
    assert shutil.which("newuidmap") and {user, str(os.geteuid())} & set(names), (
        "this test needs several users: run it as root, or install the package uidmap and, as root, run "
        f"usermod --add-subuids 100000-165535 --add-subgids 100000-165535 {user}"
    )
    return ["--mount", "--map-root-user", "--map-auto"], ["--mount", "--user"]


class Machine:
    """A machine that a keeper, a child process, keeps going; `target` is a process on it, and `enter` the
    options of nsenter that lead there."""

    def __init__(self, keeper, target, enter):
        self._keeper = keeper
        self._enter = ["nsenter", "--target", str(target), *enter, "--root", "--wd"]
        self._number = 0

    def close(self):
        """The machine is no more. Everything that was started on it must have ended."""
        self._keeper.close_input()
        self._keeper.kill()

    def command(self, user, *arguments, env=None):
        """The arguments that run a program on this machine as one of its users, "root" too, with the
        groups that the user gets when he logs in."""
        # Where nsenter stays as the parent, its end is that of the program.
        become = ["setpriv", "--pdeathsig", "KILL"]
        if user != "root":
            become += ["--reuid", user, "--regid", user, "--init-groups"]
        surroundings = {
            "PATH": "/usr/sbin:/usr/bin",
            "HOME": f"/run/home/{user}",
            "LC_ALL": "C.UTF-8",
            "G_DEBUG": "fatal-criticals",
            **(env or {}),
        }
        return [
            *self._enter,
            *("env", "-i", *(f"{name}={value}" for name, value in surroundings.items())),
            *become,
            *map(str, arguments),
        ]

    def run(self, user, *arguments, env=None, text=None):
        """Runs a program to its end; the result is that of subprocess.run()."""
        return subprocess.run(
            self.command(user, *arguments, env=env),
            input=text or "",
            capture_output=True,
            text=True,
            timeout=child.LIMIT,
            check=False,
        )

    def succeed(self, user, *arguments, **options):
        """Runs a program that must end well; returns what it printed."""
        done = self.run(user, *arguments, **options)
        assert done.returncode == 0, f"{arguments}: {done.stderr}"
        return done.stdout

    def place(self, source):
        """Puts a file where every user of the machine can read it, and returns that path."""
        self._number += 1
        target = f"/run/test/{self._number}-{pathlib.Path(source).name}"
        self.succeed("root", "tee", target, text=pathlib.Path(source).read_text())
        return target

    def home_of(self, user):
        """Makes a user's home, and the folder of his session; returns both paths."""
        number = number_of(user)
        folders = (f"/run/home/{user}", f"/run/user/{number}")
        for folder in folders:
            self.succeed(
                "root", "install", "-d", "-m", "700", "-o", user, "-g", user, folder
            )
        return folders


class Installed(Machine):
    """A machine without any service: what runs on it, the test has started."""

    def __init__(self, stage):
        make, enter = namespace()
        self.stage = stage
        keeper = child.Child(
            ["unshare", *make, "--propagation", "private", "--", str(PREPARE), str(stage)]
        )
        assert keeper.take() == "ready"
        super().__init__(keeper, keeper.process.pid, enter)


def number_of(user):
    """The number of one of the machine's users."""
    return next(number for name, number, _ in USERS if name == user)

