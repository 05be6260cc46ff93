// Power notices from logind (org.freedesktop.login1(5)), over the system bus.
//
//   PrepareForSleep(true)      state "standby", then the power-off notice with "really going off"
//   PrepareForSleep(false)     wake-up notice, then state "normal"
//   PrepareForShutdown(true)   power-off notice with "really going off"
//   PrepareForShutdown(false)  wake-up notice: the shutdown was called off
//
// logind is listened to only while somebody here listens, and nobody else's signals count. Nothing
// waits: a missing bus or logind means that no notice comes, and a logind that starts later is found.
#include "Power.h"

#include <platform/power.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "Listeners.h"

namespace machine {

namespace {

constexpr const char* LOGIN_NAME = "org.freedesktop.login1";
constexpr const char* LOGIN_PATH = "/org/freedesktop/login1";
constexpr const char* LOGIN_INTERFACE = "org.freedesktop.login1.Manager";
constexpr const char* SLEEP = "PrepareForSleep";
constexpr const char* SHUTDOWN = "PrepareForShutdown";

constexpr int OK = 0;
constexpr int ERROR = -1;

/// logind does not say why the machine woke up; on a TV 1 is the remote control.
constexpr int WAKE_UP_REASON = 1;

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};

/// Hears PrepareForSleep and PrepareForShutdown from whoever owns logind's name, while it lives.
class LoginSignals {
public:
    using Heard = std::function<void(const std::string& signal, bool begins)>;

    explicit LoginSignals(Heard heard) : heard_(std::move(heard)) {
        // Never cancelled: the connection is the whole process's, and others wait for it too.
        g_bus_get(G_BUS_TYPE_SYSTEM, nullptr, connected, new std::weak_ptr<LoginSignals*>(self_));
    }
    ~LoginSignals() {
        if (name_ != 0) {
            g_bus_unwatch_name(name_);
        }
        forgetOwner();
    }
    LoginSignals(const LoginSignals&) = delete;
    LoginSignals& operator=(const LoginSignals&) = delete;

private:
    static void connected(GObject*, GAsyncResult* result, void* data) {
        const std::unique_ptr<std::weak_ptr<LoginSignals*>> asked(
            static_cast<std::weak_ptr<LoginSignals*>*>(data));
        std::unique_ptr<GDBusConnection, Unref> connection(g_bus_get_finish(result, nullptr));
        const std::shared_ptr<LoginSignals*> self = asked->lock();
        if (self == nullptr || connection == nullptr) {
            return;  // nobody is interested any more, or there is no bus
        }
        LoginSignals& signals = **self;
        signals.connection_ = std::move(connection);
        signals.name_ = g_bus_watch_name_on_connection(signals.connection_.get(), LOGIN_NAME,
                                                       G_BUS_NAME_WATCHER_FLAGS_NONE, appeared,
                                                       vanished, &signals, nullptr);
    }

    /// The unique name is subscribed to: a signal that only claims to be logind's has another.
    static void appeared(GDBusConnection* connection, const char*, const char* owner, void* self) {
        auto& signals = *static_cast<LoginSignals*>(self);
        signals.forgetOwner();
        for (const char* signal : {SLEEP, SHUTDOWN}) {
            signals.subscriptions_.push_back(g_dbus_connection_signal_subscribe(
                connection, owner, LOGIN_INTERFACE, signal, LOGIN_PATH, nullptr,
                G_DBUS_SIGNAL_FLAGS_NONE, happened, self, nullptr));
        }
    }
    static void vanished(GDBusConnection*, const char*, void* self) {
        static_cast<LoginSignals*>(self)->forgetOwner();
    }

    static void happened(GDBusConnection*,
                         const char*,
                         const char*,
                         const char*,
                         const char* signal,
                         GVariant* parameters,
                         void* self) {
        if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(b)")) == FALSE) {
            return;
        }
        gboolean begins = FALSE;
        g_variant_get(parameters, "(b)", &begins);
        // A copy, and the last thing done: whoever is told may end this.
        const Heard heard = static_cast<LoginSignals*>(self)->heard_;
        heard(signal, begins != FALSE);
    }

    void forgetOwner() {
        for (const unsigned subscription : subscriptions_) {
            g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
        }
        subscriptions_.clear();
    }

