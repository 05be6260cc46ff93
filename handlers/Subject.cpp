// The rules, one for each application.
#include "Subject.h"

#include <charconv>
#include <cstdio>
#include <system_error>

#include "Files.h"

#ifndef PORTMELD_PATH_PREFIX
#define PORTMELD_PATH_PREFIX ""
#endif

namespace handlers {

namespace {

/// Where the videos are that a television shows in a shop.
constexpr const char* DEMO_FOLDER = PORTMELD_PATH_PREFIX "/opt/data/demo_movie";

/// "6" as device class: a camera (USB still image class).
constexpr const char* CAMERA_CLASS = "6";

/// A bus number or an address on a bus, as the kernel counts them: 1 to 999.
int usbNumber(const std::string& text) {
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value < 1 || value > 999) {
        throw Refusal("'" + text + "' is no number of a USB bus or device");
    }
    return value;
}

/// A camera by the address that libgphoto2 knows it by.
Subject camera(const std::string& bus, const std::string& address) {
    char uri[sizeof "gphoto2://[usb:000,000]/"];
    std::snprintf(uri, sizeof uri, "gphoto2://[usb:%03d,%03d]/", usbNumber(bus),
                  usbNumber(address));
    return {Kind::Camera, "", {uri}};
}

/// The content browser shows a device, or plays music; the data of the other are old ones.
std::optional<Subject> browserSubject(const LaunchData& data) {
    if (data.isNewer("music_url", "device_path")) {
        return fileSubject(Kind::Music, {data.at("music_url")});
    }
    const std::string& path = data.at("device_path");
    // Set for each device that has such a type; an older one belongs to an earlier device.
    if (data.isNewer("device_type", "device_path") && data.at("device_type") == "PTP") {
        return camera(data.at("device_busnumber"), data.at("device_addressnumber"));
    }
    return folderSubject(path);
}

/// The companion application is told of devices that come and go.
std::optional<Subject> companionSubject(const LaunchData& data) {
    const std::string& action = data.at("device_action");
    if (action == "DELETE") {
        return std::nullopt;
    }
    if (action != "ADD") {
        throw Refusal("'" + action + "' is no device_action");
    }
    if (data.at("device_class") == CAMERA_CLASS) {
        return camera(data.at("device_bus_num"), data.at("device_address"));
    }
    return folderSubject(data.at("device_mountpath"));
}

/// The players are given a play list.
std::optional<Subject> playListSubject(Kind kind, const LaunchData& data) {
    const auto node = readObject(data.at("play_list_data"), "the play list's data");
    JsonObject* const list = json_node_get_object(node.get());
    JsonNode* const items = json_object_get_member(list, "items");
    if (items == nullptr || !JSON_NODE_HOLDS_ARRAY(items)) {
        throw Refusal("the play list has no items");
    }
    std::vector<std::string> paths;
    JsonArray* const array = json_node_get_array(items);
    for (unsigned i = 0; i < json_array_get_length(array); ++i) {
        JsonNode* const item = json_array_get_element(array, i);
        const char* const path = JSON_NODE_HOLDS_OBJECT(item)
                                     ? textOf(json_node_get_object(item), "file_path")
                                     : nullptr;
        if (path == nullptr) {
            throw Refusal("an item of the play list has no file_path");
        }
        paths.emplace_back(path);
    }
    if (paths.empty()) {
        throw Refusal("the play list is empty");
    }
    const char* const root = textOf(list, "root_path");
    return fileSubject(kind, paths, root != nullptr ? root : "");
}

LaunchData readData(const std::optional<std::string>& json) {
    if (!json) {
        throw Refusal("there are no launch data");
    }
    return LaunchData(*json);
}

}  // namespace

std::optional<Subject> subjectOf(const std::string& application,
                                 const std::optional<std::string>& json) {
    if (application == "org.norvane.floorreel") {
        return folderOfMediaSubject(DEMO_FOLDER);
    }
    if (application == "org.quillon.folian") {
        return browserSubject(readData(json));
    }
    if (application == "org.norvane.lumet") {
        return companionSubject(readData(json));
    }
    if (application == "org.norvane.vidreel") {
        return playListSubject(Kind::Video, readData(json));
    }
    if (application == "org.norvane.picreel") {
        return playListSubject(Kind::Picture, readData(json));
    }
    if (application == "org.norvane.shopreel") {
        return fileSubject(Kind::Video, {readData(json).at("root_path")});
    }
    throw Refusal("it is none of the applications that this program stands in for");
}

}  // namespace handlers
