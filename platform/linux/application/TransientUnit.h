// Starting a program as a transient unit of the user's service manager (org.freedesktop.systemd1 on his
// message bus): it runs in his session and inherits nothing from the daemon, its sandbox above all.
#pragma once

#include <string>

#include "DesktopEntry.h"
#include "LaunchRequest.h"

namespace machine {

/// The service manager's name on the bus.
constexpr const char* SERVICE_MANAGER = "org.freedesktop.systemd1";

/// Start the entry's program with the extra data in its environment. A failure is told in one line of the
/// log; what the program itself says goes to the user's journal.
void startUnit(const LaunchRequest& request, const DesktopEntry& entry);

/// A text as it stands in a unit's name: everything but letters, digits, "_", ":" and "." (that not first)
/// as \xXX, as systemd-escape(1) does.
std::string unitNameEscaped(const std::string& text);

}  // namespace machine
