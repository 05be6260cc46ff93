// The server's name on the bus, its owner of the moment, and what that owner said about itself.
#include "NotificationServer.h"

#include <utility>

#include "ServerCall.h"
#include "SessionBus.h"

namespace machine {

namespace {

constexpr const char* NAME = "org.freedesktop.Notifications";
constexpr const char* PATH = "/org/freedesktop/Notifications";
constexpr const char* PROPERTIES = "org.freedesktop.DBus.Properties";
constexpr const char* INHIBITED = "Inhibited";

/// The bus itself, as its interface org.freedesktop.DBus names it.
constexpr const char* BUS = "org.freedesktop.DBus";
constexpr const char* BUS_PATH = "/org/freedesktop/DBus";

/// A server that says nothing for so long is taken for one that renders no markup and has buttons:
/// a pop-up is waiting.
constexpr int CAPABILITIES_MILLISECONDS = 2'000;

constexpr int USUAL_LIMIT = -1;

bool contains(GVariant* texts, const char* wanted) {
    GVariantIter iterator;
    g_variant_iter_init(&iterator, texts);
    const char* text = nullptr;
    while (g_variant_iter_next(&iterator, "&s", &text) != FALSE) {
        if (std::string(wanted) == text) {
            return true;
        }
    }
    return false;
}

}  // namespace

/// Whoever owns the name, by his unique name: another one may be quite different. Its end forgets
/// every question that is still open.
struct NotificationServer::Owner {
    Owner(NotificationServer& server, const char* uniqueName)
        : server_(server),
          connection_(G_DBUS_CONNECTION(g_object_ref(server.connection_))),
          name_(uniqueName),
          questions_(g_cancellable_new()) {
        // Before anything is asked, so that no signal is missed.
        signals_ = g_dbus_connection_signal_subscribe(connection_, uniqueName, NAME, nullptr, PATH,
                                                      nullptr, G_DBUS_SIGNAL_FLAGS_NONE, signalled,
                                                      this, nullptr);
        properties_ = g_dbus_connection_signal_subscribe(
            connection_, uniqueName, PROPERTIES, "PropertiesChanged", PATH, NAME,
            G_DBUS_SIGNAL_FLAGS_NONE, propertiesChanged, this, nullptr);
        askCapabilities();
        askInhibited();
    }

    ~Owner() {
        g_cancellable_cancel(questions_);
        g_object_unref(questions_);
        g_dbus_connection_signal_unsubscribe(connection_, signals_);
        g_dbus_connection_signal_unsubscribe(connection_, properties_);
        g_object_unref(connection_);
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    void call(const char* method,
              GVariant* arguments,
              const char* answerType,
              int milliseconds,
              GCancellable* scope,
              ServerAnswer answer) {
        callServer(connection_, {name_.c_str(), PATH, NAME, method, answerType}, arguments,
                   milliseconds, scope, std::move(answer));
    }

    /// Whether the server knew the id makes no difference: it does not show it any more.
    void close(std::uint32_t id) {
        g_dbus_connection_call(connection_, name_.c_str(), PATH, NAME, "CloseNotification",
                               g_variant_new("(u)", id), nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
                               USUAL_LIMIT, nullptr, nullptr, nullptr);
    }

    void askCapabilities() {
        call("GetCapabilities", nullptr, "(as)", CAPABILITIES_MILLISECONDS, questions_,
             [this](GVariant* answer, const GError*) {
                 if (answer != nullptr) {
                     g_autoptr(GVariant) list = g_variant_get_child_value(answer, 0);
                     markup = contains(list, "body-markup");
                     actions = contains(list, "actions");
                 }
                 ready = true;
                 server_.tellReady();
             });
    }

    /// Most servers have no such property; their error says so.
    void askInhibited() {
        callServer(connection_, {name_.c_str(), PATH, PROPERTIES, "Get", "(v)"},
                   g_variant_new("(ss)", NAME, INHIBITED), USUAL_LIMIT, questions_,
                   [this](GVariant* answer, const GError*) {
                       if (answer != nullptr) {
                           g_autoptr(GVariant) boxed = g_variant_get_child_value(answer, 0);
                           g_autoptr(GVariant) value = g_variant_get_variant(boxed);
                           takeInhibited(value);
                       }
                   });
    }

    void takeInhibited(GVariant* value) {
        inhibited = g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) != FALSE &&
                    g_variant_get_boolean(value) != FALSE;
    }

    static void signalled(GDBusConnection*,
                          const char*,
                          const char*,
                          const char*,
                          const char* name,
                          GVariant* arguments,
                          void* self) {
        Watcher* const watcher = static_cast<Owner*>(self)->server_.watcher_;
        if (watcher == nullptr) {
            return;
        }
        const std::string signal = name;
        std::uint32_t id = 0;
        if (signal == "ActionInvoked" &&
            g_variant_is_of_type(arguments, G_VARIANT_TYPE("(us)")) != FALSE) {
            const char* key = nullptr;
            g_variant_get(arguments, "(u&s)", &id, &key);
            watcher->actionInvoked(id, key);
        } else if (signal == "NotificationClosed" &&
                   g_variant_is_of_type(arguments, G_VARIANT_TYPE("(uu)")) != FALSE) {
            std::uint32_t reason = 0;
            g_variant_get(arguments, "(uu)", &id, &reason);
            watcher->closed(id, reason);
        }
    }

