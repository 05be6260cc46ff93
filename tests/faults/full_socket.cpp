// Preloaded into a program under test: a socket whose reader was too slow. When the file that
// PORTMELD_TEST_FULL_SOCKET names is there, who asks for no more than the size of an event is told once that
// some were dropped, as the kernel tells it (netlink(7)), and the file is gone.
#include <cerrno>
#include <cstdlib>

#include <dlfcn.h>
#include <sys/socket.h>
#include <unistd.h>

extern "C" ssize_t recv(int descriptor, void* buffer, size_t size, int flags) {
    using Receive = ssize_t (*)(int, void*, size_t, int);
    static const auto original = reinterpret_cast<Receive>(dlsym(RTLD_NEXT, "recv"));
    static const char* const file = std::getenv("PORTMELD_TEST_FULL_SOCKET");
    if (flags == MSG_TRUNC && file != nullptr && unlink(file) == 0) {
        errno = ENOBUFS;
        return -1;
    }
    return original(descriptor, buffer, size, flags);
}
