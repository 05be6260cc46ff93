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
    if (watcher_.before) {
        watcher_.before(order);
    }
    const Answer answer = [this, order, reply](const Outcome& outcome) {
        if (watcher_.after) {
            watcher_.after(order, outcome);
        }
        reply(outcome);
    };
    try {
        deed->second(order.with, answer);
    } catch (const OrderError& error) {
        answer({error.what(), {}});
    }
}

}  // namespace workbench
