// The daemon within this process: its own entry is run as it is; what the workbench needs beyond that
// is the moment at which its main loop starts, and a way to leave that loop.
#pragma once

#include <functional>

namespace workbench {

/// Runs the daemon on the platform of this process until its loop ends. `beforeLoop` is called when
/// everything is set up and the loop is about to run. Returns the daemon's exit status.
int runDaemon(const std::function<void()>& beforeLoop);

/// Lets the daemon's main loop end, and with it, after its own orderly shut-down, runDaemon().
void leaveDaemonLoop();

}  // namespace workbench
