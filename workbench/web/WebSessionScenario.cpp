// One sitting in front of the TV: the orders that record and replay scenarios, and how a replay is told.
#include <cstdio>

#include "DaemonRun.h"
#include "WebSession.h"

namespace workbench {

void WebSession::offerScenarioOrders() {
    desk_.offer("record", [this](const Json& with) -> Json {
        if (with["on"].truth()) {
            if (recorder_.isRecording()) {
                throw OrderError("a recording is under way");
            }
            recorder_.begin(with["title"].text());
            return {};
        }
        if (!recorder_.isRecording()) {
            throw OrderError("nothing is being recorded");
        }
        return endRecording();
    });
    desk_.offer("replay", [this](const Json& with) {
        if (player_.isPlaying()) {
            throw OrderError("a scenario is being replayed");
        }
        try {
            std::vector<Step> steps =
                readScenario(with["text"].text(), WORKBENCH_SCENARIOS, interface_);
            if (with["noWaiting"].truth()) {
                clock_.hold();
            }
            player_.start(behindPlugged(std::move(steps)));
        } catch (const ScenarioError& error) {
            throw OrderError(error.what());
        }
        return Json();
    });
    desk_.offer("stopReplay", [this](const Json&) {
        stopReplay();
        return Json();
    });
}

/// A scenario counts its ports from 1, whatever was plugged in before.
std::vector<Step> WebSession::behindPlugged(std::vector<Step> steps) const {
    for (Step& step : steps) {
        auto* const order = std::get_if<Order>(&step.deed);
        if (order != nullptr && order->with["port"].isNumber()) {
            order->with.set("port", order->with["port"].number() +
                                        static_cast<std::int64_t>(ports_.ports().size()));
        }
    }
    return steps;
}

Player::Hooks WebSession::playerHooks() {
    return {[this](const std::function<void()>& done) {
                if (hasBus_) {
                    wire_->sync(done);
                } else {
                    done();
                }
            },
            [this] { return tv_.scanner().walking(); },
            [this](std::int64_t milliseconds, const std::function<void()>& done) {
                if (arguments_.isHeadless || tv_.clock().rate() <= 0) {
                    clock_.pass(milliseconds);
                    done();
                } else {
                    waitTimer_ = tv_.clock().add(
                        static_cast<unsigned>(milliseconds),
                        [this, done] {
                            waitTimer_ = 0;
                            done();
                        },
                        "the scenario that is replayed goes on");
                    ++touched_;
                }
            },
            [this](const Step& step, const std::string& error) { tellStep(step, error); },
            [this](bool allWell) { endReplay(allWell); }};
}

void WebSession::tellStep(const Step& step, const std::string& error) {
    ++touched_;
    if (arguments_.isHeadless) {
        static_cast<void>(std::printf("%s %d %s%s%s\n", error.empty() ? "ok" : "not ok", step.line,
                                      step.text.c_str(), error.empty() ? "" : " # ",
                                      error.c_str()));
        static_cast<void>(std::fflush(stdout));
    }
    audience_.tellAll(Json::object({{"type", "replay"},
                                    {"line", step.line},
                                    {"text", step.text},
                                    {"ok", error.empty()},
                                    {"error", error.empty() ? Json() : Json(error)}}));
}

void WebSession::endReplay(bool allWell) {
    ++touched_;
    clock_.letGo();
    audience_.tellAll(Json::object({{"type", "replayEnd"}, {"ok", allWell}, {"error", Json()}}));
    if (arguments_.isHeadless) {
        static_cast<void>(std::puts(allWell ? "all expectations held" : "something went wrong"));
        isReplayed_ = true;
        status_ = allWell ? 0 : 1;
        leaveDaemonLoop();
    }
}

/// The scenario of the command line, once somebody watches or nobody is going to.
void WebSession::startReplay() {
    if (wanted_ && begun_ && (pageHasCome_ || arguments_.isHeadless)) {
        player_.start(std::move(*wanted_));
        wanted_.reset();
    }
}

void WebSession::stopReplay() {
    if (!player_.isPlaying()) {
        return;
    }
    player_.stop();
    if (waitTimer_ != 0) {
        g_source_remove(waitTimer_);
        waitTimer_ = 0;
    }
    clock_.letGo();
    audience_.tellAll(
        Json::object({{"type", "replayEnd"}, {"ok", false}, {"error", "it was stopped"}}));
}

/// The file of the command line follows the recording that began with the program.
void WebSession::saveRecording() {
    if (!recordFile_ || !recorder_.isRecording()) {
        return;
    }
    const std::string reason = recordFile_->follow(recorder_.soFar());
    if (!reason.empty()) {
        complain(reason);
    }
}

std::string WebSession::endRecording() {
    std::string text = recorder_.end();
    const std::string reason = recordFile_ ? recordFile_->follow(text) : "";
    if (!reason.empty()) {
        complain(reason);
    }
    recordFile_.reset();
    return text;
}

/// Nothing that is said on the bus is heard from now on; without a page that is the end.
void WebSession::loseBus(const std::string& reason) {
    const std::string text = "nothing of the bus is heard any more: " + reason;
    complain(text);
    log_.warn(text);
    if (arguments_.isHeadless) {
        leaveDaemonLoop();
    }
}

}  // namespace workbench
