// Looking at files, and telling their content types.
#include "Files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <utility>

#include <gio/gio.h>

#include "MediaTypes.h"

namespace handlers {

namespace {

struct Free {
    void operator()(char* text) const { std::free(text); }
};

/// The path without links, "." and ".."; throws Refusal when nothing is there.
std::string realPath(const std::string& path) {
    if (path.empty() || path.front() != '/') {
        throw Refusal("'" + path + "' is no absolute path");
    }
    const std::unique_ptr<char, Free> real(realpath(path.c_str(), nullptr));
    if (real == nullptr) {
        throw Refusal("'" + path + "' is not there: " + g_strerror(errno));
    }
    return real.get();
}

std::vector<std::string> namesIn(const std::string& folder) {
    const std::unique_ptr<GDir, void (*)(GDir*)> entries(g_dir_open(folder.c_str(), 0, nullptr),
                                                         [](GDir* opened) { g_dir_close(opened); });
    std::vector<std::string> names;
    while (const char* name = entries != nullptr ? g_dir_read_name(entries.get()) : nullptr) {
        names.emplace_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// The one name in a folder that becomes this text where only text is taken; "" when there is none, or
/// several.
std::string nameOfText(const std::string& folder, const std::string& text) {
    std::string found;
    for (const std::string& name : namesIn(folder)) {
        g_autofree char* valid = g_utf8_make_valid(name.c_str(), -1);
        if (text == valid) {
            if (!found.empty()) {
                return "";
            }
            found = name;
        }
    }
    return found;
}

/// The path that was meant: launch data are text, and names need not be UTF-8. One that is there as it
/// stands, or is not found, is left as it is.
std::string meantPath(const std::string& path) {
    if (path.empty() || path.front() != '/' || access(path.c_str(), F_OK) == 0) {
        return path;
    }
    std::string meant;
    for (std::size_t start = 1; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        std::string name = path.substr(start, end - start);
        if (access((meant + "/" + name).c_str(), F_OK) != 0) {
            name = nameOfText(meant + "/", name);
            if (name.empty()) {
                return path;
            }
        }
        meant += "/" + name;
        start = end + 1;
    }
    return meant;
}

bool isKind(const std::string& path, mode_t kind) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && (status.st_mode & S_IFMT) == kind;
}

bool isBelow(const std::string& path, const std::string& root) {
    const std::string start = root.back() == '/' ? root : root + "/";
    return path.compare(0, start.size(), start) == 0;
}

std::string addressOf(const std::string& path) {
    g_autofree char* address = g_filename_to_uri(path.c_str(), nullptr, nullptr);
    return address;
}

/// The content type by the name alone, as the whole house judges; "" when it is none of the kind.
std::string contentTypeOf(const std::string& path, Kind kind) {
    const char* const family = kind == Kind::Video     ? "video/"
                               : kind == Kind::Picture ? "image/"
                                                       : "audio/";
    g_autofree char* base = g_path_get_basename(path.c_str());
    g_autofree char* guessed = g_content_type_guess(base, nullptr, 0, nullptr);
    if (g_str_has_prefix(guessed, family) != FALSE) {
        return guessed;
    }
    // Extensions of television recordings that mean something else to the type database, or nothing.
    const bool recording =
        kind == Kind::Video && platform::mediaTypeOf(path) == platform::MediaType::Video;
    return recording ? "video/mp2t" : "";
}

}  // namespace

Subject folderSubject(const std::string& text) {
    const std::string path = meantPath(text);
    if (!isKind(realPath(path), S_IFDIR)) {
        throw Refusal("'" + path + "' is no folder");
    }
    return {Kind::Folder, "inode/directory", {addressOf(path)}};
}

Subject fileSubject(Kind kind, const std::vector<std::string>& paths, const std::string& root) {
    const std::string realRoot = root.empty() ? "" : realPath(meantPath(root));
    Subject subject{kind, "", {}};
    for (const std::string& text : paths) {
        const std::string path = meantPath(text);
        const std::string real = realPath(path);
        if (!realRoot.empty() && !isBelow(real, realRoot)) {
            throw Refusal("'" + path + "' is outside of '" + root + "'");
        }
        if (!isKind(real, S_IFREG) || access(real.c_str(), R_OK) != 0) {
            throw Refusal("'" + path + "' is no file that can be read");
        }
        if (subject.addresses.empty()) {
            subject.contentType = contentTypeOf(path, kind);
        }
        subject.addresses.push_back(addressOf(path));
    }
    return subject;
}

Subject folderOfMediaSubject(const std::string& path) {
    g_autofree char* absolute = g_canonicalize_filename(path.c_str(), nullptr);
    const std::vector<std::string> names = namesIn(absolute);
    const std::pair<platform::MediaType, Kind> wanted[] = {
        {platform::MediaType::Video, Kind::Video}, {platform::MediaType::Photo, Kind::Picture}};
    for (const auto& [type, kind] : wanted) {
        std::vector<std::string> files;
        for (const std::string& name : names) {
            if (name.front() == '.') {
                continue;
            }
            const std::string file = std::string(absolute) + "/" + name;
            if (platform::mediaTypeOf(name) == type && isKind(file, S_IFREG)) {
                files.push_back(file);
            }
        }
        if (!files.empty()) {
            return fileSubject(kind, files);
        }
    }
    throw Refusal(std::string("there is neither a video nor a picture in '") + absolute + "'");
}

}  // namespace handlers
