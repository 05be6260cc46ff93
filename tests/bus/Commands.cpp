// The table of the commands of Commands.h, and what each does.
#include "Commands.h"

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "Json.h"
#include "MMDeviceDbusServer.h"
#include "Words.h"

namespace {

using simulated::SimulatedTv;
using simulated::UsbDevice;

/// A device from words like "product=Stick" and "vendorId=1921" on; "serial" alone: it has none.
UsbDevice usbDevice(const Words& words, std::size_t first) {
    UsbDevice device;
    static const std::map<std::string, int UsbDevice::*> numbers = {
        {"class", &UsbDevice::usbClass},        {"subClass", &UsbDevice::subClass},
        {"protocol", &UsbDevice::protocol},     {"vendorId", &UsbDevice::vendorId},
        {"productId", &UsbDevice::productId},   {"bus", &UsbDevice::bus},
        {"address", &UsbDevice::address},       {"number", &UsbDevice::number},
        {"fileSystem", &UsbDevice::fileSystem}, {"disk", &UsbDevice::disk},
    };
    static const std::map<std::string, std::optional<std::string> UsbDevice::*> texts = {
        {"manufacturer", &UsbDevice::manufacturer}, {"product", &UsbDevice::product},
        {"devname", &UsbDevice::devname},           {"devpath", &UsbDevice::devpath},
        {"mountpath", &UsbDevice::mountpath},       {"serial", &UsbDevice::serial},
    };
    for (std::size_t i = first; i < words.size(); ++i) {
        const std::size_t equals = words[i].find('=');
        const std::string name = words[i].substr(0, equals);
        std::optional<std::string> value;
        if (equals != std::string::npos) {
            value = words[i].substr(equals + 1);
        }
        if (const auto found = numbers.find(name); found != numbers.end()) {
            device.*found->second = integer(value.value_or(""));
        } else {
            device.*texts.at(name) = std::move(value);
        }
    }
    return device;
}

simulated::Settings::Value setting(const std::string& type, const std::string& value) {
    if (type == "int") {
        return integer(value);
    }
    if (type == "text") {
        return value;
    }
    throw std::invalid_argument("'" + type + "' is no type of a setting");
}

Json popup(const simulated::Popup& shown) {
    return JsonMembers()
        .with("type", number(shown.itemType))
        .with("title", text(shown.title))
        .with("body", text(shown.body))
        .done();
}

Json launch(const simulated::Launch& launched) {
    JsonMembers extraData;
    for (const auto& [key, value] : launched.extraData) {
        extraData.with(key.c_str(), text(value));
    }
    return JsonMembers().with("app", text(launched.appId)).with("extra", extraData.done()).done();
}

Json logLine(const simulated::LogLine& line) {
    return JsonMembers()
        .with("priority", number(line.priority))
        .with("message", text(line.message))
        .done();
}

/// The bus service made or ended once more, which the process itself never does.
Json busService(bool wanted) {
    if (wanted) {
        return truth(CMMDeviceDbusServer::GetInstance() != nullptr);
    }
    // Whoever else in the process uses the bus keeps the connection, and with it the object there.
    static const std::unique_ptr<GDBusConnection, void (*)(void*)> shared(
        g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr), g_object_unref);
    CMMDeviceDbusServer::GetInstance()->Destroy();
    CMMDeviceDbusServer::DestroyInstance();
    return nothing();
}

struct Command {
    const char* name;
    std::size_t fewest;  ///< arguments
    std::size_t most;
    Json (*run)(SimulatedTv& tv, const Words& words);  ///< words[0] is the name
};

constexpr std::size_t ANY = 100;

