// Watching a path that need not exist: it, or the folders above it, may come later, go and come back.
// Costs nothing while nothing happens: no polling, no thread (which GFileMonitor has, and it looks every
// few seconds for a folder that went away).
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace machine {

class PathWatch {
public:
    /// Call `changed` on the default main context, never from inside the constructor, each time
    /// something was created, finished being written, replaced or removed at `path` (a file, a folder or
    /// a socket), or a folder above it was, or was hidden or shown by a mount. It may come when nothing
    /// has changed; it comes whenever something has, once for what happened at a time. `changed` may
    /// destroy the watch.
    ///
    /// A folder that is forbidden is entered as soon as it is not any more; one that was just mounted, within
    /// some seconds.
    ///
    /// Not seen, as inotify(7) does not: what happens to the target of a link. Without inotify (too many
    /// watches on the machine) nothing is seen.
    PathWatch(const std::string& path, std::function<void()> changed);
    ~PathWatch();
    PathWatch(const PathWatch&) = delete;
    PathWatch& operator=(const PathWatch&) = delete;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace machine
