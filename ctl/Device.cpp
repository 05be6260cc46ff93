// The members of the daemon's JSON, misleading names included, read into a Device and written out again.
#include "Device.h"

#include <optional>

#include "Failure.h"

namespace ctl {

namespace {

struct FileSystemName {
    int number;
    const char* name;
};

constexpr FileSystemName FILE_SYSTEMS[] = {{0, "fat"}, {1, "exfat"}, {2, "ext4"}, {3, "ntfs"}};

/// USB class of cameras, "still image".
constexpr int CAMERA_CLASS = 6;

int intMember(const Json& object, const char* name) {
    return static_cast<int>(numberMember(object, name));
}

/// The daemon counts units of 1024 bytes and sends the lower 32 bits of that as a signed number.
std::uint64_t bytesMember(const Json& object, const char* name) {
    return std::uint64_t{static_cast<std::uint32_t>(numberMember(object, name))} * 1024;
}

/// The name to show: the product, with a number where several are equal. Before the bracket that ends
/// the number stands a mark for screens that write from right to left, as HTML writes it.
std::string displayName(const Json& object) {
    std::string name = textMember(object, "DisplayName");
    const std::string mark = "&#x202d;)";
    if (name.size() >= mark.size() &&
        name.compare(name.size() - mark.size(), mark.size(), mark) == 0) {
        name.replace(name.size() - mark.size(), mark.size(), ")");
    }
    return name.empty() ? textMember(object, "Product") : name;
}

std::optional<std::int64_t> knownSize(const Device& device, std::uint64_t bytes) {
    return device.size != 0 ? std::optional(static_cast<std::int64_t>(bytes)) : std::nullopt;
}

}  // namespace

int fileSystemNumber(const std::string& name) {
    for (const FileSystemName& each : FILE_SYSTEMS) {
        if (name == each.name) {
            return each.number;
        }
    }
    return -1;
}

const char* fileSystemNames() {
    return "fat, exfat, ext4 or ntfs";
}

bool Device::isCamera() const {
    return usbClass == CAMERA_CLASS;
}

const char* Device::kind() const {
    if (isCamera()) {
        return "camera";
    }
    for (const FileSystemName& each : FILE_SYSTEMS) {
        if (fileSystem == each.number) {
            return each.name;
        }
    }
    return "unknown";
}

DeviceNews readNews(const std::string& text) {
    const Json object = parsedObject(text);
    const std::int64_t action = object != nullptr ? numberMember(object, "Action") : 0;
    if (action < 1 || action > 4) {
        throw Failure(Status::Failed, "the daemon sent what tells of no device: " + text);
    }
    DeviceNews news;
    news.action = static_cast<Action>(action);
    Device& device = news.device;
    device.key = textMember(object, "DeviceKey");
    device.node = textMember(object, "DeviceName");
    device.mount = textMember(object, "Mountpath");
    device.name = displayName(object);
    device.product = textMember(object, "Product");
    device.manufacturer = textMember(object, "Manufacturer");
    device.serial = textMember(object, "Serial");
    device.path = textMember(object, "DevicePath");
    device.fileSystem = intMember(object, "FileSystem");
    device.size = bytesMember(object, "TotalSize");
    device.used = bytesMember(object, "UsedSize");
    device.usbClass = intMember(object, "Class");
    device.subClass = intMember(object, "SubClass");
    device.protocol = intMember(object, "Protocol");
    device.productId = intMember(object, "VendorId");
    device.bus = intMember(object, "Bus");
    device.address = intMember(object, "Address");
    device.number = intMember(object, "Number");
    return news;
}

std::vector<Column> deviceColumns() {
    return {{"DEVICE"}, {"TYPE"}, {"SIZE", true}, {"USED", true}, {"NAME"}, {"MOUNT"}};
}

std::vector<std::string> deviceCells(const Device& device) {
    const bool known = device.size != 0;
    return {device.node.empty() ? device.key : device.node,
            device.kind(),
            known ? humanSize(device.size) : "",
            known ? humanSize(device.used) : "",
            device.name,
            device.mount};
}

Json deviceJson(const Device& device) {
    return JsonMembers()
        .with("key", jsonString(device.key))
        .with("type", jsonString(device.kind()))
        .with("node", jsonString(device.node))
        .with("mount", jsonString(device.mount))
        .with("size", jsonNumber(knownSize(device, device.size)))
        .with("used", jsonNumber(knownSize(device, device.used)))
        .with("name", jsonString(device.name))
        .with("manufacturer", jsonString(device.manufacturer))
        .with("product", jsonString(device.product))
        .with("serial", jsonString(device.serial))
        .with("productId", jsonNumber(device.productId))
        .with("class", jsonNumber(device.usbClass))
        .with("subClass", jsonNumber(device.subClass))
        .with("protocol", jsonNumber(device.protocol))
        .with("bus", jsonNumber(device.bus))
        .with("address", jsonNumber(device.address))
        .with("number", jsonNumber(device.number))
        .with("path", jsonString(device.path))
        .done();
}

}  // namespace ctl
