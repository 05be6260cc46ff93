// One walk through a mounted device in a thread of its own, and its result on the main context. What is
// walked through, classified and told is decided by ContentWalker, MediaTags and ScanReport; who asked
// for it, and whether he still wants it, is known to those who hold the scan.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "ContentWalker.h"

namespace platform {

class BackgroundScan {
public:
    struct Result {
        WalkOutcome outcome = WalkOutcome::None;
        std::string report;  ///< with WalkOutcome::Single only: the text of scanReport()
    };
    using Done = std::function<void(const Result& result)>;

    /// Begin. Throws std::system_error when there is no thread to be had.
    ///
    /// @param done  called once, on the default main context, never before the constructor has
    ///              returned; it may destroy the scan
    BackgroundScan(std::string folder, Done done);

    /// Cancels. `done` is not called any more. Does not wait: a thread that is stuck in a device which
    /// does not answer is left to itself, and ends when the kernel lets it go.
    ~BackgroundScan();
    BackgroundScan(const BackgroundScan&) = delete;
    BackgroundScan& operator=(const BackgroundScan&) = delete;

    /// End the walk soon; `done` is called all the same, mostly with WalkOutcome::Cancelled.
    void cancel();

    /// Whether `done` has not been called yet.
    bool isWalking() const;

    /// Wait until nothing of the thread is left, at most so long. For the end of a process or a test.
    /// @return whether it has ended
    bool waitForEnd(std::chrono::milliseconds limit);

private:
    struct Work;
    static int deliver(void* held);

    std::shared_ptr<Work> work_;
    std::future<void> ended_;
    std::thread thread_;
};

}  // namespace platform
