// What is known of one attached device: a snapshot of its identity and of where it is mounted.
#pragma once

#include <optional>
#include <string>

#include <platform/usb.h>

namespace machine {

/// One partition, one unpartitioned file system, or one camera. Texts are the device's own bytes;
/// nothing where it has none.
struct UsbDevice {
    int usbClass = 0;  ///< of the interface, as are the next two
    int subClass = 0;
    int protocol = 0;
    int vendorId = 0;
    int productId = 0;
    int bus = 0;
    int address = 0;
    int number = 0;  ///< of the partition, counted from 1; 0 for a whole disk and a camera
    int fileSystem = USB_FILESYSTEM_UNKNOWN;
    int disk = USB_DISK_UNKNOWN;
    std::optional<std::string> manufacturer;
    std::optional<std::string> product;
    std::optional<std::string> devname;
    std::string devpath;  ///< as the kernel calls it: DEVPATH, the path below /sys
    std::optional<std::string> mountpath;
    std::optional<std::string> serial;
    std::optional<std::string> label;

    // Not told to anybody; what tells a device that comes back from another one in its place.
    std::string port;            ///< name of the USB device by its port, such as "2-1.4"
    std::string deviceNumber;    ///< "MAJOR:MINOR" of the block device
    std::string uuid;            ///< of the file system
    std::string fileSystemName;  ///< as blkid calls it, "" for none
    bool mountable = false;  ///< holds a file system, not a part of a RAID, swap or a locked volume
};

/// Whether both are the same thing, in the same place under the same name: only then can one stand for
/// the other. The kernel's numbering of hosts, addresses and mount points does not matter.
bool sameDevice(const UsbDevice& one, const UsbDevice& other);

}  // namespace machine
