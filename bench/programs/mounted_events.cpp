// The ports of the Linux machine, as the daemon uses them. Prints "ACTION NANOSECONDS", the monotonic time,
// for each event of a mass-storage device.
#include <cstdio>
#include <ctime>

#include <glib.h>

#include <platform/usb.h>

namespace {

void happened(usb_device_s* device, char* action, void*) {
    timespec at{};
    clock_gettime(CLOCK_MONOTONIC, &at);
    std::printf("%s %lld\n", action,
                static_cast<long long>(at.tv_sec) * 1'000'000'000 + at.tv_nsec);
    std::fflush(stdout);
    free_usb_device_h(device);
}

}  // namespace

int main() {
    if (usb_device_init() != 0 || usb_set_connected_cb(happened, nullptr) != 0) {
        std::fputs("no ports\n", stderr);
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
