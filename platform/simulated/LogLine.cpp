// Taking a log line apart: prefix, marks in the colour of the priority, message. The journal keeps
// the result.
#include "CallJournal.h"

namespace simulated {

namespace {

constexpr const char* COLOUR_OFF = "\033[0m";

/// The mark that a message of this priority has in front; "" for one that has none.
std::string markOf(int priority) {
    switch (priority) {
        case 4:
            return "\033[32m[INFO]";
        case 5:
            return "\033[33m[WARN]";
        default:
            return {};
    }
}

/// Split "FILE: FUNCTION(LINE) > REST"; returns where the rest begins, or npos.
std::size_t splitPrefix(const std::string& text, LogLine& line) {
    const std::size_t colon = text.find(": ");
    const std::size_t end = text.find(") > ");
    if (colon == std::string::npos || end == std::string::npos || end < colon) {
        return std::string::npos;
    }
    // The name of a function can hold brackets itself.
    const std::size_t open = text.rfind('(', end);
    if (open == std::string::npos || open < colon + 2 || open + 1 == end ||
        text.find_first_not_of("0123456789", open + 1) != end) {
        return std::string::npos;
    }
    line.file = text.substr(0, colon);
    line.function = text.substr(colon + 2, open - colon - 2);
    constexpr std::size_t MOST_DIGITS = 9;
    line.line = std::stoi(text.substr(open + 1, std::min(end - open - 1, MOST_DIGITS)));
    return end + 4;
}

}  // namespace

LogLine parseLogLine(int priority, const std::string& tag, const std::string& text) {
    LogLine line{priority, tag, "", "", 0, text, text, false};
    const std::size_t rest = splitPrefix(text, line);
    if (rest == std::string::npos) {
        return line;
    }
    line.message = text.substr(rest);
    const std::string mark = markOf(priority);
    if (mark.empty()) {
        line.wellFormed = priority == 3;
        return line;
    }
    const std::string front = mark + '[' + line.function + ':' + std::to_string(line.line) + "] ";
    const std::string off = COLOUR_OFF;
    const std::string& whole = line.message;
    if (whole.size() >= front.size() + off.size() && whole.compare(0, front.size(), front) == 0 &&
        whole.compare(whole.size() - off.size(), off.size(), off) == 0) {
        line.message = whole.substr(front.size(), whole.size() - front.size() - off.size());
        line.wellFormed = true;
    }
    return line;
}

}  // namespace simulated
