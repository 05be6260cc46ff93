// Reading what the process holds.
#include "Resources.h"

#include <dirent.h>
#include <malloc.h>
#include <sys/prctl.h>

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include <glib.h>

namespace soak {

bool memoryCanBeMeasured() {
#ifdef __SANITIZE_ADDRESS__
    return false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
    return false;
#else
    return true;
#endif
#else
    return true;
#endif
}

void steadyMemory() {
    (void)mallopt(M_ARENA_MAX, 1);
    (void)prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0);
}

Memory measureMemory() {
    (void)malloc_trim(0);
    const struct mallinfo2 heap = mallinfo2();
    Memory memory;
    memory.inUse = heap.uordblks + heap.hblkhd;
    std::ifstream rollup("/proc/self/smaps_rollup");
    int found = 0;
    for (std::string word; rollup >> word;) {
        if (word == "Anonymous:" || word == "Swap:") {
            std::size_t kibibytes = 0;
            rollup >> kibibytes;
            memory.anonymous += kibibytes * 1024;
            ++found;
        }
    }
    if (found != 2) {
        throw std::runtime_error("smaps_rollup tells not of both Anonymous and Swap");
    }
    return memory;
}

int openDescriptors() {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc/self/fd"), closedir);
    if (folder == nullptr) {
        throw std::runtime_error("cannot read /proc/self/fd");
    }
    int count = -3;  // ".", ".." and the folder itself
    while (readdir(folder.get()) != nullptr) {
        ++count;
    }
    return count;
}

std::size_t Sources::count() {
    const auto nothing = [](void*) { return gboolean{G_SOURCE_REMOVE}; };
    const unsigned next = g_idle_add(nothing, nullptr);
    g_source_remove(next);
    for (unsigned id = last_ + 1; id < next; ++id) {
        known_.insert(id);
    }
    last_ = next;
    for (auto id = known_.begin(); id != known_.end();) {
        const bool gone = g_main_context_find_source_by_id(nullptr, *id) == nullptr;
        id = gone ? known_.erase(id) : std::next(id);
    }
    return known_.size();
}

}  // namespace soak
