// What surrounds the daemon, as the model sees it: what is plugged in, which applications run, what the
// settings say, what lies on the sticks. Who drives the TV keeps it; the model reads it, and notes in it
// what its own launches and pop-ups change.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "Ports.h"

namespace soak {

/// A media file as a content scan tells of it. What is unset is not told.
struct MediaFile {
    int mediaType = 0;  ///< 2 photo, 3 video, 5 music, any other: unknown
    std::string name;
    std::string path;
    std::optional<int> size;      ///< bytes
    std::optional<int> modified;  ///< seconds since 1970-01-01 UTC
    std::optional<std::string> title, artist, album;
};

/// A folder that can be mounted.
struct Folder {
    bool demo = false;                ///< holds a demonstration film
    std::optional<MediaFile> single;  ///< its only media file
    std::int64_t blockSize = 0;       ///< bytes
    std::int64_t blocks = 0;
    std::int64_t freeBlocks = 0;
};

struct World {
    std::map<int, simulated::UsbDevice> ports;  ///< what is plugged in, in order of enumeration
    std::map<std::string, Folder> folders;      ///< by path
    std::set<std::string> running;              ///< applications
    int useMode = 0;
    int demoMode = 0;
    bool demoFiles = false;  ///< the TV has demonstration films of its own
    int contextState = 0;
    std::string language;  ///< of the menu: "en", "de", "fr" or "ja"
    std::string dlnaName;
    std::optional<std::string> dlnaIcon;
    bool scansAreHeld = false;
    // The platform refuses the next one of each.
    bool popupFails = false, launchFails = false, listFails = false;
};

}  // namespace soak
