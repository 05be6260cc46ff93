// Reading sysfs attributes (Documentation/ABI/testing/sysfs-bus-usb) and udev properties (usb_id, blkid).
#include "UsbIdentity.h"

#include <charconv>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>

#include "PartitionRules.h"
#include "UdevText.h"

namespace machine {

namespace {

struct Unref {
    void operator()(GUdevDevice* device) const { g_object_unref(device); }
};
using Owned = std::unique_ptr<GUdevDevice, Unref>;

constexpr int PTP_SUB_CLASS = 1;
constexpr int PTP_PROTOCOL = 1;

std::optional<std::string> attribute(GUdevDevice* device, const char* name) {
    const char* value = g_udev_device_get_sysfs_attr(device, name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::string property(GUdevDevice* device, const char* name) {
    const char* value = g_udev_device_get_property(device, name);
    return value != nullptr ? value : "";
}

/// The number at the start of a text; 0 for what is none.
int number(std::string_view text, int base) {
    int value = 0;
    (void)std::from_chars(text.data(), text.data() + text.size(), value, base);
    return value;
}

void readInterface(GUdevDevice* interface, UsbDevice& device) {
    device.usbClass = number(attribute(interface, "bInterfaceClass").value_or(""), 16);
    device.subClass = number(attribute(interface, "bInterfaceSubClass").value_or(""), 16);
    device.protocol = number(attribute(interface, "bInterfaceProtocol").value_or(""), 16);
}

void readUsbDevice(GUdevDevice* usb, UsbDevice& device) {
    // The numbers stand in the "uevent" file that udev has read already: four files less to be opened
    // while a viewer waits. PRODUCT is "VENDOR/PRODUCT/RELEASE" in hexadecimal digits.
    const std::string product = property(usb, "PRODUCT");
    device.vendorId = number(product, 16);
    device.productId = number(std::string_view(product).substr(product.find('/') + 1), 16);
    device.bus = number(property(usb, "BUSNUM"), 10);
    device.address = number(property(usb, "DEVNUM"), 10);
    device.manufacturer = attribute(usb, "manufacturer");
    device.product = attribute(usb, "product");
    device.serial = attribute(usb, "serial");
    device.port = g_udev_device_get_name(usb);
}

Owned parent(GUdevDevice* device, const char* type) {
    return Owned(g_udev_device_get_parent_with_subsystem(device, "usb", type));
}

int diskType(const std::string& bus, bool ata) {
    if (ata || bus == "ata") {
        return USB_DISK_ATA;  // a disk that answers ATA commands through its bridge
    }
    return bus == "usb" ? USB_DISK_USB : USB_DISK_UNKNOWN;
}

int fileSystemType(const std::string& name) {
    if (name == "vfat") {
        return USB_FILESYSTEM_FAT;
    }
    if (name == "exfat") {
        return USB_FILESYSTEM_EXFAT;
    }
    if (name == "ext2" || name == "ext3" || name == "ext4") {
        return USB_FILESYSTEM_EXT4;
    }
    return name == "ntfs" ? USB_FILESYSTEM_NTFS : USB_FILESYSTEM_UNKNOWN;
}

std::optional<std::string> label(GUdevDevice* block) {
    // The plain forms have blanks and other characters replaced.
    for (const char* name : {"ID_FS_LABEL_ENC", "ID_PART_ENTRY_NAME"}) {
        const std::string text = decodeUdev(property(block, name));
        if (!text.empty()) {
            return text;
        }
    }
    return std::nullopt;
}

/// What a stick without a product string is called: what its disk says of itself.
std::optional<std::string> inquiryName(GUdevDevice* block) {
    std::string text = decodeUdev(property(block, "ID_MODEL_ENC"));
    text.erase(text.find_last_not_of(' ') + 1);
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

}  // namespace

bool sameDevice(const UsbDevice& one, const UsbDevice& other) {
    const auto identity = [](const UsbDevice& device) {
        return std::tie(device.usbClass, device.subClass, device.protocol, device.vendorId,
                        device.productId, device.number, device.fileSystem, device.disk,
                        device.manufacturer, device.product, device.devname, device.serial,
                        device.label, device.port, device.uuid, device.fileSystemName);
    };
    return identity(one) == identity(other);
}

std::optional<UsbDevice> massStorage(GUdevDevice* block) {
    const Owned interface = parent(block, "usb_interface");
    const Owned usb = parent(block, "usb_device");
    if (interface == nullptr || usb == nullptr) {
        return std::nullopt;
    }
    UsbDevice device;
    readInterface(interface.get(), device);
    const char* const devname = g_udev_device_get_device_file(block);
    const std::string bus = property(block, "ID_BUS");
    if (device.usbClass != USB_CLASS_MASS_STORAGE || devname == nullptr || bus.empty()) {
        return std::nullopt;
    }
    if (!isForViewers([&](const char* name) { return property(block, name); })) {
        return std::nullopt;
    }
    readUsbDevice(usb.get(), device);
    if (!device.product) {
        device.product = inquiryName(block);
    }
    device.devname = devname;
    device.devpath = property(block, "DEVPATH");
    device.number = g_udev_device_get_property_as_int(block, "PARTN");
    device.deviceNumber = property(block, "MAJOR") + ":" + property(block, "MINOR");
    device.fileSystemName = property(block, "ID_FS_TYPE");
    device.fileSystem = fileSystemType(device.fileSystemName);
    device.mountable = property(block, "ID_FS_USAGE") == "filesystem";
    device.disk = diskType(bus, property(block, "ID_ATA") == "1");
    device.label = label(block);
    device.uuid = property(block, "ID_FS_UUID_ENC");
    return device;
}

std::optional<UsbDevice> camera(GUdevDevice* interface) {
    UsbDevice device;
    readInterface(interface, device);
    const Owned usb = parent(interface, "usb_device");
    if (usb == nullptr || device.usbClass != USB_CLASS_STILL_IMAGE ||
        device.subClass != PTP_SUB_CLASS || device.protocol != PTP_PROTOCOL) {
        return std::nullopt;
    }
    // All interfaces of the device, ":CCSSPP:CCSSPP:": those that the kernel is still about to announce
    // are among them. Without it udev has not identified the device yet.
    const std::string interfaces = property(usb.get(), "ID_USB_INTERFACES");
    if (interfaces.empty() || interfaces.find(":07") != std::string::npos) {
        return std::nullopt;
    }
    readUsbDevice(usb.get(), device);
    if (const char* const node = g_udev_device_get_device_file(usb.get())) {
        device.devname = node;
    }
    device.devpath = property(interface, "DEVPATH");
    return device;
}

}  // namespace machine
