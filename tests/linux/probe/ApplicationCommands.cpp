// What a test can ask of this service of the contract: launching, and asking what runs. Also two things
// that only a test wants to know: that the probe has its bus, and that it has heard of a name's owner.
#include <platform/application.h>

#include <cstdio>
#include <string>

#include <gio/gio.h>

#include "Probe.h"
#include "SessionBus.h"

namespace {

app_control_h request(const std::string& word) {
    return static_cast<app_control_h>(pointer(word));
}

/// "null" is the null pointer, for what a text may not be.
const char* textOrNull(const std::string& word) {
    return word == "null" ? nullptr : word.c_str();
}

void printOwner(const char* name, const char* owner) {
    JsonMembers members;
    members.with("of", text(std::string(name))).with("owned", truth(owner != nullptr));
    printEvent("owner", members);
}

void appeared(GDBusConnection*, const char* name, const char* owner, void*) {
    printOwner(name, owner);
}

void vanished(GDBusConnection*, const char* name, void*) {
    printOwner(name, nullptr);
}

Json create() {
    app_control_h handle = nullptr;
    return app_control_create(&handle) == 0 ? pointer(handle) : nothing();
}

Json isRunning(const char* id) {
    bool running = false;
    const int status = app_manager_is_running(id, &running);
    return JsonMembers().with("status", number(status)).with("running", truth(running)).done();
}

}  // namespace

ProbeCommands applicationCommands() {
    return {
        {"app-create", 0, 0, [](const Words&) { return create(); }},
        {"app-create-nowhere", 0, 0,
         [](const Words&) { return number(app_control_create(nullptr)); }},
        {"app-destroy", 1, 1,
         [](const Words& words) { return number(app_control_destroy(request(words[1]))); }},
        {"app-id", 2, 2,
         [](const Words& words) {
             return number(app_control_set_app_id(request(words[1]), textOrNull(words[2])));
         }},
        {"app-data", 3, 3,
         [](const Words& words) {
             return number(app_control_add_extra_data(request(words[1]), textOrNull(words[2]),
                                                      textOrNull(words[3])));
         }},
        {"app-send", 1, 1,
         [](const Words& words) {
             return number(app_control_send_launch_request(request(words[1]), nullptr, nullptr));
         }},
        {"app-is-running", 1, 1,
         [](const Words& words) { return isRunning(textOrNull(words[1])); }},
        {"app-is-running-nowhere", 1, 1,
         [](const Words& words) {
             return number(app_manager_is_running(words[1].c_str(), nullptr));
         }},
        {"aul-is-running", 1, 1,
         [](const Words& words) { return number(aul_app_is_running(textOrNull(words[1]))); }},
        // A line on standard error: what stands before it was said before.
        {"app-mark", 1, 1,
         [](const Words& words) {
             std::fprintf(stderr, "%s\n", words[1].c_str());
             return nothing();
         }},
        // Events "session-bus": a connection was made or lost.
        {"watch-session-bus", 0, 0,
         [](const Words&) {
             machine::SessionBus::get().listen([](GDBusConnection* connection) {
                 JsonMembers members;
                 members.with("connected", truth(connection != nullptr));
                 printEvent("session-bus", members);
             });
             return nothing();
         }},
        // Events "owner": a name's owner is known, came or went. Listens after the service has begun to.
        {"watch-name", 1, 1,
         [](const Words& words) {
             g_bus_watch_name_on_connection(machine::SessionBus::get().connection(),
                                            words[1].c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE,
                                            appeared, vanished, nullptr, nullptr);
             return nothing();
         }},
    };
}
