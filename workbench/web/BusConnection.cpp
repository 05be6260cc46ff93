// A connection to the private bus: GLib's asynchronous calls with C++ functions at their ends.
#include "BusConnection.h"

namespace workbench {

namespace {

using OwnedError = std::unique_ptr<GError, decltype(&g_error_free)>;
using Connected = std::function<void(Connection, const std::string&)>;
using Answered = std::function<void(GVariant*, const GError*)>;

bool isCancelled(const GError* error) {
    return error != nullptr && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
}

void onConnected(GObject*, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Connected> done(static_cast<Connected*>(data));
    GError* error = nullptr;
    Connection connection(g_dbus_connection_new_for_address_finish(result, &error));
    const OwnedError owned(error, g_error_free);
    if (!isCancelled(error)) {
        (*done)(std::move(connection), error != nullptr ? error->message : "");
    }
}

void onAnswered(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Answered> done(static_cast<Answered*>(data));
    GError* error = nullptr;
    const std::unique_ptr<GVariant, decltype(&g_variant_unref)> reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error), g_variant_unref);
    const OwnedError owned(error, g_error_free);
    if (!isCancelled(error)) {
        (*done)(reply.get(), error);
    }
}

}  // namespace

void connectToBus(const std::string& address, const Cancellable& cancellable, Connected done) {
    g_dbus_connection_new_for_address(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, cancellable.get(), onConnected, new Connected(std::move(done)));
}

void callOnBus(GDBusConnection* connection,
               const char* destination,
               const char* path,
               const char* interface,
               const char* member,
               GVariant* arguments,
               int timeout,
               const Cancellable& cancellable,
               Answered done) {
    g_dbus_connection_call(connection, destination, path, interface, member, arguments, nullptr,
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, timeout, cancellable.get(), onAnswered,
                           new Answered(std::move(done)));
}

}  // namespace workbench
