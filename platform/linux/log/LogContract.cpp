// The daemon's log lines, as <platform/log.h> takes them. Most are dropped, so nothing but the test for that
// lives here; see LogPrinter.h.
#include <platform/log.h>

#include "LogPrinter.h"

// The only array here is the list of arguments, which the compiler fills: a guard of the stack would cost
// a dropped line a quarter of its instructions. printLine() has its own.
extern "C" __attribute__((no_stack_protector)) int __dlog_print(
    int buf, int prio, const char* tag, const char* fmt, ...) {
    if (prio < machine::logThreshold) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, fmt);
    const int written = machine::printLine(buf, prio, tag, fmt, arguments);
    va_end(arguments);
    return written;
}

extern "C" int dlog_is_shown(int prio) {
    return prio >= machine::logThreshold ? 1 : 0;
}
