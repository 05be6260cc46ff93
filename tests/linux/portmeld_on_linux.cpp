// The daemon on the Linux machine, as people run it. The end of standard input ends the main loop, which
// nothing in the daemon itself does, so that leaks can be looked for.
#include <glib.h>

#include "Words.h"

/// src/main.cpp, compiled under this name.
int portmeld_main(int argc, char** argv);

extern "C" {
void __real_g_main_loop_run(GMainLoop* loop);
void __wrap_g_main_loop_run(GMainLoop* loop);
}

void __wrap_g_main_loop_run(GMainLoop* loop) {
    const CommandInput input([](const std::string&) { return std::string("{}"); },
                             [loop] { g_main_loop_quit(loop); });
    __real_g_main_loop_run(loop);
}

int main(int argc, char** argv) {
    return portmeld_main(argc, argv);
}
