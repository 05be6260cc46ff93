#!/usr/bin/env bash
# Makes what sticks hold: make_sticks.sh FOLDER leaves one image for each kind of stick in the folder.
# Needs neither root nor loop devices.
set -euo pipefail

folder=$1
rm -rf "$folder"
mkdir -p "$folder"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export MKE2FS_DEVICE_SECTSIZE=512 MTOOLS_SKIP_CHECK=1

# Media files need not play: they are known by their names.
library=$scratch/library
mkdir -p "$library/Photos" "$library/Music"
head -c 20000 /dev/zero >"$library/Photos/IMG_0001.JPG"
head -c 20000 /dev/zero >"$library/Photos/IMG_0002.JPG"
head -c 30000 /dev/zero >"$library/Music/Ünïcode träck.mp3"
one=$scratch/one
mkdir -p "$one/DCIM"
head -c 20000 /dev/zero >"$one/DCIM/Holiday 1.JPG"

# Makes a file system: file_system KIND FILE MEBIBYTES LABEL CONTENT
file_system() {
  local kind=$1 file=$2 size=$3 label=$4 content=$5
  truncate -s "${size}M" "$file"
  case $kind in
    fat32)
      mkfs.vfat -F 32 -s 1 -n "$label" "$file" >/dev/null
      mcopy -s -i "$file" "$content"/* ::/
      ;;
    exfat) mkfs.exfat -L "$label" "$file" >/dev/null ;;
    ntfs) mkntfs -q -F -Q -s 512 -p 0 -H 255 -S 63 -L "$label" "$file" 2>/dev/null ;;
    ext4) mkfs.ext4 -q -F -L "$label" -d "$content" "$file" ;;
  esac
}

# Makes a disk: disk NAME TABLE, then for each partition KIND TYPE MEBIBYTES LABEL CONTENT
disk() {
  local disk=$folder/$1.img table=$2 start=1 part=$scratch/part
  local layout="label: $table" parts=()
  shift 2
  while (($#)); do
    layout+=$'\n'"start=${start}MiB, size=$3MiB, type=$2"
    file_system "$1" "$part$start" "$3" "$4" "$5"
    parts+=("$start")
    start=$((start + $3))
    shift 5
  done
  truncate -s "$((start + 1))M" "$disk"
  sfdisk -q "$disk" <<<"$layout" >/dev/null
  for start in "${parts[@]}"; do
    dd if="$part$start" of="$disk" bs=1M seek="$start" conv=notrunc,sparse status=none
    rm "$part$start"
  done
}

efi=C12A7328-F81F-11D2-BA4B-00A0C93EC93B
data=EBD0A0A2-B9E5-4433-87C0-68B6B72699C7
disk fat32 dos fat32 c 64 KINGSTON "$library"
disk fat32b dos fat32 c 64 "MY STICK" "$library"
disk exfat dos exfat 7 64 "SanDisk 64" "$library"
disk ntfs dos ntfs 7 64 "Família" "$library"
disk ext4 dos ext4 83 64 "linux data" "$library"
disk photo dos fat32 c 64 ONEPHOTO "$one"
disk two dos fat32 c 48 FIRST "$library" ext4 83 48 second "$library"
disk service gpt fat32 "$efi" 40 EFI "$library" fat32 "$data" 48 DATA "$library"
file_system fat32 "$folder/whole.img" 64 FLOPPY "$library"

# What the camera shows to programs that ask it.
mkdir -p "$folder/camera/DCIM"
cp "$one/DCIM"/* "$folder/camera/DCIM"
