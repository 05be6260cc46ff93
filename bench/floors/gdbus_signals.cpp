// What a signal to one peer costs with GDBus, in instructions counted by callgrind: gdbus-signals COUNT
// fresh|shared LENGTH PEER sends so many signals with a text of that length to a unique name on the bus, each
// with values of its own ("fresh") or all with the same ("shared"), until the last is written. The peer has
// to be there: for one that is not the bus answers with errors, which are no part of a signal.
#include <cstdlib>
#include <string>
#include <string_view>

#include <gio/gio.h>

#include "../programs/Counting.h"

int main(int argc, char** argv) {
    if (argc != 5) {
        return 2;
    }
    const int count = std::atoi(argv[1]);
    const bool shared = std::string_view(argv[2]) == "shared";
    const std::string text(static_cast<std::size_t>(std::atoi(argv[3])), 'x');
    g_autoptr(GDBusConnection) bus = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr);
    if (bus == nullptr) {
        return 1;
    }
    const auto values = [&] { return g_variant_ref_sink(g_variant_new("(s)", text.c_str())); };
    g_autoptr(GVariant) same = values();
    const auto send = [&] {
        g_autoptr(GVariant) own = shared ? g_variant_ref(same) : values();
        return g_dbus_connection_emit_signal(bus, argv[4], "/com/norvane/portmeld",
                                             "com.norvane.portmeld", "mm_device_action", own,
                                             nullptr);
    };
    // The first signal pays for what a process needs only once.
    if (!send() || !g_dbus_connection_flush_sync(bus, nullptr, nullptr)) {
        return 1;
    }
    startCounting();
    for (int i = 0; i < count; ++i) {
        if (!send()) {
            return 1;
        }
    }
    g_dbus_connection_flush_sync(bus, nullptr, nullptr);
    stopCounting();
    return 0;
}
