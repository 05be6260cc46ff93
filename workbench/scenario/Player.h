// Replays a scenario: one step after the other, each when the one before has had its whole effect. What
// orders do is the desk's, whether expectations hold the checker's.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Checker.h"
#include "Desk.h"
#include "Scenario.h"

namespace workbench {

class Player {
public:
    struct Hooks {
        /// Calls back when the bus has carried everything that was said until now.
        std::function<void(std::function<void()>)> sync;
        /// Whether something goes on that nobody can wait for on the main loop, such as a scan.
        std::function<bool()> isBusy;
        /// Lets time pass, and calls back.
        std::function<void(std::int64_t milliseconds, std::function<void()>)> wait;
        /// A step is done: "" or what went wrong.
        std::function<void(const Step&, const std::string& error)> told;
        /// All are done.
        std::function<void(bool allWell)> ended;
    };

    Player(const Desk& desk, Checker& checker, Hooks hooks);

    void start(std::vector<Step> steps);
    /// No further step; nobody is told of the end.
    void stop();
    bool isPlaying() const { return playing_; }
    /// Lines of the scenario: the one that is next or under way, and the last step's.
    int line() const { return next_ < steps_.size() ? steps_[next_].line : lastLine(); }
    int lastLine() const { return steps_.empty() ? 0 : steps_.back().line; }

    /// Whether there is something to do once nothing else is due, and doing it.
    bool isDue() const { return playing_ && !waiting_ && !hooks_.isBusy(); }
    void proceed();

private:
    void carryOut(const Step& step);
    void done(unsigned run, const std::string& error);

    const Desk& desk_;
    Checker& checker_;
    Hooks hooks_;
    std::vector<Step> steps_;
    std::size_t next_ = 0;
    unsigned run_ = 0;  // callbacks of an earlier run are nobody's
    bool playing_ = false;
    bool waiting_ = false;
    bool synchronized_ = false;
    bool allWell_ = true;
};

}  // namespace workbench
