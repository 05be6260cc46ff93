// The bus of this television alone: a dbus-daemon that lives as long as the workbench. The daemon
// takes it for the system bus.
#pragma once

#include <string>

#include <glib.h>

namespace workbench {

class PrivateBus {
public:
    /// Starts a dbus-daemon with its socket in `folder`, waits until it listens, and makes it what this
    /// process takes for the system bus. Throws std::runtime_error.
    explicit PrivateBus(const std::string& folder);
    /// Ends it. It ends by itself when this process dies.
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// Its address, for this process and any other of the same user.
    const std::string& address() const { return address_; }

private:
    void start(const std::string& configuration, const std::string& log);
    static bool isListening(int output);
    void end();
    GPid process_ = 0;
    std::string address_;
};

}  // namespace workbench
