// A client of the daemon: connecting, calling and listening, all of it asynchronously.
#include "BusClient.h"

#include <utility>

namespace workbench {

namespace {

constexpr const char* interfaceName = "com.norvane.portmeld";
constexpr const char* clientName = "workbench";

/// How long, in real time, the daemon may take to appear on the bus.
constexpr unsigned appearMilliseconds = 5000;
constexpr int callMilliseconds = 5000;

using OwnedError = std::unique_ptr<GError, decltype(&g_error_free)>;
using OwnedVariant = std::unique_ptr<GVariant, decltype(&g_variant_unref)>;

}  // namespace

BusClient::BusClient(Listener listener)
    : listener_(std::move(listener)), cancellable_(g_cancellable_new()) {}

BusClient::~BusClient() {
    g_cancellable_cancel(cancellable_.get());
    if (subscription_ != 0) {
        g_dbus_connection_signal_unsubscribe(connection_.get(), subscription_);
    }
    if (watch_ != 0) {
        g_bus_unwatch_name(watch_);
    }
}

void BusClient::start(const std::string& address) {
    ++awaited_;
    g_dbus_connection_new_for_address(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, cancellable_.get(), onConnected, this);
}

void BusClient::requestAll() {
    call(interfaceName, "RequesAll", g_variant_new("(i)", clientId), &BusClient::nothing);
}

void BusClient::catchUp() {
    call("org.freedesktop.DBus.Peer", "Ping", nullptr, &BusClient::nothing);
}

void BusClient::registered() {
    ready_ = true;
    listener_.ready(g_dbus_connection_get_unique_name(connection_.get()));
}

void BusClient::fail(const std::string& reason) {
    listener_.failed(reason);
}

namespace {

/// A call under way: whom the answer is for.
struct Call {
    BusClient* client;
    void (BusClient::*answer)();
};

}  // namespace

void BusClient::call(const char* interface,
                     const char* method,
                     GVariant* arguments,
                     Answer answer) {
    ++awaited_;
    g_dbus_connection_call(connection_.get(), daemonName, objectPath, interface, method, arguments,
                           nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, callMilliseconds,
                           cancellable_.get(), onAnswer, new Call{this, answer});
}

void BusClient::onAnswer(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Call> call(static_cast<Call*>(data));
    GError* error = nullptr;
    const OwnedVariant reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error), g_variant_unref);
    const OwnedError ownedError(error, g_error_free);
    if (error != nullptr && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        return;  // the client is gone
    }
    --call->client->awaited_;
    if (error != nullptr) {
        call->client->fail(error->message);
        return;
    }
    (call->client->*call->answer)();
}

void BusClient::onConnected(GObject*, GAsyncResult* result, gpointer data) {
    GError* error = nullptr;
    std::unique_ptr<GDBusConnection, ObjectDeleter> connection(
        g_dbus_connection_new_for_address_finish(result, &error));
    const OwnedError ownedError(error, g_error_free);
    if (error != nullptr && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        return;  // the client is gone
    }
    auto* const self = static_cast<BusClient*>(data);
    --self->awaited_;
    if (error != nullptr) {
        self->fail(error->message);
        return;
    }
    self->connection_ = std::move(connection);
    self->subscription_ = g_dbus_connection_signal_subscribe(
        self->connection_.get(), daemonName, interfaceName, nullptr, objectPath, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, onSignal, self, nullptr);
    self->watch_ = g_bus_watch_name_on_connection(self->connection_.get(), daemonName,
                                                  G_BUS_NAME_WATCHER_FLAGS_NONE, onAppeared,
                                                  nullptr, self, nullptr);
    self->patience_ = everyMilliseconds(appearMilliseconds, [self] {
        self->fail("the daemon has not appeared on the bus");
        return false;
    });
}

void BusClient::onAppeared(GDBusConnection*, const char*, const char*, gpointer data) {
    auto* const self = static_cast<BusClient*>(data);
    self->patience_.reset();
    self->call(interfaceName, "Connect", g_variant_new("(si)", clientName, clientId),
               &BusClient::registered);
}

void BusClient::onSignal(GDBusConnection*,
                         const char*,
                         const char*,
                         const char*,
                         const char* signal,
                         GVariant* arguments,
                         gpointer data) {
    const char* text = "";
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(s)")) != FALSE) {
        g_variant_get(arguments, "(&s)", &text);
    }
    static_cast<BusClient*>(data)->listener_.heard(signal, text);
}

}  // namespace workbench
