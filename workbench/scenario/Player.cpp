// Replays a scenario: between two steps the bus is given the time to carry what the first one caused.
#include "Player.h"

#include <utility>

namespace workbench {

Player::Player(const Desk& desk, Checker& checker, Hooks hooks)
    : desk_(desk), checker_(checker), hooks_(std::move(hooks)) {}

void Player::start(std::vector<Step> steps) {
    steps_ = std::move(steps);
    next_ = 0;
    ++run_;
    playing_ = allWell_ = true;
    waiting_ = synchronized_ = false;
    checker_.begin();
}

void Player::stop() {
    playing_ = false;
    ++run_;
}

void Player::proceed() {
    if (!synchronized_) {
        waiting_ = true;
        hooks_.sync([this, run = run_] {
            if (run == run_) {
                waiting_ = false;
                synchronized_ = true;
            }
        });
        return;
    }
    synchronized_ = false;
    if (next_ == steps_.size()) {
        playing_ = false;
        hooks_.ended(allWell_);
        return;
    }
    carryOut(steps_[next_]);
}

void Player::carryOut(const Step& step) {
    waiting_ = true;
    const unsigned run = run_;
    if (const auto* const expected = std::get_if<Expectation>(&step.deed)) {
        done(run, checker_.failure(*expected));
        // Nothing has happened that the bus would have to carry.
        synchronized_ = true;
        return;
    }
    checker_.beforeStep();
    if (const auto* const wait = std::get_if<Wait>(&step.deed)) {
        hooks_.wait(wait->milliseconds, [this, run] { done(run, ""); });
        return;
    }
    desk_.carryOut(std::get<Order>(step.deed), [this, run](const Outcome& outcome) {
        if (run == run_) {
            checker_.setReply(outcome.result);
            done(run, outcome.error);
        }
    });
}

void Player::done(unsigned run, const std::string& error) {
    if (run != run_) {
        return;
    }
    waiting_ = false;
    allWell_ = allWell_ && error.empty();
    const Step& step = steps_[next_++];
    hooks_.told(step, error);
}

}  // namespace workbench
