// All folders above the path are watched, as far down as there are any. The last is watched for what
// comes and goes in it; the one above, for the going of the last, which would itself tell of its removal
// only when nobody uses it any more. The others can only be moved while something is in them, so that
// whatever else happens there (in /run, in /tmp) wakes nobody up. A file system that is mounted over a
// folder (the folder of a user's session, when he logs in) hides it without a word from the folder: the
// mount table tells. It tells of every stick as well, so that the folders are only looked at then: to watch
// them anew takes the kernel milliseconds where one has many files.
#include "PathWatch.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <utility>
#include <vector>

#include <glib-unix.h>

namespace machine {

namespace {

constexpr std::uint32_t MOVES = IN_ONLYDIR | IN_MOVE_SELF;
constexpr std::uint32_t GOINGS = MOVES | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE;
constexpr std::uint32_t ALL = GOINGS | IN_CREATE | IN_CLOSE_WRITE | IN_ATTRIB;

/// A forbidden folder is tried again after so long, and then after twice the time each, for some seconds.
constexpr unsigned FIRST_WAIT_MILLISECONDS = 50;
constexpr unsigned MOST_ATTEMPTS = 7;

/// How often folders are looked for that come and go all the time; the news of what is missed is on its way.
constexpr unsigned MOST_ROUNDS = 8;

/// What the kernel says of a folder that is elsewhere now or no more, and of lost events.
constexpr std::uint32_t LOST = IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT | IN_Q_OVERFLOW;

/// A file that was just made: its writing is told when it ends.
bool isYetToBeWritten(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size == 0;
}

}  // namespace

struct PathWatch::Impl {
    /// A folder and the name in it that matters.
    struct Folder {
        int watch;     ///< the kernel's number
        dev_t device;  ///< of what was watched, or of what stood there just before
        ino_t inode;   ///< likewise
        std::string path;
        std::string name;
        bool holdsPath;  ///< the name is the path's own
    };

    std::string path;
    std::function<void()> changed;
    int inotify = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    unsigned source = 0;
    int mountTable = open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    unsigned mountSource = 0;
    std::vector<Folder> folders;
    bool forbidden = false;  ///< one of the folders
    unsigned attempts = 0;   ///< to enter it
    unsigned waiting = 0;    ///< for the next

