// The notification server of the user's session (D-Bus interface org.freedesktop.Notifications,
// Desktop Notifications standard 1.2): whether there is one, what it can, and the messages to
// it and from it. What is on the screen is not known here.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

namespace machine {

class NotificationServer {
public:
    /// Told of what the server does. Always later, on the default main context; may end itself, or
    /// ask for the next pop-up, while it is being told.
    class Watcher {
    public:
        /// There is a server, and what it can is known.
        virtual void serverReady() = 0;
        /// The server, or the bus, is gone, or the server could not be started.
        /// @param cause  for the log
        virtual void serverGone(const std::string& cause) = 0;
        /// The signal ActionInvoked. @param key  as given to Notify
        virtual void actionInvoked(std::uint32_t id, const std::string& key) = 0;
        /// The signal NotificationClosed. @param reason  1 = expired; 2, 3, 4 = otherwise
        virtual void closed(std::uint32_t id, std::uint32_t reason) = 0;

    protected:
        ~Watcher() = default;
    };

    /// The one of this process. The first call begins to look for a server.
    static NotificationServer& get();

    NotificationServer();
    ~NotificationServer();
    NotificationServer(const NotificationServer&) = delete;
    NotificationServer& operator=(const NotificationServer&) = delete;

    /// Whether somebody owns the server's name, or the bus can start somebody who will. A start
    /// that has failed is not hoped for again until the services of the bus change.
    bool isThere() const;

    /// Whether somebody owns the name and what he can is known, or was not told in time.
    bool isReady() const;

    /// Have the bus start a server when nobody owns the name. A failure is told by serverGone().
    void start();

    /// The capability "body-markup".
    bool rendersMarkup() const;

    /// The capability "actions".
    bool takesActions() const;

    /// Do-not-disturb: the property Inhibited. False for servers that do not have it.
    bool inhibited() const;

    /// What came of Notify: the id, or 0 and the cause of the failure.
    using Answer = std::function<void(std::uint32_t id, const std::string& failure)>;

    /// Call Notify; only when the server is ready. There is no time limit: a server that wakes up
    /// after a long time is heard, so that what it then shows can be closed.
    /// @param arguments  of Notify; a floating reference is taken
    /// @param scope      no answer comes after it was cancelled
    void notify(GVariant* arguments, GCancellable* scope, Answer answer);

    /// Call CloseNotification without waiting for what comes of it.
    void close(std::uint32_t id);

    /// Who is told from now on, or null; borrowed.
    void setWatcher(Watcher* watcher) { watcher_ = watcher; }

private:
    struct Owner;
    static void appeared(GDBusConnection*, const char* name, const char* owner, void* self);
    static void vanished(GDBusConnection*, const char* name, void* self);
    static void servicesChanged(GDBusConnection*,
                                const char* sender,
                                const char* path,
                                const char* interface,
                                const char* signal,
                                GVariant* arguments,
                                void* self);
    void askActivatable();
    void connectionChanged(GDBusConnection* connection);
    void leaveConnection();
    void loseOwner(const std::string& cause);
    void tellReady();

    Watcher* watcher_ = nullptr;
    GDBusConnection* connection_ = nullptr;
    GCancellable* asking_ = nullptr;  ///< the questions to the bus on this connection
    unsigned nameWatch_ = 0;
    unsigned servicesChange_ = 0;   ///< the subscription
    bool activatable_ = false;      ///< the bus can start a server, as far as is known
    std::unique_ptr<Owner> owner_;  ///< null while nobody owns the name
    unsigned listening_;            ///< last: a connection that is there is told at once
};

}  // namespace machine
