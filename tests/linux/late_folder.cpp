// A folder that comes at the worst moment, for whoever watches for it: PORTMELD_TEST_LATE_FOLDER is made right
// before the program begins to watch the folder that it is in. Loaded in front of libc.
#include <cstdint>
#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>
#include <sys/inotify.h>
#include <sys/stat.h>

extern "C" int inotify_add_watch(int descriptor, const char* path, std::uint32_t mask) {
    using Function = int (*)(int, const char*, std::uint32_t);
    static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "inotify_add_watch"));
    const char* const late = std::getenv("PORTMELD_TEST_LATE_FOLDER");
    if (late != nullptr && std::filesystem::path(late).parent_path() == path) {
        (void)mkdir(late, 0755);
    }
    return original(descriptor, path, mask);
}
