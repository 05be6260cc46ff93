// The least program that sees a mount: a descriptor of its own on the kernel's table, which is read anew
// and taken apart when the kernel says that it has changed. Prints the monotonic time in nanoseconds each
// time when the device that is the only argument, "/dev/sda1", begins to be named as the source of a mount.
#include <cstdio>
#include <ctime>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

namespace {

std::string readAll(int descriptor) {
    std::string text;
    char bytes[16384];
    lseek(descriptor, 0, SEEK_SET);
    for (ssize_t count; (count = read(descriptor, bytes, sizeof bytes)) > 0;) {
        text.append(bytes, static_cast<std::size_t>(count));
    }
    return text;
}

/// Whether a table names the source: the second field after the lonely dash of a line.
bool names(const std::string& table, const std::string& source) {
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t dash = line.find(" - ");
        if (dash == std::string::npos) {
            continue;
        }
        const std::size_t start = line.find(' ', dash + 3) + 1;
        if (line.compare(start, line.find(' ', start) - start, source) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    const int table = open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    const int poll = epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLPRI | EPOLLERR;
    if (argc != 2 || table < 0 || epoll_ctl(poll, EPOLL_CTL_ADD, table, &event) != 0) {
        std::perror("mount-table");
        return 1;
    }
    const std::string source = argv[1];
    bool mounted = names(readAll(table), source);
    std::puts("ready");
    std::fflush(stdout);
    for (;;) {
        if (epoll_wait(poll, &event, 1, -1) != 1) {
            continue;
        }
        const bool now = names(readAll(table), source);
        if (now && !mounted) {
            timespec at{};
            clock_gettime(CLOCK_MONOTONIC, &at);
            std::printf("%lld\n", static_cast<long long>(at.tv_sec) * 1'000'000'000 + at.tv_nsec);
            std::fflush(stdout);
        }
        mounted = now;
    }
}
