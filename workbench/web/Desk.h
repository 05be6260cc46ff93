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
    using LaterDeed = std::function<void(const Json& with, Answer reply)>;

    /// Who carries out the orders of this name; it throws OrderError for what cannot be done.
    void offer(const std::string& name, Deed deed);
    /// The same for one whose outcome comes later.
    void offerLater(const std::string& name, LaterDeed deed);

    /// Carries an order out. The reply comes in any case, at once or later.
    void carryOut(const Order& order, const Answer& reply) const;

private:
    std::map<std::string, LaterDeed> deeds_;
};

}  // namespace workbench
