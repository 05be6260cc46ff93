// Where orders are taken: each has a name and somebody who carries it out. Pages and scenarios come here
// alike.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "Order.h"

namespace workbench {

class Desk {
public:
    using Deed = std::function<Json(const Json& with)>;
    /// Is told of every order that is about to be carried out, and of what came of it.
    struct Watcher {
        std::function<void(const Order&)> before;
        std::function<void(const Order&, const Outcome&)> after;
    };
    using LaterDeed = std::function<void(const Json& with, Answer reply)>;

    /// Who carries out the orders of this name; it throws OrderError for what cannot be done.
    void offer(const std::string& name, Deed deed);
    /// The same for one whose outcome comes later.
    void offerLater(const std::string& name, LaterDeed deed);

    void setWatcher(Watcher watcher) { watcher_ = std::move(watcher); }

    /// Carries an order out. The reply comes in any case, at once or later.
    void carryOut(const Order& order, const Answer& reply) const;

private:
    std::map<std::string, LaterDeed> deeds_;
    Watcher watcher_;
};

}  // namespace workbench
