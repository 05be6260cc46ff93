// The clock and its sources. Only the timer that is due next ever has a ready time, so that timers
// fire in the order of their due times however late the main loop comes to them.
#include "VirtualClock.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace simulated {

/// The source of a timer: plain memory that GLib allocates with zeros and frees.
struct VirtualClock::TimerSource {
    GSource base;
    VirtualClock* clock;  // null once the clock is gone
    Timer timer;
    bool firing;
};

namespace {

constexpr gint64 NEVER = -1;
constexpr gint64 AT_ONCE = 0;
constexpr std::int64_t MICROSECONDS = 1000;  // in a millisecond

/// A repeating timer without an interval must not fire endlessly in one moment.
constexpr std::int64_t SHORTEST_REPETITION = 1;

gboolean callOnce(gpointer data) {
    (*static_cast<std::function<void()>*>(data))();
    return G_SOURCE_REMOVE;
}

void deleteFunction(gpointer data) {
    delete static_cast<std::function<void()>*>(data);
}

}  // namespace

GSourceFuncs VirtualClock::functions_ = {
    nullptr, nullptr, VirtualClock::dispatch, VirtualClock::finalize, nullptr, nullptr};

VirtualClock::VirtualClock() = default;

VirtualClock::~VirtualClock() {
    // Destroying a source can destroy others through its data: take them one by one.
    while (!sources_.empty()) {
        TimerSource* source = sources_.back();
        sources_.pop_back();
        source->clock = nullptr;
        g_source_destroy(&source->base);
    }
}

std::int64_t VirtualClock::now() const {
    if (rate_ <= 0 || advancing_ > 0) {
        return virtualBase_;
    }
    const auto passed = static_cast<double>(g_get_monotonic_time() - realBase_);
    return virtualBase_ + static_cast<std::int64_t>(passed * rate_ / MICROSECONDS);
}

void VirtualClock::setRate(double rate) {
    virtualBase_ = now();
    realBase_ = g_get_monotonic_time();
    rate_ = std::max(rate, 0.0);
    armNext();
}

VirtualClock::TimerSource* VirtualClock::next() const {
    TimerSource* earliest = nullptr;
    for (TimerSource* source : sources_) {
        const bool waits = !source->firing && !g_source_is_destroyed(&source->base);
        // Sources stand in the order of adding: of two with one due time the first one stays.
        if (waits && (earliest == nullptr || source->timer.due < earliest->timer.due)) {
            earliest = source;
        }
    }
    return earliest;
}

void VirtualClock::armNext() {
    if (advancing_ > 0) {
        return;
    }
    disarm();
    if (TimerSource* earliest = next()) {
        g_source_set_ready_time(&earliest->base, readyTime(*earliest));
    }
}

void VirtualClock::disarm() {
    for (TimerSource* source : sources_) {
        if (!g_source_is_destroyed(&source->base)) {
            g_source_set_ready_time(&source->base, NEVER);
        }
    }
}

std::int64_t VirtualClock::readyTime(const TimerSource& source) const {
    if (source.timer.due <= now()) {
        return AT_ONCE;
    }
    if (rate_ <= 0) {
        return NEVER;
    }
    const auto wait = static_cast<double>(source.timer.due - virtualBase_) * MICROSECONDS / rate_;
    constexpr double LONGEST = 1e15;  // thirty years
    return realBase_ + static_cast<gint64>(std::ceil(std::min(wait, LONGEST)));
}

void VirtualClock::advance(std::int64_t milliseconds, const std::function<void()>& settle) {
    settle();
    const std::int64_t target = now() + std::max<std::int64_t>(milliseconds, 0);
    virtualBase_ = now();
    ++advancing_;
    disarm();
    for (TimerSource* source = next(); source != nullptr && source->timer.due <= target;
         source = next()) {
        virtualBase_ = std::max(virtualBase_, source->timer.due);
        fire(*source);
        settle();
    }
    virtualBase_ = std::max(virtualBase_, target);
    --advancing_;
    realBase_ = g_get_monotonic_time();
    armNext();
    settle();
}

void VirtualClock::fire(TimerSource& source) {
    GSource* base = g_source_ref(&source.base);
    const std::uint64_t before = fired_;
    g_source_set_ready_time(base, AT_ONCE);
    // Others may be dispatched before it, and one of them may remove it.
    while (fired_ == before && !g_source_is_destroyed(base)) {
        g_main_context_iteration(nullptr, FALSE);
    }
    g_source_unref(base);
}

gboolean VirtualClock::dispatch(GSource* base, GSourceFunc callback, gpointer data) {
    auto* source = reinterpret_cast<TimerSource*>(base);
    if (source->clock == nullptr) {
        return G_SOURCE_REMOVE;
    }
    ++source->clock->fired_;
    source->firing = true;
    g_source_set_ready_time(base, NEVER);
    const gboolean again = callback(data);
    if (source->clock == nullptr) {
        return G_SOURCE_REMOVE;
    }
    if (again != G_SOURCE_REMOVE) {
        source->firing = false;
        source->timer.due += std::max(source->timer.interval, SHORTEST_REPETITION);
    }
    source->clock->armNext();
    return again;
}

void VirtualClock::finalize(GSource* base) {
    auto* source = reinterpret_cast<TimerSource*>(base);
    if (source->clock != nullptr) {
        source->clock->forget(source);
    }
}

void VirtualClock::forget(TimerSource* source) {
    sources_.erase(std::remove(sources_.begin(), sources_.end(), source), sources_.end());
    armNext();
}

std::vector<VirtualClock::Timer> VirtualClock::timers() const {
    std::vector<Timer> waiting;
    for (TimerSource* source : sources_) {
        if (!source->firing && !g_source_is_destroyed(&source->base)) {
            waiting.push_back(source->timer);
        }
    }
    std::stable_sort(waiting.begin(), waiting.end(),
                     [](const Timer& a, const Timer& b) { return a.due < b.due; });
    return waiting;
}

unsigned VirtualClock::add(unsigned interval, GSourceFunc function, void* data) {
    return attach(interval, function, data, nullptr, "");
}

unsigned VirtualClock::add(unsigned interval, std::function<void()> function, const char* name) {
    return attach(interval, callOnce, new std::function<void()>(std::move(function)),
                  deleteFunction, name);
}

unsigned VirtualClock::attach(
    unsigned interval, GSourceFunc function, void* data, GDestroyNotify destroy, const char* name) {
    GSource* base = g_source_new(&functions_, sizeof(TimerSource));
    auto* source = reinterpret_cast<TimerSource*>(base);
    source->clock = this;
    g_source_set_ready_time(base, NEVER);
    g_source_set_callback(base, function, data, destroy);
    g_source_set_static_name(base, "timer on the TV's clock");
    source->timer = {g_source_attach(base, nullptr), now() + interval, interval,
                     reinterpret_cast<const void*>(function), name};
    sources_.push_back(source);
    const unsigned id = source->timer.id;
    g_source_unref(base);
    armNext();
    return id;
}

}  // namespace simulated
