// What the process entry meets in a test: a main loop that runs a function instead, and a device
// manager that cannot be created. Both are handed over by the linker with --wrap.
#pragma once

#include <functional>

class EntrySeams {
public:
    /// What happens in place of running a main loop; nothing by itself.
    static std::function<void()> mainLoop;
    /// Whether there is no device manager to be had.
    static bool managerRefused;

    /// Back to an empty main loop and a sound manager.
    static void reset();
};
