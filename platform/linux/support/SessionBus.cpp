// Connecting to the user's bus, and connecting again.
#include "SessionBus.h"

#include <unistd.h>

#include "Journal.h"
#include "PathWatch.h"

namespace machine {

namespace {

constexpr unsigned FIRST_WAIT_MILLISECONDS = 50;
constexpr unsigned MOST_ATTEMPTS = 7;  ///< within some seconds

/// The socket's path of a "unix:path=..." address, or "" for every other kind.
std::string socketPath(const std::string& address) {
    const std::string start = "unix:path=";
    if (address.compare(0, start.size(), start) != 0) {
        return "";
    }
    const std::string path =
        address.substr(start.size(), address.find_first_of(",;") - start.size());
    g_autofree char* decoded = g_uri_unescape_string(path.c_str(), nullptr);
    return decoded != nullptr ? decoded : "";
}

}  // namespace

std::string SessionBus::address() {
    if (const char* address = g_getenv("DBUS_SESSION_BUS_ADDRESS")) {
        if (*address != '\0') {
            return address;
        }
    }
    const char* folder = g_getenv("XDG_RUNTIME_DIR");
    const std::string path = (folder != nullptr && *folder == '/')
                                 ? std::string(folder)
                                 : "/run/user/" + std::to_string(getuid());
    g_autofree char* escaped = g_dbus_address_escape_value((path + "/bus").c_str());
    return std::string("unix:path=") + escaped;
}

SessionBus& SessionBus::get() {
    static SessionBus bus;
    return bus;
}

SessionBus::SessionBus() : address_(address()) {
    const std::string path = socketPath(address_);
    if (!path.empty()) {
        socket_ = std::make_unique<PathWatch>(path, [this] {
            attempts_ = 0;
            retry();
        });
    }
    // Nobody has a question for the viewer yet, and the daemon's clients wait for its name on the other bus.
    waiting_ = g_timeout_add(FIRST_WAIT_MILLISECONDS, waited, this);
}

SessionBus::~SessionBus() {
    drop();
    if (waiting_ != 0) {
        g_source_remove(waiting_);
    }
    if (connecting_ != nullptr) {
        g_cancellable_cancel(connecting_);
        g_object_unref(connecting_);
    }
}

unsigned SessionBus::listen(const Listener& listener) {
    const unsigned number = ++lastNumber_;
    listeners_.add(number, listener);
    if (connection_ != nullptr) {
        listener(connection_);
    }
    return number;
}

void SessionBus::forget(unsigned number) {
    (void)listeners_.remove(number);
}

void SessionBus::retry() {
    if (connection_ != nullptr || connecting_ != nullptr) {
        return;
    }
    connecting_ = g_cancellable_new();
    g_dbus_connection_new_for_address(
        address_.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, connecting_, connected, this);
}

void SessionBus::connected(GObject*, GAsyncResult* result, void* self) {
    g_autoptr(GError) error = nullptr;
    GDBusConnection* connection = g_dbus_connection_new_for_address_finish(result, &error);
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        return;
    }
    auto& bus = *static_cast<SessionBus*>(self);
    g_clear_object(&bus.connecting_);
    if (connection == nullptr) {
        report(Priority::Debug, "no session bus yet: " + std::string(error->message),
               {{"PORTMELD_BUS", bus.address_}});
        bus.tryAgain();
        return;
    }
    bus.attempts_ = 0;
    bus.connection_ = connection;
    bus.closedHandler_ = g_signal_connect(connection, "closed", G_CALLBACK(closed), self);
    bus.listeners_.tell(connection);
}

/// A socket is seen before anybody listens on it: a few attempts are made, each after twice the time, and
/// then none until something happens to the socket again.
void SessionBus::tryAgain() {
    const bool isThere = access(socketPath(address_).c_str(), F_OK) == 0;
    if (isThere && waiting_ == 0 && attempts_ < MOST_ATTEMPTS) {
        waiting_ = g_timeout_add(FIRST_WAIT_MILLISECONDS << attempts_, waited, this);
        ++attempts_;
    }
}

int SessionBus::waited(void* self) {
    auto& bus = *static_cast<SessionBus*>(self);
    bus.waiting_ = 0;
    bus.retry();
    return G_SOURCE_REMOVE;
}

void SessionBus::closed(GDBusConnection*, gboolean, GError*, void* self) {
    auto& bus = *static_cast<SessionBus*>(self);
    report(Priority::Notice,
           "the session bus is gone; notifications and launches wait for the next",
           {{"PORTMELD_BUS", bus.address_}});
    bus.drop();
    bus.listeners_.tell(nullptr);
    // A new bus may be listening already, at a socket that was replaced before the old one closed.
    bus.retry();
}

void SessionBus::drop() {
    if (connection_ != nullptr) {
        g_signal_handler_disconnect(connection_, closedHandler_);
        g_clear_object(&connection_);
    }
}

}  // namespace machine
