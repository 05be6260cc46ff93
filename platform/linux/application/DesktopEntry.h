// An application's desktop entry (Desktop Entry standard): finding it by id, and what starting the
// application needs to know of it. Not here: starting it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace machine {

/// Whether a text can name an application: the name of a desktop entry without its end, thus no path, no
/// hidden file, no control character, valid UTF-8, and short enough for a file's name.
bool isApplicationId(const std::string& id);

struct DesktopEntry {
    std::string name;             ///< as people read it, in the language of the process
    bool busActivatable = false;  ///< it wants to be started by the message bus
    std::vector<std::string>
        command;         ///< the program's absolute path and its arguments; may be empty
    std::string folder;  ///< working directory, or ""
};

/// The entry ID.desktop of the data folders (XDG_DATA_HOME, XDG_DATA_DIRS), read afresh; the first that is
/// found counts. Nothing in it is executed, or asked whether this process could: a daemon in a sandbox may
/// be forbidden what its user is not.
/// @return nothing when there is none, or none that can be used: it is hidden, or its program is not
///         installed
std::optional<DesktopEntry> findDesktopEntry(const std::string& id);

/// The arguments of an Exec line, without its field codes: there is neither a file nor an address to put
/// in their place. Empty when the line cannot be taken apart.
std::vector<std::string> argumentsOf(const std::string& exec);

}  // namespace machine
