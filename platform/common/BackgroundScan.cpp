// The thread and its hand-over. Whoever lives longer, the thread or the scan, nothing dangles: both hold
// the work.
#include "BackgroundScan.h"

#include <unistd.h>

#include <atomic>
#include <future>
#include <utility>

#include <glib.h>

#include "MediaTags.h"
#include "ScanReport.h"

namespace platform {

namespace {

BackgroundScan::Result look(const std::string& folder, const std::atomic<bool>& cancelled) {
    const WalkResult walk = walkContent(folder, cancelled);
    if (walk.outcome != WalkOutcome::Single) {
        return {walk.outcome, {}};
    }
    MediaTags tags;
    if (walk.file.type == MediaType::Music) {
        tags = readMediaTags(walk.file.path);
    }
    // Pulled in the middle of the walk, a device reads like one that holds no more.
    if (access(walk.file.path.c_str(), F_OK) != 0) {
        return {};
    }
    return {WalkOutcome::Single, scanReport(walk.file, tags)};
}

}  // namespace

/// The thread reads `folder` and `cancelled`, writes `result`, hands all back to the main thread by
/// attaching a source, and says that it `ended`; `done` belongs to the main thread.
struct BackgroundScan::Work {
    std::string folder;
    Done done;
    std::atomic<bool> cancelled{false};
    Result result;
    std::promise<void> ended;
};

BackgroundScan::BackgroundScan(std::string folder, Done done) : work_(std::make_shared<Work>()) {
    work_->folder = std::move(folder);
    work_->done = std::move(done);
    ended_ = work_->ended.get_future();
    thread_ = std::thread([work = work_] {
        work->result = look(work->folder, work->cancelled);
        GSource* const source = g_idle_source_new();
        g_source_set_priority(source, G_PRIORITY_DEFAULT);
        g_source_set_callback(source, deliver, new std::shared_ptr<Work>(work),
                              [](void* held) { delete static_cast<std::shared_ptr<Work>*>(held); });
        g_source_attach(source, nullptr);
        g_source_unref(source);
        work->ended.set_value();
    });
}

BackgroundScan::~BackgroundScan() {
    cancel();
    const bool delivered = !isWalking();
    work_->done = nullptr;
    if (!thread_.joinable()) {
        return;
    }
    // A thread that has delivered has nothing left to do that could take long.
    if (delivered) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

void BackgroundScan::cancel() {
    work_->cancelled = true;
}

bool BackgroundScan::isWalking() const {
    return work_->done != nullptr;
}

bool BackgroundScan::waitForEnd(std::chrono::milliseconds limit) {
    if (thread_.joinable()) {
        if (ended_.wait_for(limit) != std::future_status::ready) {
            return false;
        }
        thread_.join();
    }
    return true;
}

/// On the main context.
int BackgroundScan::deliver(void* held) {
    const std::shared_ptr<Work> work = *static_cast<std::shared_ptr<Work>*>(held);
    if (const Done done = std::exchange(work->done, nullptr)) {
        done(work->result);
    }
    return G_SOURCE_REMOVE;
}

}  // namespace platform
