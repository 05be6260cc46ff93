// Scans: a worker thread each, results on the main context. How a folder is walked and what is told
// of a file is shared with other platforms.
#include "Scanner.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <system_error>
#include <thread>

#include "ContentWalker.h"
#include "MediaTags.h"
#include "ScanReport.h"
#include "SimulatedTv.h"

namespace simulated {

namespace {

constexpr int OK = 0;
constexpr int ERROR = -1;

/// What a scan has to tell; nothing unless the folder holds a single media file.
std::optional<std::string> look(const std::string& folder, const std::atomic<bool>& cancelled) {
    const platform::WalkResult result = platform::walkContent(folder, cancelled);
    if (result.outcome != platform::WalkOutcome::Single) {
        return std::nullopt;
    }
    platform::MediaTags tags;
    if (result.file.type == platform::MediaType::Music) {
        tags = platform::readMediaTags(result.file.path);
    }
    return platform::scanReport(result.file, tags);
}

}  // namespace

/// One scan. Its thread reads `folder` and `cancelled`, writes `report`, and hands all back by
/// attaching `done`; the rest belongs to the main thread.
struct Scanner::Scan {
    Scanner* scanner = nullptr;
    CCSFDeviceCheckHandle* handle = nullptr;
    csf_check_callback_fn callback = nullptr;
    void* userData = nullptr;
    bool walking = true;
    bool stopped = false;

    std::string folder;
    std::atomic<bool> cancelled{false};
    std::optional<std::string> report;
    GSource* done = nullptr;
    std::thread thread;

    Scan() = default;
    Scan(const Scan&) = delete;
    Scan& operator=(const Scan&) = delete;

    ~Scan() {
        cancelled = true;
        if (thread.joinable()) {
            thread.join();
        }
        if (done != nullptr) {
            g_source_destroy(done);
            g_source_unref(done);
        }
    }
};

Scanner::Scanner(SimulatedTv& tv) : tv_(tv) {}

Scanner::~Scanner() {
    for (const auto& scan : scans_) {
        scan->cancelled = true;  // all at once, then wait for each
    }
}

void Scanner::release() {
    held_ = false;
    for (const auto& scan : std::vector<std::shared_ptr<Scan>>(scans_)) {
        if (!scan->walking) {
            tv_.post([this, handle = scan->handle] {
                if (const std::shared_ptr<Scan> waiting = find(handle)) {
                    finish(*waiting);
                }
            });
        }
    }
}

std::size_t Scanner::running() const {
    return static_cast<std::size_t>(std::count_if(scans_.begin(), scans_.end(),
                                                  [](const auto& scan) { return !scan->stopped; }));
}

bool Scanner::walking() const {
    return std::any_of(scans_.begin(), scans_.end(),
                       [](const auto& scan) { return scan->walking; });
}

void Scanner::report(int event, const char* json) {
    report(event, json, lastUserData_);
}

void Scanner::reportWithoutUser(int event, const char* json) {
    report(event, json, nullptr);
}

void Scanner::report(int event, const char* json, void* userData) {
    if (lastCallback_ == nullptr) {
        return;
    }
    const auto text = json != nullptr ? std::optional<std::string>(json) : std::nullopt;
    tv_.post([callback = lastCallback_, handle = lastHandle_, event, text, userData] {
        (void)callback(userData, handle, static_cast<csf_event_e>(event),
                       text ? text->c_str() : nullptr);
    });
}

// ---- the contract

int Scanner::check(const char* mountPath,
                   csf_check_callback_fn callback,
                   void* userData,
                   CCSFDeviceCheckHandle** out) {
    if (mountPath == nullptr || callback == nullptr || out == nullptr) {
        return ERROR;
    }
    auto scan = std::make_shared<Scan>();
    scan->scanner = this;
    // Never an address, and never the same twice: a stale handle means no other scan.
    scan->handle = reinterpret_cast<CCSFDeviceCheckHandle*>(++lastNumber_);
    scan->callback = callback;
    scan->userData = userData;
    scan->folder = mountPath;
    scan->done = g_idle_source_new();
    g_source_set_priority(scan->done, G_PRIORITY_DEFAULT);
    g_source_set_callback(scan->done, walked, scan.get(), nullptr);
    try {
        scan->thread = std::thread([&work = *scan] {
            work.report = look(work.folder, work.cancelled);
            g_source_attach(work.done, nullptr);
        });
    } catch (const std::system_error&) {
        return ERROR;
    }
    lastCallback_ = callback;
    lastUserData_ = userData;
    lastHandle_ = scan->handle;
    started_.emplace_back(mountPath);
    *out = scan->handle;
    scans_.push_back(std::move(scan));
    return OK;
}

int Scanner::stop(CCSFDeviceCheckHandle* handle) {
    if (const std::shared_ptr<Scan> scan = find(handle)) {
        scan->stopped = true;
        scan->cancelled = true;
        if (!scan->walking) {
            drop(*scan);
        }
    }
    return OK;
}

std::shared_ptr<Scanner::Scan> Scanner::find(const CCSFDeviceCheckHandle* handle) const {
    const auto found = std::find_if(scans_.begin(), scans_.end(), [&](const auto& scan) {
        return scan->handle == handle && !scan->stopped;
    });
    return found != scans_.end() ? *found : nullptr;
}

void Scanner::drop(const Scan& scan) {
    scans_.erase(std::remove_if(scans_.begin(), scans_.end(),
                                [&](const auto& known) { return known.get() == &scan; }),
                 scans_.end());
}

/// The end of a walk, on the main context.
int Scanner::walked(void* data) {
    Scan& scan = *static_cast<Scan*>(data);
    Scanner& scanner = *scan.scanner;
    scan.walking = false;
    if (scan.stopped) {
        scanner.drop(scan);
    } else if (!scanner.held_) {
        scanner.finish(scan);
    }
    return G_SOURCE_REMOVE;
}

/// The scan ends, and reports if it has something to tell.
void Scanner::finish(Scan& scan) {
    const csf_check_callback_fn callback = scan.callback;
    void* const userData = scan.userData;
    CCSFDeviceCheckHandle* const handle = scan.handle;
    const std::optional<std::string> report = std::move(scan.report);
    drop(scan);
    if (report) {
        (void)callback(userData, handle, CSF_EVENT_SINGLE_MEDIA, report->c_str());
    }
}

}  // namespace simulated
