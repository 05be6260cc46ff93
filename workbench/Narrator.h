// Tells what the TV does: each pop-up, each application launched with all it is given, what the bus
// client hears, the daemon's log. It watches and never acts.
#pragma once

#include <cstddef>
#include <string>

#include "SimulatedTv.h"
#include "Transcript.h"

namespace workbench {

class Narrator {
public:
    /// How much of the daemon's log is told.
    enum class Log { None, Usual, All };

    Narrator(simulated::SimulatedTv& tv, Transcript& transcript);
    ~Narrator();
    Narrator(const Narrator&) = delete;
    Narrator& operator=(const Narrator&) = delete;

    /// Whether the TV did something that was not told yet, and telling it.
    bool hasNews() const;
    void tellNews();

    /// A signal of the daemon's, as the bus client received it.
    void tellSignal(const std::string& signal, const std::string& text);

    Log log() const { return log_; }
    void setLog(Log log) { log_ = log; }

    /// Whether the daemon broke a rule of the platform.
    bool sawBreach() const { return breaches_ > 0; }

private:
    void tellPopup(const simulated::Popup& popup);
    void tellLaunch(const simulated::Launch& launch);
    static void onLogLine(const simulated::LogLine& line, void* data);

    simulated::SimulatedTv& tv_;
    Transcript& transcript_;
    Log log_ = Log::None;
    // What was told already.
    std::size_t popups_ = 0;
    std::size_t launches_ = 0;
    std::size_t breaches_ = 0;
    bool popupIsUp_ = false;
    std::int64_t popupEnd_ = 0;
};

}  // namespace workbench
