// The least that a daemon with GDBus can be: it reads the same interface description as ours, puts the
// object on the system bus, owns the name, and answers every call with nothing: gdbus-daemon FILE.
#include <gio/gio.h>

namespace {

GDBusNodeInfo* description = nullptr;

void methodCalled(GDBusConnection*,
                  const char*,
                  const char*,
                  const char*,
                  const char*,
                  GVariant*,
                  GDBusMethodInvocation* invocation,
                  gpointer) {
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

void busAcquired(GDBusConnection* bus, const char*, gpointer) {
    static const GDBusInterfaceVTable table = {methodCalled, nullptr, nullptr, {}};
    g_dbus_connection_register_object(bus, description->path, description->interfaces[0], &table,
                                      nullptr, nullptr, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
    g_autofree char* text = nullptr;
    if (argc != 2 || !g_file_get_contents(argv[1], &text, nullptr, nullptr)) {
        return 2;
    }
    description = g_dbus_node_info_new_for_xml(text, nullptr);
    if (description == nullptr) {
        return 1;
    }
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_bus_own_name(G_BUS_TYPE_SYSTEM, "com.norvane.portmeld", G_BUS_NAME_OWNER_FLAGS_NONE,
                   busAcquired, nullptr, nullptr, nullptr, nullptr);
    g_main_loop_run(loop);
    return 0;
}
