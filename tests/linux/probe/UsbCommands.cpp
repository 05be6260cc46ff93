// What a test can ask of the USB library. Texts of a device are any bytes: they are printed
// percent-encoded.
#include <glib.h>

#include <platform/usb.h>

#include "Probe.h"

namespace {

Json bytes(const char* value) {
    if (value == nullptr) {
        return nothing();
    }
    g_autofree char* encoded = g_uri_escape_string(value, " /:;,()[]", FALSE);
    return text(std::string(encoded));
}

Json described(usb_device_s* device) {
    return JsonMembers()
        .with("class", number(usb_device_get_class(device)))
        .with("subClass", number(usb_device_get_sub_class(device)))
        .with("protocol", number(usb_device_get_protocol(device)))
        .with("vendorId", number(usb_device_get_vendor_id(device)))
        .with("productId", number(usb_device_get_product_id(device)))
        .with("bus", number(usb_device_get_bus(device)))
        .with("address", number(usb_device_get_address(device)))
        .with("number", number(usb_device_get_number(device)))
        .with("manufacturer", bytes(usb_device_get_manufacturer(device)))
        .with("product", bytes(usb_device_get_product(device)))
        .with("devname", bytes(usb_device_get_devname(device)))
        .with("devpath", bytes(usb_device_get_devpath(device)))
        .with("mountpath", bytes(usb_device_get_mountpath(device)))
        .with("serial", bytes(usb_device_get_serial(device)))
        .with("label", bytes(usb_device_get_partlabel(device)))
        .with("fileSystem", number(usb_mass_storage_get_filesystem_type(device)))
        .with("disk", number(usb_mass_storage_get_disk_type(device)))
        .done();
}

void onEvent(usb_device_s* device, char* action, void*) {
    JsonMembers members;
    members.with("action", text(std::string(action))).with("device", described(device));
    free_usb_device_h(device);
    printEvent("usb", members);
}

bool onStep(usb_device_s* device, void*) {
    JsonMembers members;
    members.with("device", described(device));
    free_usb_device_h(device);
    printEvent("step", members);
    return true;
}

bool onOnlyStep(usb_device_s* device, void*) {
    (void)onStep(device, nullptr);
    return false;
}

Json listed(int usbClass) {
    usb_device_list_s* list = nullptr;
    if (usb_device_get_device_list(usbClass, &list) != 0) {
        return nothing();
    }
    std::vector<usb_device_s*> devices;
    usb_device_s* device = nullptr;
    for (int rest = usb_device_list_get_first(list, &device); rest == 0;
         rest = usb_device_list_get_next(list, &device)) {
        devices.push_back(device);
    }
    Json result = ::list(devices, described);
    (void)usb_device_free_device_list(list);
    return result;
}

}  // namespace

ProbeCommands usbCommands() {
    return {
        {"usb_device_init", 0, 0, [](const Words&) { return number(usb_device_init()); }},
        {"usb_device_fini", 0, 0, [](const Words&) { return number(usb_device_fini()); }},
        {"usb_set_connected_cb", 0, 0,
         [](const Words&) { return number(usb_set_connected_cb(onEvent, nullptr)); }},
        {"usb_unset_connected_cb", 0, 0,
         [](const Words&) { return number(usb_unset_connected_cb()); }},
        {"devices", 1, 1,  // CLASS -> the enumeration, or null when it failed
         [](const Words& words) { return listed(integer(words[1])); }},
        {"usb_mass_storage_foreach", 0, 0,
         [](const Words&) { return number(usb_mass_storage_foreach(onStep, nullptr)); }},
        {"foreach_until_first", 0, 0,
         [](const Words&) { return number(usb_mass_storage_foreach(onOnlyStep, nullptr)); }},
    };
}
