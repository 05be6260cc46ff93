// One sitting in front of the TV: the daemon is started, the sticks are plugged in, keys and news are
// carried to and fro until somebody switches off. The wiring of the workbench; each part does its own.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "Arguments.h"
#include "BusClient.h"
#include "Keyboard.h"
#include "Loop.h"
#include "Narrator.h"
#include "Remote.h"
#include "Shelf.h"
#include "SimulatedTv.h"
#include "Terminal.h"
#include "Transcript.h"

namespace workbench {

class Session {
public:
    /// `busAddress` is where the daemon will be found; `sticks` are plugged in one after the other. Keys
    /// come from the open file `input`.
    Session(simulated::SimulatedTv& tv,
            Terminal& terminal,
            int input,
            std::string busAddress,
            std::vector<StickWish> sticks);

    /// Runs the daemon until the TV is switched off. Returns the exit status of the program: 0 when all
    /// went as it should.
    int run();

private:
    void begin();
    void showBus(const std::string& uniqueName);
    void onKey(int key);
    bool hasQuietWork() const;
    void doQuietWork();
    void nextLog();
    void redraw();
    void quit();
    Remote::Hooks remoteHooks();
    BusClient::Listener busListener();

    simulated::SimulatedTv& tv_;
    Terminal& terminal_;
    std::string busAddress_;
    std::deque<StickWish> sticks_;  // still to be plugged in

    Transcript transcript_;
    Narrator narrator_;
    Shelf shelf_;
    Remote remote_;
    BusClient client_;
    Keyboard keyboard_;

    enum class Phase { DaemonStarts, LoopRuns, Connecting, Open };

    Phase phase_ = Phase::DaemonStarts;
    bool askDue_ = false;      // the client is to ask for the devices
    bool catchUpDue_ = false;  // the client is to hear everything that was sent to it
    std::deque<int> keys_;     // pressed and not acted upon yet
    std::vector<Source> sources_;
};

}  // namespace workbench
