// The probe's lines: finding the command, printing answers and events.
#include "Probe.h"

#include <cstdint>
#include <stdexcept>

#include <glib.h>

namespace {

constexpr ProbeCommands (*SERVICES[])() = {applicationCommands, notificationCommands, scanCommands,
                                           settingsCommands,    smallServiceCommands, usbCommands};

const ProbeCommands& commands() {
    static const ProbeCommands all = [] {
        ProbeCommands list = {
            // Nothing: what was due before it has been printed when it is answered.
            {"settle", 0, 0,
             [](const Words&) {
                 while (g_main_context_pending(nullptr)) {
                     g_main_context_iteration(nullptr, FALSE);
                 }
                 return nothing();
             }},
        };
        for (const auto service : SERVICES) {
            const ProbeCommands more = service();
            list.insert(list.end(), more.begin(), more.end());
        }
        return list;
    }();
    return all;
}

const ProbeCommand& commandFor(const Words& words) {
    for (const ProbeCommand& command : commands()) {
        if (!words.empty() && words[0] == command.name) {
            const std::size_t arguments = words.size() - 1;
            if (arguments < command.fewest || arguments > command.most) {
                throw std::invalid_argument("wrong number of arguments for " + words[0]);
            }
            return command;
        }
    }
    throw std::invalid_argument("no such command");
}

std::string answer(const std::string& line) {
    try {
        const Words words = wordsOf(line);
        return print(JsonMembers().with("result", commandFor(words).run(words)).done());
    } catch (const std::exception& error) {
        return print(JsonMembers().with("error", text(std::string(error.what()))).done());
    }
}

}  // namespace

void printEvent(const char* name, JsonMembers& members) {
    members.with("event", text(std::string(name)));
    printLine(print(members.done()));
}

Json pointer(const void* value) {
    return number(static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(value)));
}

void* pointer(const std::string& word) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(std::stoll(word)));
}

int runProbe() {
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    {
        const CommandInput input(answer, [loop] { g_main_loop_quit(loop); });
        g_main_loop_run(loop);
    }
    g_main_loop_unref(loop);
    return 0;
}
