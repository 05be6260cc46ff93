// "watch": one line for each device that is there, comes, changes or goes. The daemon tells of removals by
// itself; of everything else it tells who asks, so this asks again and again.
#include <map>
#include <tuple>
#include <utility>

#include "Bus.h"
#include "Commands.h"
#include "Device.h"
#include "Failure.h"
#include "Output.h"
#include "Text.h"

namespace ctl {

namespace {

/// Of the columns of deviceCells(): lines that come one by one cannot be laid out together.
constexpr std::size_t WIDTHS[] = {12, 7, 7, 7, 24, 0};
constexpr std::size_t EVENT_WIDTH = 8;

/// What people would call another state of the same device; how full it is changes all the time.
bool differ(const Device& one, const Device& other) {
    const auto state = [](const Device& device) {
        return std::tie(device.node, device.mount, device.name, device.fileSystem, device.size);
    };
    return state(one) != state(other);
}

class Watch {
public:
    explicit Watch(const Options& options) : options_(options), bus_(options) {}

    /// Never returns.
    [[noreturn]] void run() {
        const char* newcomer = "present";
        while (true) {
            bus_.callAsClient("RequesAll");
            compare(takeNews(), newcomer);
            newcomer = "attached";
            bus_.waitForSignals(options_.interval);
            // Removals: what else they tell of is asked for at the next turn.
            (void)takeNews();
        }
    }

private:
    using Devices = std::map<std::string, Device>;

    /// The devices that signals list, by their keys. Removals among them are told at once.
    Devices takeNews() {
        Devices listed;
        for (const Bus::Signal& signal : bus_.takeSignals()) {
            DeviceNews news = readNews(signal.text);
            const std::string key = news.device.key;
            if (news.action == Action::Removed) {
                listed.erase(key);
                if (known_.erase(key) != 0) {
                    tell("removed", news.device);
                }
            } else if (news.action != Action::NoDevice) {
                listed.insert_or_assign(key, std::move(news.device));
            }
        }
        return listed;
    }

    /// Tell how a list differs from what is known, and know it from now on.
    void compare(Devices listed, const char* newcomer) {
        for (const auto& [key, device] : known_) {
            if (listed.find(key) == listed.end()) {
                tell("removed", device);
            }
        }
        for (const auto& [key, device] : listed) {
            const auto known = known_.find(key);
            if (known == known_.end()) {
                tell(newcomer, device);
            } else if (differ(known->second, device)) {
                tell("changed", device);
            }
        }
        known_ = std::move(listed);
    }

    void tell(const char* event, const Device& device) const {
        if (options_.json) {
            writeJson(JsonMembers()
                          .with("event", jsonString(event))
                          .with("device", deviceJson(device))
                          .done());
            return;
        }
        std::string line = padded(event, EVENT_WIDTH);
        std::size_t column = 0;
        for (const std::string& cell : deviceCells(device)) {
            line += "  " + padded(cell.empty() ? "-" : printable(cell), WIDTHS[column++]);
        }
        writeLine(line);
    }

    const Options& options_;
    Bus bus_;
    Devices known_;
};

}  // namespace

void watch(const Options& options) {
    try {
        Watch(options).run();
    } catch (const Interrupted&) {
        // The way to end it.
    }
}

}  // namespace ctl
