// The remote control: its keys, and the screen in words.
#include "RemoteControl.h"

#include <algorithm>

#include "PopupBox.h"
#include "TvFacts.h"

namespace workbench {

namespace {

constexpr std::int64_t second = 1000;

Json buttonsOf(const simulated::Popup& popup) {
    Json buttons = Json::array();
    for (int button = 0; button < popup.buttonCount; ++button) {
        buttons.add(
            Json::object({{"label", button == 0 ? popup.firstButton : popup.secondButton},
                          {"icon", button == 0 ? popup.firstButtonIcon : popup.secondButtonIcon}}));
    }
    return buttons;
}

}  // namespace

std::string popupKind(const simulated::Popup& popup) {
    switch (popup.itemType) {
        case NOTIFICATION_ITEM_PLAY_FILE:
            return "play";
        case NOTIFICATION_ITEM_BROWSE:
            return "browse";
        default:
            return "removal";
    }
}

void RemoteControl::pressButton(int button) {
    const simulated::Popup* const popup = tv_.screen().popup();
    if (popup == nullptr) {
        throw OrderError("there is no pop-up");
    }
    if (button < 0 || button >= popup->buttonCount) {
        throw OrderError("the pop-up has no such button");
    }
    tv_.screen().press(button);
}

Json RemoteControl::press(const Json& with) {
    if (with["button"].isNull()) {
        throw OrderError("which button?");
    }
    pressButton(wholeNumber(with, "button"));
    return {};
}

Json RemoteControl::hide() {
    if (tv_.screen().popup() == nullptr) {
        throw OrderError("there is no pop-up");
    }
    tv_.screen().hide();
    return {};
}

Json RemoteControl::key(const Json& with) {
    const std::string name = with["name"].text();
    const simulated::Popup* const popup = tv_.screen().popup();
    if (name == "left" || name == "right" || name == "up" || name == "down") {
        const int last = popup == nullptr ? 0 : std::max(popup->buttonCount - 1, 0);
        focus_ = std::clamp(focus_ + (name == "left" || name == "up" ? -1 : 1), 0, last);
    } else if (name == "ok") {
        if (popup != nullptr && popup->buttonCount > 0) {
            pressButton(focus_);
        }
    } else if (name == "back") {
        if (popup != nullptr) {
            tv_.screen().hide();
        } else {
            tv_.applications().endForeground();
        }
    } else if (name == "home") {
        tv_.applications().endForeground();
    } else if (name == "power") {
        return power() == "on" ? powerOff() : wake();
    } else {
        throw OrderError("the remote control has no such key");
    }
    return {};
}

Json RemoteControl::standby() {
    if (power() != "on") {
        throw OrderError("the TV is not on");
    }
    resting_ = true;
    tv_.power().sendState(DEVICE_POWER_STATE_STANDBY);
    return {};
}

Json RemoteControl::powerOff() {
    if (power() == "off") {
        throw OrderError("the TV is off");
    }
    resting_ = false;
    tv_.power().standby();
    return {};
}

Json RemoteControl::wake() {
    if (power() == "on") {
        throw OrderError("the TV is on");
    }
    if (resting_) {
        resting_ = false;
        tv_.power().sendState(DEVICE_POWER_STATE_NORMAL);
    } else {
        tv_.power().wake();
    }
    return {};
}

std::string RemoteControl::power() const {
    return resting_ ? "standby" : tv_.power().inStandby() ? "off" : "on";
}

void RemoteControl::look() {
    if (tv_.screen().history().size() != seen_) {
        seen_ = tv_.screen().history().size();
        focus_ = 0;
        language_ = languageCodeOf(tv_);
    }
}

Json RemoteControl::popup(bool times) const {
    const simulated::Popup* const popup = tv_.screen().popup();
    if (popup == nullptr) {
        return {};
    }
    Json json = Json::object({{"itemType", popup->itemType},
                              {"kind", popupKind(*popup)},
                              {"title", popup->title.value_or("")},
                              {"body", popup->body.value_or("")},
                              {"sourceIcon", popup->sourceIcon},
                              {"buttons", buttonsOf(*popup)},
                              {"focus", focus_},
                              {"timeoutMs", popup->timeout * second},
                              {"since", popup->shownAt},
                              {"number", seen_},
                              {"rtl", isRightToLeft(language_)},
                              {"language", language_}});
    if (times) {
        json.set("leftMs", std::max<std::int64_t>(popupEnd(*popup) - tv_.clock().now(), 0));
    }
    return json;
}

std::optional<simulated::Launch> RemoteControl::front() const {
    const std::string app = tv_.applications().foreground();
    const auto& launches = tv_.applications().launches();
    const auto launch = std::find_if(launches.rbegin(), launches.rend(),
                                     [&](const auto& one) { return one.appId == app; });
    return app.empty() || launch == launches.rend() ? std::nullopt : std::optional(*launch);
}

Json RemoteControl::launched() const {
    const std::optional<simulated::Launch> launch = front();
    if (!launch) {
        return {};
    }
    Json extra = Json::object();
    Json playList;
    for (const auto& [key, value] : launch->extraData) {
        extra.set(key, value);
        if (key == "play_list_data") {
            try {
                playList = Json::parsed(value);
            } catch (const JsonError&) {
                playList = {};
            }
        }
    }
    return Json::object({{"app", launch->appId},
                         {"name", applicationName(launch->appId)},
                         {"extra", extra},
                         {"playList", playList},
                         {"number", tv_.applications().launches().size()}});
}

bool RemoteControl::isPicture(const std::string& path) const {
    // A page may show a pop-up a little longer than it is up.
    const std::vector<simulated::Popup>& all = tv_.screen().history();
    return !all.empty() && (path == all.back().sourceIcon || path == all.back().firstButtonIcon ||
                            path == all.back().secondButtonIcon);
}

}  // namespace workbench
