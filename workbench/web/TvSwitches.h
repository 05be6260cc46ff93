// What can be set on the TV besides plugging and pressing: its settings, its context, its companion
// application, and services that fail.
#pragma once

#include <functional>

#include "Order.h"
#include "SimulatedTv.h"

namespace workbench {

class TvSwitches {
public:
    /// `knowsLanguage` tells whether there are texts in a language.
    TvSwitches(simulated::SimulatedTv& tv, std::function<bool(const std::string&)> knowsLanguage)
        : tv_(tv), knowsLanguage_(std::move(knowsLanguage)) {}

    // The orders. Each throws OrderError for what cannot be done.
    Json setting(const Json& with);
    Json context(const Json& with);
    Json companion(const Json& with);
    Json fault(const Json& with);

    /// Settings and context, as the protocol has them.
    Json settings() const;
    Json contextState() const;

private:
    simulated::SimulatedTv& tv_;
    std::function<bool(const std::string&)> knowsLanguage_;
    bool notificationFails_ = false;
    bool launchFails_ = false;
    bool scanIsSilent_ = false;
};

}  // namespace workbench
