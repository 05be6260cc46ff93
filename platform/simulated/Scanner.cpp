// Scans and their handles. The thread, the walk and what is told of a file are shared with other
// platforms.
#include "Scanner.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <system_error>

#include "SimulatedTv.h"

namespace simulated {

namespace {

constexpr int OK = 0;
constexpr int ERROR = -1;

/// Longer than any test lets a walk take.
constexpr std::chrono::hours END_OF_A_WALK{1};

}  // namespace

struct Scanner::Scan {
    CCSFDeviceCheckHandle* handle = nullptr;
    csf_check_callback_fn callback = nullptr;
    void* userData = nullptr;
    bool stopped = false;
    std::optional<std::string> report;
    std::unique_ptr<platform::BackgroundScan> work;
};

Scanner::Scanner(SimulatedTv& tv) : tv_(tv) {}

Scanner::~Scanner() {
    for (const auto& scan : scans_) {
        scan->work->cancel();  // all at once, then wait for each
    }
    // The folders are a test's, which removes them.
    for (const auto& scan : scans_) {
        (void)scan->work->waitForEnd(END_OF_A_WALK);
    }
}

void Scanner::release() {
    held_ = false;
    for (const auto& scan : std::vector<std::shared_ptr<Scan>>(scans_)) {
        if (!scan->work->isWalking()) {
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
                       [](const auto& scan) { return scan->work->isWalking(); });
}

void Scanner::report(int event, const char* json) {
    report(event, json, lastUserData_);
}

void Scanner::reportWithoutUser(int event, const char* json) {
    report(event, json, nullptr);
}

void Scanner::reportAgain() {
    if (lastReport_) {
        report(CSF_EVENT_SINGLE_MEDIA, lastReport_->c_str());
    }
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
    // Never an address, and never the same twice: a stale handle means no other scan.
    scan->handle = reinterpret_cast<CCSFDeviceCheckHandle*>(++lastNumber_);
    scan->callback = callback;
    scan->userData = userData;
    try {
        scan->work = std::make_unique<platform::BackgroundScan>(
            mountPath, [this, &scan = *scan](const platform::BackgroundScan::Result& result) {
                walked(scan, result);
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
        scan->work->cancel();
        if (!scan->work->isWalking()) {
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
void Scanner::walked(Scan& scan, const platform::BackgroundScan::Result& result) {
    if (result.outcome == platform::WalkOutcome::Single) {
        scan.report = result.report;
        lastReport_ = result.report;
    }
    if (scan.stopped) {
        drop(scan);
    } else if (!held_) {
        finish(scan);
    }
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
