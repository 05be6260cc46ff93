// Choosing steps, and bringing the TV to rest. What the steps do lives in DriverPorts.cpp,
// DriverViewer.cpp and DriverBus.cpp.
#include "Driver.h"

#include <numeric>

namespace soak {

/// A step that can happen, and how often it does.
struct Driver::Kind {
    int weight;
    const char* name;
    void (Driver::*run)(Chance& chance);
};

const std::vector<Driver::Kind>& Driver::kinds() {
    static const std::vector<Kind> all = {
        {14, "plug", &Driver::plug},
        {16, "mount", &Driver::mount},
        {30, "pull", &Driver::pull},
        {16, "plug and mount", &Driver::plugAndMount},
        {8, "plug, mount and pull", &Driver::plugMountAndPull},
        {3, "plug a disk", &Driver::plugDisk},
        {4, "repeat", &Driver::repeatEvent},
        {1, "vanish", &Driver::vanish},
        {2, "pull what is not there", &Driver::pullStranger},
        {1, "broken event", &Driver::brokenEvent},
        {12, "press", &Driver::press},
        {3, "hide", &Driver::hide},
        {3, "time out", &Driver::timeOut},
        {2, "stray callback", &Driver::strayCallback},
        {8, "companion", &Driver::companion},
        {6, "end applications", &Driver::endApplications},
        {8, "time passes", &Driver::passTime},
        {2, "power", &Driver::power},
        {2, "standby", &Driver::standbyAndWake},
        {2, "language", &Driver::language},
        {2, "use mode", &Driver::shopMode},
        {2, "demo mode", &Driver::demoSettings},
        {3, "context", &Driver::distraction},
        {2, "media server", &Driver::dlna},
        {2, "scans", &Driver::holdScans},
        {3, "stray report", &Driver::strayReport},
        {2, "refusal", &Driver::refusal},
        {14, "call", &Driver::call},
        {3, "music", &Driver::callMusic},
        {1, "unanswered call", &Driver::callUnanswered},
    };
    return all;
}

Driver::Driver(simulated::SimulatedTv& tv, FakeBus& bus, const WorkFolder& folder, World& world)
    : tv_(tv), bus_(bus), folder_(folder), world_(world), model_(world) {
    for (const auto& [path, content] : world_.folders) {
        folders_.push_back(path);
    }
}

std::string Driver::folder(int number) const {
    return folders_.at(static_cast<std::size_t>(number));
}

void Driver::start(std::uint64_t seed) {
    Chance chance(seed, 0);
    model_.start();
    bus_.acquireBus();
    for (int i = 0; i < 3; ++i) {
        if (Socket* const free = socket(chance, false)) {
            putIn(chance, *free);
            setMounted(chance, *free);
        }
    }
    advance(31'000);
}

std::string Driver::step(std::uint64_t seed, std::uint64_t number) {
    // Step 0 is the start.
    Chance chance(seed, number);
    static const int total =
        std::accumulate(kinds().begin(), kinds().end(), 0,
                        [](int sum, const Kind& kind) { return sum + kind.weight; });
    int draw = chance.below(total);
    auto kind = kinds().begin();
    for (; draw >= kind->weight; ++kind) {
        draw -= kind->weight;
    }
    doing_ = std::string(kind->name) + ":";
    reply_.reset();
    (this->*kind->run)(chance);
    settle();
    return doing_;
}

void Driver::settle() {
    tv_.settle();
    for (const auto& event : std::exchange(events_, {})) {
        event();
    }
    model_.settle();
}

void Driver::restingStep(int number) {
    Chance chance(0, 0);
    doing_ = "rest:";
    reply_.reset();
    switch (number) {
        case 0:
            tv_.scanner().release();
            world_.scansAreHeld = false;
            break;
        case 1:
            endApplications(chance);
            tv_.small().contextState = world_.contextState = 0;
            tv_.journal().clearFaults();
            world_.popupFails = world_.launchFails = world_.listFails = false;
            break;
        case 2:
            setUseMode(0);
            setLanguage("en");
            break;
        case 3:
            for (Socket& each : sockets_) {
                if (each.occupied) {
                    takeOut(each);
                    announce(each, "removed");
                }
            }
            break;
        case 4:
            for (const Client& each : std::vector<Client>(model_.clients)) {
                model_.disConnect(each.id);
                (void)bus_.call(":1.1", "DisConnect", g_variant_new("(i)", each.id));
            }
            break;
        case 5:
            model_.music.clear();
            called(":1.1", "ClearPhotoBGMPlayList", nullptr, "()");
            break;
        case 6:
        case 7:
            // The first drops what is listed, the second frees what was dropped.
            tv_.power().sendWakeup(0);
            later([this] { model_.wakeUp(); });
            doing_ += " wake-up";
            break;
        default:
            advance(61'000);
            tv_.screen().sendHide();
            later([this] { model_.hide(); });
    }
    settle();
}

}  // namespace soak
