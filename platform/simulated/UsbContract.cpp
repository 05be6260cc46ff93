// The functions of <platform/usb.h>: journal and faults. What they mean is in Ports.
#include "ContractCall.h"

using simulated::contractCall;
using simulated::journalHandle;
using simulated::SimulatedTv;
using simulated::UsbDevice;

namespace {

/// The device behind a handle; null when the call is to fail or the handle is not alive.
const UsbDevice* property(const char* function, usb_device_s* handle) {
    SimulatedTv& tv = SimulatedTv::current();
    const bool fails = tv.enter(function, tv.ports().nameOf(handle));
    return fails ? nullptr : tv.ports().read(function, handle);
}

int number(const char* function, usb_device_s* handle, int UsbDevice::*member) {
    const UsbDevice* device = property(function, handle);
    return device != nullptr ? device->*member : simulated::CALL_FAILED;
}

const char* text(const char* function,
                 usb_device_s* handle,
                 std::optional<std::string> UsbDevice::*member) {
    const UsbDevice* device = property(function, handle);
    return device != nullptr && (device->*member) ? (device->*member)->c_str() : nullptr;
}

}  // namespace

extern "C" {

int usb_device_init(void) {
    return contractCall(__func__, "", [](SimulatedTv& tv) { return tv.ports().init(); });
}

int usb_device_fini(void) {
    return contractCall(__func__, "", [](SimulatedTv& tv) { return tv.ports().fini(); });
}

int usb_set_connected_cb(usb_connected_callback_fn cb, void* user_data) {
    return contractCall(__func__, "",
                        [&](SimulatedTv& tv) { return tv.ports().setCallback(cb, user_data); });
}

int usb_unset_connected_cb(void) {
    return contractCall(__func__, "", [](SimulatedTv& tv) { return tv.ports().unsetCallback(); });
}

int usb_device_get_device_list(int usb_class, usb_device_list_s** list) {
    return contractCall(__func__, std::to_string(usb_class),
                        [&](SimulatedTv& tv) { return tv.ports().list(usb_class, list); });
}

int usb_device_list_get_first(usb_device_list_s* list, usb_device_s** device) {
    return contractCall(__func__, journalHandle(list),
                        [&](SimulatedTv& tv) { return tv.ports().listFirst(list, device); });
}

int usb_device_list_get_next(usb_device_list_s* list, usb_device_s** device) {
    return contractCall(__func__, journalHandle(list),
                        [&](SimulatedTv& tv) { return tv.ports().listNext(list, device); });
}

int usb_device_free_device_list(usb_device_list_s* list) {
    SimulatedTv& tv = SimulatedTv::current();
    const bool fails = tv.enter(__func__, journalHandle(list));
    const int result = tv.ports().listFree(list);
    return fails ? simulated::CALL_FAILED : result;
}

int usb_device_get_class(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::usbClass);
}

int usb_device_get_sub_class(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::subClass);
}

int usb_device_get_protocol(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::protocol);
}

int usb_device_get_vendor_id(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::vendorId);
}

int usb_device_get_product_id(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::productId);
}

int usb_device_get_bus(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::bus);
}

int usb_device_get_address(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::address);
}

int usb_device_get_number(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::number);
}

const char* usb_device_get_manufacturer(usb_device_s* device) {
    return text(__func__, device, &UsbDevice::manufacturer);
}

const char* usb_device_get_product(usb_device_s* device) {
    return text(__func__, device, &UsbDevice::product);
}

const char* usb_device_get_devname(usb_device_s* device) {
    return text(__func__, device, &UsbDevice::devname);
}

const char* usb_device_get_devpath(usb_device_s* device) {
    return text(__func__, device, &UsbDevice::devpath);
}

const char* usb_device_get_mountpath(usb_device_s* device) {
    return text(__func__, device, &UsbDevice::mountpath);
}

const char* usb_device_get_serial(usb_device_s* device) {
    return text(__func__, device, &UsbDevice::serial);
}

const char* usb_device_get_partlabel(usb_device_s* device) {
    return text(__func__, device, &UsbDevice::partlabel);
}

int usb_mass_storage_get_filesystem_type(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::fileSystem);
}

int usb_mass_storage_get_disk_type(usb_device_s* device) {
    return number(__func__, device, &UsbDevice::disk);
}

int usb_mass_storage_foreach(usb_foreach_callback_fn cb, void* user_data) {
    return contractCall(__func__, "",
                        [&](SimulatedTv& tv) { return tv.ports().forEach(cb, user_data); });
}

void free_usb_device_h(usb_device_s* device) {
    SimulatedTv& tv = SimulatedTv::current();
    (void)tv.enter(__func__, tv.ports().nameOf(device));
    tv.ports().free(device);
}

}  // extern "C"
