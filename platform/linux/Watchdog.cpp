// The watchdog of the service manager (sd_notify(3)): the daemon is ready when it registers, and alive
// when it feeds. How long it may be silent is the unit's WatchdogSec=. Run by hand there is no watchdog.
#include <platform/watchdog.h>

#include <systemd/sd-daemon.h>

namespace {

int tell(const char* state) {
    constexpr int KEEP_ENVIRONMENT = 0;  // the socket is needed for each feed
    return sd_notify(KEEP_ENVIRONMENT, state) < 0 ? -1 : 0;
}

}  // namespace

extern "C" {

int smart_deadlock_register_watchdog_service(int) {
    return tell("READY=1\nSTATUS=Watching the USB ports");
}

int smart_deadlock_watchdog_notify(void) {
    return tell("WATCHDOG=1");
}

}  // extern "C"
