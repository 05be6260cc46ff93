// The tags of a music file: title, artist, album. Reading them is all that is ever done to the
// inside of a viewer's files.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// Tags as UTF-8; "" where unknown.
struct MediaTags {
    std::string title;
    std::string artist;
    std::string album;
};

/// Larger files are not opened: some formats keep their tags at the end, behind everything, and a
/// tag that claims to be huge is held in memory as a whole, on boards that have 512 MB.
constexpr std::int64_t MEDIA_TAGS_LARGEST_FILE = std::int64_t{64} * 1024 * 1024;

/// A tag is cut to this many bytes: nobody reads more on a television.
constexpr std::size_t MEDIA_TAGS_LONGEST_TEXT = 4096;

/// The tags of a file. All are empty for what is no regular file, is empty or too large, has a
/// format without tags, or is broken. Never throws. May take a while: call it from a worker thread.
MediaTags readMediaTags(const std::string& path) noexcept;

}  // namespace platform
