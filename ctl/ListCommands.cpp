// "list" and "count": what is plugged in at this moment.
#include <algorithm>
#include <utility>

#include "Bus.h"
#include "Commands.h"
#include "Device.h"
#include "Output.h"

namespace ctl {

namespace {

/// What GetDeviceCount() takes for everything, and for cameras.
constexpr int COUNT_ALL = -1;
constexpr int COUNT_CAMERAS = 6;

/// The devices that the last call listed, in the daemon's order; without those that were pulled out while
/// it did.
std::vector<Device> listedDevices(Bus& bus) {
    std::vector<Device> devices;
    for (const Bus::Signal& signal : bus.takeSignals()) {
        DeviceNews news = readNews(signal.text);
        if (news.action == Action::Removed) {
            devices.erase(
                std::remove_if(devices.begin(), devices.end(),
                               [&](const Device& device) { return device.key == news.device.key; }),
                devices.end());
        } else if (news.action != Action::NoDevice) {
            devices.push_back(std::move(news.device));
        }
    }
    return devices;
}

}  // namespace

void list(const Options& options) {
    Bus bus(options);
    if (options.fileSystem.empty()) {
        bus.callAsClient("RequesAll");
    } else {
        bus.callAsClient("GetDeviceListByFsType", fileSystemNumber(options.fileSystem));
    }
    const std::vector<Device> devices = listedDevices(bus);
    if (options.json) {
        std::vector<Json> items(devices.size());
        std::transform(devices.begin(), devices.end(), items.begin(), deviceJson);
        writeJson(jsonList(std::move(items)));
        return;
    }
    Table table(deviceColumns());
    for (const Device& device : devices) {
        table.add(deviceCells(device));
    }
    for (const std::string& line : table.lines()) {
        writeLine(line);
    }
}

void count(const Options& options) {
    int what = options.cameras ? COUNT_CAMERAS : COUNT_ALL;
    if (!options.fileSystem.empty()) {
        what = fileSystemNumber(options.fileSystem);
    }
    Bus bus(options);
    // A daemon that nobody has asked for devices yet counts none.
    bus.callAsClient("RequesAll");
    const Values answer = bus.callAsClient("GetDeviceCount", what, "(i)");
    int number = 0;
    g_variant_get(answer.get(), "(i)", &number);
    if (options.json) {
        writeJson(JsonMembers().with("count", jsonNumber(number)).done());
    } else {
        writeLine(std::to_string(number));
    }
}

}  // namespace ctl
