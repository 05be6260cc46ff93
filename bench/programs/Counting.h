// Between which points callgrind counts instructions. Outside callgrind it costs nothing that matters.
#pragma once

#include <valgrind/callgrind.h>

/// Count the instructions of this process, in all threads, from here on.
inline void startCounting() {
    CALLGRIND_START_INSTRUMENTATION;
}

/// Count no longer.
inline void stopCounting() {
    CALLGRIND_STOP_INSTRUMENTATION;
}
