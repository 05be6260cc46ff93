// The settings as files, one a key, so that people and scripts read and write them with the tools they
// have. Whoever watches them, and the contract's functions, live elsewhere; this class only knows files
// and says in words what is wrong with one.
//
// "db/NAME/..." is a file below the state folder, which survives a restart, "memory/NAME/..." one below
// the runtime folder, which does not. A file holds the value as text, with one line feed at its end that
// does not belong to the value and may be missing. An empty text is a single line feed: a file of no
// bytes is one that somebody has opened and not yet written.
#pragma once

#include <cstddef>
#include <string>

#include "SettingFolder.h"

namespace machine {

/// What reading a key gave.
struct SettingReading {
    enum class Outcome {
        Found,  ///< `text` is the value
        Unset,  ///< there is no such file
        Failed  ///< `text` says why, and what to do, in English
    };
    Outcome outcome = Outcome::Unset;
    std::string text;
};

class SettingsStore {
public:
    /// Longest file, line feed included; a longer one is not read.
    static constexpr std::size_t LARGEST_FILE = std::size_t{64} * 1024;

    /// The settings of this machine: below /var/lib/portmeld and /run/portmeld.
    SettingsStore();

    /// Settings elsewhere.
    /// @param state    folder of the keys below "db/", e.g. ".../db"
    /// @param runtime  folder of the keys below "memory/"
    SettingsStore(std::string state, std::string runtime);

    /// Whether this can be a key: "db/" or "memory/" and one or more names of at most 255 bytes, of
    /// which none is empty or begins with a dot.
    static bool isKey(const std::string& key);

    /// The file of a key; "" for what is no key.
    std::string pathOf(const std::string& key) const;

    /// Read a key. Takes regular files only (or links to them) that hold valid UTF-8 without NUL and
    /// are not too large; never waits, not even for a pipe that somebody put in the file's place.
    SettingReading read(const std::string& key) const;

    /// Write a key: readers see the old value or the new one, never a part, however many write. Folders
    /// that are missing are made; file and folders can be written by the group of the state folder. A
    /// folder that is a link is refused: a member of the group could have made it to lead another one,
    /// who may do more, astray.
    /// Values below "db/" have reached the disk at the return, so this blocks: it is not for a main loop.
    /// @return "", or why it failed
    std::string write(const std::string& key, const std::string& value) const;

    /// Forget a key; a key that is not set is forgotten already. Refuses linked folders as write() does.
    /// @return "", or why it failed
    std::string remove(const std::string& key) const;

    /// What keeps the keys of a whole root ("db/..." or "memory/...") from being read: the folder is
    /// missing, is no folder, or is forbidden. "" when all is well.
    std::string troubleOfFolder(const std::string& key) const;

private:
    const std::string* folderOf(const std::string& key) const;
    SettingFolder open(const std::string& key, SettingFolder::Missing missing) const;

    std::string state_;
    std::string runtime_;
};

}  // namespace machine
