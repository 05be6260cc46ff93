// Handing GIO's answer on.
#include "ServerCall.h"

#include <memory>
#include <utility>

namespace machine {

namespace {

void answered(GObject* source, GAsyncResult* result, void* data) {
    const std::unique_ptr<ServerAnswer> answer(static_cast<ServerAnswer*>(data));
    g_autoptr(GError) error = nullptr;
    g_autoptr(GVariant) value =
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) == FALSE) {
        if (error != nullptr) {
            g_dbus_error_strip_remote_error(error);
        }
        (*answer)(value, error);
    }
}

}  // namespace

void callServer(GDBusConnection* connection,
                const ServerMethod& method,
                GVariant* arguments,
                int milliseconds,
                GCancellable* scope,
                ServerAnswer answer) {
    auto kept = std::make_unique<ServerAnswer>(std::move(answer));
    g_dbus_connection_call(connection, method.destination, method.path, method.interface,
                           method.name, arguments, G_VARIANT_TYPE(method.answerType),
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, milliseconds, scope, answered,
                           kept.release());
}

}  // namespace machine
