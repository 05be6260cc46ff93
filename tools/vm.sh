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

as_root=()
if [[ $(id -u) != 0 ]]; then
  command -v sudo >/dev/null || die 1 "vm: the guest's image needs root or sudo"
  as_root=(sudo)
fi

# What the host needs besides what ./dev test needs, which PORTMELD_SKIP_SETUP leaves to people as well.
packages=(
  busybox-static cpio dosfstools e2fsprogs exfatprogs fdisk kmod mmdebstrap mtools ntfs-3g
  qemu-system-x86 qemu-utils seabios util-linux
)
missing=()
for package in "${packages[@]}"; do
  if [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
    missing+=("$package")
  fi
done
if ((${#missing[@]})) && [[ -n ${PORTMELD_SKIP_SETUP:-} ]]; then
  say "vm: PORTMELD_SKIP_SETUP is set, and these packages are not installed: ${missing[*]}"
elif ((${#missing[@]})); then
  say "vm: installing ${missing[*]} (log: build/vm/setup.log)"
  if ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -o DPkg::Lock::Timeout=300 \
    --no-install-recommends install "${missing[@]}" >"$folder/setup.log" 2>&1 </dev/null; then
    tail -n 20 "$folder/setup.log" >&2
    die 1 "vm: could not install them; apt-get update may help"
  fi
fi

# Runs a command unless what it was made from is as it was: made NAME CONTENT COMMAND...
made() {
  local name=$1 content=$2 stamp=$folder/$1.stamp began=$SECONDS
  shift 2
  if [[ -f $stamp && $(<"$stamp") == "$content" ]]; then
    return
  fi
  rm -f "$stamp"
  say "vm: making the $name (log: build/vm/$name.log)"
  if ! nice -n 5 "$@" >"$folder/$name.log" 2>&1 </dev/null; then
    tail -n 40 "$folder/$name.log" >&2
    die 1 "vm: could not make the $name"
  fi
  printf '%s\n' "$content" >"$stamp"
  say "vm: made the $name in $((SECONDS - began)) s"
}

# One number for the contents of files and folders: sum PATH...
sum() {
  find "$@" -type f -not -path '*/__pycache__/*' -print0 | sort -z | xargs -0 sha256sum | sha256sum
}

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
