// The user's message bus, where his notification server, his applications and his service manager are. It
// may come after the daemon, go and come back: whoever needs it asks for the connection of the moment and
// is told of changes. Nothing here waits.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

#include "Listeners.h"

namespace machine {

class PathWatch;

class SessionBus {
public:
    /// The one of this process; connecting begins with the first call.
    static SessionBus& get();

    SessionBus();
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    /// The connection, or null while there is none; borrowed.
    GDBusConnection* connection() const { return connection_; }

    /// Told of each connection when it is made, and with null when it is lost; later, on the default main
    /// context, except that a connection which is there already is told at once.
    using Listener = std::function<void(GDBusConnection* connection)>;
    /// @return a number for forget(), never 0
    unsigned listen(const Listener& listener);
    void forget(unsigned number);

    /// Try to connect now if there is no connection; for buses whose coming cannot be seen.
    void retry();

    /// Where the bus is: DBUS_SESSION_BUS_ADDRESS, else "bus" in XDG_RUNTIME_DIR, else in
    /// /run/user/UID (systemd's user bus).
    static std::string address();

private:
    static void connected(GObject* source, GAsyncResult* result, void* self);
    static void closed(GDBusConnection* connection, gboolean remote, GError* error, void* self);
    void drop();
    void tryAgain();
    static int waited(void* self);

    std::string address_;
    GDBusConnection* connection_ = nullptr;
    GCancellable* connecting_ = nullptr;
    gulong closedHandler_ = 0;
    unsigned attempts_ = 0;  ///< that failed since something happened to the socket
    unsigned waiting_ = 0;   ///< for the next attempt
    unsigned lastNumber_ = 0;
    Listeners<GDBusConnection*> listeners_;
    std::unique_ptr<PathWatch> socket_;
};

}  // namespace machine
