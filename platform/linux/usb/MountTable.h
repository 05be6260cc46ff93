// The kernel's table of mounts, taken apart: Documentation/filesystems/proc.rst, /proc/PID/mountinfo.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace machine {

/// One mount. Texts are exact: the kernel's escapes are undone, and nothing else is touched.
struct Mount {
    std::string deviceNumber;  ///< "MAJOR:MINOR" of the file system
    std::string root;          ///< the folder within the file system that was mounted
    std::string point;         ///< where
    std::string type;          ///< of the file system, "vfat"
    std::string source;        ///< as given to mount(2), "/dev/sda1"
};

using MountTable = std::vector<Mount>;

/// Take a table apart. A line that is none is left out.
MountTable parseMountTable(const std::string& text);

/// Where a block device is mounted: its first whole mount, else the first of a folder of it. Found by its
/// number; by its name only where the file system has no number of a device (fuseblk, btrfs), and not for
/// what any user can mount under any name (fuse.sshfs and the like).
///
/// @param devname       node, "/dev/sda1"
/// @param deviceNumber  "MAJOR:MINOR"
std::optional<std::string> mountPointOf(const MountTable& table,
                                        const std::string& devname,
                                        const std::string& deviceNumber);

}  // namespace machine
