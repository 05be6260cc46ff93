// The table of formats, and the question to the type database for what it lacks.
#include "MediaTypes.h"

#include <gio/gio.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>

namespace platform {

namespace {

/// Extensions whose meaning on a television's stick is settled. Some mean something else to a
/// desktop ("ts", "tp", "mts"), some are media to it that no viewer would call so (drawings,
/// play lists). What most other files on sticks are stands here to be told apart without the question
/// to the database, which costs more than reading the name from the stick's folder.
const std::unordered_map<std::string_view, MediaType>& extensions() {
    using Type = MediaType;
    static const std::unordered_map<std::string_view, MediaType> table = {
        {"jpg", Type::Photo},  {"jpeg", Type::Photo}, {"jpe", Type::Photo},  {"jps", Type::Photo},
        {"png", Type::Photo},  {"gif", Type::Photo},  {"bmp", Type::Photo},  {"webp", Type::Photo},
        {"heic", Type::Photo}, {"heif", Type::Photo}, {"avif", Type::Photo}, {"mpo", Type::Photo},
        {"tif", Type::Photo},  {"tiff", Type::Photo},

        {"mp4", Type::Video},  {"m4v", Type::Video},  {"mkv", Type::Video},  {"avi", Type::Video},
        {"ts", Type::Video},   {"m2ts", Type::Video}, {"mts", Type::Video},  {"m2t", Type::Video},
        {"tp", Type::Video},   {"trp", Type::Video},  {"tts", Type::Video},  {"mov", Type::Video},
        {"wmv", Type::Video},  {"asf", Type::Video},  {"flv", Type::Video},  {"divx", Type::Video},
        {"mpg", Type::Video},  {"mpeg", Type::Video}, {"mpe", Type::Video},  {"vob", Type::Video},
        {"vro", Type::Video},  {"3gp", Type::Video},  {"3g2", Type::Video},  {"webm", Type::Video},
        {"ogv", Type::Video},  {"svi", Type::Video},  {"rm", Type::Video},   {"rmvb", Type::Video},

        {"mp3", Type::Music},  {"flac", Type::Music}, {"wav", Type::Music},  {"ogg", Type::Music},
        {"oga", Type::Music},  {"opus", Type::Music}, {"m4a", Type::Music},  {"aac", Type::Music},
        {"wma", Type::Music},  {"aif", Type::Music},  {"aiff", Type::Music}, {"aifc", Type::Music},
        {"mid", Type::Music},  {"midi", Type::Music}, {"ape", Type::Music},  {"mka", Type::Music},
        {"mpa", Type::Music},  {"ac3", Type::Music},  {"dts", Type::Music},  {"dsf", Type::Music},

        {"m3u", Type::None},   {"m3u8", Type::None},  {"pls", Type::None},   {"asx", Type::None},
        {"wax", Type::None},   {"wvx", Type::None},   {"svg", Type::None},   {"svgz", Type::None},
        {"djvu", Type::None},  {"djv", Type::None},   {"ico", Type::None},   {"cur", Type::None},
        {"psd", Type::None},   {"xcf", Type::None},   {"dwg", Type::None},   {"dxf", Type::None},
        {"txt", Type::None},   {"nfo", Type::None},   {"srt", Type::None},   {"smi", Type::None},
        {"sub", Type::None},   {"idx", Type::None},   {"ass", Type::None},   {"ssa", Type::None},
        {"lrc", Type::None},   {"pdf", Type::None},   {"zip", Type::None},   {"exe", Type::None},

        {"doc", Type::None},   {"docx", Type::None},  {"xls", Type::None},   {"xlsx", Type::None},
        {"ppt", Type::None},   {"pptx", Type::None},  {"pps", Type::None},   {"odt", Type::None},
        {"ods", Type::None},   {"odp", Type::None},   {"rtf", Type::None},   {"csv", Type::None},
        {"htm", Type::None},   {"html", Type::None},  {"css", Type::None},   {"js", Type::None},
        {"json", Type::None},  {"xml", Type::None},   {"md", Type::None},    {"log", Type::None},
        {"ini", Type::None},   {"cfg", Type::None},   {"dat", Type::None},   {"bin", Type::None},
        {"db", Type::None},    {"iso", Type::None},   {"img", Type::None},   {"rar", Type::None},
        {"7z", Type::None},    {"tar", Type::None},   {"dll", Type::None},   {"sys", Type::None},
        {"so", Type::None},    {"o", Type::None},     {"c", Type::None},     {"h", Type::None},
        {"cpp", Type::None},   {"py", Type::None},    {"java", Type::None},  {"class", Type::None},
        {"jar", Type::None},   {"apk", Type::None},   {"cab", Type::None},   {"msi", Type::None},
        {"bat", Type::None},   {"cmd", Type::None},   {"sh", Type::None},    {"lnk", Type::None},
        {"inf", Type::None},   {"url", Type::None},   {"epub", Type::None},  {"mobi", Type::None},
        {"tmp", Type::None},   {"bak", Type::None},   {"ttf", Type::None},   {"otf", Type::None},
    };
    return table;
}

/// The extension in small ASCII letters; "" when the name has none, or one that no format has.
std::string extensionOf(std::string_view base) {
    constexpr std::size_t LONGEST = 8;
    const std::size_t dot = base.rfind('.');
    if (dot == std::string_view::npos || base.size() - dot - 1 > LONGEST) {
        return {};
    }
    std::string extension(base.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(), g_ascii_tolower);
    return extension;
}

MediaType typeByDatabase(std::string_view base) {
    g_autofree char* name = g_utf8_make_valid(base.data(), static_cast<gssize>(base.size()));
    g_autofree char* content = g_content_type_guess(name, nullptr, 0, nullptr);
    g_autofree char* mime = content != nullptr ? g_content_type_get_mime_type(content) : nullptr;
    if (mime == nullptr) {
        return MediaType::None;
    }
    if (g_str_has_prefix(mime, "image/")) {
        return MediaType::Photo;
    }
    if (g_str_has_prefix(mime, "video/")) {
        return MediaType::Video;
    }
    return g_str_has_prefix(mime, "audio/") ? MediaType::Music : MediaType::None;
}

}  // namespace

MediaType mediaTypeOf(std::string_view name) {
    const std::string_view base = name.substr(name.rfind('/') + 1);
    const std::string extension = extensionOf(base);
    const auto known = extensions().find(extension);
    if (known != extensions().end()) {
        return known->second;
    }
    return base.empty() ? MediaType::None : typeByDatabase(base);
}

}  // namespace platform
