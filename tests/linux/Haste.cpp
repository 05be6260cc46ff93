// Time for tests: the 30 seconds in which the daemon takes no USB event need not be waited for. The linker
// routes the two functions by which the daemon and its platform ask for time to it:
//   PORTMELD_TEST_HASTE=N        divides the daemon's own periods by N
//   PORTMELD_TEST_PORTS_HASTE=N  divides the periods of the ports, which ask in another way
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

guint hastened(guint interval, const char* variable) {
    const char* const haste = std::getenv(variable);
    return haste != nullptr ? interval / static_cast<guint>(integer(haste)) : interval;
}

}  // namespace

guint __wrap_g_timeout_add(guint interval, GSourceFunc function, gpointer data) {
    const bool isDaemons = interval == WATCHDOG || interval == START_UP || interval == ACTIVATION;
    return __real_g_timeout_add(isDaemons ? hastened(interval, "PORTMELD_TEST_HASTE") : interval,
                                function, data);
}

GSource* __wrap_g_timeout_source_new(guint interval) {
    return __real_g_timeout_source_new(hastened(interval, "PORTMELD_TEST_PORTS_HASTE"));
}