    Heard heard_;
    std::shared_ptr<LoginSignals*> self_ = std::make_shared<LoginSignals*>(this);
    std::unique_ptr<GDBusConnection, Unref> connection_;
    unsigned name_ = 0;
    std::vector<unsigned> subscriptions_;
};

/// All who are told of something here.
struct Power {
    /// One kind of notice and the daemon's subscriptions to it.
    struct Notice {
        Listeners<int> listeners;
        std::vector<std::pair<device_power_callback_fn, unsigned>> subscriptions;
    };
    Notice wakeUp;
    Notice powerOff;
    Notice state;
    Listeners<bool> sleep;
    unsigned lastNumber = 0;
    std::unique_ptr<LoginSignals> signals;

    /// Stays to the very end of the process: whoever is told may take his leave as late as that.
    static Power& get() {
        static Power& power = *std::make_unique<Power>().release();
        return power;
    }

    int subscribe(Notice& notice, device_power_callback_fn callback, void* userData) {
        if (callback == nullptr) {
            return ERROR;
        }
        const unsigned number = ++lastNumber;
        notice.listeners.add(number,
                             [callback, userData](int value) { (void)callback(value, userData); });
        notice.subscriptions.emplace_back(callback, number);
        update();
        return OK;
    }

    int unsubscribe(Notice& notice, device_power_callback_fn callback) {
        auto& all = notice.subscriptions;
        const auto found = std::find_if(all.begin(), all.end(),
                                        [&](const auto& each) { return each.first == callback; });
        if (found == all.end()) {
            return ERROR;
        }
        (void)notice.listeners.remove(found->second);
        all.erase(found);
        update();
        return OK;
    }

    /// Listen to logind while somebody is interested, and no longer.
    void update() {
        if (wakeUp.listeners.empty() && powerOff.listeners.empty() && state.listeners.empty() &&
            sleep.empty()) {
            signals.reset();
        } else if (signals == nullptr) {
            signals = std::make_unique<LoginSignals>(
                [this](const std::string& signal, bool begins) { heard(signal, begins); });
        }
    }

    void heard(const std::string& signal, bool begins) const {
        const bool isSleep = signal == SLEEP;
        sleep.tell(begins);
        if (begins && isSleep) {
            state.listeners.tell(DEVICE_POWER_STATE_STANDBY);
        }
        if (begins) {
            powerOff.listeners.tell(DEVICE_POWEROFF_BIT_OFF);
            return;
        }
        wakeUp.listeners.tell(WAKE_UP_REASON);
        if (isSleep) {
            state.listeners.tell(DEVICE_POWER_STATE_NORMAL);
        }
    }
};

}  // namespace

unsigned onSleep(std::function<void(bool sleeps)> told) {
    Power& power = Power::get();
    const unsigned number = ++power.lastNumber;
    power.sleep.add(number, std::move(told));
    power.update();
    return number;
}

void forgetSleep(unsigned number) {
    Power& power = Power::get();
    (void)power.sleep.remove(number);
    power.update();
}

}  // namespace machine

using machine::Power;

extern "C" {

int device_power_subscribe_wakeup(device_power_callback_fn cb, void* user_data) {
    Power& power = Power::get();
    return power.subscribe(power.wakeUp, cb, user_data);
}

int device_power_subscribe_poweroff(device_power_callback_fn cb, void* user_data) {
    Power& power = Power::get();
    return power.subscribe(power.powerOff, cb, user_data);
}

int device_power_subscribe_state_changed(device_power_callback_fn cb, void* user_data) {
    Power& power = Power::get();
    return power.subscribe(power.state, cb, user_data);
}

int device_power_unsubscribe_wakeup(device_power_callback_fn cb) {
    Power& power = Power::get();
    return power.unsubscribe(power.wakeUp, cb);
}

int device_power_unsubscribe_poweroff(device_power_callback_fn cb) {
    Power& power = Power::get();
    return power.unsubscribe(power.powerOff, cb);
}

int device_power_unsubscribe_state_changed(device_power_callback_fn cb) {
    Power& power = Power::get();
    return power.unsubscribe(power.state, cb);
}

}  // extern "C"
