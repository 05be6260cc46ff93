// What is on the screen: one pop-up at a time, from the moment it was asked for until it was
// answered, was hidden or timed out, and the callbacks that say which of these it was.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <gio/gio.h>

#include <platform/notification.h>

#include "NotificationServer.h"
#include "Popup.h"

namespace machine {

/// Who is told; null = nobody.
struct NotificationCallbacks {
    notification_button_callback_fn button = nullptr;
    void* buttonData = nullptr;
    notification_timeout_callback_fn timeout = nullptr;
    void* timeoutData = nullptr;
    notification_hide_callback_fn hide = nullptr;
    void* hideData = nullptr;
};

/// A new pop-up takes the place of the one before. Each pop-up with buttons that is not replaced,
/// and each removal notice, ends with exactly one callback: this class keeps the time itself, for
/// servers that do not, and takes a server that is gone, or does not answer, for one that hides its
/// pop-ups.
class Popups final : private NotificationServer::Watcher {
public:
    /// @param server     outlives this object
    /// @param callbacks  read whenever one is due; outlive this object
    Popups(NotificationServer& server, const NotificationCallbacks& callbacks);

    /// Takes the pop-up from the screen. No callback comes any more.
    ~Popups();
    Popups(const Popups&) = delete;
    Popups& operator=(const Popups&) = delete;

    /// Show a pop-up, now or as soon as the server is ready. Only while the server is there.
    void show(const NotificationRecord& record);

    /// A pop-up could not be asked for. A removal notice counts as hidden at once: the daemon would hold
    /// back all that follow.
    void refuse(const NotificationRecord& record);

private:
    void serverReady() override;
    void serverGone(const std::string& cause) override;
    void actionInvoked(std::uint32_t id, const std::string& key) override;
    void closed(std::uint32_t id, std::uint32_t reason) override;

    std::uint32_t replace();
    void send(std::uint32_t before);
    void answered(unsigned number, std::uint32_t id, const std::string& failure);
    void expired();
    void drop();
    void fail(const std::string& cause);
    void setTimer(int milliseconds);
    void tellHiddenLater();
    void tellHidden();
    void tellTimeOut(int itemType);

    enum class State {
        Waiting,  ///< for a server that is ready
        Sent,     ///< the server has not answered
        Shown,    ///< under shownId_
    };

    NotificationServer& server_;
    const NotificationCallbacks& callbacks_;
    GCancellable* scope_;
    unsigned lastNumber_ = 0;
    std::optional<Popup> popup_;  ///< the one of now
    State state_ = State::Waiting;
    std::uint32_t shownId_ = 0;
    unsigned serversGone_ = 0;  ///< ids of a server that is gone mean nothing to the next
    unsigned timer_ = 0;        ///< ends the pop-up of now
    int hidesDue_ = 0;          ///< of removal notices that were replaced
    unsigned hideSource_ = 0;
};

}  // namespace machine
