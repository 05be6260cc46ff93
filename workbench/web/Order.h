// An order to the workbench, as a page gives it and as a line of a scenario says it, and what came of it.
#pragma once

#include <functional>
#include <optional>
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

/// A word as a whole number of 32 bits; none when it is anything else.
std::optional<int> wholeNumber(const std::string& word);

/// The whole number of 32 bits that an order has under a name. Throws OrderError when there is none.
int wholeNumber(const Json& with, const char* name);
/// The same for one that may be left out.
int wholeNumber(const Json& with, const char* name, int otherwise);

struct Outcome {
    std::string error;  ///< "" when it was carried out
    Json result;
};

/// Receives the outcome: at once, or later on the main loop.
using Answer = std::function<void(const Outcome&)>;

}  // namespace workbench
