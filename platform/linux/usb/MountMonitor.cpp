// The kernel reports a change of /proc/self/mountinfo as an exceptional condition of an open descriptor
// (proc(5)), once for each descriptor.
#include "MountMonitor.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include <glib-unix.h>

#include "Journal.h"

namespace machine {

namespace {

constexpr const char* TABLE = "/proc/self/mountinfo";

}  // namespace

MountMonitor::MountMonitor(std::function<void()> changed) : changed_(std::move(changed)) {
    // Open before the first read: what changes in between is then reported.
    descriptor_ = open(TABLE, O_RDONLY | O_CLOEXEC);
    if (descriptor_ < 0) {
        report(Priority::Error, std::string("cannot watch mounts, no device will be offered: ") +
                                    TABLE + ": " + std::strerror(errno));
        return;
    }
    source_ = g_unix_fd_add(descriptor_, static_cast<GIOCondition>(G_IO_PRI | G_IO_ERR),
                            reinterpret_cast<GUnixFDSourceFunc>(happened), this);
    read();
}

MountMonitor::~MountMonitor() {
    if (descriptor_ >= 0) {
        g_source_remove(source_);
        close(descriptor_);
    }
}

int MountMonitor::happened(int, int, void* self) {
    auto& monitor = *static_cast<MountMonitor*>(self);
    monitor.read();
    monitor.changed_();
    return G_SOURCE_CONTINUE;
}

void MountMonitor::read() {
    std::string text;
    std::array<char, 16384> bytes{};
    if (lseek(descriptor_, 0, SEEK_SET) != 0) {
        return;
    }
    for (;;) {
        const ssize_t count = ::read(descriptor_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return;  // half a table is worse than the old one
        }
        if (count == 0) {
            break;
        }
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    table_ = parseMountTable(text);
}

}  // namespace machine
