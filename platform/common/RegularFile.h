// Files of others: opened without ever waiting for somebody, and read only as far as is sensible. Not
// here: what is in them.
#pragma once

#include <cstddef>
#include <string>

namespace platform {

/// An open file, closed at the end.
class Descriptor {
public:
    /// @param number  of an open file, taken over; negative for none
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }

private:
    int number_;
};

/// Open for reading whatever is at the path; a pipe or a device is not waited for. On failure there is
/// none, and errno says why.
Descriptor openWithoutWaiting(const std::string& path);

/// Whether it is a regular file, or a link led to one.
bool isRegular(const Descriptor& file);

/// Read to the end, or one byte beyond a limit, so that what is too long can be told from what is not.
/// @param most   the limit in bytes
/// @param bytes  what was read is added to it
/// @return 0, or the error number
int readAtMost(const Descriptor& file, std::size_t most, std::string& bytes);

}  // namespace platform
