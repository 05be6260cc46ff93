// Noticing that the kernel had to drop events of udev, because this process did not read them in time. libudev
// and libgudev pass over that in silence.
#pragma once

#include <functional>

namespace machine {

class LostEvents {
public:
    /// Call `lost` on the default main context when events were dropped, after those that came through. Without
    /// such a socket it is never called.
    explicit LostEvents(std::function<void()> lost);
    ~LostEvents();
    LostEvents(const LostEvents&) = delete;
    LostEvents& operator=(const LostEvents&) = delete;

private:
    static int readable(int descriptor, unsigned condition, void* self);

    std::function<void()> lost_;
    int socket_;
    unsigned source_ = 0;
    unsigned telling_ = 0;
};

}  // namespace machine
