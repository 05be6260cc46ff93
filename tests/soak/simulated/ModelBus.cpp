// The model's clients: who is registered, what each is sent, and the texts that it gets.
#include <algorithm>

#include "Model.h"

namespace soak {

void Model::addClient(const std::string& sender, int id) {
    for (Client& each : clients) {
        if (each.id == id) {
            each.sender = sender;
            return;
        }
    }
    clients.push_back({id, sender});
}

const Client* Model::client(int id) const {
    const auto found = std::find_if(clients.begin(), clients.end(),
                                    [&](const Client& each) { return each.id == id; });
    return found != clients.end() ? &*found : nullptr;
}

int Model::connect(const std::string& sender, int id) {
    addClient(sender, id);
    return id;
}

int Model::count(int fileSystem) const {
    switch (fileSystem) {
        case 0:
            return counters.fat;
        case 1:
            return counters.exFat;
        case 2:
            return counters.ext4;
        case 3:
            return counters.ntfs;
        case 6:
            return counters.cameras;
        default:
            return counters.fat + counters.exFat + counters.ext4 + counters.ntfs + counters.cameras;
    }
}

int Model::getDeviceCount(const std::string& sender, int id, int fileSystem) {
    addClient(sender, id);
    return count(fileSystem);
}

void Model::disConnect(int id) {
    clients.erase(std::remove_if(clients.begin(), clients.end(),
                                 [&](const Client& each) { return each.id == id; }),
                  clients.end());
}

const std::vector<RecordPtr>& Model::askedList() {
    if (list.empty()) {
        enumerate();
    }
    return list;
}

void Model::requestAll(const std::string& sender, int id) {
    addClient(sender, id);
    for (const RecordPtr& record : askedList()) {
        effects_.signals.push_back({sender, "mm_device_action", deviceJson(record.get(), 1)});
    }
}

void Model::getDeviceListByFsType(const std::string& sender, int id, int fileSystem) {
    addClient(sender, id);
    if (askedList().empty()) {
        effects_.signals.push_back({sender, "mm_device_get_list", deviceJson(nullptr, 4)});
    }
    int sent = 0;
    for (const RecordPtr& record : list) {
        if (fileSystem == -1 || record->fileSystem == fileSystem) {
            const int action = ++sent < count(fileSystem) ? 1 : 3;
            effects_.signals.push_back(
                {sender, "mm_device_get_list", deviceJson(record.get(), action)});
        }
    }
}

std::string quotedJson(const std::string& text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        if (letter == '"' || letter == '\\') {
            quoted += '\\';
        }
        quoted += letter;
    }
    return quoted + '"';
}

std::string deviceJson(const Record* record, int action) {
    std::string json = "{\"Action\":" + std::to_string(action);
    const auto number = [&](const char* key, int value) {
        json += "," + quotedJson(key) + ":" + std::to_string(value);
    };
    const auto text = [&](const char* key, const std::string& value) {
        json += "," + quotedJson(key) + ":" + quotedJson(value);
    };
    if (record != nullptr) {
        number("Class", record->usbClass);
        number("SubClass", record->subClass);
        number("Protocol", record->protocol);
        number("VendorId", record->productId);  // clients know the product's number by this name
        number("Bus", record->bus);
        number("Address", record->address);
        number("Number", record->number);
        number("TotalSize", record->totalSize);
        number("UsedSize", record->usedSize);
        text("Manufacturer", record->manufacturer);
        text("Product", record->product);
        text("DeviceName", record->devname);
        text("DevicePath", record->devpath);
        text("Mountpath", record->mountpath);
        number("FileSystem", record->fileSystem);
        text("Serial", record->serial);
        text("DisplayName", record->displayName);
        text("DeviceKey", record->key);
    }
    return json + "}";
}

}  // namespace soak
