// What the process holds: memory, descriptors, sources of the main context.
#pragma once

#include <cstddef>
#include <set>

namespace soak {

/// Memory of the process. Two figures, as either alone is blind: a leak of a few bytes hides in pages
/// that are there anyway, and pages that malloc does not know are no bytes in use.
struct Memory {
    /// Bytes that malloc has handed out (mallinfo2).
    std::size_t inUse = 0;
    /// Bytes of pages that are in no file, swapped ones too (smaps_rollup).
    std::size_t anonymous = 0;
};

/// Whether memory can be measured: not under a sanitizer, which has a malloc of its own and keeps what
/// is freed. It looks for leaks itself at the end.
bool memoryCanBeMeasured();

/// Have memory depend on what is done and not on the timing of threads: one arena of malloc for all of
/// them from now on, and no huge pages, of which the kernel gives one where it sees fit.
void steadyMemory();

/// Give back what malloc keeps for later, and measure. The pages are not those of "Private_Dirty": that
/// counts a clean page of a program's file as well when the file was written a moment ago and has not
/// reached the disk, from the moment on at which nobody else runs the program.
/// Throws std::runtime_error when it cannot be read.
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
