// Listening on the bus. GDBus hands messages to a filter in its own worker thread; there each is only
// handed on to the main loop, where everything else happens.
#include "Wire.h"

#include <utility>

namespace workbench {

/// Where the worker leaves messages. Only the main thread looks at `wire`.
struct Wire::Inbox {
    Wire* wire;
};

namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busObject = "/org/freedesktop/DBus";
constexpr int usualPatience = -1;

/// How far back the call of a reply is looked for.
constexpr std::uint64_t longestTalk = 1000;

std::string textOf(const char* text) {
    return text == nullptr ? "" : text;
}

std::string kindOf(GDBusMessage* message) {
    switch (g_dbus_message_get_message_type(message)) {
        case G_DBUS_MESSAGE_TYPE_METHOD_CALL:
            return "call";
        case G_DBUS_MESSAGE_TYPE_METHOD_RETURN:
            return "reply";
        case G_DBUS_MESSAGE_TYPE_ERROR:
            return "error";
        default:
            return "signal";
    }
}

}  // namespace

Wire::Wire(std::string address, Hooks hooks)
    : address_(std::move(address)),
      hooks_(std::move(hooks)),
      inbox_(std::make_shared<Inbox>(Inbox{this})) {
    connectToBus(address_, cancellable_, [this](Connection connection, const std::string& error) {
        if (connection) {
            watch(std::move(connection));
        } else {
            hooks_.failed(error);
        }
    });
}

Wire::~Wire() {
    inbox_->wire = nullptr;
    if (watch_ != 0) {
        g_bus_unwatch_name(watch_);
    }
    if (filter_ != 0) {
        g_dbus_connection_remove_filter(monitor_.get(), filter_);
    }
    for (const Connection* const connection : {&probe_, &monitor_}) {
        if (*connection) {
            g_signal_handlers_disconnect_by_data(connection->get(), this);
        }
    }
}

void Wire::watch(Connection connection) {
    probe_ = std::move(connection);
    g_signal_connect(probe_.get(), "closed", G_CALLBACK(onClosed), this);
    watch_ =
        g_bus_watch_name_on_connection(probe_.get(), daemonBusName, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                       onAppeared, nullptr, this, nullptr);
}

void Wire::onAppeared(GDBusConnection*, const char*, const char* owner, gpointer data) {
    auto* const self = static_cast<Wire*>(data);
    self->daemon_ = owner;
    connectToBus(self->address_, self->cancellable_,
                 [self](Connection connection, const std::string& error) {
                     if (connection) {
                         self->monitor(std::move(connection));
                     } else {
                         self->hooks_.failed(error);
                     }
                 });
}

void Wire::monitor(Connection connection) {
    monitor_ = std::move(connection);
    g_signal_connect(monitor_.get(), "closed", G_CALLBACK(onClosed), this);
    filter_ = g_dbus_connection_add_filter(
        monitor_.get(), onMessage, new std::shared_ptr<Inbox>(inbox_),
        [](gpointer inbox) { delete static_cast<std::shared_ptr<Inbox>*>(inbox); });
    callOnBus(monitor_.get(), busName, busObject, "org.freedesktop.DBus.Monitoring",
              "BecomeMonitor", g_variant_new("(asu)", nullptr, 0U), usualPatience, cancellable_,
              [this](GVariant*, const GError* error) {
                  if (error != nullptr) {
                      hooks_.failed(error->message);
                  } else {
                      hooks_.ready();
                  }
              });
}

void Wire::onClosed(GDBusConnection*, gboolean, GError* error, gpointer data) {
    static_cast<Wire*>(data)->lose(error == nullptr ? "it was closed" : error->message);
}

/// Whoever waits waits no longer.
void Wire::lose(const std::string& reason) {
    if (isLost_) {
        return;
    }
    isLost_ = true;
    const auto waiting = std::move(waiting_);
    waiting_.clear();
    hooks_.lost(reason);
    for (const auto& [serial, done] : waiting) {
        done();
    }
}

GDBusMessage* Wire::onMessage(GDBusConnection* connection,
                              GDBusMessage* message,
                              gboolean incoming,
                              gpointer data) {
    // What is meant for the connection itself takes its usual way; an answer to anything else would end
    // the monitor.
    const char* const self = g_dbus_connection_get_unique_name(connection);
    if (incoming == FALSE || g_strcmp0(g_dbus_message_get_destination(message), self) == 0) {
        return message;
    }
    struct Delivery {
        std::shared_ptr<Inbox> inbox;
        std::unique_ptr<GDBusMessage, ObjectDeleter> message;
    };
    auto delivery = std::make_unique<Delivery>();
    delivery->inbox = *static_cast<std::shared_ptr<Inbox>*>(data);
    delivery->message.reset(message);
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer delivered) -> gboolean {
            auto& one = *static_cast<Delivery*>(delivered);
            if (one.inbox->wire != nullptr) {
                one.inbox->wire->take(one.message.get());
            }
            return G_SOURCE_REMOVE;
        },
        delivery.release(), [](gpointer delivered) { delete static_cast<Delivery*>(delivered); });
    return nullptr;
}

std::string Wire::memberOfCall(const std::string& caller, std::uint32_t serial) const {
    for (std::uint64_t n = messages_.end();
         n > messages_.begin() && messages_.end() - n < longestTalk; --n) {
        const WireMessage& message = messages_.at(n - 1);
        if (message.kind == "call" && message.serial == serial && message.from == caller) {
            return message.member;
        }
    }
    return "";
}

void Wire::take(GDBusMessage* message) {
    const std::string from = textOf(g_dbus_message_get_sender(message));
    std::string to = textOf(g_dbus_message_get_destination(message));
    const std::string probe = g_dbus_connection_get_unique_name(probe_.get());
    const std::uint32_t replyTo = g_dbus_message_get_reply_serial(message);
    if (to == probe && from == daemon_) {
        if (const auto waiting = waiting_.extract(replyTo)) {
            waiting.mapped()();
        }
        return;
    }
    to = to == daemonBusName ? daemon_ : to;
    const bool daemonIsIn = from == daemon_ || to == daemon_;
    if (!daemonIsIn || from == probe || to == probe || from == busName || to == busName) {
        return;
    }
    const std::string kind = kindOf(message);
    const std::string& other = from == daemon_ ? to : from;
    const bool isAnswer = kind == "reply" || kind == "error";
    messages_.add(
        {hooks_.now(), kind, from, to, textOf(g_dbus_message_get_interface(message)),
         isAnswer ? memberOfCall(to, replyTo) : textOf(g_dbus_message_get_member(message)),
         textOf(g_dbus_message_get_signature(message)),
         textOf(g_dbus_message_get_error_name(message)), g_dbus_message_get_serial(message),
         replyTo, other.empty() ? std::nullopt : hooks_.clientOf(other),
         jsonOf(g_dbus_message_get_body(message))});
}

void Wire::sync(std::function<void()> done) {
    // The properties of the daemon's object, of which there are none: asking for them takes the same way
    // through its main loop as any call does.
    const std::unique_ptr<GDBusMessage, ObjectDeleter> message(g_dbus_message_new_method_call(
        daemonBusName, daemonObject, "org.freedesktop.DBus.Properties", "GetAll"));
    g_dbus_message_set_body(message.get(), g_variant_new("(s)", daemonInterface));
    guint32 serial = 0;
    if (isLost_) {
        done();
        return;
    }
    if (g_dbus_connection_send_message(probe_.get(), message.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                       &serial, nullptr) != FALSE) {
        waiting_[serial] = std::move(done);
    } else {
        lose("it takes no message");
        done();
    }
}

}  // namespace workbench
