#!/bin/sh
# Makes the namespaces in which it runs a machine of its own, with what is in STAGE and the people who are
# told there, and becomes its service manager. All that it writes goes to a tmpfs. The machine outside
# keeps everything as it was.
# Usage: boot.sh STAGE TARGET, below `unshare --mount --pid --fork --ipc --uts --cgroup`
set -eu
stage=$1
target=$2

new=/mnt
mount -t tmpfs -o mode=755 tmpfs $new
mkdir $new/upper $new/work $new/root
# Two layers of one file system must not lie in each other.
cp -a "$stage" $new/stage
mount -t overlay -o "lowerdir=$new/stage:/,upperdir=$new/upper,workdir=$new/work" overlay $new/root
chmod 755 $new/root

cd $new/root
mount -t proc proc proc
mount -t sysfs -o ro sysfs sys
mount -t tmpfs tmpfs sys/fs/cgroup
if [ -e /sys/fs/cgroup/cgroup.controllers ]; then
  mount -t cgroup2 cgroup2 sys/fs/cgroup
else
  mkdir sys/fs/cgroup/unified sys/fs/cgroup/systemd
  mount -t cgroup2 cgroup2 sys/fs/cgroup/unified
  mount -t cgroup -o none,name=systemd cgroup sys/fs/cgroup/systemd
fi
mount -t tmpfs -o mode=755 tmpfs run
mount -t tmpfs -o mode=1777 tmpfs tmp
mount -t tmpfs -o mode=755 tmpfs dev
for device in null zero full random urandom tty; do
  : >dev/$device
  mount --bind /dev/$device dev/$device
done
mkdir dev/shm dev/pts
mount -t devpts -o newinstance,ptmxmode=666,mode=620 devpts dev/pts
ln -s pts/ptmx dev/ptmx
ln -s /proc/self/fd dev/fd
mkdir run/test

for file in usr/lib/sysusers.d/portmeld.conf etc/people; do
  [ ! -e "$file" ] || cat "$file"
done | systemd-sysusers --root="$PWD" -
# A machine outside that is itself a container may keep packages from starting services.
rm -f usr/sbin/policy-rc.d
mkdir -p etc/systemd/system "etc/systemd/system/portmeld@.service.d"
# Whatever else the machine outside starts stays out, by the clock too.
ln -s /dev/null etc/systemd/system/timers.target
printf '[Unit]\nRequires=basic.target dbus.service\nAfter=basic.target dbus.service\n' \
  >"etc/systemd/system/$target"
# Not an error that a library may live with, but the end of the process: a system call that is missing in
# the list is seen.
printf '[Service]\nSystemCallErrorNumber=kill\n' >"etc/systemd/system/portmeld@.service.d/strict.conf"

mkdir old
pivot_root . old
umount -l /old
# As a machine's first process has it: what is mounted reaches the services.
mount --make-rshared /
exec env -i container=test "NOTIFY_SOCKET=$NOTIFY_SOCKET" PATH="$PATH" \
  /lib/systemd/systemd --system "--unit=$target" --show-status=no
