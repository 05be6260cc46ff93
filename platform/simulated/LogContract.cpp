// The platform log, kept in the journal line by line; see <platform/log.h>.
#include <platform/log.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "SimulatedTv.h"

extern "C" int __dlog_print(int, int prio, const char* tag, const char* fmt, ...) {
    using simulated::SimulatedTv;
    // A log line is an entry of its own kind, not a call among others.
    if (SimulatedTv::current().journal().fault("__dlog_print")) {
        return -1;
    }
    char* text = nullptr;
    va_list arguments;
    va_start(arguments, fmt);
    const int length = vasprintf(&text, fmt, arguments);
    va_end(arguments);
    if (length < 0) {
        return -1;
    }
    const std::unique_ptr<char, decltype(&std::free)> line(text, &std::free);
    SimulatedTv::current().journal().logLine(prio, tag, line.get());
    return length;
}
