// The files of the page: finding them, and telling what they are.
#include "PageFiles.h"

#include <algorithm>
#include <map>

#include "RegularFile.h"

namespace workbench {

namespace {

constexpr const char* resourceRoot = "/org/norvane/portmeld/workbench";
constexpr std::size_t largestPicture = 1U << 20U;
constexpr std::size_t largestPageFile = 16U << 20U;

using OwnedText = std::unique_ptr<char, decltype(&g_free)>;

std::shared_ptr<GBytes> shared(GBytes* bytes) {
    return {bytes, g_bytes_unref};
}

std::string typeOf(const std::string& path) {
    static const std::map<std::string, const char*> types = {
        {"html", "text/html; charset=utf-8"},
        {"css", "text/css; charset=utf-8"},
        {"js", "text/javascript; charset=utf-8"},
        {"svg", "image/svg+xml"},
        {"png", "image/png"},
        {"json", "application/json"},
        {"woff2", "font/woff2"},
    };
    const auto known = types.find(path.substr(path.rfind('.') + 1));
    return known == types.end() ? "application/octet-stream" : known->second;
}

/// Letters, digits and a few signs only: nothing that leads out of the page's folder.
bool isHarmless(const std::string& path) {
    const auto isUsual = [](char c) {
        return g_ascii_isalnum(c) != FALSE || c == '/' || c == '.' || c == '-' || c == '_';
    };
    return std::all_of(path.begin(), path.end(), isUsual) && path.find("..") == std::string::npos;
}

/// A regular file of at most `most` bytes; nothing else is waited for, nor read.
std::shared_ptr<GBytes> contentsOf(const std::string& path, std::size_t most) {
    const platform::Descriptor file = platform::openWithoutWaiting(path);
    std::string bytes;
    if (!file || !platform::isRegular(file) || platform::readAtMost(file, most, bytes) != 0 ||
        bytes.size() > most) {
        return nullptr;
    }
    return shared(g_bytes_new(bytes.data(), bytes.size()));
}

}  // namespace

std::optional<PageFile> PageFiles::find(const std::string& path) const {
    const std::string name = path == "/" ? "/index.html" : path;
    if (!isHarmless(name)) {
        return std::nullopt;
    }
    const std::shared_ptr<GBytes> bytes =
        folder_.empty() ? shared(g_resources_lookup_data((resourceRoot + name).c_str(),
                                                         G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr))
                        : contentsOf(folder_ + name, largestPageFile);
    return bytes ? std::optional(PageFile{bytes, typeOf(name)}) : std::nullopt;
}

std::optional<PageFile> pictureAt(const std::string& path) {
    const std::shared_ptr<GBytes> bytes = contentsOf(path, largestPicture);
    if (!bytes) {
        return std::nullopt;
    }
    gsize size = 0;
    const auto* const data = static_cast<const guchar*>(g_bytes_get_data(bytes.get(), &size));
    const OwnedText content(g_content_type_guess(nullptr, data, size, nullptr), g_free);
    const OwnedText type(g_content_type_get_mime_type(content.get()), g_free);
    const std::string name = type ? type.get() : "";
    return name.compare(0, 6, "image/") == 0 ? std::optional(PageFile{bytes, name}) : std::nullopt;
}

}  // namespace workbench
