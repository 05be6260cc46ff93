// Which partitions and disks are anything for viewers: not those that firmware, an operating system or a
// recovery program keeps for itself, and not a disk that is only the frame of its partitions.
#pragma once

#include <functional>
#include <string>

namespace machine {

/// A udev property of the block device, "" when it has none.
using UdevProperty = std::function<std::string(const char* name)>;

/// Whether a block device is one that viewers see. Looks at the partition table entry (type and attributes
/// in ID_PART_ENTRY_...), the file system (ID_FS_...) and the administrator's word (UDISKS_IGNORE).
bool isForViewers(const UdevProperty& property);

}  // namespace machine
