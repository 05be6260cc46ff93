#!/usr/bin/env bash
# Runs a command of the project inside a system in a folder, as the user who asked for it:
# cross_enter.sh SYSTEM PROJECT USER:GROUP COMMAND... Must be root in a mount namespace of its own, with
# which everything that is mounted here goes away.
set -euo pipefail

system=$1
project=$2
user=$3
command=$4
shift 4

mount -t proc proc "$system/proc"
mount --rbind /dev "$system/dev"
mount -t tmpfs -o mode=1777 tmpfs "$system/tmp"
mount --bind "$project" "$system/project"
# The user has a name inside, too.
for file in /etc/passwd /etc/group; do
  mount --bind "$file" "$system$file"
done
exec chroot --userspec="$user" "$system" env --ignore-environment --chdir=/project \
  PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/tmp LC_ALL=C.UTF-8 "/project/$command" "$@"