constexpr Command COMMANDS[] = {
    // ports
    {"plug", 1, ANY,  // FOLDER [PROPERTY=VALUE ...] -> id
     [](SimulatedTv& tv, const Words& words) {
         return number(tv.ports().plug(words[1], usbDevice(words, 2)));
     }},
    {"camera", 0, ANY,  // [PROPERTY=VALUE ...] -> id
     [](SimulatedTv& tv, const Words& words) {
         return number(tv.ports().plugCamera(usbDevice(words, 1)));
     }},
    {"insert", 0, ANY,  // [PROPERTY=VALUE ...] -> id; present, without an event
     [](SimulatedTv& tv, const Words& words) {
         return number(tv.ports().insert(usbDevice(words, 1)));
     }},
    {"announce", 2, 2,  // ID ACTION
     [](SimulatedTv& tv, const Words& words) {
         tv.ports().announce(integer(words[1]), words[2]);
         return nothing();
     }},
    {"mount", 2, 2,  // ID FOLDER
     [](SimulatedTv& tv, const Words& words) {
         tv.ports().mount(integer(words[1]), words[2]);
         return nothing();
     }},
    {"pull", 1, 1,  // ID
     [](SimulatedTv& tv, const Words& words) {
         tv.ports().pull(integer(words[1]));
         return nothing();
     }},
    // time and power
    {"advance", 1, 1,  // SECONDS
     [](SimulatedTv& tv, const Words& words) {
         tv.advanceSeconds(integer(words[1]));
         return nothing();
     }},
    {"settle", 0, 0, [](SimulatedTv&, const Words&) { return nothing(); }},
    {"wake", 0, 0,
     [](SimulatedTv& tv, const Words&) {
         tv.power().wake();
         return nothing();
     }},
    {"standby", 0, 0,
     [](SimulatedTv& tv, const Words&) {
         tv.power().standby();
         return nothing();
     }},
    // screen, settings and applications
    {"popup", 0, 0,  // -> the pop-up that is up, or null
     [](SimulatedTv& tv, const Words&) {
         const simulated::Popup* shown = tv.screen().popup();
         return shown != nullptr ? popup(*shown) : nothing();
     }},
    {"press", 1, 1,  // BUTTON
     [](SimulatedTv& tv, const Words& words) {
         tv.screen().press(integer(words[1]));
         return nothing();
     }},
    {"set", 3, 3,  // KEY int|text VALUE
     [](SimulatedTv& tv, const Words& words) {
         tv.settings().set(words[1], setting(words[2], words[3]));
         return nothing();
     }},
    {"running", 2, 2,  // APPLICATION 0|1
     [](SimulatedTv& tv, const Words& words) {
         tv.applications().setRunning(words[1], integer(words[2]) != 0);
         return nothing();
     }},
    {"launches", 0, 0,  // -> every launch so far
     [](SimulatedTv& tv, const Words&) { return list(tv.applications().launches(), launch); }},
    // what the daemon did
    {"watchdog", 0, 0,  // -> the period it registered with, and how often it fed
     [](SimulatedTv& tv, const Words&) {
         return JsonMembers()
             .with("period", number(tv.small().watchdogPeriod))
             .with("feeds", number(tv.small().watchdogFeeds))
             .done();
     }},
    {"calls", 0, 0,  // -> every call of the platform so far
     [](SimulatedTv& tv, const Words&) { return texts(tv.journal().calls()); }},
    {"log", 0, 0,  // -> every log line so far
     [](SimulatedTv& tv, const Words&) { return list(tv.journal().log(), logLine); }},
    {"bus-service", 1, 1,  // 0|1
     [](SimulatedTv&, const Words& words) { return busService(integer(words[1]) != 0); }},
};

const Command& commandFor(const Words& words) {
    for (const Command& command : COMMANDS) {
        if (!words.empty() && words[0] == command.name) {
            const std::size_t arguments = words.size() - 1;
            if (arguments < command.fewest || arguments > command.most) {
                throw std::invalid_argument("wrong number of arguments for " + words[0]);
            }
            return command;
        }
    }
    throw std::invalid_argument("no such command");
}

}  // namespace

Commands::Commands(SimulatedTv& tv, std::function<void()> quit) : tv_(tv), quit_(std::move(quit)) {}

std::string Commands::answer(const std::string& line) {
    try {
        Json result = nothing();
        if (line == "quit") {
            quit_();
        } else {
            const Words words = wordsOf(line);
            result = commandFor(words).run(tv_, words);
        }
        tv_.settle();
        return print(JsonMembers().with("result", std::move(result)).done());
    } catch (const std::exception& error) {
        return print(JsonMembers().with("error", text(std::string(error.what()))).done());
    }
}
