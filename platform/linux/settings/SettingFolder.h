// Where the file of a setting is put or removed. The folders belong to a group, and the administrator
// writes there too: what a member of the group has laid in his way must not lead him elsewhere. Not here:
// which file belongs to which key.
#pragma once

#include <string>

#include "RegularFile.h"

namespace machine {

class SettingFolder {
public:
    enum class Missing { Make, Leave };

    /// Open the folder of a file, going down one by one.
    /// @param root     the folder of all settings of this kind; links above it are followed, as the
    ///                 administrator made them, and from it on none is
    /// @param file     path of the file below `root`, with slashes between names
    /// @param missing  whether folders that are missing are made, for the group to write in
    SettingFolder(const std::string& root, const std::string& file, Missing missing);

    /// "", or why the folder cannot be used.
    const std::string& fault() const { return fault_; }

    /// Whether there is no such folder; only when missing ones were left.
    bool isMissing() const { return missing_; }

    /// Put these bytes in the place of the file, whole. Only without a fault.
    /// @param lasting  they have reached the disk at the return
    /// @return "", or why it failed
    std::string replace(const std::string& bytes, bool lasting) const;

    /// Remove the file, or what else is in its place but no folder. Only without a fault.
    /// @return "", or why it failed
    std::string remove() const;

private:
    bool enter(const std::string& name, bool followsLinks, Missing missing);

    platform::Descriptor folder_;
    std::string path_;  ///< of folder_, for people
    std::string name_;
    std::string fault_;
    bool missing_ = false;
};

}  // namespace machine
