// Following the kernel's table of mounts as it changes.
#pragma once

#include <functional>

#include "MountTable.h"

namespace machine {

class MountMonitor {
public:
    /// Call `changed` on the default main context after each change of the table, never from inside the
    /// constructor.
    explicit MountMonitor(std::function<void()> changed);
    ~MountMonitor();
    MountMonitor(const MountMonitor&) = delete;
    MountMonitor& operator=(const MountMonitor&) = delete;

    /// The table as it was when it last changed. Empty where /proc is not to be had.
    const MountTable& table() const { return table_; }

private:
    static int happened(int descriptor, int condition, void* self);
    void read();

    std::function<void()> changed_;
    int descriptor_ = -1;
    unsigned source_ = 0;
    MountTable table_;
};

}  // namespace machine
