// What becomes of a log line that is not dropped.
#pragma once

#include <cstdarg>

namespace machine {

/// Lines of a lower priority are dropped. INT_MIN until the first line has the setting read.
[[gnu::visibility("hidden")]] extern int logThreshold;

/// All that a line costs which is not dropped at once: read the level when it is not known yet, format, take
/// apart, write. The parameters and the result are those of __dlog_print() and stand where its do, and the
/// function is compiled apart from it: a dropped line moves no argument and saves no register.
int printLine(int buf, int priority, const char* tag, const char* format, va_list arguments);

}  // namespace machine
