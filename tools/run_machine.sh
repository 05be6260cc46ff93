#!/usr/bin/env bash
# Runs the real daemon on this machine's own ports, from the project's folder and without installing
# anything: its fixed paths lie below build/machine/image. It talks to the session's notification server
# and service manager, and to logind, udev and UDisks2 as they are.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

image=$root/build/machine-image
applications=$image/usr/share/applications

"$root/tools/build.sh" machine
rm -rf "${image:?}/usr"
DESTDIR=$image meson install -C "$root/build/machine" --quiet >/dev/null
# The ready-made applications are not where the installed ones would be.
sed -i "s|^Exec=/usr/|Exec=$image/usr/|; s|^TryExec=/usr/|TryExec=$image/usr/|" "$applications"/*.desktop
mkdir -p "$image/var/lib/portmeld/db/portmeld" "$image/run/portmeld/memory"

cat >&2 <<TEXT
portmeld runs on this machine's ports. It takes no USB event in its first 30 seconds: wait, then plug
something in. Ctrl+C ends it.
  settings    ${image#"$PWD"/}/var/lib/portmeld/db (one file a key; see portmeld-settings(5))
  whole log   echo info > ${image#"$PWD"/}/var/lib/portmeld/db/portmeld/log_level
  clients     only where the system bus lets this user own com.norvane.portmeld: that takes the bus
              policy of the package; pop-ups and applications work without it
TEXT
if [[ -z ${DBUS_SESSION_BUS_ADDRESS:-} && ! -S ${XDG_RUNTIME_DIR:-/run/user/$(id -u)}/bus ]]; then
  echo "There is no session bus here: pop-ups will not be seen." >&2
fi
export XDG_DATA_DIRS=$image/usr/share:${XDG_DATA_DIRS:-/usr/local/share:/usr/share}
exec "$image/usr/bin/portmeld"
