"""A message bus for one test: a dbus-daemon of its own, started and ended by process id."""

import contextlib
import signal
import subprocess

CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>{address}</listen>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <{own} own="*"/>
  </policy>
  <limit name="max_completed_connections">2000</limit>
  <limit name="max_connections_per_user">2000</limit>
  <limit name="max_replies_per_connection">50000</limit>
</busconfig>
"""


class PrivateBus:
    """Allows everything to everybody, but no name when `names` is false, and what `rules` say besides. Started
    at once. Its complaints go where one's own go, or to `errors`."""

    def __init__(self, folder, names=True, rules="", errors=None):
        folder.mkdir()
        self._errors = errors
        self.address = f"unix:path={folder}/socket"
        self._configuration = folder / "bus.conf"
        text = CONFIGURATION.format(address=self.address, own="allow" if names else "deny")
        self._configuration.write_text(text.replace("</busconfig>", rules + "</busconfig>"))
        self.start()

    def start(self):
        """Starts the bus, anew after a stop() too, always at the same address."""
        self._process = subprocess.Popen(
            ["dbus-daemon", "--nofork", "--print-address", f"--config-file={self._configuration}"],
            stdout=subprocess.PIPE,
            stderr=self._errors,
            text=True,
        )
        assert self._process.stdout.readline(), "dbus-daemon did not start"

    @contextlib.contextmanager
    def hanging(self):
        """The bus does nothing meanwhile."""
        self._process.send_signal(signal.SIGSTOP)
        try:
            yield
        finally:
            self._process.send_signal(signal.SIGCONT)

    def kill(self):
        """Ends the bus at once, whatever it does."""
        self._process.kill()
        self._process.wait(60)

    def stop(self):
        """Ends the bus; its connections break."""
        if self._process.poll() is None:
            self._process.terminate()
        self._process.wait(60)
        self._process.stdout.close()
