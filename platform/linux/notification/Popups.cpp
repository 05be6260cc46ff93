// The life of a pop-up. Telling is always the last thing done: who is told may ask for the next
// pop-up, or end the service.
#include "Popups.h"

#include <utility>

#include "Journal.h"

namespace machine {

namespace {

/// How long a pop-up waits for a server that the bus starts.
constexpr int START_MILLISECONDS = 10'000;

/// A server that keeps the time is given the chance to say so first.
constexpr int GRACE_MILLISECONDS = 1'000;

/// The reasons of NotificationClosed; every other one is a hiding.
constexpr std::uint32_t REASON_EXPIRED = 1;

}  // namespace

Popups::Popups(NotificationServer& server, const NotificationCallbacks& callbacks)
    : server_(server), callbacks_(callbacks), scope_(g_cancellable_new()) {
    server_.setWatcher(this);
}

Popups::~Popups() {
    server_.setWatcher(nullptr);
    g_cancellable_cancel(scope_);
    g_object_unref(scope_);
    if (popup_ && state_ == State::Shown) {
        server_.close(shownId_);
    }
    drop();
    if (hideSource_ != 0) {
        g_source_remove(hideSource_);
    }
}

void Popups::show(const NotificationRecord& record) {
    const std::uint32_t before = replace();
    popup_.emplace(++lastNumber_, record);
    state_ = State::Waiting;
    if (server_.isReady()) {
        send(before);
    } else {
        setTimer(START_MILLISECONDS);
        server_.start();
    }
}

void Popups::refuse(const NotificationRecord& record) {
    if (record.nItemType == NOTIFICATION_ITEM_DISCONNECTED) {
        tellHiddenLater();
    }
}

/// The daemon holds further removal notices back until it hears of the last one; of a question that
/// was replaced it must hear nothing.
/// @return the id whose place can be taken, or 0
std::uint32_t Popups::replace() {
    if (popup_ && popup_->itemType() == NOTIFICATION_ITEM_DISCONNECTED) {
        tellHiddenLater();
    }
    // One that was sent and has no id yet is closed when its id comes.
    const std::uint32_t id = popup_ && state_ == State::Shown ? shownId_ : 0;
    drop();
    return id;
}

/// @param before  the id of the pop-up that is still on the screen, or 0
void Popups::send(std::uint32_t before) {
    state_ = State::Sent;
    const int milliseconds = popup_->milliseconds();
    setTimer(milliseconds > 0 ? milliseconds + GRACE_MILLISECONDS : 0);
    server_.notify(
        popup_->arguments(before, server_.rendersMarkup(), server_.takesActions()), scope_,
        [this, number = popup_->number(), before, gone = serversGone_](std::uint32_t id,
                                                                       const std::string& failure) {
            if (gone != serversGone_) {
                return;  // the pop-up was lost with its server, and the next knows none of these ids
            }
            // Not replaced, whatever the server did instead.
            if (before != 0 && before != id) {
                server_.close(before);
            }
            answered(number, id, failure);
        });
}

void Popups::answered(unsigned number, std::uint32_t id, const std::string& failure) {
    if (!popup_ || popup_->number() != number) {
        if (id != 0) {
            server_.close(id);
        }
        return;
    }
    if (id == 0) {
        fail("the notification server refused it: " + failure);
        return;
    }
    state_ = State::Shown;
    shownId_ = id;
}

void Popups::serverReady() {
    if (popup_ && state_ == State::Waiting) {
        send(0);
    }
}

void Popups::serverGone(const std::string& cause) {
    ++serversGone_;
    if (popup_) {
        fail(cause);
    }
}

/// The key is this pop-up's alone: a server may tell of a button before it has answered Notify.
void Popups::actionInvoked(std::uint32_t id, const std::string& key) {
    if (!popup_ || state_ == State::Waiting || (state_ == State::Shown && id != shownId_)) {
        return;
    }
    const std::optional<int> button = popup_->buttonOf(key);
    if (!button) {
        return;
    }
    const int itemType = popup_->itemType();
    drop();
    server_.close(id);  // some servers leave it on the screen
    if (callbacks_.button != nullptr) {
        callbacks_.button(itemType, *button, callbacks_.buttonData);
    }
}

/// What a server says of an id before it has answered Notify is about the pop-up that was replaced.
void Popups::closed(std::uint32_t id, std::uint32_t reason) {
    if (!popup_ || state_ != State::Shown || id != shownId_) {
        return;
    }
    const int itemType = popup_->itemType();
    drop();
    if (reason == REASON_EXPIRED) {
        tellTimeOut(itemType);
    } else {
        tellHidden();
    }
}

void Popups::expired() {
    if (state_ != State::Shown) {
        fail(state_ == State::Waiting ? "no notification server came in time"
                                      : "the notification server did not answer in time");
        return;
    }
    const int itemType = popup_->itemType();
    drop();
    server_.close(shownId_);
    tellTimeOut(itemType);
}

void Popups::drop() {
    popup_.reset();
    setTimer(0);
}

void Popups::fail(const std::string& cause) {
    report(Priority::Warning, "a pop-up is lost: " + cause);
    drop();
    tellHidden();
}

/// @param milliseconds  0 = no timer
void Popups::setTimer(int milliseconds) {
    if (timer_ != 0) {
        g_source_remove(std::exchange(timer_, 0));
    }
    if (milliseconds > 0) {
        timer_ = g_timeout_add(
            static_cast<guint>(milliseconds),
            [](void* self) {
                auto& popups = *static_cast<Popups*>(self);
                popups.timer_ = 0;
                popups.expired();
                return G_SOURCE_REMOVE;
            },
            this);
    }
}

void Popups::tellHiddenLater() {
    ++hidesDue_;
    if (hideSource_ == 0) {
        hideSource_ = g_idle_add_full(
            G_PRIORITY_DEFAULT,
            [](void* self) {
                auto& popups = *static_cast<Popups*>(self);
                const bool more = --popups.hidesDue_ > 0;
                if (!more) {
                    popups.hideSource_ = 0;
                }
                popups.tellHidden();
                return more ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
            },
            this, nullptr);
    }
}

void Popups::tellHidden() {
    if (callbacks_.hide != nullptr) {
        callbacks_.hide(nullptr, callbacks_.hideData);
    }
}

void Popups::tellTimeOut(int itemType) {
    if (callbacks_.timeout != nullptr) {
        callbacks_.timeout(itemType, callbacks_.timeoutData);
    }
}

}  // namespace machine
