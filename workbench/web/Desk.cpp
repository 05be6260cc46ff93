// Where orders are taken: looking up who carries one out, and what failure looks like.
#include "Desk.h"

#include <utility>

#include "Text.h"

namespace workbench {

void Desk::offer(const std::string& name, Deed deed) {
    offerLater(name, [deed = std::move(deed)](const Json& with, const Answer& reply) {
        reply({"", deed(with)});
    });
}

void Desk::offerLater(const std::string& name, LaterDeed deed) {
    deeds_[name] = std::move(deed);
}

void Desk::carryOut(const Order& order, const Answer& reply) const {
    const auto deed = deeds_.find(order.name);
    if (deed == deeds_.end()) {
        reply({"there is no order \"" + printable(order.name) + "\"", {}});
        return;
    }
    try {
        deed->second(order.with, reply);
    } catch (const OrderError& error) {
        reply({error.what(), {}});
    }
}

}  // namespace workbench