    static void propertiesChanged(GDBusConnection*,
                                  const char*,
                                  const char*,
                                  const char*,
                                  const char*,
                                  GVariant* arguments,
                                  void* self) {
        if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sa{sv}as)")) == FALSE) {
            return;
        }
        auto& owner = *static_cast<Owner*>(self);
        g_autoptr(GVariant) changed = g_variant_get_child_value(arguments, 1);
        g_autoptr(GVariant) value = g_variant_lookup_value(changed, INHIBITED, nullptr);
        if (value != nullptr) {
            owner.takeInhibited(value);
            return;
        }
        g_autoptr(GVariant) invalidated = g_variant_get_child_value(arguments, 2);
        if (contains(invalidated, INHIBITED)) {
            owner.askInhibited();
        }
    }

    bool ready = false;
    bool markup = false;
    bool actions = true;
    bool inhibited = false;

private:
    NotificationServer& server_;
    GDBusConnection* connection_;
    std::string name_;
    GCancellable* questions_;
    unsigned signals_;
    unsigned properties_;
};

NotificationServer& NotificationServer::get() {
    static NotificationServer server;
    return server;
}

NotificationServer::NotificationServer()
    : listening_(SessionBus::get().listen(
          [this](GDBusConnection* connection) { connectionChanged(connection); })) {}

NotificationServer::~NotificationServer() {
    SessionBus::get().forget(listening_);
    owner_.reset();
    leaveConnection();
}

bool NotificationServer::isThere() const {
    return owner_ != nullptr || activatable_;
}

bool NotificationServer::isReady() const {
    return owner_ != nullptr && owner_->ready;
}

bool NotificationServer::rendersMarkup() const {
    return isReady() && owner_->markup;
}

bool NotificationServer::takesActions() const {
    return isReady() && owner_->actions;
}

bool NotificationServer::inhibited() const {
    return owner_ != nullptr && owner_->inhibited;
}

void NotificationServer::start() {
    if (owner_ != nullptr || connection_ == nullptr) {
        return;
    }
    callServer(connection_, {BUS, BUS_PATH, BUS, "StartServiceByName", "(u)"},
               g_variant_new("(su)", NAME, 0U), USUAL_LIMIT, asking_,
               [this](GVariant*, const GError* error) {
                   if (error == nullptr || owner_ != nullptr) {
                       return;
                   }
                   // Not a second time, until the bus says that something has changed.
                   activatable_ = false;
                   if (watcher_ != nullptr) {
                       watcher_->serverGone("the notification server did not start: " +
                                            std::string(error->message));
                   }
               });
}

void NotificationServer::notify(GVariant* arguments, GCancellable* scope, Answer answer) {
    owner_->call("Notify", arguments, "(u)", G_MAXINT, scope,
                 [answer = std::move(answer)](GVariant* value, const GError* error) {
                     std::uint32_t id = 0;
                     if (value != nullptr) {
                         g_variant_get(value, "(u)", &id);
                     }
                     answer(id, error != nullptr ? error->message : "it was given no id");
                 });
}

void NotificationServer::close(std::uint32_t id) {
    if (owner_ != nullptr) {
        owner_->close(id);
    }
}

void NotificationServer::connectionChanged(GDBusConnection* connection) {
    leaveConnection();
    loseOwner("the session bus is gone");
    if (connection == nullptr) {
        return;
    }
    connection_ = G_DBUS_CONNECTION(g_object_ref(connection));
    asking_ = g_cancellable_new();
    nameWatch_ = g_bus_watch_name_on_connection(connection, NAME, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                                appeared, vanished, this, nullptr);
    servicesChange_ = g_dbus_connection_signal_subscribe(
        connection, BUS, BUS, "ActivatableServicesChanged", BUS_PATH, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, servicesChanged, this, nullptr);
    askActivatable();
}

/// Whether the bus could start a server.
void NotificationServer::askActivatable() {
    callServer(connection_, {BUS, BUS_PATH, BUS, "ListActivatableNames", "(as)"}, nullptr,
               USUAL_LIMIT, asking_, [this](GVariant* answer, const GError*) {
                   if (answer != nullptr) {
                       g_autoptr(GVariant) names = g_variant_get_child_value(answer, 0);
                       activatable_ = contains(names, NAME);
                   }
               });
}

void NotificationServer::leaveConnection() {
    activatable_ = false;
    if (connection_ != nullptr) {
        g_bus_unwatch_name(std::exchange(nameWatch_, 0));
        g_dbus_connection_signal_unsubscribe(connection_, std::exchange(servicesChange_, 0));
        g_cancellable_cancel(asking_);
        g_clear_object(&asking_);
        g_clear_object(&connection_);
    }
}

/// A server was installed, or removed.
void NotificationServer::servicesChanged(
    GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*, void* self) {
    static_cast<NotificationServer*>(self)->askActivatable();
}

void NotificationServer::appeared(GDBusConnection*, const char*, const char* owner, void* self) {
    auto& server = *static_cast<NotificationServer*>(self);
    server.owner_ = std::make_unique<Owner>(server, owner);
}

void NotificationServer::vanished(GDBusConnection*, const char*, void* self) {
    auto& server = *static_cast<NotificationServer*>(self);
    if (server.owner_ != nullptr) {
        server.loseOwner("the notification server is gone");
    }
}

/// Told also when there was none: a pop-up may be waiting for one to be started.
void NotificationServer::loseOwner(const std::string& cause) {
    owner_.reset();
    if (watcher_ != nullptr) {
        watcher_->serverGone(cause);
    }
}

void NotificationServer::tellReady() {
    if (watcher_ != nullptr) {
        watcher_->serverReady();
    }
}

}  // namespace machine
