// The daemon's own state in the words of the protocol, read from the daemon itself: its list of devices,
// counters, clients.
#pragma once

#include <functional>
#include <string>

#include "Json.h"
#include "SimulatedTv.h"

namespace workbench {

class DaemonView {
public:
    /// `nameOf` tells what to call the client with this bus name: "" for one that is not ours.
    DaemonView(simulated::SimulatedTv& tv, std::function<std::string(const std::string&)> nameOf)
        : tv_(tv), nameOf_(std::move(nameOf)) {}

    /// The members `devices` and `daemon`, as the protocol has them.
    static Json devices();
    Json daemon() const;

    /// The node of the device that the daemon deals with; "" for none.
    static std::string currentNode();

private:
    simulated::SimulatedTv& tv_;
    std::function<std::string(const std::string&)> nameOf_;
};

/// The client id that the daemon knows a bus name by; none when it is not registered.
std::optional<int> clientIdOf(const std::string& busName);

}  // namespace workbench
