#!/bin/bash
# A card reader that the guest makes itself, by the kernel's loop from its USB gadgets to its USB host:
# card_reader.sh make CARD | insert CARD | eject
set -euo pipefail

gadget=/sys/kernel/config/usb_gadget/reader
slot=$gadget/functions/mass_storage.0/lun.0

case $1 in
  make)
    modprobe -a dummy_hcd libcomposite usb_f_mass_storage
    mountpoint -q /sys/kernel/config || mount -t configfs none /sys/kernel/config
    truncate -s 16M "$2"
    echo 'start=2048, type=6' | sfdisk -q --label dos "$2"
    # The partition begins after one mebibyte; mkfs wants a size in kibibytes.
    mkfs.vfat -n CARD --offset 2048 "$2" 15360 >/dev/null
    mkdir -p "$gadget/strings/0x409" "$gadget/configs/c.1" "$gadget/functions/mass_storage.0"
    echo 0x058f >"$gadget/idVendor"
    echo 0x6366 >"$gadget/idProduct"
    echo Generic >"$gadget/strings/0x409/manufacturer"
    echo 'Card Reader' >"$gadget/strings/0x409/product"
    echo READER1 >"$gadget/strings/0x409/serialnumber"
    echo 1 >"$slot/removable"
    ln -s "$gadget/functions/mass_storage.0" "$gadget/configs/c.1"
    ls /sys/class/udc >"$gadget/UDC"
    ;;
  insert) echo "$2" >"$slot/file" ;;
  eject) echo >"$slot/file" ;;
esac
