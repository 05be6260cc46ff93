// USB ports that hold as many sticks as are wanted, in place of the Linux machine's; see Ports.h. A handle
// is the device itself: nothing is made or freed, so that what is counted is the daemon's own.
#include "Ports.h"

#include <string>
#include <vector>

#include <platform/usb.h>

struct usb_device_s {
    int number;
    std::string product;
    std::string devname;
    std::string devpath;
    std::string mountpath;
    std::string serial;
};

struct usb_device_list_s {
    std::size_t next;
};

namespace {

std::vector<usb_device_s>& devices() {
    static std::vector<usb_device_s> all;
    return all;
}

usb_connected_callback_fn listener = nullptr;
void* listenerData = nullptr;

int step(usb_device_list_s* list, usb_device_s** device) {
    if (list->next >= devices().size()) {
        return -1;
    }
    *device = &devices()[list->next++];
    return 0;
}

}  // namespace

void plugSticks(int count, int products) {
    devices().clear();
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        devices().push_back({i, "Flash Disk " + std::to_string(i % products), "/dev/sd" + number,
                             "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-" + number,
                             "/media/stick" + number, "04018bd3f34f4b85" + number});
    }
}

bool pullLastStick() {
    if (listener == nullptr) {
        return false;
    }
    static char removed[] = USB_ACTION_REMOVED;
    listener(&devices().back(), removed, listenerData);
    return true;
}

extern "C" {

int usb_device_init(void) {
    return 0;
}
int usb_device_fini(void) {
    return 0;
}
int usb_set_connected_cb(usb_connected_callback_fn cb, void* user_data) {
    listener = cb;
    listenerData = user_data;
    return 0;
}
int usb_unset_connected_cb(void) {
    listener = nullptr;
    return 0;
}

int usb_device_get_device_list(int usb_class, usb_device_list_s** list) {
    static usb_device_list_s only;
    only.next = usb_class == USB_CLASS_MASS_STORAGE ? 0 : devices().size();
    *list = &only;
    return 0;
}
int usb_device_list_get_first(usb_device_list_s* list, usb_device_s** device) {
    return step(list, device);
}
int usb_device_list_get_next(usb_device_list_s* list, usb_device_s** device) {
    return step(list, device);
}
int usb_device_free_device_list(usb_device_list_s*) {
    return 0;
}

int usb_device_get_class(usb_device_s*) {
    return USB_CLASS_MASS_STORAGE;
}
int usb_device_get_sub_class(usb_device_s*) {
    return 6;
}
int usb_device_get_protocol(usb_device_s*) {
    return 80;
}
int usb_device_get_vendor_id(usb_device_s*) {
    return 0x1234;
}
int usb_device_get_product_id(usb_device_s*) {
    return 0x5678;
}
int usb_device_get_bus(usb_device_s*) {
    return 1;
}
int usb_device_get_address(usb_device_s* device) {
    return device->number;
}
int usb_device_get_number(usb_device_s* device) {
    return device->number;
}

const char* usb_device_get_manufacturer(usb_device_s*) {
    return "Norvane";
}
const char* usb_device_get_product(usb_device_s* device) {
    return device->product.c_str();
}
const char* usb_device_get_devname(usb_device_s* device) {
    return device->devname.c_str();
}
const char* usb_device_get_devpath(usb_device_s* device) {
    return device->devpath.c_str();
}
const char* usb_device_get_mountpath(usb_device_s* device) {
    return device->mountpath.c_str();
}
const char* usb_device_get_serial(usb_device_s* device) {
    return device->serial.c_str();
}
const char* usb_device_get_partlabel(usb_device_s*) {
    return "STICK";
}
int usb_mass_storage_get_filesystem_type(usb_device_s*) {
    return USB_FILESYSTEM_FAT;
}
int usb_mass_storage_get_disk_type(usb_device_s*) {
    return USB_DISK_USB;
}
int usb_mass_storage_foreach(usb_foreach_callback_fn, void*) {
    return 0;
}
void free_usb_device_h(usb_device_s*) {}

}  // extern "C"
