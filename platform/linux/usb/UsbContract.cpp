// The functions of <platform/usb.h>: handles, lists and the one callback. What is behind them is Ports.
#include <memory>
#include <vector>

#include <platform/usb.h>

#include "../Power.h"
#include "Ports.h"

/// One device, as it was when the handle was given out.
struct usb_device_s {
    machine::UsbDevice device;
};

struct usb_device_list_s {
    std::vector<usb_device_s> handles;
    std::size_t next = 0;
};

namespace {

using machine::Ports;
using machine::UsbDevice;

constexpr int OK = 0;
constexpr int ERROR = -1;

/// What is there from usb_device_init() to usb_device_fini().
struct Library {
    Ports ports;
    unsigned sleep = machine::onSleep([this](bool sleeps) { ports.sleep(sleeps); });

    Library() = default;
    ~Library() { machine::forgetSleep(sleep); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

std::unique_ptr<Library>& library() {
    static std::unique_ptr<Library> instance;
    return instance;
}

Ports* ports() {
    return library() != nullptr ? &library()->ports : nullptr;
}

const char* text(const std::optional<std::string>& value) {
    return value ? value->c_str() : nullptr;
}

int step(usb_device_list_s* list, usb_device_s** device) {
    if (list == nullptr || device == nullptr || list->next >= list->handles.size()) {
        return ERROR;
    }
    *device = &list->handles[list->next++];
    return OK;
}

}  // namespace

extern "C" {

int usb_device_init(void) {
    if (library() == nullptr) {
        library() = std::make_unique<Library>();
    }
    return OK;
}

int usb_device_fini(void) {
    library().reset();
    return OK;
}

int usb_set_connected_cb(usb_connected_callback_fn cb, void* user_data) {
    if (ports() == nullptr || cb == nullptr) {
        return ERROR;
    }
    ports()->setListener([cb, user_data](const UsbDevice& device, const char* action) {
        std::string word = action;
        cb(new usb_device_s{device}, word.data(), user_data);
    });
    return OK;
}

int usb_unset_connected_cb(void) {
    if (ports() != nullptr) {
        ports()->setListener(nullptr);
    }
    return OK;
}

int usb_device_get_device_list(int usb_class, usb_device_list_s** list) {
    if (ports() == nullptr || list == nullptr) {
        return ERROR;
    }
    auto made = std::make_unique<usb_device_list_s>();
    for (UsbDevice& device : ports()->devices(usb_class)) {
        made->handles.push_back({std::move(device)});
    }
    *list = made.release();
    return OK;
}

int usb_device_list_get_first(usb_device_list_s* list, usb_device_s** device) {
    if (list != nullptr) {
        list->next = 0;
    }
    return step(list, device);
}

int usb_device_list_get_next(usb_device_list_s* list, usb_device_s** device) {
    return step(list, device);
}

int usb_device_free_device_list(usb_device_list_s* list) {
    delete list;
    return OK;
}

int usb_device_get_class(usb_device_s* device) {
    return device->device.usbClass;
}

int usb_device_get_sub_class(usb_device_s* device) {
    return device->device.subClass;
}

int usb_device_get_protocol(usb_device_s* device) {
    return device->device.protocol;
}

int usb_device_get_vendor_id(usb_device_s* device) {
    return device->device.vendorId;
}

int usb_device_get_product_id(usb_device_s* device) {
    return device->device.productId;
}

int usb_device_get_bus(usb_device_s* device) {
    return device->device.bus;
}

int usb_device_get_address(usb_device_s* device) {
    return device->device.address;
}

int usb_device_get_number(usb_device_s* device) {
    return device->device.number;
}

const char* usb_device_get_manufacturer(usb_device_s* device) {
    return text(device->device.manufacturer);
}

const char* usb_device_get_product(usb_device_s* device) {
    return text(device->device.product);
}

const char* usb_device_get_devname(usb_device_s* device) {
    return text(device->device.devname);
}

const char* usb_device_get_devpath(usb_device_s* device) {
    return device->device.devpath.c_str();
}

const char* usb_device_get_mountpath(usb_device_s* device) {
    return text(device->device.mountpath);
}

const char* usb_device_get_serial(usb_device_s* device) {
    return text(device->device.serial);
}

const char* usb_device_get_partlabel(usb_device_s* device) {
    return text(device->device.label);
}

int usb_mass_storage_get_filesystem_type(usb_device_s* device) {
    return device->device.fileSystem;
}

int usb_mass_storage_get_disk_type(usb_device_s* device) {
    return device->device.disk;
}

int usb_mass_storage_foreach(usb_foreach_callback_fn cb, void* user_data) {
    if (ports() == nullptr || cb == nullptr) {
        return ERROR;
    }
    for (UsbDevice& device : ports()->devices(USB_CLASS_MASS_STORAGE)) {
        if (!cb(new usb_device_s{std::move(device)}, user_data)) {
            break;
        }
    }
    return OK;
}

void free_usb_device_h(usb_device_s* device) {
    delete device;
}

}  // extern "C"
