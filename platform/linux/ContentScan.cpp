// The content scan of <platform/content_scan.h>: scans in threads of their own, handles, and what comes
// of each walk. How a device is walked through is decided by platform/common.
//
// Outcomes:
//   one media file on the device   CSF_EVENT_SINGLE_MEDIA, once
//   none, or two and more          nothing; the walk ends at the second
//   more than WalkLimits allow     nothing, and one line in the log
//   stopped                        nothing
//   the device fails               nothing: what is behind the failure is not known
//   pulled during the walk         nothing: the file is looked for once more before it is reported
//   a device that never answers    nothing; its thread is left behind, and neither a stop nor the end of
//                                  the process waits for it
//   too many such threads          the scan is refused, with a line in the log
// Left out are links, hidden files and folders, folders that cannot be read, other file systems mounted
// below, and whatever is no regular file. Broken or huge music files count, with empty tags.
#include <platform/content_scan.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "BackgroundScan.h"
#include "Journal.h"

namespace machine {

namespace {

using platform::BackgroundScan;

constexpr int OK = 0;
constexpr int ERROR = -1;

/// Threads at the same time, those left behind included. One device is looked through at a time, so
/// more than a few are dead devices.
constexpr std::size_t MOST_SCANS = 16;

/// What healthy threads get to end before the process does.
constexpr std::chrono::milliseconds LAST_GRACE{500};

class Scans {
public:
    ~Scans();
    int start(const char* folder,
              csf_check_callback_fn callback,
              void* userData,
              CCSFDeviceCheckHandle** handle);
    void stop(const CCSFDeviceCheckHandle* handle);

private:
    /// One that was stopped stays until its thread has ended.
    struct Scan {
        CCSFDeviceCheckHandle* handle;
        csf_check_callback_fn callback;
        void* userData;
        std::string folder;
        bool stopped = false;
        std::unique_ptr<BackgroundScan> work;
    };
    void ended(const CCSFDeviceCheckHandle* handle, const BackgroundScan::Result& result);
    std::vector<Scan>::iterator find(const CCSFDeviceCheckHandle* handle);

    std::vector<Scan> scans_;
    std::uintptr_t lastNumber_ = 0;
};

Scans::~Scans() {
    for (const Scan& scan : scans_) {
        scan.work->cancel();
    }
    const auto deadline = std::chrono::steady_clock::now() + LAST_GRACE;
    for (const Scan& scan : scans_) {
        const auto left = std::max(deadline - std::chrono::steady_clock::now(), {});
        (void)scan.work->waitForEnd(std::chrono::duration_cast<std::chrono::milliseconds>(left));
    }
}

int Scans::start(const char* folder,
                 csf_check_callback_fn callback,
                 void* userData,
                 CCSFDeviceCheckHandle** handle) {
    if (folder == nullptr || callback == nullptr || handle == nullptr) {
        return ERROR;
    }
    if (scans_.size() >= MOST_SCANS) {
        report(Priority::Warning,
               "too many devices do not answer; this one is not searched for media",
               {{"PORTMELD_FOLDER", folder}});
        return ERROR;
    }
    // Never an address, and never the same twice: a stale handle means no other scan.
    auto* const number = reinterpret_cast<CCSFDeviceCheckHandle*>(++lastNumber_);
    try {
        auto work = std::make_unique<BackgroundScan>(
            folder,
            [this, number](const BackgroundScan::Result& result) { ended(number, result); });
        scans_.push_back({number, callback, userData, folder, false, std::move(work)});
    } catch (const std::system_error& error) {
        report(Priority::Warning,
               std::string("no thread to search a device for media: ") + error.what(),
               {{"PORTMELD_FOLDER", folder}});
        return ERROR;
    }
    *handle = number;
    return OK;
}

void Scans::stop(const CCSFDeviceCheckHandle* handle) {
    const auto scan = find(handle);
    if (scan != scans_.end()) {
        scan->stopped = true;
        scan->work->cancel();
    }
}

void Scans::ended(const CCSFDeviceCheckHandle* handle, const BackgroundScan::Result& result) {
    const auto found = find(handle);
    const Scan scan = std::move(*found);
    scans_.erase(found);
    if (scan.stopped) {
        return;
    }
    if (result.outcome == platform::WalkOutcome::TooLarge) {
        report(Priority::Notice,
               "too many files or folders on the device: the search for media was given up",
               {{"PORTMELD_FOLDER", scan.folder}});
    } else if (result.outcome == platform::WalkOutcome::Single) {
        (void)scan.callback(scan.userData, scan.handle, CSF_EVENT_SINGLE_MEDIA,
                            result.report.c_str());
    }
}

std::vector<Scans::Scan>::iterator Scans::find(const CCSFDeviceCheckHandle* handle) {
    return std::find_if(scans_.begin(), scans_.end(),
                        [&](const Scan& scan) { return scan.handle == handle; });
}

Scans& scans() {
    static Scans all;
    return all;
}

}  // namespace

}  // namespace machine

extern "C" {

int csf_check_device_v2(const char* mount_path,
                        csf_check_callback_fn cb,
                        void* user_data,
                        CCSFDeviceCheckHandle** handle) {
    return machine::scans().start(mount_path, cb, user_data, handle);
}

int csf_stop_checking_device_v2(CCSFDeviceCheckHandle* handle) {
    machine::scans().stop(handle);
    return machine::OK;
}

}  // extern "C"
