// Each step is made from the open folder above, so that nobody can put another in between.
#include "SettingFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include <glib.h>

namespace machine {

namespace {

using platform::Descriptor;

/// Settings belong to a group of people and programs, whatever the umask of who writes first.
constexpr mode_t FILE_MODE = 0664;
constexpr mode_t FOLDER_MODE = 02775;

/// Begins with a dot: no key is named so. What a killed writer left is never taken for a value.
constexpr const char* TEMPORARY_START = ".setting-";

/// Nobody else's name is met so often by chance.
constexpr int MOST_NAMES = 100;

std::string causeOf(int error) {
    return std::generic_category().message(error);
}

int writeAll(int descriptor, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.data() + done, bytes.size() - done);
        if (count >= 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

/// A new file of nobody else's, for its owner only; errno says why there is none.
Descriptor createTemporary(int folder, std::string& name) {
    for (int i = 0; i < MOST_NAMES; ++i) {
        g_autofree char* random = g_strdup_printf("%08x", g_random_int());
        name = std::string(TEMPORARY_START) + random;
        Descriptor file(openat(folder, name.c_str(),
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (file || errno != EEXIST) {
            return file;
        }
    }
    return Descriptor(-1);
}

/// Whether a rename has reached the disk; a file system that cannot tell is believed.
int syncFolder(int folder) {
    const Descriptor readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return readable && fsync(readable.get()) != 0 && errno == EIO ? EIO : 0;
}

bool isLink(int folder, const std::string& name) {
    struct stat status {};
    return fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISLNK(status.st_mode);
}

}  // namespace

SettingFolder::SettingFolder(const std::string& root, const std::string& file, Missing missing)
    : folder_(open(root.front() == '/' ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    const std::size_t end = root.find_last_not_of('/') + 1;
    const std::size_t ownFrom = root.rfind('/', end - 1) + 1;
    const std::string whole = root.substr(0, end) + "/" + file;
    std::size_t start = 0;
    for (std::size_t slash = whole.find('/'); slash != std::string::npos;
         slash = whole.find('/', start)) {
        const std::string name = whole.substr(start, slash - start);
        path_ = whole.substr(0, slash);
        if (!name.empty() && !enter(name, start < ownFrom, missing)) {
            return;
        }
        start = slash + 1;
    }
    name_ = whole.substr(start);
}

/// One folder down.
/// @return false when that cannot be done
bool SettingFolder::enter(const std::string& name, bool followsLinks, Missing missing) {
    const int way = O_DIRECTORY | O_CLOEXEC | (followsLinks ? 0 : O_NOFOLLOW);
    Descriptor next(openat(folder_.get(), name.c_str(), O_PATH | way));
    if (!next && errno == ENOENT && missing == Missing::Make) {
        const bool made = mkdirat(folder_.get(), name.c_str(), FOLDER_MODE) == 0;
        if (made || errno == EEXIST) {
            next = Descriptor(openat(folder_.get(), name.c_str(), O_RDONLY | way | O_NOFOLLOW));
        }
        if (next && made) {
            // Not as the umask would have it.
            (void)fchmod(next.get(), FOLDER_MODE);
        }
    }
    if (next) {
        folder_ = std::move(next);
        return true;
    }
    const int error = errno;
    missing_ = missing == Missing::Leave && (error == ENOENT || error == ENOTDIR);
    if (!followsLinks && isLink(folder_.get(), name)) {
        missing_ = false;
        fault_ = "the folder " + path_ +
                 " is a link, and settings are kept in real folders only; remove the link";
    } else {
        fault_ = causeOf(error);
    }
    return false;
}

std::string SettingFolder::replace(const std::string& bytes, bool lasting) const {
    std::string temporary;
    const Descriptor file = createTemporary(folder_.get(), temporary);
    if (!file) {
        return causeOf(errno);
    }
    int error = writeAll(file.get(), bytes);
    if (error == 0 &&
        (fchmod(file.get(), FILE_MODE) != 0 || (lasting && fsync(file.get()) != 0) ||
         renameat(folder_.get(), temporary.c_str(), folder_.get(), name_.c_str()) != 0)) {
        error = errno;
    }
    if (error != 0) {
        (void)unlinkat(folder_.get(), temporary.c_str(), 0);
    } else if (lasting) {
        error = syncFolder(folder_.get());
    }
    return error == 0 ? std::string() : causeOf(error);
}

std::string SettingFolder::remove() const {
    return unlinkat(folder_.get(), name_.c_str(), 0) == 0 || errno == ENOENT ? std::string()
                                                                             : causeOf(errno);
}

}  // namespace machine
