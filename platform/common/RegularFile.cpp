// The system calls of reading.
#include "RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace platform {

Descriptor::~Descriptor() {
    if (number_ >= 0) {
        (void)close(number_);
    }
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
}

Descriptor openWithoutWaiting(const std::string& path) {
    // O_NONBLOCK: opening a pipe waits for its other end without it.
    return Descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

bool isRegular(const Descriptor& file) {
    struct stat status {};
    return fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
}

int readAtMost(const Descriptor& file, std::size_t most, std::string& bytes) {
    std::array<char, 4096> part{};
    std::size_t left = most + 1;
    while (left > 0) {
        const ssize_t count = read(file.get(), part.data(), std::min(left, part.size()));
        if (count == 0) {
            return 0;
        }
        if (count > 0) {
            bytes.append(part.data(), static_cast<std::size_t>(count));
            left -= static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

}  // namespace platform
