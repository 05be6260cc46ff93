// What the TV shows of notifications: the pop-up that is up, and the buttons, the hiding and the
// time-out that a viewer can bring about. The daemon is told of them later, on the main context.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <platform/notification.h>

namespace simulated {

class SimulatedTv;

/// A pop-up, copied from its record. An unset text is a null pointer in the record.
struct Popup {
    int word0, word4, word8;
    std::optional<std::string> sender;
    int itemType;
    int timeout;
    std::optional<std::string> title;
    std::optional<std::string> body;
    std::optional<std::string> sourceIcon;
    int buttonCount;
    std::optional<std::string> firstButton;
    std::optional<std::string> secondButton;
    std::optional<std::string> firstButtonIcon;
    std::optional<std::string> secondButtonIcon;
    bool reservedAreZero;
    std::int64_t shownAt;  ///< virtual milliseconds
};

class Screen {
public:
    explicit Screen(SimulatedTv& tv) : tv_(tv) {}

    /// The pop-up that is up, or null. A new pop-up takes the place of the one before, which is heard of
    /// no more; only the time-out of a removal notice is still told.
    const Popup* popup() const { return popup_ ? &*popup_ : nullptr; }

    /// Every pop-up that was ever shown, oldest first.
    const std::vector<Popup>& history() const { return history_; }
    void clearHistory() { history_.clear(); }

    /// Press a button of the pop-up (0 the first): it goes, the daemon is told. Nothing without a
    /// pop-up or for a button that it does not have.
    void press(int button);
    /// Hide the pop-up (the viewer's back key): it goes, the daemon is told.
    void hide();
    /// Let its time-out come now instead of when the clock says so.
    void timeOut();

    /// Callbacks out of the blue, whatever is on screen.
    void sendButton(int itemType, int button);
    void sendHide();
    void sendTimeOut(int itemType);

    // ---- the contract

    int init(const char* sender, int flags);
    int close();
    int add(const NotificationRecord* record);
    int setButtonCallback(notification_button_callback_fn callback, void* userData);
    int setTimeoutCallback(notification_timeout_callback_fn callback, void* userData);
    int setHideCallback(notification_hide_callback_fn callback, void* userData);

private:
    void takeDown();
    void makeRoom();
    void tellTimeOut(int itemType);

    SimulatedTv& tv_;
    std::optional<Popup> popup_;
    unsigned timer_ = 0;               // of the pop-up that is up
    int shown_ = 0;                    // how many pop-ups with a time-out there were
    std::map<int, unsigned> covered_;  // timers of replaced removal notices, by their number
    std::vector<Popup> history_;
    bool open_ = false;
    notification_button_callback_fn button_ = nullptr;
    void* buttonData_ = nullptr;
    notification_timeout_callback_fn timeout_ = nullptr;
    void* timeoutData_ = nullptr;
    notification_hide_callback_fn hide_ = nullptr;
    void* hideData_ = nullptr;
};

}  // namespace simulated
