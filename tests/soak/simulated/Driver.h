// What can happen to a TV, one step at a time: each step is chosen at random, done to the simulated TV and
// to the model, and compared. What a step is drawn from depends on its number alone and on what is the
// case; a step that cannot be done now does nothing.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Chance.h"
#include "Model.h"
#include "SimulatedTv.h"
#include "Stage.h"
#include "World.h"

namespace soak {

/// A socket for a device, and the device in it.
struct Socket {
    simulated::DeviceId id = 0;
    bool occupied = false;
    simulated::UsbDevice device;
};

class Driver {
public:
    Driver(simulated::SimulatedTv& tv, FakeBus& bus, const WorkFolder& folder, World& world);

    /// The daemon has just been made: some devices are there before it takes events, and the start-up
    /// time passes.
    void start(std::uint64_t seed);

    /// One step. Returns what was done.
    std::string step(std::uint64_t seed, std::uint64_t number);

    /// The TV comes to rest, in steps that are compared like all others: nothing plugged in, nobody
    /// registered, nothing waiting. Calls `done` with each.
    template <class Done>
    void rest(const Done& done) {
        for (int i = 0; i < RESTING_STEPS; ++i) {
            restingStep(i);
            done(doing_);
        }
    }

    const Model& model() const { return model_; }
    Model& model() { return model_; }
    /// How often something was pulled.
    long cycles() const { return cycles_; }
    /// The reply to the call of this step, and what it ought to have been: the values as text, or unset
    /// when the call is never answered; nothing at all without a call.
    struct Reply {
        std::optional<std::string> expected, found;
        bool ended;
    };
    const std::optional<Reply>& reply() const { return reply_; }

private:
    struct Kind;
    static const std::vector<Kind>& kinds();

    // ports
    void plug(Chance& chance);
    void mount(Chance& chance);
    void pull(Chance& chance);
    void plugAndMount(Chance& chance);
    void plugMountAndPull(Chance& chance);
    void plugDisk(Chance& chance);
    void repeatEvent(Chance& chance);
    void vanish(Chance& chance);
    void pullStranger(Chance& chance);
    void brokenEvent(Chance& chance);

    // viewer, power, settings, scans
    void press(Chance& chance);
    void hide(Chance& chance);
    void timeOut(Chance& chance);
    void strayCallback(Chance& chance);
    void passTime(Chance& chance);
    void power(Chance& chance);
    void standbyAndWake(Chance& chance);
    void language(Chance& chance);
    void shopMode(Chance& chance);
    void demoSettings(Chance& chance);
    void distraction(Chance& chance);
    void dlna(Chance& chance);
    void companion(Chance& chance);
    void endApplications(Chance& chance);
    void holdScans(Chance& chance);
    void strayReport(Chance& chance);
    void refusal(Chance& chance);

    // bus
    void call(Chance& chance);
    void callMusic(Chance& chance);
    void callUnanswered(Chance& chance);
    void called(const std::string& sender,
                const char* method,
                GVariant* arguments,
                std::optional<std::string> reply);

    // what both are told
    Socket* socket(Chance& chance, bool occupied);
    void putIn(Chance& chance, Socket& socket);
    void takeOut(Socket& socket);
    void announce(Socket& socket, const char* action);
    void setMounted(Chance& chance, Socket& socket);
    void setUseMode(int mode);
    void setLanguage(const char* name);
    void advance(std::int64_t milliseconds);
    /// What the model is told when the TV delivers what the step has caused, in the order of causing.
    void later(std::function<void()> event) { events_.push_back(std::move(event)); }
    void settle();
    void restingStep(int number);
    static constexpr int RESTING_STEPS = 9;
    std::string folder(int number) const;

    simulated::SimulatedTv& tv_;
    FakeBus& bus_;
    const WorkFolder& folder_;
    World& world_;
    Model model_;
    std::array<Socket, 13> sockets_;
    std::vector<std::function<void()>> events_;
    std::string doing_;  // in words
    std::optional<Reply> reply_;
    long cycles_ = 0;
    int callers_ = 0;
    std::vector<std::string> folders_;
};

}  // namespace soak
