// A notification server that only takes the time. Owns org.freedesktop.Notifications on the session bus,
// answers like a server with buttons, and prints "NAME NANOSECONDS TITLE" for each Notify as soon as its
// message has been read from the bus, before any main loop has turned: NAME is the caller's own, and the
// time is the monotonic one. Each pop-up is closed at once, as by a viewer, so that the next is shown too.
// What the volume monitors of GVfs tell of a new volume is noted in the same way, with NAME "gvfs".
#include <cstdio>
#include <ctime>

#include <gio/gio.h>

namespace {

constexpr const char* NAME = "org.freedesktop.Notifications";
constexpr const char* PATH = "/org/freedesktop/Notifications";
constexpr guint32 CLOSED_BY_VIEWER = 2;

constexpr const char* VOLUME_MONITOR = "org.gtk.Private.RemoteVolumeMonitor";

void note(const char* name, const char* title) {
    timespec at{};
    clock_gettime(CLOCK_MONOTONIC, &at);
    std::printf("%s\t%lld\t%s\n", name,
                static_cast<long long>(at.tv_sec) * 1'000'000'000 + at.tv_nsec, title);
    std::fflush(stdout);
}

/// In the thread that reads the bus.
GDBusMessage* arrived(GDBusConnection*, GDBusMessage* message, gboolean incoming, gpointer) {
    const char* const member = g_dbus_message_get_member(message);
    if (incoming == FALSE) {
        return message;
    }
    if (g_strcmp0(member, "Notify") == 0) {
        const char* name = "";
        const char* title = "";
        g_variant_get_child(g_dbus_message_get_body(message), 0, "&s", &name);
        g_variant_get_child(g_dbus_message_get_body(message), 3, "&s", &title);
        note(name, title);
    } else if (g_strcmp0(member, "VolumeAdded") == 0) {
        note("gvfs", member);
    }
    return message;
}

void called(GDBusConnection* bus,
            const char*,
            const char*,
            const char*,
            const char* method,
            GVariant*,
            GDBusMethodInvocation* invocation,
            gpointer) {
    static guint32 lastId = 0;
    if (g_strcmp0(method, "Notify") == 0) {
        ++lastId;
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(u)", lastId));
        g_dbus_connection_emit_signal(bus, nullptr, PATH, NAME, "NotificationClosed",
                                      g_variant_new("(uu)", lastId, CLOSED_BY_VIEWER), nullptr);
    } else if (g_strcmp0(method, "GetCapabilities") == 0) {
        const char* const capabilities[] = {"actions", "body", nullptr};
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(^as)", capabilities));
    } else if (g_strcmp0(method, "GetServerInformation") == 0) {
        g_dbus_method_invocation_return_value(invocation,
                                              g_variant_new("(ssss)", "clock", "", "1", "1.2"));
    } else {
        g_dbus_method_invocation_return_value(invocation, nullptr);
    }
}

constexpr const char* INTERFACE = R"(<node><interface name="org.freedesktop.Notifications">
  <method name="GetCapabilities"><arg type="as" direction="out"/></method>
  <method name="GetServerInformation">
    <arg type="s" direction="out"/><arg type="s" direction="out"/>
    <arg type="s" direction="out"/><arg type="s" direction="out"/>
  </method>
  <method name="Notify">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
    <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/>
  </method>
  <method name="CloseNotification"><arg type="u" direction="in"/></method>
</interface></node>)";

}  // namespace

int main() {
    g_autoptr(GError) error = nullptr;
    g_autoptr(GDBusConnection) bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (bus == nullptr) {
        g_printerr("no session bus: %s\n", error->message);
        return 1;
    }
    g_autoptr(GDBusNodeInfo) node = g_dbus_node_info_new_for_xml(INTERFACE, nullptr);
    const GDBusInterfaceVTable table = {called, nullptr, nullptr, {}};
    g_dbus_connection_add_filter(bus, arrived, nullptr, nullptr);
    g_dbus_connection_register_object(bus, PATH, node->interfaces[0], &table, nullptr, nullptr,
                                      nullptr);
    g_dbus_connection_signal_subscribe(
        bus, nullptr, VOLUME_MONITOR, "VolumeAdded", nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
           gpointer) {},
        nullptr, nullptr);
    g_bus_own_name_on_connection(
        bus, NAME, G_BUS_NAME_OWNER_FLAGS_NONE,
        [](GDBusConnection*, const char*, gpointer) {
            std::puts("ready");
            std::fflush(stdout);
        },
        nullptr, nullptr, nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
