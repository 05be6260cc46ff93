// Every message between the daemon and anybody else on the bus, as a monitor of the bus sees it. It
// listens; who speaks is BusPeers, and any other program.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "BusConnection.h"
#include "BusInterface.h"
#include "Ring.h"

namespace workbench {

struct WireMessage {
    std::int64_t time;  ///< on the TV's clock
    std::string kind;   ///< "call", "reply", "error", "signal"
    std::string from;
    std::string to;
    std::string interface;
    std::string member;  ///< of a reply: that of its call
    std::string signature;
    std::string error;  ///< name of an error
    std::uint32_t serial;
    std::uint32_t replyTo;
    std::optional<int> client;  ///< the other end's client id
    Json arguments;
};

class Wire {
public:
    struct Hooks {
        std::function<std::int64_t()> now;
        /// The client id of whoever has this name on the bus.
        std::function<std::optional<int>(const std::string&)> clientOf;
        /// All is set up: from now on nothing is missed.
        std::function<void()> ready;
        /// It cannot listen; why.
        std::function<void(const std::string&)> failed;
        /// It listened, and hears nothing any more; why.
        std::function<void(const std::string&)> lost;
    };

    static constexpr std::size_t mostMessages = 10000;

    /// Starts to listen on the bus at this address.
    Wire(std::string address, Hooks hooks);
    ~Wire();
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    const Ring<WireMessage>& messages() const { return messages_; }

    /// Calls `done` once everything that the daemon has received and sent until now is in messages(); at
    /// once when nothing is heard any more.
    void sync(std::function<void()> done);

private:
    struct Inbox;
    void watch(Connection connection);
    void monitor(Connection connection);
    void lose(const std::string& reason);
    void take(GDBusMessage* message);
    std::string memberOfCall(const std::string& caller, std::uint32_t serial) const;
    static GDBusMessage* onMessage(GDBusConnection* connection,
                                   GDBusMessage* message,
                                   gboolean incoming,
                                   gpointer data);
    static void onClosed(GDBusConnection*, gboolean, GError* error, gpointer data);
    static void onAppeared(GDBusConnection* connection,
                           const char* name,
                           const char* owner,
                           gpointer data);

    std::string address_;
    Hooks hooks_;
    Ring<WireMessage> messages_{mostMessages};
    std::shared_ptr<Inbox> inbox_;
    Connection probe_;    // asks the daemon for nothing, to hear that it has caught up
    Connection monitor_;  // hears everything
    unsigned watch_ = 0;
    unsigned filter_ = 0;
    bool isLost_ = false;
    std::string daemon_;                                      // its unique name
    std::map<std::uint32_t, std::function<void()>> waiting_;  // by the serial of the probe's call
    Cancellable cancellable_;
};

}  // namespace workbench
