// What the process holds: memory, descriptors, sources of the main context.
#pragma once

#include <cstddef>
#include <set>

namespace soak {

/// Memory of the process. Two figures, as either alone is blind: a leak of a few bytes hides in pages
/// that are dirty anyway, and pages that malloc does not know are no bytes in use.
struct Memory {
    std::size_t inUse = 0;         ///< bytes that malloc has handed out (mallinfo2)
    std::size_t privateDirty = 0;  ///< bytes of pages of this process alone (smaps_rollup)
};

/// Whether memory can be measured: not under a sanitizer, which has a malloc of its own and keeps what
/// is freed. It looks for leaks itself at the end.
bool memoryCanBeMeasured();

/// Have all threads share one arena of malloc from now on.
void useOneArena();

/// Give back what malloc keeps for later, and measure. Throws std::runtime_error when it cannot be read.
Memory measureMemory();

/// How many descriptors are open. Throws std::runtime_error when it cannot be read.
int openDescriptors();

/// The sources of the default main context, whoever attached them: GLib numbers sources one after the
/// other, and tells of each number whether it is there.
class Sources {
public:
    /// How many there are now.
    std::size_t count();

private:
    std::set<unsigned> known_;
    unsigned last_ = 0;
};

}  // namespace soak
