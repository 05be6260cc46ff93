#!/usr/bin/env bash
# Measures the daemon on this machine: builds it as it is shipped, and with it what it is measured
# against, and runs bench/bench.py.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

image=$root/build/bench-image
verb=bench
folder=$root/build/bench-peers
mkdir -p "$folder"
# shellcheck source=tools/on_demand.sh
source "$root/tools/on_demand.sh"

"$root/tools/setup.sh"
# Whom the daemon is measured beside, and what makes disks for them; nobody else needs these.
need e2fsprogs fdisk gir1.2-notify-0.7 gvfs-daemons mount polkitd udev udiskie udisks2
"$root/tools/build.sh" bench
rm -rf "${image:?}"
DESTDIR=$image meson install -C "$root/build/bench" --quiet >/dev/null
mkdir -p "$image/var/lib/portmeld/db/portmeld" "$image/run/portmeld/memory"
cd "$root"
# Loop devices and udev's daemon are root's.
status=0
"${as_root[@]}" env PYTHONDONTWRITEBYTECODE=1 "$python" "$root/bench/bench.py" \
  --build "$root/build/bench" --image "$image" "$@" || status=$?
if ((${#as_root[@]})); then
  "${as_root[@]}" chown -R "$(id -u):$(id -g)" "$root/build/bench" "$image"
fi
exit "$status"
