// A television, simulated: one object holds everything that a TV's platform knows and does, answers
// every function of the contract, and can be driven: plug, pull, press, wake, launch, let time
// pass. Nothing here knows the daemon; the daemon knows nothing of this.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Applications.h"
#include "CallJournal.h"
#include "Ports.h"
#include "Power.h"
#include "Scanner.h"
#include "Screen.h"
#include "Settings.h"
#include "VirtualClock.h"

namespace simulated {

/// A usage record as it was sent.
struct UsageRecord {
    int type;
    std::string first, second, third;
};

/// The TV's small services, which need no more than a value or two.
struct SmallServices {
    // TV context
    int contextState = 0;    ///< the bits that a query answers
    int contextQueries = 0;  ///< inits without their fini
    // watchdog
    int watchdogPeriod = 0;  ///< as registered; 0 before
    int watchdogFeeds = 0;
    // usage statistics
    int usageAppType = 0;  ///< as configured; 0 before
    std::vector<UsageRecord> usage;
};

class SimulatedTv {
public:
    /// Makes this TV the platform of the process; there is one at a time.
    SimulatedTv();
    ~SimulatedTv();
    SimulatedTv(const SimulatedTv&) = delete;
    SimulatedTv& operator=(const SimulatedTv&) = delete;

    /// The TV that is the platform now. Ends the process with a message when there is none.
    static SimulatedTv& current();

    CallJournal& journal() { return journal_; }
    VirtualClock& clock() { return clock_; }
    Ports& ports() { return ports_; }
    Screen& screen() { return screen_; }
    Settings& settings() { return settings_; }
    Power& power() { return power_; }
    Applications& applications() { return applications_; }
    Scanner& scanner() { return scanner_; }
    SmallServices& small() { return small_; }

    /// Deliver everything that is due: runs the default main context until nothing is pending and
    /// no scan is walking. No time passes.
    void settle();

    /// Let virtual time pass (settles before, between timers and after).
    void advance(std::int64_t milliseconds);
    void advanceSeconds(std::int64_t seconds) { advance(seconds * 1000); }

    /// Notes a breach for everything that the daemon should have given back by now: lists of the
    /// USB library, queries of the TV context. For the end of a test, after the daemon's.
    void checkLeaks();

    /// Run a function later, on the default main context, after all that were posted before;
    /// dropped when the TV goes before.
    void post(std::function<void()> function);

    /// The beginning of every contract function: writes the journal; true when the call is to fail,
    /// as ordered. `fault` then receives how.
    bool enter(const char* function, const std::string& arguments, Fault* fault = nullptr);

private:
    CallJournal journal_;
    VirtualClock clock_;
    Settings settings_;
    Ports ports_;
    Screen screen_;
    Power power_;
    Applications applications_;
    Scanner scanner_;
    SmallServices small_;
    struct Posted;
    static int runPosted(void* data);
    static SimulatedTv* current_;
    std::set<unsigned> posted_;
};

}  // namespace simulated
