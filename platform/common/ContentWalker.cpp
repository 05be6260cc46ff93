// The walk: a stack of open folders, each entered relative to the one above, so that neither the
// length of a path nor a folder that is swapped for a link under way can lead elsewhere. The files of
// a folder come before its folders: most sticks with media show two files soon, whatever the order in
// which their file system tells names.
#include "ContentWalker.h"

#include <dirent.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace platform {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { (void)closedir(folder); }
};

/// A folder being read, and then its folders one after the other.
struct OpenFolder {
    std::unique_ptr<DIR, CloseFolder> stream;
    std::string name;
    bool isRead = false;                    ///< to its end
    std::vector<std::string> folders = {};  ///< found in it
    std::size_t entered = 0;                ///< of these
    int descriptor() const { return dirfd(stream.get()); }
};

/// Folders in which Windows keeps deleted files and its own; they stand at the top of a file
/// system.
bool isSystemFolder(const char* name) {
    constexpr std::array names = {"$RECYCLE.BIN", "RECYCLER", "System Volume Information"};
    return std::any_of(names.begin(), names.end(),
                       [&](const char* known) { return strcasecmp(name, known) == 0; });
}

class Walk {
public:
    Walk(const std::string& folder, const std::atomic<bool>& cancelled, const WalkLimits& limits)
        : cancelled_(cancelled), limits_(limits) {
        // The folder itself may be a link: it is where the platform says that the device is.
        std::string top = folder;
        while (top.size() > 1 && top.back() == '/') {
            top.pop_back();
        }
        const int descriptor = open(top.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        struct stat status {};
        if (descriptor >= 0 && fstat(descriptor, &status) == 0) {
            device_ = status.st_dev;
            push(descriptor, top);
        } else if (descriptor >= 0) {
            (void)close(descriptor);
        }
    }

    WalkResult run() {
        while (!folders_.empty()) {
            if (cancelled_) {
                return {WalkOutcome::Cancelled, {}};
            }
            if (const auto ended = step()) {
                return {*ended, {}};
            }
        }
        if (!found_) {
            return {};
        }
        return {WalkOutcome::Single, std::move(*found_)};
    }

private:
    /// Read one name, or go one folder down or up. A value ends the walk.
    std::optional<WalkOutcome> step() {
        OpenFolder& folder = folders_.back();
        if (!folder.isRead) {
            errno = 0;
            if (const dirent* entry = readdir(folder.stream.get())) {
                return visit(*entry);
            }
            if (errno != 0) {
                return WalkOutcome::Failed;
            }
            folder.isRead = true;
        }
        if (folder.entered == folder.folders.size()) {
            folders_.pop_back();
            return std::nullopt;
        }
        // What it enters may move the folder to another place in memory.
        const std::string next = std::move(folder.folders[folder.entered++]);
        return enter(next.c_str());
    }

    /// Look at one name. A value ends the walk.
    std::optional<WalkOutcome> visit(const dirent& entry) {
        const char* name = entry.d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) {
            return std::nullopt;
        }
        if (++entries_ > limits_.entries) {
            return WalkOutcome::TooLarge;
        }
        if (name[0] == '.') {
            return std::nullopt;
        }
        // Some file systems do not tell the kind while reading the folder.
        struct stat status {};
        bool known = false;
        unsigned char kind = entry.d_type;
        if (kind == DT_UNKNOWN) {
            if (!inspect(name, status)) {
                return std::nullopt;
            }
            known = true;
            kind = static_cast<unsigned char>(IFTODT(status.st_mode));
        }
        if (kind == DT_DIR) {
            folders_.back().folders.emplace_back(name);
            return std::nullopt;
        }
        if (kind != DT_REG) {
            return std::nullopt;
        }
        const MediaType type = mediaTypeOf(name);
        if (type == MediaType::None || (!known && !inspect(name, status)) ||
            !S_ISREG(status.st_mode) || status.st_dev != device_) {
            return std::nullopt;
        }
        if (found_) {
            return WalkOutcome::Several;
        }
        found_ = MediaFile{pathOf(name), type, status.st_size, status.st_mtime};
        return std::nullopt;
    }

    std::optional<WalkOutcome> enter(const char* name) {
        if (folders_.size() == 1 && isSystemFolder(name)) {
            return std::nullopt;
        }
        const int descriptor = openat(folders_.back().descriptor(), name,
                                      O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (descriptor < 0) {
            return std::nullopt;
        }
        struct stat status {};
        if (fstat(descriptor, &status) != 0 || status.st_dev != device_) {
            (void)close(descriptor);
            return std::nullopt;
        }
        if (folders_.size() >= limits_.depth) {
            (void)close(descriptor);
            return WalkOutcome::TooLarge;
        }
        push(descriptor, name);
        return std::nullopt;
    }

    bool inspect(const char* name, struct stat& status) const {
        return fstatat(folders_.back().descriptor(), name, &status, AT_SYMLINK_NOFOLLOW) == 0;
    }

    void push(int descriptor, std::string name) {
        DIR* stream = fdopendir(descriptor);
        if (stream == nullptr) {
            (void)close(descriptor);
            return;
        }
        folders_.push_back({std::unique_ptr<DIR, CloseFolder>(stream), std::move(name)});
    }

    std::string pathOf(const char* name) const {
        std::string path;
        for (const OpenFolder& folder : folders_) {
            path += folder.name;
            if (path.back() != '/') {
                path += '/';
            }
        }
        return path + name;
    }

    const std::atomic<bool>& cancelled_;
    const WalkLimits limits_;
    dev_t device_ = 0;
    std::vector<OpenFolder> folders_;
    std::size_t entries_ = 0;
    std::optional<MediaFile> found_;
};

}  // namespace

WalkResult walkContent(const std::string& folder,
                       const std::atomic<bool>& cancelled,
                       const WalkLimits& limits) {
    return Walk(folder, cancelled, limits).run();
}

}  // namespace platform
