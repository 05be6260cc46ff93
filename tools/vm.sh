#!/usr/bin/env bash
# A whole system: a Debian guest in an emulator without hardware acceleration, on which the packages are
# installed, and into whose USB ports devices are plugged while it runs. Makes what is missing or has
# changed below build/vm, runs the scenarios of tests/vm one after the other and prints a row for each.
# Arguments choose scenarios as those of pytest do: -k WORDS, or a file.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

folder=$root/build/vm
rig=$root/tests/vm
mkdir -p "$folder"
exec 8>"$folder/lock"
flock --nonblock 8 || die 1 "vm: another ./dev vm is at work in this project"

verb=vm
# shellcheck source=tools/on_demand.sh
source "$root/tools/on_demand.sh"

need busybox-static cpio dosfstools e2fsprogs exfatprogs fdisk kmod mmdebstrap mtools ntfs-3g \
  qemu-system-x86 qemu-utils seabios util-linux

# The daemon and the handlers; the rest is nothing for a guest.
listed=$("$root/tools/package.sh")
mapfile -t debs < <(grep -E '/portmeld(-handlers)?_[^/]*\.deb$' <<<"$listed")
((${#debs[@]} == 2)) || die 1 "vm: two packages were expected, and there are: ${debs[*]}"

image=$(sum "$rig/image")
made image "$image" "${as_root[@]}" "$rig/image/build.sh" "$folder/image"
made sticks "$(sum "$rig/image/make_sticks.sh")" "$rig/image/make_sticks.sh" "$folder/sticks"
content="$image $(sum "$rig/rig" "${debs[@]}" "$root/tests/support/client_process.py" \
  "$root/tests/linux/notification_peer.py")"
export PYTHONDONTWRITEBYTECODE=1 LC_ALL=C.UTF-8
made machine "$content" "$python" "$rig/rig/prepare.py" "$folder" "${debs[@]}"

export PORTMELD_VM_IMAGES=$folder PORTMELD_TEST_LIMIT=${PORTMELD_TEST_LIMIT:-120}
cd "$root"
where=("$rig")
for argument in "$@"; do
  if [[ -e ${argument%%::*} ]]; then
    where=()
  fi
done
exec "$python" -m pytest -q --no-header --tb=short -p no:cacheprovider --rootdir="$root" \
  "${where[@]}" "$@"
