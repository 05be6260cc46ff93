// Orders as lines of a scenario, and back: the verbs with what follows each.
#pragma once

#include <string>
#include <vector>

#include "BusInterface.h"
#include "Order.h"
#include "Words.h"

namespace workbench {

/// Whether an order can be a step of a scenario.
bool isStep(const std::string& name);

/// The order in the words of a line. Throws ScenarioError.
Order readOrder(const std::vector<Word>& words,
                const std::string& folder,
                const BusInterface& interface);

/// The line for an order that isStep().
std::string orderLine(const Order& order);

}  // namespace workbench
