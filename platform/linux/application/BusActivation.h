// Handing a request to an application over the user's message bus, by the interface
// org.freedesktop.Application of the Desktop Entry standard. The bus starts the application when it
// does not run yet and may be started so.
#pragma once

#include <functional>
#include <string>

#include "LaunchRequest.h"

namespace machine {

/// Whether there is a bus just now, and the id can be a name on it.
bool canBeActivated(const std::string& id);

/// Call ActivateAction("launch", [extra data as a{ss}], {}) on the application's object; only while there
/// is a bus. A failure is told in one line of the log. However long an application takes for its answer,
/// that is none; the bus gives up one that does not even start.
/// @param otherwise  called later, and nothing told, when the application does not run and the bus cannot
///                   start it; may be empty
void activate(const LaunchRequest& request, std::function<void()> otherwise);

/// The path of the application's object: its id with slashes for dots, after one more slash, and
/// underscores for dashes.
std::string objectPathOf(const std::string& id);

}  // namespace machine
