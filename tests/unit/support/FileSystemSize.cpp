// Stands before the C library's statfs() in the test program: answers with the size that a test has
// set, else hands the question on.
#include "FileSystemSize.h"

#include <sys/vfs.h>

#include <cstring>

FileSystemSize* FileSystemSize::current_ = nullptr;

FileSystemSize::FileSystemSize(const Blocks& blocks) : blocks_(blocks) {
    current_ = this;
}

FileSystemSize::~FileSystemSize() {
    current_ = nullptr;
}

bool FileSystemSize::answer(const char* path, void* out) {
    if (current_ == nullptr) {
        return false;
    }
    current_->askedFor_ = path;
    const Blocks& blocks = current_->blocks_;
    struct statfs result = {};
    result.f_bsize = blocks.size;
    result.f_blocks = blocks.total;
    result.f_bfree = blocks.free;
    result.f_bavail = blocks.available;
    std::memcpy(out, &result, sizeof result);
    return true;
}

// With 64-bit file sizes statfs() has this name for the linker, which routes it here.
extern "C" {
int __real_statfs64(const char* path, void* out);
int __wrap_statfs64(const char* path, void* out);

int __wrap_statfs64(const char* path, void* out) {
    return FileSystemSize::answer(path, out) ? 0 : __real_statfs64(path, out);
}
}
