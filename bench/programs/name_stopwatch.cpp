// How long a program takes from its start until it owns a name on the system bus, in nanoseconds:
// name-stopwatch NAME PROGRAM [ARGUMENT...]. The program is ended afterwards. Fails when the program ends
// by itself, or does not get the name within ten seconds.
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <gio/gio.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr int FAILURE = 1;
constexpr int USAGE = 2;
constexpr guint LIMIT_MS = 10'000;

struct Race {
    GMainLoop* loop;
    long long end = 0;
};

long long now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

void nameOwned(GDBusConnection*,
               const char*,
               const char*,
               const char*,
               const char*,
               GVariant* parameters,
               gpointer data) {
    const char* owner = nullptr;
    g_variant_get(parameters, "(&s&s&s)", nullptr, nullptr, &owner);
    if (owner[0] != '\0') {
        auto* race = static_cast<Race*>(data);
        race->end = now();
        g_main_loop_quit(race->loop);
    }
}

gboolean giveUp(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        (void)std::fputs("name-stopwatch NAME PROGRAM [ARGUMENT...]\n", stderr);
        return USAGE;
    }
    g_autoptr(GError) error = nullptr;
    g_autoptr(GDBusConnection) bus = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &error);
    if (bus == nullptr) {
        (void)std::fprintf(stderr, "no bus: %s\n", error->message);
        return FAILURE;
    }
    Race race{g_main_loop_new(nullptr, FALSE)};
    g_dbus_connection_signal_subscribe(bus, "org.freedesktop.DBus", "org.freedesktop.DBus",
                                       "NameOwnerChanged", nullptr, argv[1],
                                       G_DBUS_SIGNAL_FLAGS_NONE, nameOwned, &race, nullptr);
    // A question behind the subscription: when it is answered, the bus knows of the subscription.
    g_autoptr(GVariant) answer = g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId",
        nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);

    pid_t child = 0;
    const long long start = now();
    if (posix_spawn(&child, argv[2], nullptr, nullptr, argv + 2, environ) != 0) {
        (void)std::fprintf(stderr, "cannot start %s\n", argv[2]);
        return FAILURE;
    }
    g_timeout_add(LIMIT_MS, giveUp, race.loop);
    g_main_loop_run(race.loop);
    g_main_loop_unref(race.loop);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (race.end == 0) {
        (void)std::fprintf(stderr, "%s does not own %s\n", argv[2], argv[1]);
        return FAILURE;
    }
    (void)std::printf("%lld\n", race.end - start);
    return 0;
}
