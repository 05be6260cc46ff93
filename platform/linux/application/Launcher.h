// Choosing the way in which a request reaches its application: over the message bus, as a unit of the
// user's service manager, or as a plain child where no service manager is. Not here: the ways themselves.
#pragma once

#include "LaunchRequest.h"

namespace machine {

/// Begin to watch the names whose owners launches and the daemon's questions depend on, so that the
/// answers are known before they are wanted.
void prepareLaunches();

/// Launch an application, or hand the request to it when it runs. Returns at once; what fails later is
/// told in one line of the log.
/// @return false, after one line in the log, when there is no application that could be launched
bool launch(const LaunchRequest& request);

}  // namespace machine
