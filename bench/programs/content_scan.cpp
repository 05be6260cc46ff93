// One content scan as the daemon runs it, in a thread with its result on the main loop, of the folder that
// is the only argument. Prints what came of it and how many nanoseconds it took: "none 61234567".
#include <chrono>
#include <cstdio>
#include <string>

#include <glib.h>

#include "BackgroundScan.h"

namespace {

const char* nameOf(platform::WalkOutcome outcome) {
    switch (outcome) {
        case platform::WalkOutcome::None:
            return "none";
        case platform::WalkOutcome::Single:
            return "single";
        case platform::WalkOutcome::Several:
            return "several";
        case platform::WalkOutcome::Cancelled:
            return "cancelled";
        case platform::WalkOutcome::TooLarge:
            return "too-large";
        case platform::WalkOutcome::Failed:
            return "failed";
    }
    return "unknown";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("which folder?\n", stderr);
        return 2;
    }
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    const auto start = std::chrono::steady_clock::now();
    platform::BackgroundScan scan(argv[1], [&](const platform::BackgroundScan::Result& result) {
        const std::chrono::nanoseconds took = std::chrono::steady_clock::now() - start;
        std::printf("%s %lld\n", nameOf(result.outcome), static_cast<long long>(took.count()));
        g_main_loop_quit(loop);
    });
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
    return 0;
}
