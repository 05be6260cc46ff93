// The stage: a temporary folder with what the daemon finds on a TV's disk. The daemon of this program
// is built to look for everything below a relative folder, so the process works in the stage.
#pragma once

#include <string>

namespace workbench {

class Stage {
public:
    /// Makes the folder, links the daemon's resources (interface description, pictures, catalogues, as
    /// the build folder has them below `resources`) to their places, and makes it the process's current
    /// folder. Throws std::runtime_error.
    explicit Stage(const std::string& resources);
    /// Removes it.
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    const std::string& folder() const { return folder_; }

    /// The daemon's interface description, and the folder of its message catalogues.
    std::string interfaceDescription() const;
    std::string catalogues() const;

    /// Whether there is a message catalogue for this language code.
    bool hasLanguage(const std::string& code) const;

private:
    void fill(const std::string& resources) const;
    void remove() const;
    std::string folder_;
};

}  // namespace workbench
