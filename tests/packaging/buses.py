"""The buses of a machine on which the packages are installed: real dbus-daemons at the real places."""

import pathlib
import re
import subprocess

import installed

POLICY = "/usr/share/dbus-1/system.d/com.norvane.portmeld.conf"
STOCK = pathlib.Path("/usr/share/dbus-1/system.conf")

# Denies what it can. A system bus denies owning, calling and receiving as long as nobody allows it, and a
# signal or the reply to a call is the sender's own affair; everybody can talk with the bus itself.
STRICT = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <auth>EXTERNAL</auth>
  <listen>{address}</listen>
  <policy context="default">
    <allow user="*"/>
    <deny own="*"/>
    <deny send_type="method_call"/>
    <deny receive_type="method_call"/>
    <deny receive_type="method_return"/>
    <deny receive_type="error"/>
    <deny receive_type="signal"/>
    <deny send_type="signal"/>
    <allow send_type="method_return" send_requested_reply="true"/>
    <allow send_type="error" send_requested_reply="true"/>
    <allow send_destination="org.freedesktop.DBus"/>
    <allow receive_sender="org.freedesktop.DBus"/>
  </policy>
  <include>{policy}</include>
</busconfig>
"""

# Allows everything that no installed policy denies.
OPEN = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <auth>EXTERNAL</auth>
  <listen>{address}</listen>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
  </policy>
  <include>{policy}</include>
</busconfig>
"""

SESSION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>{address}</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


def stock_configuration():
    """The distribution's own configuration, which includes the installed policies, as it is but for
    what would leave the machine: forking, and starting other services."""
    text = STOCK.read_text()
    for element in ("<fork/>", "<standard_system_servicedirs/>"):
        assert element in text
        text = text.replace(element, "")
    # The names of the folders that it includes are relative to its own.
    return re.sub(r"<includedir>(?!/)", "<includedir>/usr/share/dbus-1/", text)


class Bus:
    """A dbus-daemon on a machine, started at once."""

    def __init__(self, machine, user, name, configuration):
        file = f"/run/test/{name}.conf"
        machine.succeed("root", "tee", file, text=configuration)
        self._process = subprocess.Popen(
            machine.command(
                user, "dbus-daemon", "--nofork", "--print-address", f"--config-file={file}"
            ),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            text=True,
        )
        assert self._process.stdout.readline(), "dbus-daemon did not start"

    def stop(self):
        """Ends the bus; its connections break."""
        if self._process.poll() is None:
            self._process.terminate()
        self._process.wait(60)
        self._process.stdout.close()


class SystemBus(Bus):
    """The system bus; "strict" denies what it can, "stock" is the distribution's, "open" allows all."""

    def __init__(self, machine, kind):
        if kind == "stock":
            configuration = stock_configuration()
        else:
            frame = {"strict": STRICT, "open": OPEN}[kind]
            configuration = frame.format(address=installed.SYSTEM_BUS, policy=POLICY)
        super().__init__(machine, "root", "system", configuration)


class SessionBus(Bus):
    """The bus of a user's session."""

    def __init__(self, machine, user):
        self.address = f"unix:path=/run/user/{installed.number_of(user)}/bus"
        configuration = SESSION.format(address=self.address)
        super().__init__(machine, user, f"session-{user}", configuration)
