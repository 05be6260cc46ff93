// What can be set on the TV: keys and their types, and which function of the platform fails for which
// service.
#include "TvSwitches.h"

#include "Text.h"
#include "TvFacts.h"

namespace workbench {

namespace {

/// A settings key that orders have a name for.
struct Named {
    const char* name;
    const char* key;
    const char* type;
};

constexpr Named named[] = {
    {"shopMode", useModeKey, "bool"},    {"demoMode", demoModeKey, "int"},
    {"language", languageKey, "string"}, {"dlnaName", dlnaNameKey, "string"},
    {"dlnaIcon", dlnaIconKey, "string"},
};

std::int64_t numberOf(simulated::SimulatedTv& tv, const char* key) {
    const simulated::Settings::Value* const value = tv.settings().get(key);
    const int* const number = value == nullptr ? nullptr : std::get_if<int>(value);
    return number == nullptr ? 0 : *number;
}

std::string textOf(simulated::SimulatedTv& tv, const char* key) {
    const simulated::Settings::Value* const value = tv.settings().get(key);
    const std::string* const text = value == nullptr ? nullptr : std::get_if<std::string>(value);
    return text == nullptr ? "" : *text;
}

bool truthOf(const Json& value) {
    if (!value.isBool()) {
        throw OrderError("the value is neither true nor false");
    }
    return value.truth();
}

std::string wordOf(const Json& value) {
    if (!value.isText()) {
        throw OrderError("the value is no text");
    }
    return value.text();
}

/// A function that cannot be told to fail stays as it is.
void letFail(simulated::SimulatedTv& tv, const char* function, bool on) {
    constexpr int always = -1;
    tv.journal().order(function, simulated::Fault::Fails, on ? always : 0);
}

}  // namespace

Json TvSwitches::setting(const Json& with) {
    std::string key = with["key"].text();
    std::string type = with["type"].text();
    if (key.empty()) {
        throw OrderError("which setting?");
    }
    bool isShopMode = false;
    for (const Named& one : named) {
        if (key != one.name && key != one.key) {
            continue;
        }
        // The store's number for the shop mode has two values that people can name.
        isShopMode = one.key == std::string(useModeKey);
        const std::string right = isShopMode && key == one.key ? "int" : one.type;
        if (!type.empty() && type != right) {
            throw OrderError(key + " has the type " + right);
        }
        key = one.key;
        type = right;
    }
    const Json value = with["value"];
    if (isShopMode && type == "bool") {
        tv_.settings().set(key, truthOf(value) ? useModeShop : useModeHome);
    } else if (type == "bool") {
        tv_.settings().set(key, truthOf(value));
    } else if (type == "int") {
        tv_.settings().set(key, wholeNumber(with, "value"));
    } else if (type == "string") {
        const std::string text = wordOf(value);
        if (key == languageKey && !knowsLanguage_(text)) {
            throw OrderError("there are no texts in the language \"" + printable(text) + "\"");
        }
        tv_.settings().set(key, text.c_str());
    } else {
        throw OrderError("a setting has the type bool, int or string");
    }
    return {};
}

Json TvSwitches::context(const Json& with) {
    tv_.small().contextState = wholeNumber(with, "bits");
    return {};
}

Json TvSwitches::companion(const Json& with) {
    tv_.applications().setRunning(companionId, truthOf(with["running"]));
    return {};
}

Json TvSwitches::fault(const Json& with) {
    const std::string service = with["service"].text();
    const bool on = truthOf(with["on"]);
    if (service == "notification") {
        notificationFails_ = on;
        letFail(tv_, "add_notification_data", on);
    } else if (service == "launch") {
        launchFails_ = on;
        letFail(tv_, "app_control_send_launch_request", on);
    } else if (service == "scanSilent") {
        scanIsSilent_ = on;
        if (on) {
            tv_.scanner().hold();
        } else {
            tv_.scanner().release();
        }
    } else {
        throw OrderError("what can fail is notification, launch and scanSilent");
    }
    return {};
}

Json TvSwitches::settings() const {
    const std::string language = languageCodeOf(tv_);
    return Json::object({{"shopMode", isInShopMode(tv_)},
                         {"demoMode", numberOf(tv_, demoModeKey)},
                         {"language", language},
                         {"rtl", isRightToLeft(language)},
                         {"dlnaName", textOf(tv_, dlnaNameKey)},
                         {"dlnaIcon", textOf(tv_, dlnaIconKey)}});
}

Json TvSwitches::contextState() const {
    return Json::object({{"distraction", tv_.small().contextState},
                         {"companionRunning", tv_.applications().isRunning(companionId)},
                         {"faults", Json::object({{"notification", notificationFails_},
                                                  {"launch", launchFails_},
                                                  {"scanSilent", scanIsSilent_}})}});
}

}  // namespace workbench
