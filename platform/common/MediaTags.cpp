// Reading tags with TagLib, which parses foreign bytes and may throw: it does so only in here.
#include "MediaTags.h"

#include <fileref.h>
#include <sys/stat.h>
#include <tag.h>
#include <tfilestream.h>
#include <wavfile.h>

#include <algorithm>

namespace platform {

namespace {

bool worthOpening(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0 &&
           status.st_size <= MEDIA_TAGS_LARGEST_FILE;
}

/// UTF-8 up to the first NUL, which some programs write to separate several values.
std::string text(const TagLib::String& tag) {
    std::string utf8 = tag.to8Bit(true);
    utf8.resize(std::min(utf8.find('\0'), utf8.size()));
    if (utf8.size() > MEDIA_TAGS_LONGEST_TEXT) {
        utf8.resize(MEDIA_TAGS_LONGEST_TEXT);
    }
    return utf8;
}

/// Where a file has its tags; null for nowhere.
const TagLib::Tag* tagOf(const TagLib::FileRef& file) {
    // A WAV file has two places for them, of which TagLib itself looks into one only.
    const auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(file.file());
    if (wav != nullptr && wav->hasInfoTag() && !wav->hasID3v2Tag()) {
        return wav->InfoTag();
    }
    return file.isNull() ? nullptr : file.tag();
}

}  // namespace

MediaTags readMediaTags(const std::string& path) noexcept {
    try {
        if (!worthOpening(path)) {
            return {};
        }
        constexpr bool READ_ONLY = true;
        constexpr bool READ_AUDIO_PROPERTIES = false;
        TagLib::FileStream stream(path.c_str(), READ_ONLY);
        const TagLib::FileRef file(&stream, READ_AUDIO_PROPERTIES);
        const TagLib::Tag* tag = tagOf(file);
        if (tag == nullptr) {
            return {};
        }
        return {text(tag->title()), text(tag->artist()), text(tag->album())};
    } catch (...) {
        // A broken file has no tags; the viewer still sees its name.
        return {};
    }
}

}  // namespace platform
