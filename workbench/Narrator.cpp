// Tells what the TV does, by comparing what it shows with what was told.
#include "Narrator.h"

#include "JsonLayout.h"
#include "PopupBox.h"
#include "Text.h"
#include "TvFacts.h"

namespace workbench {

namespace {

constexpr int debugPriority = 3;
constexpr int warningPriority = 5;

}  // namespace

Narrator::Narrator(simulated::SimulatedTv& tv, Transcript& transcript)
    : tv_(tv), transcript_(transcript) {
    tv_.journal().setLogSink(onLogLine, this);
}

Narrator::~Narrator() {
    tv_.journal().setLogSink(nullptr, nullptr);
}

bool Narrator::hasNews() const {
    return tv_.screen().history().size() != popups_ ||
           (tv_.screen().popup() != nullptr) != popupIsUp_ ||
           tv_.applications().launches().size() != launches_ ||
           tv_.journal().breaches().size() != breaches_;
}

void Narrator::tellNews() {
    const auto& breaches = tv_.journal().breaches();
    while (breaches_ < breaches.size()) {
        transcript_.tell("fault", "portmeld broke a rule of the platform: " + breaches[breaches_++],
                         Style::Warning);
    }
    const auto& launches = tv_.applications().launches();
    while (launches_ < launches.size()) {
        tellLaunch(launches[launches_++]);
    }
    // Who pressed a key knows that the pop-up went; its time-out nobody has told.
    if (popupIsUp_ && tv_.screen().popup() == nullptr) {
        if (tv_.clock().now() >= popupEnd_) {
            transcript_.tell("pop-up", "goes by itself: its time is over");
        }
        popupIsUp_ = false;
    }
    const auto& popups = tv_.screen().history();
    while (popups_ < popups.size()) {
        tellPopup(popups[popups_++]);
    }
    popupIsUp_ = tv_.screen().popup() != nullptr;
    popupEnd_ = popupIsUp_ ? workbench::popupEnd(*tv_.screen().popup()) : 0;
}

void Narrator::tellPopup(const simulated::Popup& popup) {
    const std::string what = popupIsUp_ ? "another takes its place" : "comes up";
    popupIsUp_ = true;
    if (!transcript_.isAboveScreen()) {
        transcript_.tell("pop-up", what);
        transcript_.detail(popupBox(popup, transcript_.detailColumns()));
        return;
    }
    // The box itself is drawn below, as long as it is up.
    transcript_.tell("pop-up", what + ": " + popup.title.value_or(""));
    transcript_.detail(wrapped(printable(popup.body.value_or("")), transcript_.detailColumns()),
                       Style::Faint);
}

void Narrator::tellLaunch(const simulated::Launch& launch) {
    if (launch.appId.empty()) {
        transcript_.tell("app", "a launch of no application: nothing comes to the front, given:");
    } else {
        transcript_.tell("app", "launched: the " + applicationName(launch.appId) + ", " +
                                    launch.appId + ", given:");
    }
    constexpr int step = 2;
    for (const auto& [key, value] : launch.extraData) {
        if (!isJson(value)) {
            transcript_.detail({printable(key + " = " + value)});
            continue;
        }
        transcript_.detail({printable(key) + " ="});
        std::vector<std::string> lines = laidOutJson(value, transcript_.detailColumns() - step);
        for (std::string& line : lines) {
            line.insert(0, repeated(" ", step));
        }
        transcript_.detail(lines);
    }
    if (launch.extraData.empty()) {
        transcript_.detail({"nothing"});
    }
}

void Narrator::tellSignal(const std::string& signal, const std::string& text) {
    transcript_.tell("bus", "client 1 hears " + signal, Style::Good);
    transcript_.detail(laidOutJson(text, transcript_.detailColumns()));
}

void Narrator::onLogLine(const simulated::LogLine& line, void* data) {
    auto* const self = static_cast<Narrator*>(data);
    if (self->log_ == Log::None || (self->log_ == Log::Usual && line.priority == debugPriority)) {
        return;
    }
    // Some lines of the daemon end in a line feed of their own.
    const std::string message = line.message.substr(0, line.message.find_last_not_of('\n') + 1);
    const bool warns = line.priority == warningPriority;
    self->transcript_.tell(
        warns ? "warning" : "log",
        line.file + ":" + std::to_string(line.line) + " " + line.function + "  " + message,
        warns ? Style::Warning : Style::Faint);
}

}  // namespace workbench
