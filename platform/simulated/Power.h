// The TV's power: wake-up, power-off and state notices to whoever subscribed. They arrive later, on
// the main context.
#pragma once

#include <platform/power.h>

namespace simulated {

class SimulatedTv;

class Power {
public:
    explicit Power(SimulatedTv& tv) : tv_(tv) {}

    // ---- as a person does it

    // A TV first leaves normal use (state standby) and then, with nobody watching, powers off;
    // coming back it wakes up before it is in normal use. The power-off notice ends what the daemon
    // remembers of standby, so wake() causes one demonstration, the one after a wake-up. A TV that
    // only rests and never powers off sends states alone: sendState(2), and sendState(0) when it
    // returns, which causes the demonstration after standby.

    /// To standby: the state notice, then the power-off notice with the "really going off" bit.
    void standby();
    /// Back on: the wake-up notice (reason 1), then the state notice.
    void wake();

    // ---- single notices

    void sendWakeup(int reason);
    void sendPoweroff(int option);
    void sendState(int state);

    /// Whether standby() was the last of the two.
    bool inStandby() const { return inStandby_; }

    // ---- the contract: which = 0 wake-up, 1 power-off, 2 state

    int subscribe(int which, device_power_callback_fn callback, void* userData);
    int unsubscribe(int which, device_power_callback_fn callback);

private:
    void send(int which, int value);
    struct Subscription {
        device_power_callback_fn callback = nullptr;
        void* userData = nullptr;
    };
    SimulatedTv& tv_;
    Subscription subscriptions_[3];
    bool inStandby_ = false;
};

}  // namespace simulated
