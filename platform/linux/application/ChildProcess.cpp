// Spawning with GLib; the main loop reaps the child.
#include "ChildProcess.h"

#include <unistd.h>

#include <string>

#include "Journal.h"

namespace machine {

namespace {

/// What a service manager tells a service of itself: systemd.exec(5), sd_notify(3).
constexpr const char* DAEMONS_OWN[] = {"NOTIFY_SOCKET", "INVOCATION_ID", "JOURNAL_STREAM",
                                       "WATCHDOG_PID", "WATCHDOG_USEC"};

char** environmentOf(const LaunchRequest& request) {
    char** environment = g_get_environ();
    for (const char* name : DAEMONS_OWN) {
        environment = g_environ_unsetenv(environment, name);
    }
    return g_environ_setenv(environment, LaunchRequest::VARIABLE, request.json().c_str(), TRUE);
}

/// Runs in the child, between fork and exec.
void leaveSession(void*) {
    setsid();
}

void reap(GPid child, int, void*) {
    g_spawn_close_pid(child);
}

}  // namespace

void startChild(const LaunchRequest& request, const DesktopEntry& entry) {
    const std::string& id = request.applicationId;
    if (g_getenv("INVOCATION_ID") != nullptr) {
        report(Priority::Warning,
               "cannot launch '" + id +
                   "': the user has no service manager on his message bus, and what this service "
                   "would start itself would be caught in its sandbox; let 'systemd --user' run",
               {{"PORTMELD_APPLICATION", id}});
        return;
    }
    std::vector<char*> arguments;
    for (const std::string& argument : entry.command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    g_auto(GStrv) environment = environmentOf(request);
    GPid child = 0;
    g_autoptr(GError) error = nullptr;
    if (g_spawn_async(entry.folder.empty() ? nullptr : entry.folder.c_str(), arguments.data(),
                      environment, G_SPAWN_DO_NOT_REAP_CHILD, leaveSession, nullptr, &child,
                      &error) == FALSE) {
        report(Priority::Warning, "cannot launch '" + id + "': " + error->message,
               {{"PORTMELD_APPLICATION", id}});
        return;
    }
    g_child_watch_add(child, reap, nullptr);
}

}  // namespace machine
