// What is behind the opaque handles of the USB library. Only for Ports.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "Ports.h"

/// A device as it was when the handle was given out.
struct usb_device_s {
    simulated::UsbDevice device;
};

/// One enumeration with the handles that belong to it.
struct usb_device_list_s {
    std::vector<std::unique_ptr<usb_device_s>> handles;
    std::size_t next = 0;
};
