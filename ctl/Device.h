// A device as the daemon tells of it, under names that say what they mean, and the ways to show it: as a
// row of a table, as JSON. How one asks for devices is not known here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Json.h"
#include "Table.h"

namespace ctl {

/// The daemon's number of a file system by the name that is typed for it: fat, exfat, ext4, ntfs.
/// @return -1 for any other name
int fileSystemNumber(const std::string& name);

/// The names that fileSystemNumber() knows, for help texts and errors.
const char* fileSystemNames();

/// What a signal of the daemon tells: the value of "Action".
enum class Action { Present = 1, Removed = 2, LastOfList = 3, NoDevice = 4 };

struct Device {
    std::string key;    ///< tells it from the others
    std::string node;   ///< device node
    std::string mount;  ///< folder of its files
    std::string name;   ///< for people
    std::string product;
    std::string manufacturer;
    std::string serial;
    std::string path;  ///< in the system's device tree
    int fileSystem = 0;
    std::uint64_t size = 0;  ///< bytes; 0: unknown
    std::uint64_t used = 0;  ///< bytes; means nothing when `size` is unknown
    int usbClass = 0;
    int subClass = 0;
    int protocol = 0;
    int productId = 0;
    int bus = 0;
    int address = 0;
    int number = 0;  ///< of the USB library

    bool isCamera() const;

    /// "fat", "exfat", "ext4", "ntfs", "camera", or "unknown".
    const char* kind() const;
};

/// News of a device.
struct DeviceNews {
    Action action = Action::NoDevice;
    Device device;  ///< empty for Action::NoDevice
};

/// Read the text of a signal; com.norvane.portmeld's interface description tells its members. Sizes
/// below 4 TiB are right, also those that the daemon sends as negative numbers.
/// Throws Failure for a text that tells of no device.
DeviceNews readNews(const std::string& text);

/// The columns of deviceCells().
std::vector<Column> deviceColumns();

/// What people want to know of a device at a glance; not yet printable.
std::vector<std::string> deviceCells(const Device& device);

/// Everything that is known of a device; sizes in bytes, null when they are unknown.
Json deviceJson(const Device& device);

}  // namespace ctl
