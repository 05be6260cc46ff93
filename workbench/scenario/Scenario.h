// A scenario in memory: its steps, read from text. Carrying them out is Player's, checking what they
// expect Checker's.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "BusInterface.h"
#include "Order.h"
#include "Words.h"

namespace workbench {

/// What a value must be: wholly, or as a part of it.
struct Condition {
    std::string key;  ///< may lead into JSON: "items.0.file_name"
    bool isWhole;
    std::string value;
};

/// Something that should hold, or should not.
struct Expectation {
    enum class Subject { Popup, Launch, Device, Signal, Reply, Log, State };
    Subject subject;
    bool isWanted = true;
    std::string what;                 ///< kind, application, node, member, priority; "" for any
    std::optional<int> client;        ///< of a signal
    std::vector<std::string> values;  ///< of a reply; of a log line its one part
    std::vector<Condition> conditions;
};

/// Time that is to pass.
struct Wait {
    std::int64_t milliseconds;
};

struct Step {
    int line;          ///< in the file, from 1
    std::string text;  ///< the line
    std::variant<Order, Wait, Expectation> deed;
};

/// The steps of a scenario; relative folders in it count from `folder`. Throws ScenarioError with the
/// line number.
std::vector<Step> readScenario(const std::string& text,
                               const std::string& folder,
                               const BusInterface& interface);

/// The first line of every scenario.
constexpr const char* scenarioHeadline = "portmeld-scenario 1";

}  // namespace workbench
