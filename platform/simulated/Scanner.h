// The TV's content scan: really walks the folder, in a worker thread, and reports a single media
// file on the main context.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <platform/content_scan.h>

#include "BackgroundScan.h"

namespace simulated {

class SimulatedTv;

class Scanner {
public:
    explicit Scanner(SimulatedTv& tv);
    ~Scanner();
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    /// Keep results back from now on (a scan that takes long); release() hands them out.
    void hold() { held_ = true; }
    void release();

    /// Scans that were started and have neither reported nor been stopped.
    std::size_t running() const;
    /// Whether a walk is still going on in its thread.
    bool walking() const;
    /// Folders of all scans ever started, in order.
    const std::vector<std::string>& started() const { return started_; }
    void clearStarted() { started_.clear(); }

    /// Report by hand to the latest scan's callback, stopped or not, later on the main context: any
    /// event, any text, null included.
    void report(int event, const char* json);
    /// The same with a null user data.
    void reportWithoutUser(int event, const char* json);
    /// Report what the latest scan that found a single file reported, once more: to the daemon a result
    /// that comes late. Nothing when there was none.
    void reportAgain();

    // ---- the contract

    int check(const char* mountPath,
              csf_check_callback_fn callback,
              void* userData,
              CCSFDeviceCheckHandle** out);
    int stop(CCSFDeviceCheckHandle* handle);

private:
    struct Scan;
    void walked(Scan& scan, const platform::BackgroundScan::Result& result);
    void report(int event, const char* json, void* userData);
    void finish(Scan& scan);
    void drop(const Scan& scan);
    std::shared_ptr<Scan> find(const CCSFDeviceCheckHandle* handle) const;
    SimulatedTv& tv_;
    std::vector<std::shared_ptr<Scan>> scans_;
    std::vector<std::string> started_;
    csf_check_callback_fn lastCallback_ = nullptr;
    void* lastUserData_ = nullptr;
    CCSFDeviceCheckHandle* lastHandle_ = nullptr;
    std::optional<std::string> lastReport_;
    bool held_ = false;
    std::uintptr_t lastNumber_ = 0;
};

}  // namespace simulated
