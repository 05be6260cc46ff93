// The comparison: state first, then what was done, then what is held.
#include "Checker.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "MMDeviceState.h"

namespace soak {

namespace {

template <class Value>
std::string printed(const Value& value) {
    std::ostringstream out;
    out << std::boolalpha << value;
    return out.str();
}

std::string printed(const std::string& value) {
    return '"' + value + '"';
}

std::string printed(const std::optional<std::string>& value) {
    return value ? printed(*value) : "none";
}

}  // namespace

template <class Value>
void Checker::equal(const std::string& what, const Value& expected, const Value& found) {
    if (!(expected == found)) {
        differences_.push_back(what + ": " + printed(expected) + " expected, " + printed(found) +
                               " found");
    }
}

/// Compares lists item by item, or tells that they are not of one length.
template <class Values, class Compare>
void Checker::each(const std::string& what,
                   const Values& expected,
                   std::size_t found,
                   Compare compare) {
    equal("number of " + what, expected.size(), found);
    for (std::size_t i = 0; i < std::min(expected.size(), found); ++i) {
        compare(what + " " + std::to_string(i), i);
    }
}

std::vector<std::string> Checker::differences() {
    differences_.clear();
    const Effects effects = driver_.model().take();
    compareState();
    comparePopups(effects);
    compareLaunches(effects);
    compareReports(effects);
    compareBus(effects);
    compareTimers();
    compareHoldings();
    return differences_;
}

// ---- state

void Checker::compareState() {
    const Model& model = driver_.model();
    _stMMDeviceState state;
    if (!MMReadDeviceState(state)) {
        differences_.emplace_back("there is no device manager");
        return;
    }
    for (auto place = places_.begin(); place != places_.end();) {
        place = place->first.expired() ? places_.erase(place) : std::next(place);
    }
    each("listed devices", model.list, state.vDevices.size(),
         [&](const std::string& what, std::size_t i) {
             comparePointer(what, model.list[i], state.vDevices[i]);
             compareRecord(what, *model.list[i], *state.vDevices[i]);
         });
    comparePointer("the current device", model.current, state.pCurrentDevice);
    comparePointer("the displayed device", model.displayed, state.pDisplayedDevice);
    equal("FAT counter", model.counters.fat, state.nFatCount);
    equal("exFAT counter", model.counters.exFat, state.nExFatCount);
    equal("EXT4 counter", model.counters.ext4, state.nExt4Count);
    equal("NTFS counter", model.counters.ntfs, state.nNtfsCount);
    equal("camera counter", model.counters.cameras, state.nCameraCount);
    equal("activated", model.activated, state.bActivated);
    equal("standby", model.standby, state.bStandby);
    equal("kind of pop-up", model.popupKind, state.nNotificationType);
    equal("removal notice", model.noticeShown, state.bRemovalNotice);
    equal("name in the removal notice", model.noticeName, state.strRemovalNotice);
    equal("kind of scanned file", model.scanFile.type, state.nScanFileType);
    equal("name of scanned file", model.scanFile.name, state.strScanFileName);
    equal("path of scanned file", model.scanFile.path, state.strScanFilePath);
    each("clients", model.clients, state.vClients.size(),
         [&](const std::string& what, std::size_t i) {
             equal(what, model.clients[i].id, state.vClients[i].nClientId);
             equal("name of " + what, model.clients[i].sender, state.vClients[i].strSender);
         });
}

/// A record stays where it is, and no two records that still count are in one place. The place of one
/// that is gone may be given to another.
void Checker::comparePointer(const std::string& what,
                             const RecordPtr& expected,
                             const void* found) {
    if (expected == nullptr || found == nullptr) {
        equal(what + " is none", expected == nullptr, found == nullptr);
        return;
    }
    const auto known = places_.find(expected);
    if (known != places_.end()) {
        if (known->second != found) {
            differences_.push_back(what + " is another record than the expected " + expected->key);
        }
        return;
    }
    for (const auto& [record, place] : places_) {
        if (place == found) {
            differences_.push_back(what + " is another record, which ought not to be it");
        }
    }
    places_.emplace(expected, found);
}

void Checker::compareRecord(const std::string& what,
                            const Record& expected,
                            const CMMDeviceInfo& found) {
    equal("class of " + what, expected.usbClass, found.GetClass());
    equal("sub-class of " + what, expected.subClass, found.GetSubClass());
    equal("protocol of " + what, expected.protocol, found.GetProtocol());
    equal("vendor of " + what, expected.vendorId, found.GetVendorId());
    equal("product number of " + what, expected.productId, found.GetProductId());
    equal("bus of " + what, expected.bus, found.GetBus());
    equal("address of " + what, expected.address, found.GetAddress());
    equal("number of " + what, expected.number, found.GetNumber());
    equal("file system of " + what, expected.fileSystem, found.GetFileSystemType());
    equal("disk type of " + what, expected.diskType, found.GetDiskType());
    equal("total size of " + what, expected.totalSize, found.GetTotalSize());
    equal("used size of " + what, expected.usedSize, found.GetUsedSize());
    equal("index of " + what, expected.index, found.GetIndex());
    equal("damage of " + what, expected.damaged, found.GetDamageFlag());
    equal("announcement of " + what, expected.announced, found.GetUsbStorageAddAction());
    equal("manufacturer of " + what, expected.manufacturer, found.GetManufacturer());
    equal("product of " + what, expected.product, found.GetProduct());
    equal("node of " + what, expected.devname, found.GetDeviceName());
    equal("path of " + what, expected.devpath, found.GetDevicePath());
    equal("mount path of " + what, expected.mountpath, found.GetMountpath());
    equal("serial of " + what, expected.serial, found.GetSerial());
    equal("label of " + what, expected.partlabel, found.GetPartitionLabel());
    equal("display name of " + what, expected.displayName, found.GetDisplayName());
    equal("notice name of " + what, expected.noticeName, found.GetDisplayNameForNotification());
    equal("key of " + what, expected.key, found.GetDeviceKey());
}

// ---- effects

void Checker::comparePopups(const Effects& effects) {
    const std::vector<simulated::Popup>& shown = tv_.screen().history();
    each("pop-ups", effects.popups, shown.size(), [&](const std::string& what, std::size_t i) {
        const Shown& expected = effects.popups[i];
        const simulated::Popup& found = shown[i];
        const bool asks = expected.itemType != 2;
        const auto ifAsked = [&](const char* picture) {
            return asks ? std::optional(std::string(IMAGES) + picture) : std::nullopt;
        };
        equal("words of " + what, std::string("1 1 2 true"),
              std::to_string(found.word0) + " " + std::to_string(found.word4) + " " +
                  std::to_string(found.word8) + (found.reservedAreZero ? " true" : " false"));
        equal("sender of " + what, std::optional<std::string>("portmeld"), found.sender);
        equal("kind of " + what, expected.itemType, found.itemType);
        equal("time-out of " + what, expected.timeout, found.timeout);
        equal("title of " + what, std::optional(expected.title), found.title);
        equal("body of " + what, std::optional(expected.body), found.body);
        equal("icon of " + what, expected.icon, found.sourceIcon);
        equal("buttons of " + what, asks ? 2 : 0, found.buttonCount);
        equal("first button of " + what, expected.firstButton, found.firstButton);
        equal("second button of " + what, expected.secondButton, found.secondButton);
        equal("first icon of " + what, ifAsked("i_open.png"), found.firstButtonIcon);
        equal("second icon of " + what, ifAsked("i_close_cancel.png"), found.secondButtonIcon);
    });
    tv_.screen().clearHistory();
    equal("a pop-up on the screen", driver_.model().onScreen() != nullptr,
          tv_.screen().popup() != nullptr);
}

void Checker::compareLaunches(const Effects& effects) {
    const std::vector<simulated::Launch>& launches = tv_.applications().launches();
    each("launches", effects.launches, launches.size(),
         [&](const std::string& what, std::size_t i) {
             const Launched& expected = effects.launches[i];
             equal(what, expected.appId, launches[i].appId);
             auto found = launches[i].extraData;
             for (const auto& [key, value] : expected.extraData) {
                 const auto member = found.find(key);
                 equal(key + " of " + what, std::optional(value),
                       member != found.end() ? std::optional(member->second) : std::nullopt);
                 found.erase(key);
             }
             for (const auto& [key, value] : found) {
                 differences_.push_back(key + " of " + what + ": not expected");
             }
         });
    tv_.applications().clearLaunches();
}

void Checker::compareReports(const Effects& effects) {
    std::vector<simulated::UsageRecord>& usage = tv_.small().usage;
    each("usage records", effects.usage, usage.size(), [&](const std::string& what, std::size_t i) {
        equal("kind of " + what, effects.usage[i].first, usage[i].type);
        equal("text of " + what, effects.usage[i].second, usage[i].first);
        equal("further texts of " + what, std::string(), usage[i].second + usage[i].third);
    });
    usage.clear();
    const std::vector<std::string>& scans = tv_.scanner().started();
    each("scans", effects.scans, scans.size(),
         [&](const std::string& what, std::size_t i) { equal(what, effects.scans[i], scans[i]); });
    tv_.scanner().clearStarted();
    equal("watchdog feeds", driver_.model().watchdogFeeds, tv_.small().watchdogFeeds);
}

void Checker::compareBus(const Effects& effects) {
    const std::vector<FakeBus::Signal> signals = bus_.takeSignals();
    each("signals", effects.signals, signals.size(), [&](const std::string& what, std::size_t i) {
        equal("receiver of " + what, effects.signals[i].destination, signals[i].destination);
        equal("name of " + what, effects.signals[i].name, signals[i].name);
        equal("text of " + what, effects.signals[i].json, signals[i].json);
        equal("object of " + what, std::string("/com/norvane/portmeld"), signals[i].path);
        equal("interface of " + what, std::string("com.norvane.portmeld"), signals[i].interface);
    });
    if (const auto& reply = driver_.reply()) {
        equal("reply", reply->expected, reply->found);
        equal("the call is over", true, reply->ended);
    }
}

// ---- what is held

void Checker::compareTimers() {
    std::vector<Timer> expected = driver_.model().timers();
    std::stable_sort(expected.begin(), expected.end(), [](const Timer& a, const Timer& b) {
        return a.due != b.due ? a.due < b.due : a.number < b.number;
    });
    const std::vector<simulated::VirtualClock::Timer> found = tv_.clock().timers();
    each("timers", expected, found.size(), [&](const std::string& what, std::size_t i) {
        equal("time of " + what, expected[i].due, found[i].due);
        equal("period of " + what, expected[i].interval, found[i].interval);
    });
}

void Checker::compareHoldings() {
    if (descriptors_ >= 0) {
        equal("open descriptors", descriptors_, openDescriptors());
        equal("sources other than timers", otherSources_,
              sources_.count() - tv_.clock().timers().size());
    }
    for (const std::string& breach : tv_.journal().breaches()) {
        differences_.push_back("breach of the contract: " + breach);
    }
}

void Checker::keepCount() {
    descriptors_ = openDescriptors();
    otherSources_ = sources_.count() - tv_.clock().timers().size();
}

}  // namespace soak
