// What a run stands on: a folder that the daemon takes for the root of the file system, folders that can
// be mounted, a simulated TV and a bus. Gone with the object.
#pragma once

#include <string>

#include "FakeBus.h"
#include "SimulatedTv.h"
#include "World.h"

namespace soak {

/// A folder of this process alone, which it works in.
class WorkFolder {
public:
    /// @param resources  folder of the built catalogues ("po") and the interface description
    explicit WorkFolder(const std::string& resources);
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    /// Make the folders that can be mounted, and say what is in them.
    void makeFolders(World& world) const;

    /// Give the TV demonstration films of its own, or take them away.
    void setDemoFiles(bool present) const;

private:
    std::string path_;
};

/// The folders of makeFolders(), in the order of their names.
const char* folderName(int number);
constexpr int FOLDERS = 6;

/// Size of the file system at a path, as the C library is to tell it; see Stage.cpp.
void setSizesOf(const World* world);

}  // namespace soak
