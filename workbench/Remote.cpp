// What each key does to the TV. One table holds the keys; each does one thing and says so.
#include "Remote.h"

#include <algorithm>
#include <utility>

#include "KeyDecoder.h"
#include "PopupBox.h"
#include "TvFacts.h"

namespace workbench {

namespace {

constexpr double rates[] = {1, 2, 5, 10, 30, 60};

std::string secondsText(std::int64_t milliseconds) {
    return std::to_string((milliseconds + 999) / 1000) + " s";
}

}  // namespace

const std::vector<Remote::Command>& Remote::commands() {
    static const std::vector<Command> all = {
        {'1', "1  Enter", "press the first button of the pop-up", &Remote::pressFirst},
        {KeyEnter, nullptr, nullptr, &Remote::pressFirst},
        {'2', "2", "press its second button", &Remote::pressSecond},
        {'b', "b  Esc", "hide the pop-up, as the back key of a remote control does", &Remote::hide},
        {KeyEscape, nullptr, nullptr, &Remote::hide},
        {'h', "h", "home: leave the application in front", &Remote::home},
        {'p', "p", "pull the stick or camera in hand (marked ▸)", &Remote::pull},
        {'r', "r", "plug it in again", &Remote::plugAgain},
        {'n', "n", "take the next one in hand", &Remote::takeNext},
        {'c', "c", "plug in a camera", &Remote::camera},
        {'s', "s", "send the TV to standby", &Remote::standby},
        {'w', "w", "wake it up", &Remote::wake},
        {'l', "l", "next menu language", &Remote::nextLanguage},
        {'d', "d", "shop mode on or off", &Remote::shopMode},
        {'u', "u", "companion application running or not", &Remote::companion},
        {'x', "x", "undisturbed (no pop-ups) on or off", &Remote::distractionFree},
        {'t', "t", "skip the time until the pop-up goes, or the next timer", &Remote::skipTime},
        {'+', "+  -", "let the time pass faster, slower", &Remote::faster},
        {'-', nullptr, nullptr, &Remote::slower},
        {'a', "a", "let the bus client ask for all devices again", &Remote::ask},
        {'L', "L", "log of the daemon: usual lines, all lines, none", &Remote::nextLog},
        {'?', "?", "show the keys", &Remote::tellKeys},
        {'q', "q  Ctrl-C", "quit", &Remote::quit},
        {KeyEnd, nullptr, nullptr, &Remote::quit},
    };
    return all;
}

Remote::Remote(simulated::SimulatedTv& tv, Shelf& shelf, Transcript& transcript, Hooks hooks)
    : tv_(tv), shelf_(shelf), transcript_(transcript), hooks_(std::move(hooks)) {}

void Remote::press(int key) {
    const auto command = std::find_if(commands().begin(), commands().end(),
                                      [key](const Command& one) { return one.key == key; });
    if (command == commands().end()) {
        say("nothing is on that key; ? shows the keys");
        return;
    }
    (this->*command->act)();
}

void Remote::say(const std::string& text) {
    transcript_.tell("remote", text);
}

void Remote::tellKeys() {
    say("the keys:");
    constexpr std::size_t nameBytes = 11;
    std::vector<std::string> lines;
    for (const Command& command : commands()) {
        if (command.name != nullptr) {
            std::string line = command.name;
            line.resize(nameBytes, ' ');
            lines.push_back(line + command.does);
        }
    }
    transcript_.detail(lines);
}

void Remote::pressButton(int button) {
    const simulated::Popup* const popup = tv_.screen().popup();
    if (popup == nullptr) {
        say("there is no pop-up");
    } else if (button >= popup->buttonCount) {
        say("the pop-up has no such button");
    } else {
        say("pressed: " + buttonLabel(*popup, button));
        tv_.screen().press(button);
    }
}

void Remote::hide() {
    if (tv_.screen().popup() == nullptr) {
        say("there is no pop-up to hide");
        return;
    }
    say("back: the pop-up is hidden");
    tv_.screen().hide();
}

void Remote::home() {
    const std::string front = tv_.applications().foreground();
    if (front.empty()) {
        say("no application is in front");
        return;
    }
    say("home: the " + applicationName(front) + " is left");
    tv_.applications().endForeground();
}

void Remote::plug() {
    const Shelf::Thing& thing = shelf_.inHand();
    shelf_.plug();
    const simulated::UsbDevice& device = tv_.ports().device(thing.id);
    std::string text = "\"" + thing.name + "\" is plugged in";
    if (thing.folder) {
        text += ": " + device.devname.value_or("") + ", mounted at " + *thing.folder;
    }
    transcript_.tell("usb", text);
    hooks_.askDevices();
}

void Remote::pull() {
    if (shelf_.isEmpty() || !shelf_.inHand().isPlugged) {
        say("it is out already; r plugs it in");
        return;
    }
    transcript_.tell("usb", "\"" + shelf_.inHand().name + "\" is pulled");
    shelf_.pull();
}

void Remote::plugAgain() {
    if (shelf_.isEmpty() || shelf_.inHand().isPlugged) {
        say("it is in already; p pulls it");
        return;
    }
    plug();
}

void Remote::takeNext() {
    if (shelf_.isEmpty()) {
        say("there is nothing to take; c plugs in a camera");
        return;
    }
    shelf_.takeNext();
    say("in hand: \"" + shelf_.inHand().name + "\"");
}

void Remote::camera() {
    const auto& things = shelf_.things();
    const auto free = std::find_if(things.begin(), things.end(), [](const Shelf::Thing& thing) {
        return !thing.folder && !thing.isPlugged;
    });
    if (free == things.end()) {
        shelf_.addCamera();
    } else {
        shelf_.take(static_cast<std::size_t>(free - things.begin()));
    }
    plug();
}

void Remote::standby() {
    if (tv_.power().inStandby()) {
        say("the TV is in standby; w wakes it up");
        return;
    }
    transcript_.tell("tv", "goes to standby");
    tv_.power().standby();
}

void Remote::wake() {
    if (!tv_.power().inStandby()) {
        say("the TV is awake; s sends it to standby");
        return;
    }
    transcript_.tell("tv",
                     "wakes up; portmeld offers nothing new in the first 60 s (t skips them)");
    tv_.power().wake();
}

void Remote::nextLanguage() {
    const auto& all = languages();
    const auto now = std::find_if(all.begin(), all.end(), [this](const Language& language) {
        return languageCodeOf(tv_) == language.code;
    });
    const Language& next = now == all.end() || now + 1 == all.end() ? all.front() : *(now + 1);
    transcript_.tell("tv",
                     std::string("menu language: ") + next.name + "; what comes up next is in it");
    tv_.settings().set(languageKey, next.code);
}

void Remote::shopMode() {
    const bool on = !isInShopMode(tv_);
    transcript_.tell("tv", on ? "stands in a shop: sticks are searched for a demo film, DEMO_LED.tp"
                              : "stands in a home");
    tv_.settings().set(useModeKey, simulated::Settings::Value(on ? useModeShop : useModeHome));
}

void Remote::companion() {
    const bool on = !tv_.applications().isRunning(companionId);
    transcript_.tell("tv", on ? "the companion application runs: it is told of devices, no pop-ups"
                              : "the companion application has ended");
    tv_.applications().setRunning(companionId, on);
}

void Remote::distractionFree() {
    int& state = tv_.small().contextState;
    state ^= distractionFreeBit;
    transcript_.tell("tv", (state & distractionFreeBit) != 0 ? "undisturbed: no pop-ups"
                                                             : "pop-ups are welcome again");
}

void Remote::changeRate(int step) {
    const auto* const now =
        std::lower_bound(std::begin(rates), std::end(rates), tv_.clock().rate());
    const auto index = std::clamp<std::ptrdiff_t>(now - std::begin(rates) + step, 0,
                                                  std::end(rates) - std::begin(rates) - 1);
    tv_.clock().setRate(rates[index]);
    transcript_.tell(
        "clock",
        rates[index] > 1
            ? "the time passes " + std::to_string(static_cast<int>(rates[index])) + " times as fast"
            : "the time passes as it does");
}

void Remote::skipTime() {
    if (const simulated::Popup* const popup = tv_.screen().popup()) {
        advanceTo(popupEnd(*popup), "the pop-up");
        return;
    }
    for (const simulated::VirtualClock::Timer& timer : tv_.clock().timers()) {
        // The watchdog is fed for ever; nobody waits for that.
        if (timer.interval != watchdogInterval) {
            advanceTo(timer.due, "the next timer");
            return;
        }
    }
    transcript_.tell("clock", "nothing waits for the time to pass");
}

void Remote::advanceTo(std::int64_t due, const std::string& reason) {
    const std::int64_t skipped = std::max<std::int64_t>(due - tv_.clock().now(), 0);
    transcript_.tell("clock", secondsText(skipped) + " are skipped, until " + reason + " is due");
    tv_.advance(skipped);
}

void Remote::skipStartUp() {
    const std::int64_t skipped = workbench::skipStartUp(tv_);
    transcript_.tell("clock", "portmeld takes no USB events in its first 30 s; " +
                                  secondsText(skipped) + " were skipped");
    if (!tv_.ports().listening()) {
        transcript_.tell("tv", "portmeld takes no USB events at all", Style::Warning);
    }
}

}  // namespace workbench
