// The commands that a test gives to the daemon under test: what a person does to the TV (plug,
// press, let time pass) and what can be asked about it. How lines come in and answers go out lives
// in daemon_under_test.cpp.
#pragma once

#include <functional>
#include <string>

#include "SimulatedTv.h"

class Commands {
public:
    /// `quit` ends the main loop.
    Commands(simulated::SimulatedTv& tv, std::function<void()> quit);

    /// Carry out one line and deliver what it caused. The line is a command and its arguments,
    /// separated by single blanks, each percent-encoded. The answer is one line of JSON:
    /// {"result": ...}, or {"error": "..."} when the line makes no sense.
    std::string answer(const std::string& line);

private:
    simulated::SimulatedTv& tv_;
    std::function<void()> quit_;
};
