// What each key does to the TV: the remote control, the ports, the passing of time. It acts through the
// simulated TV and says in the transcript what it did; what the daemon makes of it is told by others.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Shelf.h"
#include "SimulatedTv.h"
#include "Transcript.h"

namespace workbench {

class Remote {
public:
    /// What a key does that is not the TV's.
    struct Hooks {
        std::function<void()> askDevices;  ///< let the bus client ask for the devices
        std::function<void()> nextLog;     ///< show more, or nothing, of the log
        std::function<void()> quit;
    };

    Remote(simulated::SimulatedTv& tv, Shelf& shelf, Transcript& transcript, Hooks hooks);

    /// Does what is on the key.
    void press(int key);

    /// Plug in what is in hand.
    void plug();

    /// Skip the time in which the freshly started daemon takes no events.
    void skipStartUp();

    /// The keys with what they do, for people.
    void tellKeys();

private:
    struct Command {
        int key;
        const char* name;  ///< of the key; null: not listed
        const char* does;
        void (Remote::*act)();
    };
    static const std::vector<Command>& commands();

    void pressButton(int button);
    void pressFirst() { pressButton(0); }
    void pressSecond() { pressButton(1); }
    void hide();
    void home();
    void pull();
    void plugAgain();
    void takeNext();
    void camera();
    void standby();
    void wake();
    void nextLanguage();
    void shopMode();
    void companion();
    void distractionFree();
    void faster() { changeRate(+1); }
    void slower() { changeRate(-1); }
    void changeRate(int step);
    void skipTime();
    void ask() { hooks_.askDevices(); }
    void nextLog() { hooks_.nextLog(); }
    void quit() { hooks_.quit(); }
    void say(const std::string& text);
    void advanceTo(std::int64_t due, const std::string& reason);

    simulated::SimulatedTv& tv_;
    Shelf& shelf_;
    Transcript& transcript_;
    Hooks hooks_;
};

}  // namespace workbench
