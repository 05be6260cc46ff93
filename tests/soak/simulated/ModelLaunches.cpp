// The model's launches: players, content browser, companion application and demonstrations. All share one
// launch request, in which what was added once stays.
#include "Model.h"

namespace soak {

namespace {

std::string member(const char* key, const std::string& text) {
    return quotedJson(key) + ":" + quotedJson(text);
}

}  // namespace

void Model::launch(const std::string& appId) {
    if (std::exchange(world_.launchFails, false)) {
        return;
    }
    effects_.launches.push_back({appId, extraData_});
    if (!appId.empty()) {
        world_.running.insert(appId);
    }
}

void Model::tellCompanion(const RecordPtr& record, int action) {
    if (record == nullptr) {
        return;
    }
    if (action == 1 ? !activated || distracting() : !runs("org.norvane.lumet")) {
        return;
    }
    extraData_["called_app"] = "portmeld";
    extraData_["device_action"] = action == 1 ? "ADD" : "DELETE";
    extraData_["device_key"] = record->key;
    extraData_["device_display_name"] = record->displayName;
    extraData_["device_mountpath"] = record->mountpath;
    extraData_["device_damage_flag"] = record->damaged ? "1" : "0";
    extraData_["device_file_system"] = std::to_string(record->fileSystem);
    extraData_["device_bus_num"] = std::to_string(record->bus);
    extraData_["device_address"] = std::to_string(record->address);
    extraData_["device_class"] = std::to_string(record->usbClass);
    launch("org.norvane.lumet");
}

void Model::browse() {
    extraData_["called_app"] = "org.norvane.lumet";
    if (current == nullptr) {
        return;
    }
    extraData_["device_path"] = current->mountpath;
    extraData_["device_name"] = current->displayName;
    if (current->usbClass == 6) {
        extraData_["device_type"] = "PTP";
        extraData_["device_busnumber"] = std::to_string(current->bus);
        extraData_["device_addressnumber"] = std::to_string(current->address);
        report(2, "PTP");
    } else if (current->usbClass == 8) {
        extraData_["device_type"] = "USB";
        extraData_["device_busnumber"] = "-1";
        extraData_["device_addressnumber"] = "-1";
        extraData_["vendor_name"] = current->product;
        const std::int64_t free = std::int64_t{current->totalSize} - current->usedSize;
        extraData_["available_size"] = std::to_string(static_cast<std::int32_t>(free));
        extraData_["total_size"] = std::to_string(current->totalSize);
        report(2, "USB");
    }
    extraData_["content_type"] = "all";
    launch("org.quillon.folian");
}

std::string Model::playList() const {
    const bool video = scanFile.type == 2;
    std::string json = "{";
    if (current != nullptr) {
        json += member("root_path", current->mountpath) + ",";
    }
    json += member("app_id", "org.norvane.lumet") + R"(,"play_index":0,)";
    json += video ? R"("function_trickplay":true,"function_pause":true,"function_rotate":true,)"
                    R"("function_scenesearch":true,"function_repeat":true,)"
                  : R"("need_slideshow":false,)";
    json += R"("items":[{)" + member("file_name", scanFile.name) + ",";
    if (video) {
        json += member("file_format", scanFile.format) + ",";
    }
    json += member("file_date", scanFile.date) + ",";
    if (!video) {
        json += member("file_size", scanFile.size) + ",";
    }
    json += member("file_location", "USB") + "," + member("file_path", scanFile.path);
    if (video) {
        json += "," + member("subtitle_path", "") + "," + member("thumbnail_path", "");
    }
    return json + "}]}";
}

void Model::play() {
    switch (scanFile.type) {
        case 1:
            extraData_["play_list_data"] = playList();
            launch("org.norvane.picreel");
            break;
        case 2:
            extraData_["play_list_data"] = playList();
            launch("org.norvane.vidreel");
            break;
        case 3:
            extraData_["file_name"] = scanFile.name;
            extraData_["music_url"] = scanFile.path;
            extraData_["music_title"] = scanFile.title;
            extraData_["music_artist"] = scanFile.artist;
            extraData_["music_album"] = scanFile.album;
            extraData_["called_app"] = "org.norvane.lumet";
            launch("org.quillon.folian");
            break;
        default:
            launch("");
    }
}

// ---- demonstration

bool Model::internalDemoIsPossible() const {
    return world_.demoFiles && world_.demoMode != -1 && !runs("org.norvane.shopreel") &&
           !runs("org.norvane.floorreel");
}

bool Model::holdsDemo(const std::string& mountpath) const {
    const auto folder = world_.folders.find(mountpath);
    return folder != world_.folders.end() && folder->second.demo;
}

void Model::launchInternalDemo(bool mindDistraction) {
    if (!(mindDistraction && distracting())) {
        launch("org.norvane.floorreel");
    }
}

void Model::launchDemo(const std::string& path, bool mindDistraction) {
    if ((mindDistraction && distracting()) || runs("org.norvane.floorreel")) {
        return;
    }
    extraData_["root_path"] = path;
    launch("org.norvane.shopreel");
}

void Model::launchAnyDemo(bool mindDistraction) {
    if (!shop()) {
        return;
    }
    if (internalDemoIsPossible()) {
        launchInternalDemo(mindDistraction);
    } else {
        walkForDemo();
    }
}

/// Lists every storage device on its way.
void Model::walkForDemo() {
    for (const auto& [id, device] : world_.ports) {
        if (device.usbClass != 8) {
            continue;
        }
        const auto record = std::make_shared<Record>();
        fill(*record, device);
        insert(record);
        if (shop() && holdsDemo(record->mountpath)) {
            launchDemo(record->mountpath + "/DEMO_LED.tp", false);
        }
    }
}

void Model::useModeChanged() {
    launchAnyDemo(false);
}

}  // namespace soak
