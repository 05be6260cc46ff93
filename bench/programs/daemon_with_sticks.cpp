// The daemon, complete and on the Linux machine, but with ports that hold COUNT sticks of PRODUCTS
// products: daemon-with-sticks COUNT PRODUCTS. It takes orders on standard input, answers each with a
// line, and its end ends the process:
//   enumerate   list the sticks, as the first question of a client does
//   pull        the last stick is removed
//   count       count instructions for callgrind, from here on
//   stop        once all signals are sent, count no longer
// The 30 seconds are left out in which the daemon takes no event after its start.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <gio/gio.h>

#include "Counting.h"
#include "MMDeviceMgr.h"
#include "Ports.h"

/// src/main.cpp, compiled under this name.
int portmeld_main(int argc, char** argv);

extern "C" {
void __real_g_main_loop_run(GMainLoop* loop);
void __wrap_g_main_loop_run(GMainLoop* loop);
guint __real_g_timeout_add(guint interval, GSourceFunc function, gpointer data);
guint __wrap_g_timeout_add(guint interval, GSourceFunc function, gpointer data);
}

namespace {

constexpr int USAGE = 2;
constexpr guint START_UP = 30'000;
constexpr int STANDARD_INPUT = 0;

void sendEverything() {
    g_autoptr(GDBusConnection) connection = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr);
    if (connection != nullptr) {
        g_dbus_connection_flush_sync(connection, nullptr, nullptr);
    }
}

bool obey(std::string_view order) {
    if (order == "enumerate") {
        return CMMDeviceMgr::GetInstance()->GetDeviceList() != nullptr;
    }
    if (order == "pull") {
        return pullLastStick();
    }
    if (order == "count") {
        startCounting();
        return true;
    }
    if (order == "stop") {
        sendEverything();
        stopCounting();
        return true;
    }
    return false;
}

gboolean takeOrder(GIOChannel* input, GIOCondition, gpointer loop) {
    g_autofree char* line = nullptr;
    gsize end = 0;
    if (g_io_channel_read_line(input, &line, nullptr, &end, nullptr) != G_IO_STATUS_NORMAL) {
        g_main_loop_quit(static_cast<GMainLoop*>(loop));
        return G_SOURCE_REMOVE;
    }
    (void)std::puts(obey({line, end}) ? "done" : "refused");
    (void)std::fflush(stdout);
    return G_SOURCE_CONTINUE;
}

}  // namespace

void __wrap_g_main_loop_run(GMainLoop* loop) {
    GIOChannel* const input = g_io_channel_unix_new(STANDARD_INPUT);
    g_io_add_watch(input, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), takeOrder, loop);
    __real_g_main_loop_run(loop);
    g_io_channel_unref(input);
}

guint __wrap_g_timeout_add(guint interval, GSourceFunc function, gpointer data) {
    return __real_g_timeout_add(interval == START_UP ? 0 : interval, function, data);
}

int main(int argc, char** argv) {
    if (argc != 3) {
        (void)std::fputs("daemon-with-sticks COUNT PRODUCTS\n", stderr);
        return USAGE;
    }
    plugSticks(std::atoi(argv[1]), std::atoi(argv[2]));
    return portmeld_main(argc, argv);
}
