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
            recorder_.begin(with["title"].text(), hasBus_ ? &*wire_ : nullptr);
            return {};
        }
        if (!recorder_.isRecording()) {
            throw OrderError("nothing is being recorded");
        }
        saveRecording();
        return recorder_.end();
    });
    desk_.offer("replay", [this](const Json& with) {
        if (player_.isPlaying()) {
            throw OrderError("a scenario is being replayed");
        }
        try {
            std::vector<Step> steps =
                readScenario(with["text"].text(), WORKBENCH_SCENARIOS, interface_);
            player_.start(behindPlugged(std::move(steps)));
        } catch (const ScenarioError& error) {
            throw OrderError(error.what());
        }
        return Json();
    });
    desk_.offer("stopReplay", [this](const Json&) {
        player_.stop();
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
                    tv_.advance(milliseconds);
                    done();
                } else {
                    tv_.clock().add(static_cast<unsigned>(milliseconds), done,
                                    "the scenario that is replayed goes on");
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
    }
    audience_.tellAll(Json::object({{"type", "replay"},
                                    {"line", step.line},
                                    {"text", step.text},
                                    {"ok", error.empty()},
                                    {"error", error.empty() ? Json() : Json(error)}}));
}

void WebSession::endReplay(bool allWell) {
    ++touched_;
    audience_.tellAll(Json::object({{"type", "replayEnd"}, {"ok", allWell}, {"error", Json()}}));
    if (arguments_.isHeadless) {
        static_cast<void>(std::puts(allWell ? "all expectations held" : "something went wrong"));
        status_ = allWell ? 0 : 1;
        leaveDaemonLoop();
    }
}

void WebSession::saveRecording() {
    if (arguments_.record.empty() || !recorder_.isRecording()) {
        return;
    }
    const std::string text = recorder_.soFar();
    GError* error = nullptr;
    if (g_file_set_contents(arguments_.record.c_str(), text.c_str(),
                            static_cast<gssize>(text.size()), &error) == FALSE) {
        const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
        static_cast<void>(std::fprintf(stderr, "portmeld-workbench: %s\n", error->message));
    }
}

}  // namespace workbench
