"""What goes wrong has an exit status of its own and one line that says what, with what value, and what to
do: no bus, no daemon, no permission, no answer in time, a daemon that ends, a reader that goes away."""

import os
import signal
import socket
import time

import daemon as daemon_module
import pytest
from ctl_process import calls_seen, stopped, until
from test_ctl_settings import WITHOUT_POWERS

# One of each method that is called.
COMMANDS = [
    ["list"],
    ["list", "--fs", "fat"],
    ["count"],
    ["watch"],
    ["popups", "on"],
    ["music", "add", "a"],
    ["music", "get", "0"],
    ["music", "clear"],
]
every_command = pytest.mark.parametrize("command", COMMANDS, ids=" ".join)
METHODS = [
    "RequesAll",
    "GetDeviceListByFsType",
    "RequesAll",
    "RequesAll",
    "SetEnablePopUP",
    "SetPhotoBGMPlayList",
    "GetPhotoBGMPlayListItem",
    "ClearPhotoBGMPlayList",
]
every_method = pytest.mark.parametrize("command, method", list(zip(COMMANDS, METHODS)))


def left(daemon):
    """The client ids that took their leave."""
    return [int(line.rpartition(":")[2]) for line in daemon.log() if "connetion :" in line]


# ---- 3: no bus, no daemon


@every_command
@pytest.mark.parametrize("form", [[], ["--json"]])
def test_without_a_bus(ctl, command, form):
    ctl.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent/bus"
    status, message = ctl.failure(*form, *command)
    assert status == 3
    assert message.startswith("there is no bus at unix:path=/nonexistent/bus: ")
    assert message.endswith("start one, or name another with --bus")


@every_command
def test_without_a_daemon(ctl, bus, command):
    status, message = ctl.failure(*command)
    assert status == 3
    assert message.startswith(f"portmeld does not run: nobody owns com.norvane.portmeld on {bus.address};")
    assert "systemctl start" in message


def test_the_bus_can_be_chosen(daemon, ctl, bus):
    ctl.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent/bus"
    assert ctl.json("list", "--bus", bus.address) == []
    assert ctl.json("--bus", bus.address, "list") == []


def test_the_chosen_bus_is_named_when_it_is_not_there(ctl):
    status, message = ctl.failure("list", "--bus", "unix:path=/nonexistent/other")
    assert (status, "no bus at unix:path=/nonexistent/other" in message) == (3, True)


# ---- 4: no permission


FORBIDDEN = """<policy context="mandatory">
  <deny send_destination="com.norvane.portmeld" send_interface="com.norvane.portmeld"/>
</policy>"""


@every_method
def test_a_bus_that_forbids_the_call(start_ruled_daemon, ctl, command, method):
    daemon = start_ruled_daemon(FORBIDDEN)
    status, message = ctl.failure(*command)
    assert status == 4
    assert message.startswith(f"the bus does not let this user call {method}: ")
    assert message.endswith("root and members of the group portmeld may, after a new log-in")
    assert not any("m_HandleMethodCall" in line for line in daemon.log())


def test_a_bus_whose_socket_is_forbidden(bus, ctl, tmp_path):
    (socket_file,) = tmp_path.glob("bus0/socket")
    socket_file.chmod(0)
    status, message = ctl.failure("list", before=WITHOUT_POWERS)
    assert status == 4
    assert message.startswith(f"the bus at {bus.address} refuses this user: ")


# ---- 5: no answer in time


@every_method
def test_a_daemon_that_does_not_answer(daemon, ctl, command, method):
    # An emulated program needs longer to be connected at all.
    limit = 0.3 * float(os.environ.get("PORTMELD_PATIENCE", "1"))
    with stopped(daemon.process):
        began = time.monotonic()
        status, message = ctl.failure("--timeout", f"{limit:g}", *command)
    assert limit <= time.monotonic() - began < 20
    assert status == 5
    assert message.startswith(f"no answer to {method} within {limit:g} s; portmeld is busy or stopped")
    assert message.endswith("--timeout")
    # The question is there when the daemon goes on, and ends it.
    if method == "GetPhotoBGMPlayListItem":
        assert daemon.see_end() == -signal.SIGABRT


def test_a_daemon_that_takes_its_time_is_waited_for(daemon, ctl, start_ctl):
    daemon.plug(devname="/dev/sda1")
    with stopped(daemon.process):
        slow = start_ctl("list", "--timeout", "30")
        time.sleep(0.5)
        assert slow.process.poll() is None
    done = slow.finish()
    assert (done.status, done.err) == (0, "")
    assert "/dev/sda1" in done.out[1]


def test_a_bus_that_gives_up_waiting_is_no_end_of_the_daemon(start_ruled_daemon, ctl):
    daemon = start_ruled_daemon('<limit name="reply_timeout">200</limit>')
    with stopped(daemon.process):
        status, message = ctl.failure("music", "clear")
    assert status == 5
    assert message.startswith("no answer to ClearPhotoBGMPlayList")