    Impl(const std::string& wanted, std::function<void()> told) : changed(std::move(told)) {
        g_autofree char* absolute = g_canonicalize_filename(wanted.c_str(), nullptr);
        path = absolute;
        if (inotify >= 0) {
            source = g_unix_fd_add(inotify, G_IO_IN, reinterpret_cast<GUnixFDSourceFunc>(readable),
                                   this);
            arm();
            tryAgainLater();
        }
        if (inotify >= 0 && mountTable >= 0) {
            mountSource = g_unix_fd_add(mountTable, static_cast<GIOCondition>(G_IO_PRI | G_IO_ERR),
                                        reinterpret_cast<GUnixFDSourceFunc>(mountsChanged), this);
        }
    }
    ~Impl() {
        if (waiting != 0) {
            g_source_remove(waiting);
        }
        if (mountSource != 0) {
            g_source_remove(mountSource);
        }
        if (mountTable >= 0) {
            (void)close(mountTable);
        }
        if (inotify >= 0) {
            g_source_remove(source);
            (void)close(inotify);
        }
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// Watch the folders that are there. What comes or goes meanwhile is found by looking again: to watch
    /// them all for everything until the last is watched would take the kernel a look at each name in them.
    void arm() {
        std::vector<Folder> before = std::exchange(folders, {});
        for (unsigned round = 0; round < MOST_ROUNDS; ++round) {
            find();
            watchFound();
            if (areAsFound() && (forbidden || !goesOn())) {
                break;
            }
            before.insert(before.end(), folders.begin(), folders.end());
        }
        for (const Folder& old : before) {
            if (!isWatched(old.watch)) {
                (void)inotify_rm_watch(inotify, old.watch);
            }
        }
    }

    /// The folders as they are now, from the top.
    void find() {
        folders.clear();
        forbidden = false;
        for (std::size_t slash = 0; slash != std::string::npos; slash = path.find('/', slash + 1)) {
            const std::size_t end = path.find('/', slash + 1);
            Folder folder{0,
                          0,
                          0,
                          slash == 0 ? "/" : path.substr(0, slash),
                          path.substr(slash + 1, end - slash - 1),
                          end == std::string::npos};
            struct stat status {};
            if (stat(folder.path.c_str(), &status) == 0) {
                folder.device = status.st_dev;
                folder.inode = status.st_ino;
                folders.push_back(std::move(folder));
            } else if (errno == ENOENT || errno == ENOTDIR) {
                break;
            } else {
                forbidden = true;  // what is in it need not be
            }
        }
    }

    /// Only the last two for what happens to the names in them.
    void watchFound() {
        for (Folder& folder : folders) {
            folder.watch = inotify_add_watch(inotify, folder.path.c_str(), MOVES);
            forbidden |= folder.watch < 0 && errno != ENOENT && errno != ENOTDIR;
        }
        folders.erase(std::remove_if(folders.begin(), folders.end(),
                                     [](const Folder& folder) { return folder.watch < 0; }),
                      folders.end());
        for (std::size_t left = std::min<std::size_t>(folders.size(), 2); left > 0; --left) {
            Folder& folder = folders[folders.size() - left];
            folder.watch =
                inotify_add_watch(inotify, folder.path.c_str(), left == 2 ? GOINGS : ALL);
        }
    }

    /// Whether the folders are still those that were found, whatever was mounted or moved since.
    bool areAsFound() const {
        return std::all_of(folders.begin(), folders.end(), [](const Folder& folder) {
            struct stat status {};
            return stat(folder.path.c_str(), &status) == 0 && status.st_dev == folder.device &&
                   status.st_ino == folder.inode;
        });
    }

    /// Whether there is a folder below the last by now.
    bool goesOn() const {
        if (folders.empty() || folders.back().holdsPath) {
            return false;
        }
        struct stat status {};
        const std::string next = folders.back().path + "/" + folders.back().name;
        return stat(next.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    }

    bool isWatched(int number) const {
        return std::any_of(folders.begin(), folders.end(),
                           [&](const Folder& folder) { return folder.watch == number; });
    }

    /// Whether an event means that `changed` is to be called.
    bool matters(const inotify_event& event, bool& foldersMoved) const {
        if ((event.mask & LOST) != 0U) {
            const bool ours = (event.mask & IN_Q_OVERFLOW) != 0U || isWatched(event.wd);
            foldersMoved |= ours;
            return ours;
        }
        const char* const name = event.len > 0 ? event.name : "";
        const auto found = std::find_if(folders.begin(), folders.end(), [&](const Folder& folder) {
            return folder.watch == event.wd && folder.name == name;
        });
        if (found == folders.end()) {
            return false;
        }
        foldersMoved |= !found->holdsPath;
        return !found->holdsPath || (event.mask & IN_CREATE) == 0U || !isYetToBeWritten(path);
    }

    void tryAgainLater() {
        if (forbidden && waiting == 0 && attempts < MOST_ATTEMPTS) {
            waiting = g_timeout_add(FIRST_WAIT_MILLISECONDS << attempts++, waited, this);
        }
    }

    static gboolean waited(void* self) {
        auto& watch = *static_cast<Impl*>(self);
        watch.waiting = 0;
        watch.armAndTell();
        return G_SOURCE_REMOVE;
    }

    /// Something was mounted or unmounted somewhere.
    static gboolean mountsChanged(int, GIOCondition, void* self) {
        auto& watch = *static_cast<Impl*>(self);
        if (watch.forbidden || !watch.areAsFound()) {
            watch.attempts = 0;
            watch.armAndTell();
        }
        return G_SOURCE_CONTINUE;
    }

    /// A folder that is now another one has another number.
    void armAndTell() {
        const std::vector<Folder> before = folders;
        arm();
        tryAgainLater();
        if (!std::equal(
                before.begin(), before.end(), folders.begin(), folders.end(),
                [](const Folder& one, const Folder& other) { return one.watch == other.watch; })) {
            // A copy, and the last thing done: it may end the watch.
            const std::function<void()> tell = changed;
            tell();
        }
    }

    static gboolean readable(int descriptor, GIOCondition, void* self) {
        auto& watch = *static_cast<Impl*>(self);
        bool happened = false;
        bool foldersMoved = false;
        alignas(inotify_event) std::array<char, 4096> events;
        for (ssize_t size = 0; (size = read(descriptor, events.data(), events.size())) > 0;) {
            for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
                const auto* const event =
                    reinterpret_cast<const inotify_event*>(events.data() + at);
                happened |= watch.matters(*event, foldersMoved);
                at += sizeof *event + event->len;
            }
        }
        if (foldersMoved) {
            watch.arm();
        }
        if (happened) {
            // A copy, and the last thing done: it may end the watch.
            const std::function<void()> tell = watch.changed;
            tell();
        }
        return G_SOURCE_CONTINUE;
    }
};

PathWatch::PathWatch(const std::string& path, std::function<void()> changed)
    : impl_(std::make_unique<Impl>(path, std::move(changed))) {}

PathWatch::~PathWatch() = default;

}  // namespace machine
