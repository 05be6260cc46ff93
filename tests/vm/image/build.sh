#!/usr/bin/env bash
# Builds the guest: build.sh FOLDER leaves root.img, vmlinux and initrd.img in the folder. Needs root, for
# the files in the guest's disk have owners.
#
# The kernel's package is unpacked and not installed: installing it would spend most of the build on an
# initial RAM disk that nobody uses. Of its modules those stay that a machine with USB ports can use.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd -P)
folder=$1
mkdir -p "$folder"
scratch=$(mktemp -d "$folder/scratch.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
root=$scratch/root
downloads=$scratch/downloads
mkdir "$downloads"

# What the packages depend on and recommend, what a person's session needs, file systems, and what the
# scenarios look at the machine with.
packages=(
  systemd systemd-sysv libpam-systemd udev dbus dbus-user-session polkitd udisks2
  libglib2.0-0 libgudev-1.0-0 libjson-glib-1.0-0 libsystemd0 libtag1v5 shared-mime-info
  dosfstools e2fsprogs exfatprogs fdisk ntfs-3g
  adduser busybox-static kmod mount procps python3 python3-gi util-linux
)

# Prints the package of the kernel that the distribution has at present.
kernel_package() {
  apt-cache depends linux-image-amd64 | sed -n 's/.*Depends: \(linux-image-[0-9].*\)/\1/p' | head -n 1
}

# The host's own package sources serve the guest too.
sources=/etc/apt/sources.list.d/debian.sources
if [[ ! -f $sources ]]; then
  sources=/etc/apt/sources.list
fi

IFS=,
mmdebstrap --mode=root --variant=minbase --architectures=amd64 --include="${packages[*]}" \
  --aptopt='Acquire::Check-Valid-Until "false"' --aptopt='Acquire::Check-Date "false"' \
  --aptopt='APT::Install-Recommends "false"' \
  --dpkgopt='path-exclude=/usr/share/man/*' --dpkgopt='path-exclude=/usr/share/doc/*' \
  --dpkgopt='path-exclude=/usr/share/locale/*' --dpkgopt='path-exclude=/usr/share/info/*' \
  --customize-hook="cd '$downloads' && APT_CONFIG=\$MMDEBSTRAP_APT_CONFIG \
    apt-get -o APT::Sandbox::User=root download $(kernel_package)" \
  bookworm "$root" "$sources"
unset IFS

# ---- the kernel and its modules

kernel=$scratch/kernel
dpkg-deb --extract "$downloads"/linux-image-*.deb "$kernel"
version=$(basename "$kernel"/lib/modules/*)
from=$kernel/lib/modules/$version
to=$root/lib/modules/$version
mkdir -p "$to"
cp "$from"/modules.{builtin,builtin.modinfo,order} "$to"
for group in fs lib crypto arch block \
  drivers/{usb,scsi,virtio,block,char,cdrom,hid,input,ata,phy,extcon,rtc} net/core; do
  if [[ -d $from/kernel/$group ]]; then
    mkdir -p "$to/kernel/$group"
    cp -r "$from/kernel/$group/." "$to/kernel/$group"
  fi
done
rm -rf "$to/kernel/arch/x86/kvm"
depmod -b "$root" "$version"
# Unpacked here, for the guest would take five seconds over it.
/usr/bin/python3 "$here/unpack_kernel.py" "$kernel/boot/vmlinuz-$version" "$folder/vmlinux"

# ---- the initial RAM disk: what the root disk is reached with

initrd=$scratch/initrd
mkdir -p "$initrd"/{bin,dev,modules,proc,sys,system}
cp "$root/bin/busybox" "$initrd/bin"
install -m 755 "$here/initrd-init" "$initrd/init"
for module in virtio_pci virtio_blk ext4 crc32c_generic; do
  modprobe -d "$root" -S "$version" --show-depends "$module" | sed -n 's/^insmod //p'
done | awk '!seen[$0]++' | while read -r file; do
  cp "$file" "$initrd/modules"
  basename "$file" >>"$initrd/modules/order"
done
(cd "$initrd" && find . | cpio --create --format=newc --quiet) >"$folder/initrd.img"

# ---- the guest's configuration

cp -r "$here/overlay/." "$root"
chmod 755 "$root"/usr/local/sbin/*
printf 'television\n' >"$root/etc/hostname"
printf '127.0.0.1 localhost television\n' >"$root/etc/hosts"
printf '/dev/vda / ext4 rw,noatime 0 0\n' >"$root/etc/fstab"
systemd-id128 new >"$root/etc/machine-id"
units=$root/etc/systemd/system
mkdir -p "$units/multi-user.target.wants"
for unit in vm-agent vm-events; do
  ln -s "../$unit.service" "$units/multi-user.target.wants/$unit.service"
done
ln -sf /lib/systemd/system/multi-user.target "$units/default.target"
# What takes the guest's time and serves no scenario.
for unit in apt-daily.timer apt-daily-upgrade.timer dpkg-db-backup.timer e2scrub_all.timer \
  e2scrub_reap.service fstrim.timer getty@tty1.service kmod-static-nodes.service \
  systemd-pstore.service systemd-timesyncd.service sys-kernel-debug.mount \
  sys-kernel-tracing.mount dev-hugepages.mount dev-mqueue.mount serial-getty@ttyS0.service; do
  ln -sf /dev/null "$units/$unit"
done

rm -rf "$root"/var/cache/apt/* "$root"/var/lib/apt/lists/*
size=$(($(du -sm "$root" | cut -f1) + 200))
rm -f "$folder/root.img"
truncate -s "${size}M" "$folder/root.img"
mkfs.ext4 -q -F -O '^metadata_csum,^64bit' -E lazy_itable_init=1,lazy_journal_init=1 -L root \
  -d "$root" "$folder/root.img"