def test_a_bus_that_does_not_answer(ctl, tmp_path):
    with socket.socket(socket.AF_UNIX) as mute:
        mute.bind(str(tmp_path / "mute"))
        mute.listen()
        address = f"unix:path={tmp_path}/mute"
        status, message = ctl.failure("list", "--timeout", "0.3", "--bus", address)
    assert status == 5
    assert message == f"the bus at {address} took no connection within 0.3 s; is it stopped?"


def test_after_a_time_out_the_daemon_still_forgets_the_client(daemon, ctl):
    with stopped(daemon.process):
        assert ctl.failure("--client-id", "4711", "--timeout", "0.3", "list")[0] == 5
    until(lambda: left(daemon) == [4711])


# ---- 6: the daemon ended by the call


@pytest.mark.parametrize("form", [[], ["--json"]])
@pytest.mark.parametrize("stored, index", [(0, "0"), (3, "3"), (3, "2147483647")])
def test_an_item_that_is_not_there_ends_the_daemon(daemon, ctl, client, stored, index, form):
    for _ in range(stored):
        client.call("SetPhotoBGMPlayList", "a", "b", "c")
    status, message = ctl.failure(*form, "music", "get", index)
    assert status == 6
    assert message.startswith("portmeld ended instead of answering GetPhotoBGMPlayListItem; ")
    assert "is lost" in message
    assert daemon.see_end() == -signal.SIGABRT


def test_a_daemon_that_ends_while_it_is_asked_for_devices(daemon, bus, start_ctl):
    with stopped(daemon.process), calls_seen(bus.address) as wait_for:
        waiting = start_ctl("list", "--timeout", "30")
        wait_for("RequesAll")
        daemon.process.kill()
    daemon.see_end()
    done = waiting.finish()
    assert (done.status, done.out) == (6, [])
    assert done.err.startswith("portmeldctl: portmeld ended instead of answering RequesAll; ")


def test_a_bus_that_ends_during_a_call(start_ruled_bus, start_daemon, start_ctl):
    bus = start_ruled_bus()
    daemon = start_daemon(bus_address=bus.address)
    daemon.wait_for_name()
    with stopped(daemon.process):
        with calls_seen(bus.address) as wait_for:
            waiting = start_ctl("list", "--timeout", "30", "--bus", bus.address)
            wait_for("RequesAll")
        bus.kill()
        done = waiting.finish()
    daemon.see_end()
    assert (done.status, done.out) == (3, [])
    assert f"the bus at {bus.address} ended before it answered RequesAll" in done.err


# ---- 1: everything else


def test_a_daemon_that_does_not_know_the_method(start_daemon, ctl):
    text = daemon_module.interface_description()
    daemon = start_daemon(description=text.replace('"ClearPhotoBGMPlayList"', '"Other"'))
    daemon.wait_for_name()
    status, message = ctl.failure("music", "clear")
    assert status == 1
    assert message.startswith("portmeld refused ClearPhotoBGMPlayList: No such method")


def test_a_daemon_whose_answer_is_of_another_type(fake_daemon, ctl, tmp_path):
    text = daemon_module.interface_description()
    silent = tmp_path / "silent.xml"
    silent.write_text(text.replace('<arg name="count" type="i" direction="out"/>', ""))
    fake_daemon(description=silent)
    status, message = ctl.failure("count")
    assert status == 1
    assert message.startswith("portmeld refused GetDeviceCount: ")
    assert "fit together?" in message


def test_an_output_that_takes_nothing(daemon, ctl):
    with open("/dev/full", "wb") as full:
        done = ctl("list", stdout=full)
    assert done.status == 1
    assert done.err == (
        "portmeldctl: cannot write the answer to standard output: No space left on device\n"
    )


# ---- interruptions


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_an_interrupted_command_takes_its_leave(daemon, bus, start_ctl, number):
    with stopped(daemon.process), calls_seen(bus.address) as wait_for:
        waiting = start_ctl("--client-id", "4711", "list", "--timeout", "30")
        wait_for("RequesAll")
        done = waiting.end(number)
    assert done == (128 + number, [], "")
    until(lambda: left(daemon) == [4711])


def test_an_interruption_ends_the_connecting_too(start_ctl, tmp_path):
    with socket.socket(socket.AF_UNIX) as mute:
        mute.bind(str(tmp_path / "mute"))
        mute.listen()
        waiting = start_ctl("list", "--timeout", "30", "--bus", f"unix:path={tmp_path}/mute")
        with mute.accept()[0] as connection:
            assert connection.recv(1) == b"\0"
            assert waiting.end(signal.SIGINT) == (130, [], "")


@pytest.mark.parametrize("command", [["--version"], ["list"]], ids=" ".join)
def test_a_reader_that_is_gone_already_is_no_failure(daemon, ctl, command):
    reader, writer = os.pipe()
    os.close(reader)
    try:
        assert ctl(*command, stdout=writer) == (0, "", "")
    finally:
        os.close(writer)
