// One asynchronous call for each request.
#include "BusActivation.h"

#include <memory>
#include <utility>

#include "Journal.h"
#include "SessionBus.h"

namespace machine {

namespace {

struct Call {
    std::string id;
    std::function<void()> otherwise;
};

void answered(GObject* source, GAsyncResult* result, void* data) {
    const std::unique_ptr<Call> call(static_cast<Call*>(data));
    g_autoptr(GError) error = nullptr;
    g_autoptr(GVariant) reply =
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
    if (reply != nullptr) {
        return;
    }
    if (call->otherwise && g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN)) {
        call->otherwise();
        return;
    }
    report(Priority::Warning,
           "'" + call->id + "' did not take the launch request: " + error->message +
               "; it must serve the action \"launch\" of org.freedesktop.Application",
           {{"PORTMELD_APPLICATION", call->id}});
}

}  // namespace

std::string objectPathOf(const std::string& id) {
    std::string path = "/" + id;
    for (char& byte : path) {
        if (byte == '.') {
            byte = '/';
        } else if (byte == '-') {
            byte = '_';
        }
    }
    return path;
}

bool canBeActivated(const std::string& id) {
    GDBusConnection* const connection = SessionBus::get().connection();
    // Answers that a lost connection fails come before the news that it is lost.
    return connection != nullptr && g_dbus_connection_is_closed(connection) == FALSE &&
           g_dbus_is_name(id.c_str()) != FALSE && g_dbus_is_unique_name(id.c_str()) == FALSE;
}

void activate(const LaunchRequest& request, std::function<void()> otherwise) {
    const std::string& id = request.applicationId;
    GVariant* const data[] = {g_variant_new_variant(request.dictionary())};
    GVariant* const parameters[] = {
        g_variant_new_string("launch"),
        g_variant_new_array(G_VARIANT_TYPE_VARIANT, data, 1),
        g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0),
    };
    auto call = std::make_unique<Call>(Call{id, std::move(otherwise)});
    g_dbus_connection_call(SessionBus::get().connection(), id.c_str(), objectPathOf(id).c_str(),
                           "org.freedesktop.Application", "ActivateAction",
                           g_variant_new_tuple(parameters, G_N_ELEMENTS(parameters)), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, answered, call.release());
}

}  // namespace machine
