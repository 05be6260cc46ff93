// The model's pop-ups: when one is shown and with what, and what the viewer's answers do. Results of
// content scans are here as well, as they end in a pop-up.
#include <cstdio>
#include <ctime>

#include "Model.h"

namespace soak {

namespace {

constexpr std::size_t LONGEST = 255;  // bytes of a text with a name in it

std::optional<std::string> deviceIcon(int usbClass) {
    return usbClass == 6   ? std::optional(std::string(IMAGES) + "noti_source_icon_camera.png")
           : usbClass == 8 ? std::optional(std::string(IMAGES) + "noti_source_icon_usb.png")
                           : std::nullopt;
}

std::string sizeText(int bytes) {
    double value = bytes / 1024.0;
    const char* const units[] = {"KB", "MB", "GB", "TB"};
    std::size_t unit = 0;
    for (; value >= 1024 && unit < 3; ++unit) {
        value /= 1024;
    }
    char text[64];
    (void)std::snprintf(text, sizeof text, "%.2f%s", value, units[unit]);
    return text;
}

/// The driver's time zone is UTC.
std::string dateText(int seconds) {
    const std::time_t time = seconds;
    std::tm parts = {};
    (void)gmtime_r(&time, &parts);
    char text[64];
    (void)std::snprintf(text, sizeof text, "%04d-%02d-%02d", parts.tm_year + 1900, parts.tm_mon + 1,
                        parts.tm_mday);
    return text;
}

/// Behind the last dot, in capitals; of a name without a dot all of it.
std::string formatText(const std::string& name) {
    std::string format =
        name.substr(name.rfind('.') == std::string::npos ? 0 : name.rfind('.') + 1);
    for (char& letter : format) {
        if (letter >= 'a' && letter <= 'z') {
            letter = static_cast<char>(letter - 'a' + 'A');
        }
    }
    return format;
}

}  // namespace

/// The connection pop-up.
void Model::offer() {
    if (distracting()) {
        return;
    }
    if (runs("org.norvane.lumet")) {
        tellCompanion(current, 1);
        return;
    }
    if (current == nullptr || (popupKind == 1 && isSameAsDisplayed())) {
        return;
    }
    const std::string& language = world_.language;
    Shown popup{};
    popup.itemType = popupKind;
    popup.timeout = 30;
    popup.title = message(language, "TV_SID_MIX_NEW_DEVICE_CONNECTED", current->noticeName)
                      .substr(0, LONGEST);
    report(1, "");
    if (popupKind == 1) {
        popup.body = message(language, "TV_SID_WOULD_U_LIKE_BROWSE_FILES");
        popup.firstButton = message(language, "COM_COMMONCTRL_BROWSE");
    } else {
        popup.body =
            message(language, "COM_SID_FILE_DETECTED_ON_THIS_DEVICE") + " " +
            message(language, "TV_SID_LIKE_TO_PLAY_FILE") + " " +
            message(language, "COM_SID_MIX_FILE_NAME_COLON", scanFile.name).substr(0, LONGEST);
        popup.firstButton = message(language, "SID_PLAY");
    }
    popup.secondButton = message(language, "COM_SID_CANCEL");
    popup.icon = deviceIcon(current->usbClass);
    show(popup);
}

bool Model::isSameAsDisplayed() {
    if (displayed != nullptr && displayed->productId == current->productId &&
        displayed->vendorId == current->vendorId && displayed->serial == current->serial) {
        return true;
    }
    displayed = current;
    return false;
}

void Model::tellRemoval(const std::string& name, int usbClass) {
    if (distracting() || runs("org.norvane.lumet")) {
        return;
    }
    if (!noticeShown && name != noticeName) {
        noticeName = name;
        noticeShown = true;
        Shown notice{};
        notice.itemType = 2;
        notice.timeout = 3;
        notice.title = name;
        notice.body = message(world_.language, "TV_SID_DEVICE_BEEN_DISCONNECTED");
        notice.icon = usbClass == -1 ? world_.dlnaIcon : deviceIcon(usbClass);
        show(notice);
    }
    displayed = nullptr;
}

void Model::dlnaNameChanged() {
    tellRemoval(world_.dlnaName, -1);
}

/// The TV shows one pop-up at a time. Of one that is replaced nothing is heard any more, but for the end
/// of a removal notice.
void Model::show(Shown popup) {
    if (std::exchange(world_.popupFails, false)) {
        return;
    }
    if (screen_ && screen_->itemType == 2) {
        screenTimer_ = 0;
    }
    takeDown();
    screenTimer_ = startTimer(Timer::Kind::PopUp, popup.timeout * 1000, popup.itemType);
    screen_ = popup;
    effects_.popups.push_back(std::move(popup));
}

void Model::takeDown() {
    screen_.reset();
    stopTimer(screenTimer_);
    screenTimer_ = 0;
}

void Model::press(int itemType, int button) {
    if (itemType < 0 || itemType > 1) {
        return;
    }
    if (button != 0) {
        report(popupKind == 0 ? 9 : 3, "");
    } else if (popupKind == 0) {
        report(8, "");
        play();
    } else if (list.size() == 1) {
        browse();
    } else {
        tellCompanion(current, 1);
    }
}

void Model::hide() {
    noticeShown = false;
    noticeName.clear();
    displayed = nullptr;
}

void Model::timeOut(int itemType) {
    if (itemType == 2) {
        noticeShown = false;
        noticeName.clear();
    }
    displayed = nullptr;
    report(4, "");
}

void Model::scanReports(const MediaFile& file) {
    const auto take = [](std::string& into, const std::optional<std::string>& value) {
        into = value.value_or(into);
    };
    popupKind = 0;
    scanFile.name = file.name;
    scanFile.path = file.path;
    scanFile.type = 0;
    if (file.mediaType == 2) {
        scanFile.type = 1;
        scanFile.size = sizeText(file.size.value_or(0));
        scanFile.date = dateText(file.modified.value_or(0));
    } else if (file.mediaType == 3) {
        scanFile.type = 2;
        scanFile.date = dateText(file.modified.value_or(0));
        scanFile.format = formatText(file.name);
    } else if (file.mediaType == 5) {
        scanFile.type = 3;
        take(scanFile.title, file.title);
        take(scanFile.artist, file.artist);
        take(scanFile.album, file.album);
    }
    offer();
}

void Model::settle() {
    if (!scan_ || world_.scansAreHeld) {
        return;
    }
    const auto folder = world_.folders.find(*std::exchange(scan_, std::nullopt));
    if (folder != world_.folders.end() && folder->second.single) {
        scanReports(*folder->second.single);
    }
}

}  // namespace soak
