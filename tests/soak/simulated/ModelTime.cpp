// The model's time: the timers of the daemon and of the pop-ups, and what power does.
#include <algorithm>

#include "Model.h"

namespace soak {

namespace {

constexpr std::int64_t START_UP = 30'000;
constexpr std::int64_t WATCHDOG = 5'000;
constexpr std::int64_t ACTIVATION = 60'000;
constexpr std::int64_t DEMO = 10'000;

constexpr int REALLY_OFF = 1 << 30;

}  // namespace

long Model::startTimer(Timer::Kind kind, std::int64_t interval, int itemType) {
    timers_.push_back({kind, now + interval, interval, itemType, ++lastTimer_});
    return lastTimer_;
}

void Model::stopTimer(long number) {
    timers_.erase(std::remove_if(timers_.begin(), timers_.end(),
                                 [&](const Timer& timer) { return timer.number == number; }),
                  timers_.end());
}

void Model::start() {
    startTimer(Timer::Kind::StartUp, START_UP);
    startTimer(Timer::Kind::Watchdog, WATCHDOG);
}

void Model::advance(std::int64_t milliseconds) {
    const std::int64_t end = now + milliseconds;
    for (;;) {
        const auto next =
            std::min_element(timers_.begin(), timers_.end(), [](const Timer& a, const Timer& b) {
                return a.due != b.due ? a.due < b.due : a.number < b.number;
            });
        if (next == timers_.end() || next->due > end) {
            break;
        }
        now = next->due;
        fire(next->number);
        settle();
    }
    now = end;
}

void Model::fire(long number) {
    const auto found = std::find_if(timers_.begin(), timers_.end(),
                                    [&](const Timer& timer) { return timer.number == number; });
    const Timer timer = *found;
    if (timer.kind == Timer::Kind::Watchdog) {
        found->due += timer.interval;
        ++watchdogFeeds;
        return;
    }
    stopTimer(number);
    switch (timer.kind) {
        case Timer::Kind::StartUp:
            startUp();
            break;
        case Timer::Kind::Activation:
            activated = true;
            break;
        case Timer::Kind::Demo:
            launchAnyDemo(true);
            break;
        default:
            if (screenTimer_ == number) {
                takeDown();
            }
            timeOut(timer.itemType);
    }
}

void Model::startUp() {
    activated = true;
    for (const RecordPtr& record : list) {
        destroy(record);
    }
    list.clear();  // the counters stay
    if (!shop()) {
        return;
    }
    if (internalDemoIsPossible()) {
        launchInternalDemo(true);
    } else {
        walkForDemo();
    }
}

/// The list is dropped as it stands: nobody is told, no counter moves.
void Model::wakeUp() {
    list.clear();
    activationTimer_ = startTimer(Timer::Kind::Activation, ACTIVATION);
    if (shop()) {
        demoTimer_ = startTimer(Timer::Kind::Demo, DEMO);
    }
}

void Model::powerOff(int option) {
    standby = false;
    if (option != 13 && option != 14 && (option & REALLY_OFF) != 0) {
        activated = false;
        stopTimer(activationTimer_);
        stopTimer(demoTimer_);
    }
}

void Model::powerState(int state) {
    if (state == 2) {
        standby = true;
        stopTimer(demoTimer_);
    } else if (state == 0 && standby && shop()) {
        demoTimer_ = startTimer(Timer::Kind::Demo, DEMO);
    }
}

}  // namespace soak
