// A second listener to udev: what is too much for its socket is too much for libgudev's, which is as large and
// gets no more. netlink(7): a reader whose events were dropped is told so once, by ENOBUFS.
#include "LostEvents.h"

#include <linux/netlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include <glib-unix.h>

namespace machine {

namespace {

/// The group to which udevd sends what it has worked on; the kernel's own is 1.
constexpr unsigned UDEV_GROUP = 2;

/// What libudev asks for; the kernel allows net.core.rmem_max.
constexpr int BUFFER_BYTES = 128 * 1024 * 1024;

}  // namespace

LostEvents::LostEvents(std::function<void()> lost)
    : lost_(std::move(lost)),
      socket_(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT)) {
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = UDEV_GROUP;
    (void)setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &BUFFER_BYTES, sizeof BUFFER_BYTES);
    if (socket_ >= 0 &&
        bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        source_ = g_unix_fd_add(socket_, static_cast<GIOCondition>(G_IO_IN | G_IO_ERR),
                                reinterpret_cast<GUnixFDSourceFunc>(readable), this);
    }
}

LostEvents::~LostEvents() {
    if (telling_ != 0) {
        g_source_remove(telling_);
    }
    if (source_ != 0) {
        g_source_remove(source_);
    }
    if (socket_ >= 0) {
        (void)close(socket_);
    }
}

int LostEvents::readable(int descriptor, unsigned, void* self) {
    auto& events = *static_cast<LostEvents*>(self);
    char byte = 0;
    bool lost = false;
    for (;;) {
        if (recv(descriptor, &byte, sizeof byte, MSG_TRUNC) >= 0) {
            continue;
        }
        lost = lost || errno == ENOBUFS;
        if (errno != ENOBUFS && errno != EINTR) {
            break;
        }
    }
    if (lost && events.telling_ == 0) {
        // When nothing else is left to do: libgudev still has events from before the loss.
        events.telling_ = g_idle_add(
            [](void* waiting) {
                auto& told = *static_cast<LostEvents*>(waiting);
                told.telling_ = 0;
                told.lost_();
                return G_SOURCE_REMOVE;
            },
            self);
    }
    return G_SOURCE_CONTINUE;
}

}  // namespace machine
