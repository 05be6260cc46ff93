// The TV's clock and its timers. All timers of the daemon run on it: the linker routes the daemon's
// g_timeout_add() here, so that 30 seconds pass in a test without sleeping, and in a demonstration
// as fast as wanted. The sources are ordinary ones of the default main context (g_source_remove()
// and the look-ups by id and user data work); only their due time is the virtual one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <glib.h>

namespace simulated {

class VirtualClock {
public:
    VirtualClock();
    ~VirtualClock();
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    /// A timer that is waiting.
    struct Timer {
        unsigned id;            ///< GLib source id
        std::int64_t due;       ///< virtual milliseconds
        std::int64_t interval;  ///< milliseconds
        const void* callback;   ///< its function
        const char* name;       ///< of a timer of the simulation itself; "" for the daemon's
    };

    /// Virtual milliseconds since the TV was made.
    std::int64_t now() const;

    /// How many virtual milliseconds pass in a real one. 0 (the start value): the clock stands
    /// still and moves by advance() only.
    void setRate(double rate);
    double rate() const { return rate_; }

    /// Let `milliseconds` pass at once: every timer that falls due on the way fires at its own time
    /// and in order, and between timers the main context is drained by `settle`.
    void advance(std::int64_t milliseconds, const std::function<void()>& settle);

    /// Timers that are waiting, the earliest first.
    std::vector<Timer> timers() const;

    /// What g_timeout_add() does on this TV.
    unsigned add(unsigned interval, GSourceFunc function, void* data);

    /// A timer of the simulation itself, e.g. the time-out of a pop-up; remove with
    /// g_source_remove(). `name`, a literal, tells people what it is for.
    unsigned add(unsigned interval, std::function<void()> function, const char* name = "");

private:
    struct TimerSource;
    static gboolean dispatch(GSource* base, GSourceFunc callback, gpointer data);
    static void finalize(GSource* base);
    TimerSource* next() const;
    void armNext();
    void disarm();
    std::int64_t readyTime(const TimerSource& source) const;
    void fire(TimerSource& source);
    void forget(TimerSource* source);
    unsigned attach(unsigned interval,
                    GSourceFunc function,
                    void* data,
                    GDestroyNotify destroy,
                    const char* name);

    static GSourceFuncs functions_;
    std::vector<TimerSource*> sources_;  // borrowed; each takes itself out when it is finalized
    double rate_ = 0;
    int advancing_ = 0;             // depth of advance(): the clock moves by hand only
    std::uint64_t fired_ = 0;       // how many timers ever fired
    std::int64_t virtualBase_ = 0;  // virtual time at realBase_, milliseconds
    std::int64_t realBase_ = 0;     // monotonic time, microseconds
};

}  // namespace simulated
