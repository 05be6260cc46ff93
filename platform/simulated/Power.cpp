// The power notices and their subscriptions, with the functions of <platform/power.h>.
#include "Power.h"

#include "ContractCall.h"

namespace simulated {

namespace {

constexpr int WAKEUP = 0;
constexpr int POWEROFF = 1;
constexpr int STATE = 2;

constexpr int OK = 0;
constexpr int ERROR = -1;

/// The reason of a wake-up by the remote control.
constexpr int REASON_REMOTE_CONTROL = 1;

int subscribe(const char* function, int which, device_power_callback_fn callback, void* userData) {
    return contractCall(function, "", [&](SimulatedTv& tv) {
        return tv.power().subscribe(which, callback, userData);
    });
}

int unsubscribe(const char* function, int which, device_power_callback_fn callback) {
    return contractCall(function, "",
                        [&](SimulatedTv& tv) { return tv.power().unsubscribe(which, callback); });
}

}  // namespace

void Power::standby() {
    inStandby_ = true;
    sendState(DEVICE_POWER_STATE_STANDBY);
    sendPoweroff(DEVICE_POWEROFF_BIT_OFF);
}

void Power::wake() {
    inStandby_ = false;
    sendWakeup(REASON_REMOTE_CONTROL);
    sendState(DEVICE_POWER_STATE_NORMAL);
}

void Power::sendWakeup(int reason) {
    send(WAKEUP, reason);
}

void Power::sendPoweroff(int option) {
    send(POWEROFF, option);
}

void Power::sendState(int state) {
    send(STATE, state);
}

void Power::send(int which, int value) {
    tv_.post([this, which, value] {
        const Subscription subscription = subscriptions_[which];
        if (subscription.callback != nullptr) {
            (void)subscription.callback(value, subscription.userData);
        }
    });
}

int Power::subscribe(int which, device_power_callback_fn callback, void* userData) {
    if (callback == nullptr) {
        return ERROR;
    }
    subscriptions_[which] = {callback, userData};
    return OK;
}

int Power::unsubscribe(int which, device_power_callback_fn callback) {
    if (callback == nullptr || subscriptions_[which].callback != callback) {
        return ERROR;
    }
    subscriptions_[which] = {};
    return OK;
}

}  // namespace simulated

extern "C" {

int device_power_subscribe_wakeup(device_power_callback_fn cb, void* user_data) {
    return simulated::subscribe(__func__, simulated::WAKEUP, cb, user_data);
}

int device_power_subscribe_poweroff(device_power_callback_fn cb, void* user_data) {
    return simulated::subscribe(__func__, simulated::POWEROFF, cb, user_data);
}

int device_power_subscribe_state_changed(device_power_callback_fn cb, void* user_data) {
    return simulated::subscribe(__func__, simulated::STATE, cb, user_data);
}

int device_power_unsubscribe_wakeup(device_power_callback_fn cb) {
    return simulated::unsubscribe(__func__, simulated::WAKEUP, cb);
}

int device_power_unsubscribe_poweroff(device_power_callback_fn cb) {
    return simulated::unsubscribe(__func__, simulated::POWEROFF, cb);
}

int device_power_unsubscribe_state_changed(device_power_callback_fn cb) {
    return simulated::unsubscribe(__func__, simulated::STATE, cb);
}

}  // extern "C"
