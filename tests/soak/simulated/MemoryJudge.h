// Whether the memory of a run stays as it is once the run has warmed up.
#pragma once

#include <string>
#include <vector>

#include "Resources.h"

namespace soak {

/// Takes a measurement at each rest. The first ones are the warm-up: the most that there was then is what
/// all others are measured against.
class MemoryJudge {
public:
    /// Take a measurement. Returns what is wrong with it, in words; nothing when memory is flat.
    std::vector<std::string> judge(const Memory& now);

    /// Whether a measurement came after the warm-up.
    bool hasJudged() const { return measurements_ > WARM_UP; }

    /// How far memory was above the warm-up at the most, and how much it is now, in words.
    std::string figures() const;

private:
    static constexpr int WARM_UP = 10;  // measurements

    int measurements_ = 0;
    Memory warm_, most_, now_;
};

}  // namespace soak
