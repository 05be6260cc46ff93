// The clients that orders speak as: client N is a connection to the bus of its own, made when it is first
// used. What is said there is heard by Wire.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "BusConnection.h"
#include "BusInterface.h"
#include "Order.h"

namespace workbench {

class BusPeers {
public:
    BusPeers(std::string address, const BusInterface& interface)
        : address_(std::move(address)), interface_(interface) {}

    /// The order `call`. Throws OrderError for a call that cannot be made.
    void call(const Json& with, Answer reply);

    /// Which of these clients has this name on the bus, and what people call it ("" for none).
    std::optional<int> numberOf(const std::string& busName) const;
    std::string nameOf(const std::string& busName) const;

private:
    struct Call {
        std::string member;
        Variant arguments;
        bool noReply;
        Answer reply;
    };
    struct Peer {
        Connection connection;
        std::vector<Call> waiting;  // until it is connected
    };
    void connected(int number, Connection connection, const std::string& error);
    void send(GDBusConnection* connection, Call call);

    std::string address_;
    const BusInterface& interface_;
    std::map<int, Peer> peers_;
    Cancellable cancellable_;
};

}  // namespace workbench
