// The watchdog of the service manager (sd_notify(3)): the daemon is ready when it registers, and alive
// when it feeds. How long it may be silent is the unit's WatchdogSec=. Run by hand there is no watchdog.
//
// The protocol is a datagram to the socket that the environment names. It is spoken here, and not by
// libsystemd, since that library brings six more into the process, a third of its way to the bus.
#include <platform/watchdog.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <string_view>

namespace {

constexpr int OK = 0;
constexpr int ERROR = -1;

int tell(std::string_view state) {
    const char* const variable = std::getenv("NOTIFY_SOCKET");
    if (variable == nullptr) {
        return OK;
    }
    const std::string_view path = variable;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        return ERROR;
    }
    path.copy(address.sun_path, path.size());
    if (path.front() == '@') {
        address.sun_path[0] = '\0';  // an abstract name
    }
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return ERROR;
    }
    // A manager that reads nothing is no reason to wait.
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    const ssize_t sent = sendto(descriptor, state.data(), state.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
                                reinterpret_cast<const sockaddr*>(&address), size);
    close(descriptor);
    return sent < 0 ? ERROR : OK;
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
