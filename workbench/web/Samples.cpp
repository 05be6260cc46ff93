// The list of ready-made sticks.
#include "Samples.h"

#include <algorithm>

namespace workbench {

const std::vector<Sample>& samples() {
    static const std::vector<Sample> all = {
        {"one-photo",
         "One photo",
         "A single picture: the TV offers to play it.",
         "fat",
         false,
         {{"one-photo", "Photo Stick", nullptr}}},
        {"one-film",
         "One film",
         "A single film: the TV offers to play it.",
         "exfat",
         false,
         {{"one-film", "Film Stick", nullptr}}},
        {"one-song",
         "One song",
         "A single piece of music with title and artist: the TV offers to play it.",
         "fat",
         false,
         {{"one-song", "Song Stick", nullptr}}},
        {"mixed",
         "Mixed",
         "Photos, a film and music: the TV offers to browse.",
         "ntfs",
         false,
         {{"mixed", "Holiday", nullptr}}},
        {"empty",
         "Empty",
         "Nothing on it: the TV offers to browse all the same.",
         "fat",
         false,
         {{"", "Empty Stick", nullptr}}},
        {"demo",
         "Demo stick",
         "DEMO_LED.tp for shops: in shop mode it plays at once.",
         "fat",
         false,
         {{"demo", "Demo Stick", nullptr}}},
        {"damaged",
         "Damaged",
         "A file system that nobody knows: listed, marked as damaged, in no counter.",
         "unknown",
         false,
         {{"", "Damaged Stick", nullptr}}},
        {"two-partitions",
         "Two partitions",
         "One disk with two file systems: two devices with one name.",
         "ext4",
         true,
         {{"one-photo", "Disk", "DISK-1"}, {"one-film", "Disk", "DISK-1"}}},
        {"equal-products",
         "Equal products",
         "Two sticks that only their ports tell apart: the second is no news.",
         "fat",
         false,
         {{"one-photo", "Twin", "TWIN"}, {"one-film", "Twin", "TWIN"}}},
    };
    return all;
}

const Sample* sampleWithId(const std::string& id) {
    const auto found = std::find_if(samples().begin(), samples().end(),
                                    [&](const Sample& sample) { return sample.id == id; });
    return found == samples().end() ? nullptr : &*found;
}

}  // namespace workbench
