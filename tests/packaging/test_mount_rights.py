"""The right to mount: what a real polkit answers, with the rule that is installed, to UDisks2's questions
about the daemon, which runs in no session.
"""

import pytest

UDISKS = "org.freedesktop.udisks2"


@pytest.fixture
def may(machine, start_system_bus, start):
    """Asks polkit whether a process of a user may do something."""
    start_system_bus("stock")
    # What the machine outside has decided for itself stays out.
    machine.succeed("root", "mount", "-t", "tmpfs", "-o", "mode=755", "tmpfs", "/etc/polkit-1")
    machine.succeed("root", "mkdir", "/etc/polkit-1/rules.d")
    rules = "usr/share/polkit-1/rules.d"
    machine.succeed("root", "mount", "--bind", f"/run/stage/{rules}", f"/{rules}")
    start("root", "/usr/lib/polkit-1/polkitd", "--no-debug")
    machine.succeed("root", "gdbus", "wait", "--system", "org.freedesktop.PolicyKit1")
    processes = {}

    def ask(user, action):
        if user not in processes:
            processes[user] = start(user, "sh", "-c", "echo 1; exec cat")
            processes[user].take()  # it has become that user
        number = str(processes[user].process.pid)
        done = machine.run("root", "pkcheck", "--action-id", action, "--process", number)
        # 0: yes; 1: no; 2 and 3: not without a password.
        assert done.returncode in (0, 1, 2, 3) and "Error" not in done.stderr, done.stderr
        return done.returncode == 0

    return ask


@pytest.mark.parametrize("action", ["filesystem-mount", "filesystem-mount-other-seat"])
def test_the_group_may_mount_removable_media_without_a_password_and_nobody_else(may, action):
    assert may("kiosk", f"{UDISKS}.{action}")
    assert not may("guest", f"{UDISKS}.{action}")


@pytest.mark.parametrize(
    "action",
    [
        "filesystem-mount-system",
        "filesystem-unmount-others",
        "filesystem-take-ownership",
        "modify-device",
        "encrypted-unlock",
        "eject-media",
    ],
)
def test_the_group_may_do_nothing_else(may, action):
    assert not may("kiosk", f"{UDISKS}.{action}")
