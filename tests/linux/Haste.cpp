// Time for tests: the 30 seconds in which the daemon takes no USB event need not be waited for. The linker
// routes the two functions by which the daemon and its platform ask for time to it:
//   PORTMELD_TEST_HASTE=N        divides the daemon's own periods by N
//   PORTMELD_TEST_PORTS_HASTE=N  divides the periods of the ports, which ask in another way
//   PORTMELD_TEST_POPUP_PATIENCE=N  multiplies the time after which pop-ups end by themselves
#include <cstdlib>

#include <glib.h>

#include "Words.h"

extern "C" {
guint __real_g_timeout_add(guint interval, GSourceFunc function, gpointer data);
guint __wrap_g_timeout_add(guint interval, GSourceFunc function, gpointer data);
GSource* __real_g_timeout_source_new(guint interval);
GSource* __wrap_g_timeout_source_new(guint interval);
}

namespace {

constexpr guint WATCHDOG = 5'000;
constexpr guint START_UP = 30'000;
constexpr guint ACTIVATION = 60'000;
constexpr guint QUESTION = 31'000;
constexpr guint REMOVAL_NOTICE = 4'000;

/// The number in a variable of the environment, 1 without it.
guint factor(const char* variable) {
    const char* const number = std::getenv(variable);
    return number != nullptr ? static_cast<guint>(integer(number)) : 1;
}

guint hastened(guint interval, const char* variable) {
    return interval / factor(variable);
}

}  // namespace

guint __wrap_g_timeout_add(guint interval, GSourceFunc function, gpointer data) {
    const bool isDaemons = interval == WATCHDOG || interval == START_UP || interval == ACTIVATION;
    if (interval == QUESTION || interval == REMOVAL_NOTICE) {
        interval *= factor("PORTMELD_TEST_POPUP_PATIENCE");
    }
    return __real_g_timeout_add(isDaemons ? hastened(interval, "PORTMELD_TEST_HASTE") : interval,
                                function, data);
}

GSource* __wrap_g_timeout_source_new(guint interval) {
    return __real_g_timeout_source_new(hastened(interval, "PORTMELD_TEST_PORTS_HASTE"));
}
