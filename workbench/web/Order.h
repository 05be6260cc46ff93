// An order to the workbench, as a page gives it and as a line of a scenario says it, and what came of it.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "Json.h"

namespace workbench {

struct Order {
    std::string name;
    Json with;  ///< an object
};

/// An order that cannot be carried out; one line that says why.
struct OrderError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Outcome {
    std::string error;  ///< "" when it was carried out
    Json result;
};

/// Receives the outcome: at once, or later on the main loop.
using Answer = std::function<void(const Outcome&)>;

}  // namespace workbench
