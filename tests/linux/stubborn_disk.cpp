// Preloaded into a program under test: disks that no test machine has. With PORTMELD_TEST_KINDS=unknown
// a folder does not tell of what kind its files are, as some file systems do not. A folder named "gate"
// opens only when somebody has opened and closed the pipe that PORTMELD_TEST_GATE names: until then the
// disk does not answer. With PORTMELD_TEST_FAILS=N the reading of folders breaks off after N names.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

template <class Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

struct dirent64* readdir64(DIR* folder) {
    static const auto original = real<struct dirent64* (*)(DIR*)>("readdir64");
    static const bool unknown = std::getenv("PORTMELD_TEST_KINDS") != nullptr;
    static const char* const fails = std::getenv("PORTMELD_TEST_FAILS");
    static int left = fails != nullptr ? std::atoi(fails) : -1;
    if (left == 0) {
        errno = EIO;
        return nullptr;
    }
    if (left > 0) {
        --left;
    }
    struct dirent64* const entry = original(folder);
    if (entry != nullptr && unknown) {
        entry->d_type = DT_UNKNOWN;
    }
    return entry;
}

int openat64(int folder, const char* name, int flags, ...) {
    static const auto original = real<int (*)(int, const char*, int, mode_t)>("openat64");
    static const char* const gate = std::getenv("PORTMELD_TEST_GATE");
    if (gate != nullptr && std::strcmp(name, "gate") == 0) {
        // Not through the library, in whose place umockdev may be: it would make all threads wait.
        const auto pipe =
            static_cast<int>(syscall(SYS_openat, AT_FDCWD, gate, O_RDONLY | O_CLOEXEC));
        for (char byte = 0; syscall(SYS_read, pipe, &byte, std::size_t{1}) > 0;) {
        }
        (void)close(pipe);
    }
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return original(folder, name, flags, mode);
}

}  // extern "C"
