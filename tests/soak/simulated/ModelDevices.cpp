// The model's devices: their records, the list with its counters, and what the events of the ports do.
#include <algorithm>
#include <cstdint>

#include "Model.h"

namespace soak {

using simulated::UsbDevice;

namespace {

constexpr int STORAGE = 8;
constexpr int CAMERA = 6;
constexpr int UNKNOWN = 99;

std::string text(const std::optional<std::string>& value) {
    return value.value_or("");
}

/// The counter of a file system; null for one that is not counted.
int* counterOf(Counters& counters, int fileSystem) {
    switch (fileSystem) {
        case 0:
            return &counters.fat;
        case 1:
            return &counters.exFat;
        case 2:
            return &counters.ext4;
        case 3:
            return &counters.ntfs;
        default:
            return nullptr;
    }
}

}  // namespace

std::string Model::keyOf(const UsbDevice& device) {
    return device.usbClass == STORAGE  ? text(device.devname)
           : device.usbClass == CAMERA ? text(device.serial)
                                       : "";
}

RecordPtr Model::find(const std::string& key) const {
    for (const RecordPtr& record : list) {
        if (record->key == key) {
            return record;
        }
    }
    return nullptr;
}

void Model::measure(Record& record) const {
    const auto folder = world_.folders.find(record.mountpath);
    if (folder == world_.folders.end()) {
        record.totalSize = record.usedSize = 0;
        return;
    }
    const std::int64_t total = folder->second.blockSize * folder->second.blocks / 1024;
    const std::int64_t free = folder->second.blockSize * folder->second.freeBlocks / 1024;
    record.totalSize = static_cast<std::int32_t>(total);
    record.usedSize = static_cast<std::int32_t>(total - free);
}

void Model::settleName(Record& record) {
    std::vector<int> used;
    for (const RecordPtr& other : list) {
        if (other->product == record.product && other->key != record.key) {
            used.push_back(other->index);
        }
    }
    record.displayName = record.noticeName = record.product;
    if (used.empty()) {
        return;
    }
    const auto isUsed = [&](int index) {
        return std::find(used.begin(), used.end(), index) != used.end();
    };
    int index = 0;
    while (isUsed(index)) {
        index = index == 0 ? 2 : index + 1;  // nobody is called the first
    }
    if (index > 0) {
        record.index = index;
        record.displayName += "(" + std::to_string(index) + "&#x202d;)";
    }
}

void Model::fill(Record& record, const UsbDevice& device) {
    record.usbClass = device.usbClass;
    record.subClass = device.subClass;
    record.protocol = device.protocol;
    record.vendorId = device.vendorId;
    record.productId = device.productId;
    record.bus = device.bus;
    record.address = device.address;
    record.number = device.number;
    record.fileSystem = device.fileSystem;
    record.damaged = record.damaged || (device.fileSystem == UNKNOWN && device.usbClass == STORAGE);
    record.manufacturer = text(device.manufacturer);
    record.product = text(device.product);
    record.devname = text(device.devname);
    record.devpath = text(device.devpath);
    record.mountpath = text(device.mountpath);
    record.serial = text(device.serial);
    record.diskType = device.disk == 0 || device.disk == 1 ? device.disk : 2;
    record.partlabel = text(device.partlabel);
    measure(record);
    record.key = keyOf(device);
    settleName(record);
}

bool Model::insert(const RecordPtr& record) {
    if (find(record->key) != nullptr) {
        return false;
    }
    if (int* counter = counterOf(counters, record->fileSystem)) {
        ++*counter;
    }
    if (record->usbClass == CAMERA) {
        ++counters.cameras;
    }
    list.insert(list.begin(), record);
    return true;
}

RecordPtr Model::add(const UsbDevice& device) {
    RecordPtr record = find(keyOf(device));
    if (record != nullptr) {
        fill(*record, device);
        return record;
    }
    record = std::make_shared<Record>();
    fill(*record, device);
    insert(record);
    return record;
}

void Model::enumerate() {
    for (const int usbClass : {STORAGE, CAMERA}) {
        if (std::exchange(world_.listFails, false)) {
            continue;
        }
        for (const auto& [id, device] : world_.ports) {
            if (device.usbClass == usbClass) {
                settleName(*add(device));
            }
        }
    }
}

void Model::usbEvent(const UsbDevice& device, const std::string& action) {
    if (device.usbClass != STORAGE && device.usbClass != CAMERA) {
        return;
    }
    if (device.usbClass == STORAGE && device.disk == UNKNOWN) {
        return;
    }
    if (action == "removed") {
        disconnected(device);
    }
    if (action != "added" && action != "mounted") {
        return;
    }
    if (list.empty()) {
        enumerate();
    }
    if (device.usbClass == CAMERA) {
        if (action == "added") {
            connected(device);
        }
    } else if (action == "added") {
        add(device)->announced = true;
    } else if (const RecordPtr record = find(keyOf(device)); record && record->announced) {
        record->announced = false;
        connected(device);
    }
}

void Model::connected(const UsbDevice& device) {
    const RecordPtr record = add(device);
    const std::size_t listed = list.size();
    if (shop() && holdsDemo(record->mountpath)) {
        if (activated) {
            launchDemo(record->mountpath + "/DEMO_LED.tp", true);
        }
        return;
    }
    if (!activated) {
        return;
    }
    scan_.reset();
    current = record;
    popupKind = 1;
    offer();
    // A disk of several partitions is never found here: keys are unique, and so the one listed record
    // with the key of the current one is that one itself.
    if (record->usbClass != CAMERA && listed == 1) {
        scannedEver = true;
        effects_.scans.push_back(record->mountpath);
        scan_ = record->mountpath;
    }
}

void Model::disconnected(const UsbDevice& device) {
    const RecordPtr record = find(keyOf(device));
    if (record == nullptr) {
        tellRemoval(text(device.product), device.usbClass);
        return;
    }
    if (runs("org.norvane.lumet")) {
        tellCompanion(record, 2);
    } else {
        tellRemoval(record->noticeName, device.usbClass);
    }
    for (const Client& each : clients) {
        effects_.signals.push_back({each.sender, "mm_device_action", deviceJson(record.get(), 2)});
    }
    unlink(record);
    destroy(record);
}

void Model::unlink(const RecordPtr& record) {
    int* const counter = counterOf(counters, record->fileSystem);
    if (counter != nullptr && *counter > 0) {
        --*counter;
    }
    if (record->usbClass == CAMERA) {
        --counters.cameras;  // without a floor, unlike the others
    }
    list.erase(std::remove(list.begin(), list.end(), record), list.end());
}

/// What is displayed stays so: the same stick must be recognised when it comes again.
void Model::destroy(const RecordPtr& record) {
    if (current == record) {
        current = nullptr;
    }
}

}  // namespace soak
