// How the TV stands, in steps: settings first, as they decide what plugging brings about, and last what
// would keep the other steps from working.
#include "Circumstances.h"

#include <algorithm>

#include "OrderLine.h"
#include "TvFacts.h"

namespace workbench {

namespace {

constexpr int ownClient = 1;

/// Until no pop-up is up any more: each has gone within 30 seconds.
constexpr const char* untilQuiet = "after 31\n";

std::string line(const char* name, std::initializer_list<Json::Member> with) {
    return orderLine({name, Json::object(with)}) + "\n";
}

std::string setting(const char* key, const Json& value) {
    return line("setting", {{"key", key}, {"value", value}});
}

std::string callLine(const char* member, const Json& arguments) {
    return line("call", {{"client", ownClient}, {"member", member}, {"arguments", arguments}});
}

/// Whether the state tells the setting with this key, or name of orders.
bool isTold(const std::string& key) {
    static const std::vector<std::string> told = {"shopMode",  "demoMode", "language",  "dlnaName",
                                                  "dlnaIcon",  useModeKey, demoModeKey, languageKey,
                                                  dlnaNameKey, dlnaIconKey};
    return std::find(told.begin(), told.end(), key) != told.end();
}

}  // namespace

Circumstances::Circumstances(simulated::SimulatedTv& tv,
                             const TvState& state,
                             const PortBoard& ports,
                             PeerOf peerOf)
    : tv_(tv), state_(state), ports_(ports), peerOf_(std::move(peerOf)) {}

void Circumstances::look() {
    if (wire_ == nullptr) {
        return;
    }
    const auto& messages = wire_->messages();
    for (heard_ = std::max(heard_, messages.begin()); heard_ < messages.end(); ++heard_) {
        const WireMessage& message = messages.at(heard_);
        if (message.kind != "call") {
            continue;
        }
        if (message.member == "SetPhotoBGMPlayList" && message.signature == "sss") {
            music_.push_back(message.arguments);
        } else if (message.member == "ClearPhotoBGMPlayList" && message.signature.empty()) {
            music_.clear();
        }
    }
}

void Circumstances::note(const Order& order) {
    const std::string key = order.with["key"].text();
    if (order.name == "setting" && !isTold(key)) {
        settings_.insert_or_assign(key, order.with);
    }
}

std::string Circumstances::steps(std::vector<int>& numbers) const {
    std::string text = settings();
    const Json set = state_.member("settings");
    std::string loud = plugged(numbers);
    if (!set["dlnaIcon"].text().empty()) {
        loud += setting("dlnaIcon", set["dlnaIcon"]);
    }
    if (!set["dlnaName"].text().empty()) {
        loud += setting("dlnaName", set["dlnaName"]);
    }
    text += loud;
    if (!loud.empty() && tv_.screen().popup() == nullptr) {
        text += untilQuiet;
    }
    return text + clients() + music() + faults() + power();
}

std::string Circumstances::settings() const {
    const Json set = state_.member("settings");
    const Json context = state_.member("context");
    std::string text = setting("language", set["language"]);
    if (set["shopMode"].truth()) {
        text += setting("shopMode", true);
    }
    if (set["demoMode"].number() != 0) {
        text += setting("demoMode", set["demoMode"]);
    }
    for (const auto& [key, with] : settings_) {
        text += orderLine({"setting", with}) + "\n";
    }
    if (context["companionRunning"].truth()) {
        text += line("companion", {{"running", true}});
    }
    if (context["distraction"].number() != 0) {
        text += line("context", {{"bits", context["distraction"]}});
    }
    return text;
}

/// Orders that have plugged in what still is there, once each; what of it is gone is pulled again.
std::string Circumstances::plugged(std::vector<int>& numbers) const {
    const auto& all = ports_.ports();
    std::string text;
    int next = 1;
    numbers.assign(all.size(), 0);
    for (std::size_t i = 0; i < all.size();) {
        std::size_t end = i + 1;
        while (end < all.size() && all[end].plug == all[i].plug) {
            ++end;
        }
        bool isThere = false;
        for (std::size_t k = i; k < end; ++k) {
            isThere = isThere || all[k].plugged;
        }
        if (isThere) {
            text += orderLine(all[i].order) + "\n";
            for (std::size_t k = i; k < end; ++k) {
                numbers[k] = next++;
                if (!all[k].plugged) {
                    text += line("pull", {{"port", numbers[k]}});
                } else if (all[k].mounted && !all[k].order.with["mounted"].truth(true)) {
                    text += line("mount", {{"port", numbers[k]}});
                }
            }
        }
        i = end;
    }
    return text;
}

/// The workbench's own clients in the order in which they are registered. On a fresh TV the first one is.
std::string Circumstances::clients() const {
    if (wire_ == nullptr) {
        return "";
    }
    std::vector<std::pair<int, Json>> own;  // with the id that each has
    const Json all = state_.member("daemon")["clients"];
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (const std::optional<int> peer = peerOf_(all.at(i)["busName"].text())) {
            own.emplace_back(*peer, all.at(i)["id"]);
        }
    }
    const bool isAsFresh =
        !own.empty() && own[0].first == ownClient && own[0].second.number() == ownClient;
    std::string text = isAsFresh ? "" : callLine("DisConnect", Json::array({ownClient}));
    for (std::size_t i = isAsFresh ? 1 : 0; i < own.size(); ++i) {
        text += line("call", {{"client", own[i].first},
                              {"member", "Connect"},
                              {"arguments", Json::array({"workbench", own[i].second})}});
    }
    return text;
}

std::string Circumstances::music() const {
    std::string text;
    for (const Json& item : music_) {
        text += callLine("SetPhotoBGMPlayList", item);
    }
    return text;
}

std::string Circumstances::faults() const {
    std::string text;
    const Json faults = state_.member("context")["faults"];
    for (const std::string& service : faults.names()) {
        if (faults[service].truth()) {
            text += line("fault", {{"service", service}, {"on", true}});
        }
    }
    return text;
}

/// Whether pop-ups are switched off, and the power. Being off switches them off, too.
std::string Circumstances::power() const {
    const std::string power = state_.member("power").text();
    const bool isActivated = state_.member("daemon")["activated"].truth();
    const std::string allow = callLine("SetEnablePopUP", Json::array({isActivated}));
    if (power == "off") {
        return line("powerOff", {}) + (isActivated ? allow : "");
    }
    return (isActivated ? "" : allow) + (power == "standby" ? line("standby", {}) : "");
}

}  // namespace workbench
