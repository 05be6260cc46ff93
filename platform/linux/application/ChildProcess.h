// Starting a program as a child of the daemon's own, for machines without a service manager. A daemon that
// itself was started by one refuses: its sandbox would be the child's too.
#pragma once

#include "DesktopEntry.h"
#include "LaunchRequest.h"

namespace machine {

/// Start the entry's program in a session of its own, with the extra data in its environment, without
/// input, and without what the environment says of the daemon as a service. A failure is told in one line
/// of the log.
void startChild(const LaunchRequest& request, const DesktopEntry& entry);

}  // namespace machine
