// The passing of the TV's time, and what people call the timers that wait.
#include "ClockDial.h"

#include <algorithm>
#include <utility>

#include "TvFacts.h"

namespace workbench {

namespace {

constexpr int slowest = 2;
constexpr int fastest = 600;

/// A day: more than any timer takes.
constexpr int longestSkip = 86400000;

/// The daemon's timers have no names, but each has an interval of its own.
std::string purposeOf(const simulated::VirtualClock::Timer& timer) {
    if (*timer.name != '\0') {
        return timer.name;
    }
    switch (timer.interval) {
        case watchdogInterval:
            return "watchdog";
        case 10000:
            return "shop demo";
        case 30000:
            return "start-up: USB events are taken from then on";
        case 60000:
            return "after a wake-up: connections start something again";
        default:
            return "a timer of " + std::to_string(timer.interval) + " ms";
    }
}

}  // namespace

Json ClockDial::clock(const Json& with) {
    const std::string mode = with["mode"].text();
    if (mode == "real") {
        tv_.clock().setRate(1);
    } else if (mode == "stopped") {
        tv_.clock().setRate(0);
    } else if (mode == "fast") {
        const int factor = wholeNumber(with, "factor", factor_);
        if (factor < slowest || factor > fastest) {
            throw OrderError("the clock goes 2 to 600 times as fast");
        }
        factor_ = factor;
        tv_.clock().setRate(factor_);
    } else {
        throw OrderError("the clock has the modes real, fast and stopped");
    }
    return {};
}

void ClockDial::hold() {
    if (!heldRate_) {
        heldRate_ = tv_.clock().rate();
        tv_.clock().setRate(0);
    }
}

void ClockDial::letGo() {
    if (heldRate_) {
        tv_.clock().setRate(*heldRate_);
        heldRate_.reset();
    }
}

Json ClockDial::step() {
    for (const simulated::VirtualClock::Timer& timer : tv_.clock().timers()) {
        // The watchdog is fed for ever; nobody waits for that.
        if (timer.interval != watchdogInterval) {
            const std::string what = purposeOf(timer);
            const std::int64_t left = std::max<std::int64_t>(timer.due - tv_.clock().now(), 0);
            pass(left);
            return Json::object({{"skippedMs", left}, {"what", what}});
        }
    }
    throw OrderError("nothing waits for the time to pass");
}

Json ClockDial::skip(const Json& with) {
    const int time = wholeNumber(with, "ms");
    if (time < 0 || time > longestSkip) {
        throw OrderError("at most a day can be skipped");
    }
    pass(time);
    return {};
}

void ClockDial::pass(std::int64_t milliseconds) {
    const bool outer = std::exchange(isPassing_, true);
    tv_.advance(milliseconds);
    isPassing_ = outer;
    ++passed_;
}

Json ClockDial::state(bool times) const {
    const std::int64_t now = tv_.clock().now();
    const double rate = tv_.clock().rate();
    Json timers = Json::array();
    for (const simulated::VirtualClock::Timer& timer : tv_.clock().timers()) {
        const bool repeats = timer.interval == watchdogInterval;
        timers.add(Json::object({{times ? "inMs" : "due",
                                  times ? std::max<std::int64_t>(timer.due - now, 0) : timer.due},
                                 {"what", purposeOf(timer)},
                                 {"everyMs", repeats ? Json(timer.interval) : Json()}}));
    }
    Json state = Json::object({{"mode", rate <= 0  ? "stopped"
                                        : rate > 1 ? "fast"
                                                   : "real"},
                               {"factor", factor_},
                               {"rate", static_cast<std::int64_t>(rate)},
                               {"timers", timers}});
    // A page counts on by itself, but not over time that is passed at once.
    if (times || isPassing_) {
        state.set("now", now);
    }
    if (!times) {
        state.set("passed", passed_);
    }
    return state;
}

}  // namespace workbench
