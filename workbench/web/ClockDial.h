// The passing of the TV's time: real, faster, stopped, a step or a stretch at once; and the timers that
// wait.
#pragma once

#include <optional>

#include "Order.h"
#include "SimulatedTv.h"

namespace workbench {

class ClockDial {
public:
    explicit ClockDial(simulated::SimulatedTv& tv) : tv_(tv) {}

    // The orders. Those that let time pass run the main loop until all is settled.
    Json clock(const Json& with);
    Json step();
    Json skip(const Json& with);

    /// Stops the clock for a while, and lets it go on as before. Nothing happens when it is not held.
    void hold();
    void letGo();

    /// Lets time pass at once, until all is settled.
    void pass(std::int64_t milliseconds);

    /// The clock as the protocol has it. Without `times`, what only says how time passes is left out, but
    /// not that it was passed at once.
    Json state(bool times) const;

private:
    simulated::SimulatedTv& tv_;
    int factor_ = 30;
    std::optional<double> heldRate_;  // what it goes on with
    bool isPassing_ = false;          // at once
    std::uint64_t passed_ = 0;        // how often it was
};

}  // namespace workbench
