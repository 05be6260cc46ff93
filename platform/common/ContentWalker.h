// Walking through a mounted device to see whether it holds exactly one media file. What counts as
// media is MediaTypes' affair; what is told of the file, ScanReport's.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "MediaTypes.h"

namespace platform {

/// A media file that a walk came across.
struct MediaFile {
    std::string path;  ///< exactly the bytes of the file system; absolute when the folder was
    MediaType type = MediaType::None;
    std::int64_t size = 0;      ///< bytes
    std::int64_t modified = 0;  ///< seconds since 1970-01-01 UTC
};

enum class WalkOutcome {
    None,       ///< no media file
    Single,     ///< exactly one: see WalkResult::file
    Several,    ///< two at least; the walk ended at the second
    Cancelled,  ///< ended early by the caller
    TooLarge,   ///< ended at a limit: nothing is known of the rest
    Failed      ///< the device failed, or was pulled: nothing is known of the rest
};

struct WalkResult {
    WalkOutcome outcome = WalkOutcome::None;
    MediaFile file;  ///< with Single only
};

/// How much of a device is looked at. A stick can be made to hold endless folders (a damaged file
/// system that contains itself, or malice); an honest one is far below both.
struct WalkLimits {
    std::size_t entries = 200'000;  ///< names read, of files and folders
    std::size_t depth = 64;         ///< folders within one another; each holds a descriptor open
};

/// Walk through `folder` and everything below it.
///
/// No link is followed and no other file system entered. Files and folders whose name begins with a
/// dot are left out, and so are the places where desktops keep deleted files. What must not be read
/// is skipped; a folder whose reading breaks off ends the walk. All files of a folder are looked at
/// before the first of its folders is entered. Ends at the second media file, and soon after
/// `cancelled` has become true. Length of paths does not matter. Blocks: made for a worker thread.
WalkResult walkContent(const std::string& folder,
                       const std::atomic<bool>& cancelled,
                       const WalkLimits& limits = {});

}  // namespace platform
