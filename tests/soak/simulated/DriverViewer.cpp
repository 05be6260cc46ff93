// Steps of the viewer and of the TV around the daemon: pop-ups, applications, settings, power, time, and
// what content scans report.
#include "Driver.h"

namespace soak {

namespace {

constexpr const char* COMPANION = "org.norvane.lumet";
constexpr const char* USE_MODE = "db/menu/support/use_mode";
constexpr const char* DEMO_MODE = "db/floorreel/demo_mode";
constexpr const char* LANGUAGE = "db/menu_widget/language";
constexpr const char* DLNA_NAME = "memory/portmeld/removed_dlna_device";
constexpr const char* DLNA_ICON = "memory/portmeld/removed_dlna_device_icon_path";

constexpr int SINGLE_MEDIA = 25;

std::string reportJson(const MediaFile& file) {
    std::string json = "{\"MEDIA_TYPE\":" + std::to_string(file.mediaType);
    const auto add = [&](const char* key, const std::string& value) {
        json += ',' + quotedJson(key) + ':' + value;
    };
    add("DISPLAY_NAME", quotedJson(file.name));
    add("FILE_PATH", quotedJson(file.path));
    if (file.size) {
        add("SIZE", std::to_string(*file.size));
    }
    if (file.modified) {
        add("MODIFIED_TIME", std::to_string(*file.modified));
    }
    if (file.title) {
        add("TITLE", quotedJson(*file.title));
    }
    if (file.artist) {
        add("ARTIST", quotedJson(*file.artist));
    }
    if (file.album) {
        add("ALBUM", quotedJson(*file.album));
    }
    return json + '}';
}

MediaFile anyFile(Chance& chance) {
    MediaFile file;
    file.mediaType = chance.oneOf({2, 3, 5, 5, 4, 0});
    file.name = chance.oneOf({"song.mp3", "no dot", "Überraschung.JPEG", "a \"b\".ts"});
    file.path = "/mnt/" + file.name;
    if (chance.oneIn(2)) {
        file.size = chance.oneOf({0, 500, 1536, 3 << 20, 2'000'000'000});
        file.modified = chance.oneOf({0, 86'400, 1'700'000'000});
    }
    if (chance.oneIn(2)) {
        file.title = chance.oneOf({"Title", ""});
        file.artist = "Artist";
    }
    if (chance.oneIn(2)) {
        file.album = "Album";
    }
    return file;
}

}  // namespace

// ---- viewer

void Driver::press(Chance& chance) {
    const Shown* const popup = model_.onScreen();
    const int button = chance.below(3) == 0 ? 1 : 0;
    tv_.screen().press(button);
    doing_ += " " + std::to_string(button);
    if (popup != nullptr && popup->firstButton) {
        const int itemType = popup->itemType;
        model_.takeDown();
        later([this, itemType, button] { model_.press(itemType, button); });
    }
}

void Driver::hide(Chance&) {
    tv_.screen().hide();
    if (model_.onScreen() != nullptr) {
        model_.takeDown();
        later([this] { model_.hide(); });
    }
}

void Driver::timeOut(Chance&) {
    const Shown* const popup = model_.onScreen();
    tv_.screen().timeOut();
    if (popup != nullptr) {
        const int itemType = popup->itemType;
        model_.takeDown();
        later([this, itemType] { model_.timeOut(itemType); });
    }
}

/// An answer to a pop-up that is not on the screen.
void Driver::strayCallback(Chance& chance) {
    const int itemType = chance.below(5) - 1;
    const int button = chance.below(3);
    switch (chance.below(3)) {
        case 0:
            tv_.screen().sendButton(itemType, button);
            later([this, itemType, button] { model_.press(itemType, button); });
            doing_ += " button";
            break;
        case 1:
            tv_.screen().sendHide();
            later([this] { model_.hide(); });
            doing_ += " hide";
            break;
        default:
            tv_.screen().sendTimeOut(itemType);
            later([this, itemType] { model_.timeOut(itemType); });
            doing_ += " time-out";
    }
    doing_ += " type " + std::to_string(itemType);
}

void Driver::companion(Chance& chance) {
    const bool runs = chance.oneIn(3);
    tv_.applications().setRunning(COMPANION, runs);
    if (runs) {
        world_.running.insert(COMPANION);
    } else {
        world_.running.erase(COMPANION);
    }
    doing_ += runs ? " runs" : " ends";
}

void Driver::endApplications(Chance&) {
    for (const std::string& appId : std::set<std::string>(world_.running)) {
        tv_.applications().setRunning(appId, false);
    }
    world_.running.clear();
}

// ---- time and power

void Driver::advance(std::int64_t milliseconds) {
    tv_.advance(milliseconds);
    model_.advance(milliseconds);
    doing_ += " " + std::to_string(milliseconds) + " ms";
}

void Driver::passTime(Chance& chance) {
    advance(chance.oneOf({400, 1'000, 3'000, 10'000, 30'000, 60'000}));
}

void Driver::power(Chance& chance) {
    switch (chance.below(3)) {
        case 0: {
            const int reason = chance.below(4);
            tv_.power().sendWakeup(reason);
            later([this] { model_.wakeUp(); });
            doing_ += " wake-up";
            break;
        }
        case 1: {
            const int option = chance.oneOf({0, 13, 14, 1 << 30, (1 << 30) + 13, 1 << 29});
            tv_.power().sendPoweroff(option);
            later([this, option] { model_.powerOff(option); });
            doing_ += " off " + std::to_string(option);
            break;
        }
        default: {
            const int state = chance.oneOf({0, 0, 1, 2, 2, 3});
            tv_.power().sendState(state);
            later([this, state] { model_.powerState(state); });
            doing_ += " state " + std::to_string(state);
        }
    }
}

void Driver::standbyAndWake(Chance& chance) {
    if (chance.oneIn(2)) {
        tv_.power().standby();
        later([this] { model_.powerState(2); });
        later([this] { model_.powerOff(1 << 30); });
        doing_ += " to standby";
    } else {
        tv_.power().wake();
        later([this] { model_.wakeUp(); });
        later([this] { model_.powerState(0); });
        doing_ += " back";
    }
}

// ---- settings

void Driver::setLanguage(const char* name) {
    tv_.settings().set(LANGUAGE, name);
    world_.language = name;
    doing_ += std::string(" ") + name;
}

void Driver::language(Chance& chance) {
    setLanguage(chance.oneOf({"en", "de", "fr", "ja"}));
}

void Driver::setUseMode(int mode) {
    tv_.settings().set(USE_MODE, mode);
    world_.useMode = mode;
    later([this] { model_.useModeChanged(); });
    doing_ += " " + std::to_string(mode);
}

void Driver::shopMode(Chance& chance) {
    setUseMode(chance.oneOf({1, 0, 0, 2}));
}

void Driver::demoSettings(Chance& chance) {
    world_.demoMode = chance.oneOf({-1, 0, 1});
    world_.demoFiles = chance.oneIn(2);
    tv_.settings().set(DEMO_MODE, world_.demoMode);
    folder_.setDemoFiles(world_.demoFiles);
    doing_ += " " + std::to_string(world_.demoMode) + (world_.demoFiles ? " with" : " without") +
              " films";
}

void Driver::distraction(Chance& chance) {
    world_.contextState = chance.oneOf({0, 0, 0, 0x80, 0x400, 0x800, 0x37F});
    tv_.small().contextState = world_.contextState;
    doing_ += " " + std::to_string(world_.contextState);
}

void Driver::dlna(Chance& chance) {
    if (chance.oneIn(3)) {
        tv_.settings().set(DLNA_ICON, "/icons/server.png");
        world_.dlnaIcon = "/icons/server.png";
    } else if (chance.oneIn(3)) {
        tv_.settings().unset(DLNA_ICON);
        world_.dlnaIcon.reset();
    }
    const char* const name = chance.oneOf({"Attic", "Cellar", ""});
    tv_.settings().set(DLNA_NAME, name);
    world_.dlnaName = name;
    later([this] { model_.dlnaNameChanged(); });
    doing_ += std::string(" ") + name;
}

/// The platform will refuse something once.
void Driver::refusal(Chance& chance) {
    const int which = chance.below(3);
    const char* const functions[] = {"add_notification_data", "app_control_send_launch_request",
                                     "usb_device_get_device_list"};
    bool* const fails[] = {&world_.popupFails, &world_.launchFails, &world_.listFails};
    *fails[which] = true;
    tv_.journal().order(functions[which], simulated::Fault::Fails, 1);
    doing_ += std::string(" ") + functions[which];
}

// ---- content scan

void Driver::holdScans(Chance& chance) {
    world_.scansAreHeld = chance.oneIn(2);
    if (world_.scansAreHeld) {
        tv_.scanner().hold();
        doing_ += " hold";
    } else {
        tv_.scanner().release();
        doing_ += " release";
    }
}

/// A report that nobody waits for, or of another kind.
void Driver::strayReport(Chance& chance) {
    if (!model_.scannedEver) {
        return;
    }
    const MediaFile file = anyFile(chance);
    const std::string json = reportJson(file);
    if (chance.oneIn(3)) {
        tv_.scanner().report(chance.below(SINGLE_MEDIA), json.c_str());
        return;
    }
    tv_.scanner().report(SINGLE_MEDIA, json.c_str());
    later([this, file] { model_.scanReports(file); });
    doing_ += " " + json;
}

}  // namespace soak
