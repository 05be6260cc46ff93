#!/usr/bin/env bash
# The project for another architecture, on a machine that is not of it: cross.sh ARCHITECTURE [SUITE...].
# Makes a Debian 12 below build/cross that holds the other architecture's compiler, libraries and emulator
# next to this machine's tools, and in it builds, tests and packages the project. Nothing is installed on
# the machine itself besides what makes such a folder.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

architecture=${1:-}
case $architecture in
  armhf | arm64) shift ;;
  *) die 2 "cross: for which architecture? armhf or arm64" ;;
esac
suites=(unit bus ctl packages)
if [[ $architecture == armhf ]]; then
  # Memory can be told apart from the emulator's only where it has 32 bits of addresses.
  suites+=(memory)
fi
for suite in "$@"; do
  if [[ " ${suites[*]} " != *" $suite "* ]]; then
    die 2 "cross: unknown suite '$suite'; there are: ${suites[*]}"
  fi
done
if (($#)); then
  suites=("$@")
fi

verb=cross
folder=$root/build/cross/$architecture
mkdir -p "$folder"
exec 8>"$folder/lock"
flock --nonblock 8 || die 1 "cross: another ./dev cross $architecture is at work in this project"
# shellcheck source=tools/on_demand.sh
source "$root/tools/on_demand.sh"

need debian-archive-keyring mmdebstrap util-linux
command -v mmdebstrap >/dev/null || die 1 "cross: there is no mmdebstrap on this machine"
own=$(dpkg --print-architecture)
[[ $own != "$architecture" ]] || die 1 "cross: this machine is $own itself: ./dev test"
"${as_root[@]}" unshare --mount --propagation private true ||
  die 1 "cross: root may not mount here, which a system in a folder needs; a container needs the right to"

# What is in the system follows from the script that makes it and from the build dependencies.
content=$(sum "$root/tools/cross_system.sh" "$root/debian/control")
made system "$content" "${as_root[@]}" "$root/tools/cross_system.sh" "$architecture" "$folder/system"
"${as_root[@]}" nice -n 10 unshare --mount --propagation private \
  "$root/tools/cross_enter.sh" "$folder/system" "$root" "$(id -u):$(id -g)" \
  tools/cross_suites.sh "$architecture" "${suites[@]}" </dev/null
