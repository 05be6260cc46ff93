// The daemon as a process for the tests of its bus: the entry that people run, on a simulated TV
// that takes commands on standard input and answers each with a line on standard output. Its log
// goes to standard error. The end of standard input, or "quit", ends the main loop, which nothing
// in the daemon itself does; a last line then tells what the shut-down did. What the commands are
// lives in Commands.cpp.
#include <cstdio>

#include <glib.h>

#include "Commands.h"
#include "Json.h"
#include "SimulatedTv.h"
#include "Words.h"

/// src/main.cpp, compiled under this name.
int portmeld_main(int argc, char** argv);

extern "C" {
void __real_g_main_loop_run(GMainLoop* loop);
void __wrap_g_main_loop_run(GMainLoop* loop);
}

namespace {

GMainLoop* runningLoop = nullptr;

void quitLoop() {
    if (runningLoop != nullptr) {
        g_main_loop_quit(runningLoop);
    }
}

void printLog(const simulated::LogLine& line, void*) {
    std::fprintf(stderr, "%c %s: %s\n", "?DIW"[line.priority - 2], line.function.c_str(),
                 line.message.c_str());
    std::fflush(stderr);
}

}  // namespace

void __wrap_g_main_loop_run(GMainLoop* loop) {
    runningLoop = loop;
    __real_g_main_loop_run(loop);
    runningLoop = nullptr;
}

int main(int argc, char** argv) {
    simulated::SimulatedTv tv;
    tv.journal().setLogSink(printLog, nullptr);
    Commands commands(tv, quitLoop);
    const CommandInput input([&](const std::string& line) { return commands.answer(line); },
                             quitLoop);

    const int status = portmeld_main(argc, argv);

    printLine(print(JsonMembers()
                        .with("status", number(status))
                        .with("calls", texts(tv.journal().calls()))
                        .with("breaches", texts(tv.journal().breaches()))
                        .done()));
    return status;
}
