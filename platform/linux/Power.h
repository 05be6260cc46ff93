// Sleep, for the parts of the Linux machine that have to look around anew after it. The daemon's own
// subscriptions are those of <platform/power.h>.
#pragma once

#include <functional>

namespace machine {

/// Call `told` on the default main context each time the machine is about to sleep or to shut down (true),
/// and when it wakes up or its shutdown was called off (false), before the daemon is told. Without a
/// system bus or logind it is never called.
/// @return a number for forgetSleep()
unsigned onSleep(std::function<void(bool sleeps)> told);

/// No call begins after the return. Numbers that are not in use are harmless.
void forgetSleep(unsigned number);

}  // namespace machine
