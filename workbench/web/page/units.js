// Numbers of the daemon in words of people.

export const FILE_SYSTEMS = { 0: "FAT", 1: "exFAT", 2: "ext2, ext3, ext4", 3: "NTFS", 99: "unknown" };
export const CLASSES = { 6: "still image (camera)", 8: "mass storage" };
export const DISK_TYPES = { 0: "ATA", 1: "USB", 2: "other", 99: "unknown" };
export const POPUP_KINDS = { 1: "browse", 0: "play", "-1": "none yet" };

/** A size in units of 1024 bytes; negative ones are what a cut to 32 bits leaves. */
export function sizeText(kibibytes) {
  const units = ["KiB", "MiB", "GiB", "TiB"];
  let value = kibibytes;
  let unit = 0;
  while (Math.abs(value) >= 1024 && unit < units.length - 1) {
    value /= 1024;
    unit += 1;
  }
  return `${unit === 0 ? value : value.toFixed(1)} ${units[unit]}`;
}
