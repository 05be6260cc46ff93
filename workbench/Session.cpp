// One sitting in front of the TV. What is due is done in turns of the daemon's own main loop; work that
// must not overtake the daemon waits until nothing else is due.
#include "Session.h"

#include <csignal>
#include <utility>

#include "DaemonRun.h"
#include "StatusArea.h"

namespace workbench {

namespace {

/// How often the time on screen is brought up to date.
constexpr unsigned tickMilliseconds = 200;

/// The journal of platform calls is nobody's reading here.
constexpr std::size_t journalLimit = 1000;

}  // namespace

Session::Session(simulated::SimulatedTv& tv,
                 Terminal& terminal,
                 int input,
                 std::string busAddress,
                 std::vector<StickWish> sticks)
    : tv_(tv),
      terminal_(terminal),
      busAddress_(std::move(busAddress)),
      sticks_(sticks.begin(), sticks.end()),
      transcript_(terminal, [&tv] { return tv.clock().now(); }),
      narrator_(tv, transcript_),
      shelf_(tv.ports()),
      remote_(tv, shelf_, transcript_, remoteHooks()),
      client_(busListener()),
      keyboard_(input, [this](int key) { onKey(key); }) {
    tv_.journal().setLimit(journalLimit);
    const auto leave = [this] {
        quit();
        return true;
    };
    sources_.push_back(whenSignalled(SIGINT, leave));
    sources_.push_back(whenSignalled(SIGTERM, leave));
    sources_.push_back(whenSignalled(SIGHUP, leave));
    sources_.push_back(whenever(
        G_PRIORITY_DEFAULT, [this] { return narrator_.hasNews(); },
        [this] {
            narrator_.tellNews();
            redraw();
        }));
    sources_.push_back(whenever(
        G_PRIORITY_LOW, [this] { return hasQuietWork(); }, [this] { doQuietWork(); }));
    if (terminal_.isLive()) {
        sources_.push_back(everyMilliseconds(tickMilliseconds, [this] {
            redraw();
            return true;
        }));
        sources_.push_back(whenSignalled(SIGWINCH, [this] {
            redraw();
            terminal_.repaint();
            return true;
        }));
    }
}

Remote::Hooks Session::remoteHooks() {
    return {[this] { askDue_ = true; }, [this] { nextLog(); }, [this] { quit(); }};
}

BusClient::Listener Session::busListener() {
    return {[this](const std::string& uniqueName) {
                showBus(uniqueName);
                phase_ = Phase::Open;
            },
            [this](const std::string& reason) {
                transcript_.tell("bus", reason, Style::Warning);
                phase_ = Phase::Open;
            },
            [this](const std::string& signal, const std::string& text) {
                narrator_.tellSignal(signal, text);
            }};
}

int Session::run() {
    transcript_.plain("portmeld-workbench: a television in your terminal, a real portmeld inside",
                      Style::Strong);
    transcript_.plain("");
    transcript_.tell("tv", "is switched on");
    const int status = runDaemon([this] { phase_ = Phase::LoopRuns; });
    tv_.checkLeaks();
    narrator_.tellNews();
    transcript_.tell("tv", "is switched off");
    if (status != 0) {
        transcript_.tell("fault", "portmeld ended with " + std::to_string(status), Style::Warning);
    }
    return status != 0 || narrator_.sawBreach() ? 1 : 0;
}

void Session::showBus(const std::string& uniqueName) {
    transcript_.tell("bus", std::string(BusClient::daemonName) + " is on the bus; its client " +
                                std::to_string(BusClient::clientId) + " is " + uniqueName);
    const std::string ask = "  gdbus call --address " + busAddress_ + " --dest " +
                            BusClient::daemonName + " --object-path " + BusClient::objectPath +
                            " --method " + BusClient::daemonName;
    transcript_.plain("");
    transcript_.plain("Bus address: " + busAddress_, Style::Strong);
    transcript_.plain(
        "From another terminal, as client 7: count the devices; list them, as signals:");
    transcript_.plain(ask + ".GetDeviceCount -- 7 -1");
    transcript_.plain(ask + ".RequesAll 7");
    transcript_.plain("Signals go to one client each: gdbus monitor hears none, this does:");
    transcript_.plain("  dbus-monitor --address " + busAddress_ +
                      " interface=" + BusClient::daemonName);
    transcript_.plain("");
}

void Session::onKey(int key) {
    // A person's keys act at once, a script's in their turn.
    if (keyboard_.isTerminal() && phase_ == Phase::Open) {
        remote_.press(key);
        redraw();
    } else {
        keys_.push_back(key);
    }
}

bool Session::hasQuietWork() const {
    if (phase_ != Phase::Open) {
        return phase_ == Phase::LoopRuns;
    }
    if (client_.isBusy() || tv_.scanner().walking() || narrator_.hasNews()) {
        return false;
    }
    return !sticks_.empty() || askDue_ || catchUpDue_ || !keys_.empty();
}

/// One piece of the work that waits until the TV, the daemon and the bus have nothing to do.
void Session::doQuietWork() {
    if (phase_ == Phase::LoopRuns) {
        begin();
    } else if (!sticks_.empty()) {
        shelf_.addStick(sticks_.front().folder, sticks_.front().product);
        sticks_.pop_front();
        remote_.plug();
    } else if (std::exchange(askDue_, false)) {
        if (client_.isReady()) {
            client_.requestAll();
        }
    } else if (std::exchange(catchUpDue_, false)) {
        if (client_.isReady()) {
            client_.catchUp();
        }
    } else {
        const int key = keys_.front();
        keys_.pop_front();
        remote_.press(key);
        catchUpDue_ = true;
    }
    redraw();
}

void Session::begin() {
    phase_ = Phase::Connecting;
    remote_.skipStartUp();
    client_.start(busAddress_);
}

void Session::nextLog() {
    using Log = Narrator::Log;
    switch (narrator_.log()) {
        case Log::None:
            narrator_.setLog(Log::Usual);
            transcript_.tell("log", "the daemon's lines are shown, without the debug ones");
            break;
        case Log::Usual:
            narrator_.setLog(Log::All);
            transcript_.tell("log", "all lines of the daemon are shown");
            break;
        case Log::All:
            narrator_.setLog(Log::None);
            transcript_.tell("log", "the daemon's lines are not shown");
            break;
    }
}

void Session::redraw() {
    if (terminal_.isBroken()) {
        quit();
    }
    if (terminal_.isLive()) {
        terminal_.setLive(statusArea(tv_, shelf_, terminal_.columns() - 1, terminal_.rows()));
    }
}

void Session::quit() {
    leaveDaemonLoop();
}

}  // namespace workbench
