// The ready-made sticks: which there are, and how each presents itself. Their content lies in the folder
// of samples.
#pragma once

#include <string>
#include <vector>

namespace workbench {

/// One device of a sample: a stick, a partition of a disk, or a camera without a folder.
struct SampleDevice {
    const char* folder;  ///< below the folder of samples; "": nothing in it
    const char* product;
    const char* serial;  ///< null: one of its own
};

struct Sample {
    const char* id;
    const char* title;
    const char* text;        ///< what to expect of it, for people
    const char* fileSystem;  ///< as orders name it
    bool oneDisk;            ///< its devices are partitions of one disk
    std::vector<SampleDevice> devices;
};

const std::vector<Sample>& samples();

/// The one with this id; null when there is none.
const Sample* sampleWithId(const std::string& id);

}  // namespace workbench
