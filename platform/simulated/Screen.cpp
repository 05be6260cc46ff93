// Showing pop-ups and telling the daemon what became of them.
#include "Screen.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "SimulatedTv.h"

namespace simulated {

namespace {

constexpr int SHOWN = 0;
constexpr int ERROR = -1;
constexpr std::int64_t MILLISECONDS = 1000;  // in a second, the unit of time-outs

std::optional<std::string> copied(const char* text) {
    return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

Popup copied(const NotificationRecord& record, std::int64_t now) {
    const bool zeros = record.nReserved20 == 0 && record.nReserved28 == 0 &&
                       record.nReserved44 == 0 && record.nReserved48 == 0 &&
                       record.nReserved52 == 0 && record.nReserved60 == 0 &&
                       record.nReserved72 == 0 && record.nReserved84 == 0;
    return {record.nWord0,
            record.nWord4,
            record.nWord8,
            copied(record.pSender),
            record.nItemType,
            record.nTimeout,
            copied(record.pTitle),
            copied(record.pBody),
            copied(record.pSourceIcon),
            record.nButtonCount,
            copied(record.pFirstButton),
            copied(record.pSecondButton),
            copied(record.pFirstButtonIcon),
            copied(record.pSecondButtonIcon),
            zeros,
            now};
}

}  // namespace

// ---- the viewer

void Screen::press(int button) {
    if (popup_ && button >= 0 && button < popup_->buttonCount) {
        const int itemType = popup_->itemType;
        takeDown();
        sendButton(itemType, button);
    }
}

void Screen::hide() {
    if (popup_) {
        takeDown();
        sendHide();
    }
}

void Screen::timeOut() {
    if (popup_) {
        const int itemType = popup_->itemType;
        takeDown();
        sendTimeOut(itemType);
    }
}

void Screen::sendButton(int itemType, int button) {
    tv_.post([this, itemType, button] {
        if (open_ && button_ != nullptr) {
            button_(itemType, button, buttonData_);
        }
    });
}

void Screen::sendHide() {
    tv_.post([this] {
        if (open_ && hide_ != nullptr) {
            hide_(nullptr, hideData_);
        }
    });
}

void Screen::sendTimeOut(int itemType) {
    tv_.post([this, itemType] { tellTimeOut(itemType); });
}

void Screen::tellTimeOut(int itemType) {
    if (open_ && timeout_ != nullptr) {
        timeout_(itemType, timeoutData_);
    }
}

void Screen::takeDown() {
    popup_.reset();
    if (timer_ != 0) {
        g_source_remove(timer_);
        timer_ = 0;
    }
}

/// The pop-up goes because another comes. A removal notice still tells of its time-out: the daemon holds
/// further notices back until then.
void Screen::makeRoom() {
    if (popup_ && popup_->itemType == NOTIFICATION_ITEM_DISCONNECTED && timer_ != 0) {
        covered_[shown_] = std::exchange(timer_, 0);
    }
    takeDown();
}

// ---- the contract

int Screen::init(const char*, int) {
    open_ = true;
    return SHOWN;
}

int Screen::close() {
    takeDown();
    for (const auto& [number, timer] : covered_) {
        g_source_remove(timer);
    }
    covered_.clear();
    open_ = false;
    button_ = nullptr;
    timeout_ = nullptr;
    hide_ = nullptr;
    return SHOWN;
}

int Screen::add(const NotificationRecord* record) {
    if (!open_ || record == nullptr) {
        return ERROR;
    }
    makeRoom();
    popup_ = copied(*record, tv_.clock().now());
    history_.push_back(*popup_);
    if (record->nTimeout > 0) {
        const std::int64_t wait = std::min<std::int64_t>(record->nTimeout * MILLISECONDS,
                                                         std::numeric_limits<unsigned>::max());
        const int number = ++shown_;
        const int itemType = record->nItemType;
        const auto end = [this, number, itemType] {
            if (covered_.erase(number) == 0) {
                timer_ = 0;
                takeDown();
            }
            tellTimeOut(itemType);
        };
        timer_ = tv_.clock().add(static_cast<unsigned>(wait), end, "time-out of a pop-up");
    }
    return SHOWN;
}

int Screen::setButtonCallback(notification_button_callback_fn callback, void* userData) {
    button_ = callback;
    buttonData_ = userData;
    return SHOWN;
}

int Screen::setTimeoutCallback(notification_timeout_callback_fn callback, void* userData) {
    timeout_ = callback;
    timeoutData_ = userData;
    return SHOWN;
}

int Screen::setHideCallback(notification_hide_callback_fn callback, void* userData) {
    hide_ = callback;
    hideData_ = userData;
    return SHOWN;
}

}  // namespace simulated
