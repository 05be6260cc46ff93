// The daemon's log: taking lines as they come.
#include "LogBook.h"

namespace workbench {

LogBook::LogBook(simulated::SimulatedTv& tv) : tv_(tv) {
    tv_.journal().setLogSink(onLine, this);
}

LogBook::~LogBook() {
    tv_.journal().setLogSink(nullptr, nullptr);
}

void LogBook::onLine(const simulated::LogLine& line, void* data) {
    auto& self = *static_cast<LogBook*>(data);
    // Some lines of the daemon end in a line feed of their own.
    self.lines_.add({self.tv_.clock().now(), line.priority, line.file, line.function, line.line,
                     line.message.substr(0, line.message.find_last_not_of('\n') + 1)});
}

void LogBook::warn(const std::string& message) {
    constexpr int warning = 5;
    lines_.add({tv_.clock().now(), warning, "portmeld-workbench", "", 0, message});
}

}  // namespace workbench
