"""The daemon linked with an implementation of the contract that is not the simulated TV."""

import os
import pathlib
import shutil
import subprocess

BUILD = pathlib.Path(os.environ["PORTMELD_BUILD_DIR"])
SOURCE = pathlib.Path(os.environ["PORTMELD_SOURCE_DIR"])


def test_on_a_platform_where_everything_fails_the_daemon_still_serves_its_clients(
    bus, start_client, tmp_path
):
    folder = tmp_path / "bare"
    programs = folder / "root" / "usr" / "bin"
    programs.mkdir(parents=True)
    shutil.copy(SOURCE / "res" / "portmeld.interface.xml", programs)
    daemon = subprocess.Popen(
        [BUILD / "tests" / "bus" / "portmeld-on-a-bare-platform"],
        cwd=folder,
        env={**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": bus.address},
        stderr=subprocess.PIPE,
        text=True,
    )
    try:
        assert any("NameAcquired." in line for line in daemon.stderr), "it ended early"
        client = start_client()
        assert client.call("Connect", "test", 7) == [7]
        assert client.call("GetDeviceCount", 7, -1) == [0]
        assert client.call("RequesAll", 7) == []
    finally:
        daemon.kill()
        daemon.communicate()
