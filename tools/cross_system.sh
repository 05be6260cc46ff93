#!/usr/bin/env bash
# Makes the system in which the project is built for another architecture: cross_system.sh ARCHITECTURE
# FOLDER. Needs root. Everything is of Debian 12 as released, without security updates: of those one
# architecture can have a library in a newer version than another, and then both cannot be installed.
set -euo pipefail
# shellcheck source=tools/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

architecture=$1
system=$2
own=$(dpkg --print-architecture)

# Compiler, emulator, and what the tests need; the rest is Build-Depends.
packages=(
  "crossbuild-essential-$architecture" debhelper dpkg-dev lintian qemu-user
  dbus gir1.2-glib-2.0 python3 python3-gi python3-pytest python3-pytest-xdist
  "libgmock-dev:$architecture" "libgtest-dev:$architecture"
)

# The machine's own mirror, where it has one.
# shellcheck disable=SC2016  # apt-get fills these in
mirror=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME)' 'Created-By: Packages' |
  awk '$2 == "bookworm" { print $1; exit }')
mirror=${mirror:-http://deb.debian.org/debian}

rm -rf --one-file-system "$system"
# shellcheck disable=SC2016  # the hooks' shell expands it
in_system='chroot "$1" env DEBIAN_FRONTEND=noninteractive apt-get -y'
IFS=,
mmdebstrap --mode=root --variant=minbase --architectures="$own,$architecture" \
  --include="${packages[*]}" \
  --aptopt='Acquire::Check-Valid-Until "false"' --aptopt='Acquire::Check-Date "false"' \
  --aptopt='APT::Install-Recommends "false"' \
  --dpkgopt='path-exclude=/usr/share/man/*' --dpkgopt='path-exclude=/usr/share/doc/*' \
  --customize-hook="mkdir -p \"\$1/tmp/project/debian\" \"\$1/project\" &&
    cp '$root/debian/control' \"\$1/tmp/project/debian\"" \
  --customize-hook="$in_system build-dep --host-architecture '$architecture' \
    --build-profiles=cross,nocheck /tmp/project" \
  bookworm "$system" "$mirror"
