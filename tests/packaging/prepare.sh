#!/bin/sh
# Makes the mount namespace in which it runs a machine on which the packages are installed: what was
# unpacked below STAGE lies over the machine's own /usr, and the users and groups of STAGE/etc exist. The
# machine outside keeps everything as it was. Says "ready" and stays until its input ends.
# Usage: prepare.sh STAGE
set -eu
stage=$1
cd /

mount -t tmpfs -o mode=755 tmpfs /run
mkdir -p /run/dbus /run/lock /run/user /run/test /run/stage /run/portmeld
# The folder of a test run is closed to other users; below /run the way is free.
mount --bind "$stage" /run/stage
mount -t overlay -o lowerdir=/run/stage/usr:/usr overlay /usr
mount -t overlay -o lowerdir=/run/stage/var/lib:/var/lib overlay /var/lib

# The group, the people and the folders are made in a tree of their own: in a user namespace the real "/"
# belongs to nobody, and systemd-tmpfiles refuses to follow a path through it.
tree=/run/tree
mkdir -p $tree/etc
cp /run/stage/etc/passwd /run/stage/etc/group $tree/etc
cat /usr/lib/sysusers.d/portmeld.conf /run/stage/etc/people | systemd-sysusers --root=$tree -
systemd-tmpfiles --root=$tree --create - </usr/lib/tmpfiles.d/portmeld.conf
for path in /etc/passwd /etc/group /var/lib/portmeld /run/portmeld; do
  mount --bind $tree$path $path
done

echo '"ready"'
cat >/dev/null
