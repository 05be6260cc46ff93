// What is to be opened: found out from the launch data, by a rule for each application that the daemon
// launches, and made sure to be there. Not here: what opens it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "LaunchData.h"

namespace handlers {

enum class Kind { Folder, Video, Picture, Music, Camera };

struct Subject {
    Kind kind;
    std::string contentType;             ///< of the first address; "" when it is none of the kind
    std::vector<std::string> addresses;  ///< at least one URI
};

/// What a launch of this application with these data asks to open.
/// @param json  the launch data; only one application does without
/// @return nothing when there is nothing to be done
/// @throws Refusal for an unknown application, and for data that lack something, or name what is not there
std::optional<Subject> subjectOf(const std::string& application,
                                 const std::optional<std::string>& json);

}  // namespace handlers
