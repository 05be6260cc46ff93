// The daemon's log, the newest lines of it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "Ring.h"
#include "SimulatedTv.h"

namespace workbench {

struct LoggedLine {
    std::int64_t time;  ///< on the TV's clock
    int priority;
    std::string file;
    std::string function;
    int line;
    std::string message;
};

class LogBook {
public:
    static constexpr std::size_t mostLines = 10000;

    explicit LogBook(simulated::SimulatedTv& tv);
    ~LogBook();
    LogBook(const LogBook&) = delete;
    LogBook& operator=(const LogBook&) = delete;

    const Ring<LoggedLine>& lines() const { return lines_; }
    void clear() { lines_.clear(); }
    /// Adds a warning of the workbench's own.
    void warn(const std::string& message);

private:
    static void onLine(const simulated::LogLine& line, void* data);
    simulated::SimulatedTv& tv_;
    Ring<LoggedLine> lines_{mostLines};
};

}  // namespace workbench
