// The daemon within this process. The daemon hands its main loop to nobody, and nothing of it ever
// quits it; so the linker routes g_main_loop_run() here (-Wl,--wrap), where the loop is seen.
#include "DaemonRun.h"

#include <glib.h>

/// The daemon's entry, compiled under this name.
int portmeld_main(int argc, char** argv);

extern "C" {
void __real_g_main_loop_run(GMainLoop* loop);
void __wrap_g_main_loop_run(GMainLoop* loop);
}

namespace workbench {

namespace {

GMainLoop* runningLoop = nullptr;
bool leaving = false;
std::function<void()> announce;

}  // namespace

int runDaemon(const std::function<void()>& beforeLoop) {
    announce = beforeLoop;
    char name[] = "portmeld";
    char* arguments[] = {name, nullptr};
    const int status = portmeld_main(1, arguments);
    announce = nullptr;
    return status;
}

void leaveDaemonLoop() {
    leaving = true;
    if (runningLoop != nullptr) {
        g_main_loop_quit(runningLoop);
    }
}

}  // namespace workbench

void __wrap_g_main_loop_run(GMainLoop* loop) {
    workbench::announce();
    if (workbench::leaving) {
        return;
    }
    workbench::runningLoop = loop;
    __real_g_main_loop_run(loop);
    workbench::runningLoop = nullptr;
}
