// Writing the scan result. What is in it is decided by ContentWalker and MediaTags.
#include "ScanReport.h"

#include <json-glib/json-glib.h>
#include <platform/content_scan.h>

#include <algorithm>
#include <limits>

namespace platform {

namespace {

int mediaTypeNumber(MediaType type) {
    switch (type) {
        case MediaType::Photo:
            return CSF_MEDIA_PHOTO;
        case MediaType::Video:
            return CSF_MEDIA_VIDEO;
        case MediaType::Music:
            return CSF_MEDIA_MUSIC;
        case MediaType::None:
            break;
    }
    return 0;
}

std::int64_t clipped(std::int64_t number, std::int64_t least) {
    return std::clamp<std::int64_t>(number, least, std::numeric_limits<std::int32_t>::max());
}

/// Valid UTF-8 without 0x1F, which json-glib writes as it is: the text would be no JSON.
std::string jsonText(const std::string& text) {
    g_autofree char* valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    std::string result = valid;
    for (std::size_t at = 0; (at = result.find('\x1f', at)) != std::string::npos;) {
        result.replace(at, 1, "\xef\xbf\xbd");
    }
    return result;
}

void add(JsonObject* object, const char* key, const std::string& text) {
    json_object_set_string_member(object, key, jsonText(text).c_str());
}

}  // namespace

std::string scanReport(const MediaFile& file, const MediaTags& tags) {
    g_autoptr(JsonObject) object = json_object_new();
    json_object_set_int_member(object, "MEDIA_TYPE", mediaTypeNumber(file.type));
    add(object, "DISPLAY_NAME", file.path.substr(file.path.rfind('/') + 1));
    add(object, "FILE_PATH", file.path);
    json_object_set_int_member(object, "SIZE", clipped(file.size, 0));
    json_object_set_int_member(object, "MODIFIED_TIME",
                               clipped(file.modified, std::numeric_limits<std::int32_t>::min()));
    if (file.type == MediaType::Music) {
        add(object, "TITLE", tags.title);
        add(object, "ARTIST", tags.artist);
        add(object, "ALBUM", tags.album);
    }
    g_autoptr(JsonNode) root = json_node_new(JSON_NODE_OBJECT);
    json_node_set_object(root, object);
    g_autofree char* text = json_to_string(root, FALSE);
    return text;
}

}  // namespace platform
