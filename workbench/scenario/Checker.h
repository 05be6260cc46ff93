// Whether what a scenario expects holds: it looks at the state, and at what happened since it looked last.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "LogBook.h"
#include "Scenario.h"
#include "SimulatedTv.h"
#include "TvState.h"
#include "Wire.h"

namespace workbench {

class Checker {
public:
    /// `wire` may tell that there is none.
    Checker(simulated::SimulatedTv& tv,
            const TvState& state,
            const LogBook& log,
            std::function<const Wire*()> wire);

    /// What happened before is of no interest.
    void begin();
    /// A step that is no expectation is about to be carried out.
    void beforeStep();
    /// The result of a call.
    void setReply(const Json& result) { reply_ = result; }

    /// "" when it holds, else what was found instead, in one line.
    std::string failure(const Expectation& expected);

private:
    /// How far launches, messages and log lines were looked at.
    struct Place {
        std::uint64_t launch = 0;
        std::uint64_t message = 0;
        std::uint64_t line = 0;
    };
    Place now() const;
    std::string findLaunch(const Expectation& expected);
    std::string findSignal(const Expectation& expected);
    std::string findLine(const Expectation& expected);
    std::string checkPopup(const Expectation& expected) const;
    std::string checkDevice(const Expectation& expected) const;
    std::string checkReply(const Expectation& expected) const;
    std::string checkState(const Expectation& expected) const;
    std::string found(const Expectation& expected);

    simulated::SimulatedTv& tv_;
    const TvState& state_;
    const LogBook& log_;
    std::function<const Wire*()> wire_;
    Place expected_;  // behind the last that was expected
    Place step_;      // before the last step
    Json reply_;
};

}  // namespace workbench
