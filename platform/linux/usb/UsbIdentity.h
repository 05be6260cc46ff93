// Who a device is, from sysfs and the udev database alone: no device node is ever opened, so that no
// disk is woken and no camera is taken from the application that wants it.
#pragma once

#include <optional>

#include <gudev/gudev.h>

#include "UsbDevice.h"

namespace machine {

/// The mass-storage device that a block device stands for: a partition, or an unpartitioned disk that
/// holds a file system, on a USB interface of class 8. Nothing for all else: other buses, empty slots,
/// disks with a partition table, partitions that are nobody's to see, and devices that udev has not
/// identified yet.
std::optional<UsbDevice> massStorage(GUdevDevice* block);

/// The camera that a USB interface stands for: a still image interface (PTP, 06/01/01) without a printer
/// interface beside it, which marks printers and phones in another mode. Nothing for all else.
std::optional<UsbDevice> camera(GUdevDevice* interface);

}  // namespace machine
