// The texts, and the call of the notification server.
#include "Notice.h"

#include <libintl.h>

#include <clocale>

#include <gio/gio.h>

#ifndef PORTMELD_PATH_PREFIX
#define PORTMELD_PATH_PREFIX ""
#endif

namespace handlers {

namespace {

constexpr const char* DOMAIN = "portmeld-handlers";
constexpr int PATIENCE_MS = 10000;

const char* bodyFor(Kind kind) {
    switch (kind) {
        case Kind::Folder:
            return gettext("No file manager is installed that could show this folder.");
        case Kind::Video:
            return gettext("No player is installed that could play this video.");
        case Kind::Picture:
            return gettext("No viewer is installed that could show this picture.");
        case Kind::Music:
            return gettext("No player is installed that could play this music.");
        case Kind::Camera:
            return gettext(
                "No application is installed that could show the pictures of this camera.");
    }
    return "";
}

void useLanguageOfUser() {
    std::setlocale(LC_ALL, "");
    bindtextdomain(DOMAIN, PORTMELD_PATH_PREFIX PORTMELD_LOCALE_DIR);
    bind_textdomain_codeset(DOMAIN, "UTF-8");
    textdomain(DOMAIN);
}

}  // namespace

void tellThatNothingOpens(Kind kind) {
    useLanguageOfUser();
    g_autoptr(GDBusConnection) bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus == nullptr) {
        return;
    }
    // Application, replaced notification, icon, title, body, actions, hints, time-out by the server.
    GVariant* const parameters[] = {
        g_variant_new_string("portmeld"),
        g_variant_new_uint32(0),
        g_variant_new_string("dialog-information"),
        g_variant_new_string(gettext("Nothing to open this with")),
        g_variant_new_string(bodyFor(kind)),
        g_variant_new_array(G_VARIANT_TYPE_STRING, nullptr, 0),
        g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0),
        g_variant_new_int32(-1),
    };
    g_autoptr(GVariant) reply = g_dbus_connection_call_sync(
        bus, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
        "org.freedesktop.Notifications", "Notify",
        g_variant_new_tuple(parameters, G_N_ELEMENTS(parameters)), nullptr, G_DBUS_CALL_FLAGS_NONE,
        PATIENCE_MS, nullptr, nullptr);
}

}  // namespace handlers
