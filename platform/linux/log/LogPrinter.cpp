// The level of the log, as the setting "db/portmeld/log_level" names it (debug, info, warning or off; warning
// while it is unset), and its lines: taken apart and written to the journal with its own fields, or to
// standard error.
#include "LogPrinter.h"

#include <array>
#include <climits>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include <platform/log.h>

#include "Journal.h"
#include "settings/Settings.h"
#include "settings/SettingsWatches.h"

namespace machine {

int logThreshold = INT_MIN;

namespace {

constexpr const char* LEVEL_KEY = "db/portmeld/log_level";

/// The longest line that is written, in bytes; the rest is cut off.
constexpr std::size_t LONGEST_LINE = std::size_t{64} * 1024;

int thresholdFor(const std::optional<std::string>& level) {
    if (!level || *level == "warning") {
        return DLOG_PRIORITY_WARNING;
    }
    if (*level == "info") {
        return DLOG_PRIORITY_INFO;
    }
    if (*level == "debug") {
        return DLOG_PRIORITY_DEBUG;
    }
    if (*level == "off") {
        return INT_MAX;
    }
    complainOfSetting(LEVEL_KEY, *level, "is no level; write debug, info, warning or off");
    return DLOG_PRIORITY_WARNING;
}

/// Read the level now and after each change.
void followLevel() {
    // While it is read nothing is dropped, and nothing reads it once more.
    logThreshold = DLOG_PRIORITY_WARNING;
    (void)SettingsWatches::get().add(LEVEL_KEY, [](const std::optional<std::string>& level) {
        logThreshold = thresholdFor(level);
    });
    logThreshold = thresholdFor(settingText(LEVEL_KEY));
}

Priority priorityOf(int priority) {
    switch (priority) {
        case DLOG_PRIORITY_DEBUG:
            return Priority::Debug;
        case DLOG_PRIORITY_INFO:
            return Priority::Info;
        default:
            return Priority::Warning;
    }
}

/// A line in its parts; they point into the line.
struct Line {
    std::string_view file;
    std::string_view function;
    std::string_view number;
    std::string_view message;
};

bool skip(std::string_view& text, std::string_view start) {
    if (text.substr(0, start.size()) != start) {
        return false;
    }
    text.remove_prefix(start.size());
    return true;
}

/// Without the marks in front of the message: the colour with the priority's name, and the place once
/// more.
std::string_view withoutMarks(std::string_view text, const Line& line) {
    std::string_view rest = text;
    if ((skip(rest, "\033[32m[INFO]") || skip(rest, "\033[33m[WARN]")) && skip(rest, "[") &&
        skip(rest, line.function) && skip(rest, ":") && skip(rest, line.number) &&
        skip(rest, "] ")) {
        return rest;
    }
    return text;
}

/// Without the colour's end and the line feeds before it.
std::string_view withoutEnd(std::string_view text) {
    constexpr std::string_view COLOUR_OFF = "\033[0m";
    if (text.size() >= COLOUR_OFF.size() &&
        text.substr(text.size() - COLOUR_OFF.size()) == COLOUR_OFF) {
        text.remove_suffix(COLOUR_OFF.size());
    }
    while (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    return text;
}

/// Take "FILE: FUNCTION(LINE) > MESSAGE" apart; what is not of this form is a message without a place.
Line takeApart(std::string_view text) {
    constexpr std::string_view AFTER_FILE = ": ";
    constexpr std::string_view AFTER_LINE = ") > ";
    const std::size_t colon = text.find(AFTER_FILE);
    const std::size_t end = text.find(AFTER_LINE);
    // A function's name can hold brackets itself: the last ones are the line's.
    const std::size_t open = text.substr(0, end).rfind('(');
    if (end == std::string_view::npos || open == std::string_view::npos || colon == 0 ||
        colon >= open || open - colon <= AFTER_FILE.size() ||
        text.find_first_not_of("0123456789", open + 1) != end) {
        return {{}, {}, {}, withoutEnd(text)};
    }
    const std::size_t function = colon + AFTER_FILE.size();
    Line line{text.substr(0, colon),
              text.substr(function, open - function),
              text.substr(open + 1, end - open - 1),
              {}};
    line.message = withoutEnd(withoutMarks(text.substr(end + AFTER_LINE.size()), line));
    return line;
}

void writeApart(int priority, const char* tag, std::string_view text) {
    const Line line = takeApart(text);
    const std::string file(line.file);
    const std::string function(line.function);
    const std::string number(line.number);
    std::string message(line.message);
    if (!journalIsThere() && !file.empty()) {
        message = file + ": " + function + "(" + number + ") > " + message;
    } else if (message.empty()) {
        message = function + "()";  // an entry trace; nobody sees the fields of an empty line
    }
    writeLine(priorityOf(priority), message,
              {{"CODE_FILE", file},
               {"CODE_FUNC", function},
               {"CODE_LINE", number},
               {"PORTMELD_TAG", tag != nullptr ? tag : ""}});
}

}  // namespace

int printLine(int, int priority, const char* tag, const char* format, va_list arguments) {
    if (logThreshold == INT_MIN) {
        followLevel();
        if (priority < logThreshold) {
            return 0;
        }
    }
    static std::array<char, LONGEST_LINE + 1> text;
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    if (length < 0) {
        return -1;
    }
    writeApart(priority, tag, {text.data(), std::strlen(text.data())});
    return length;
}

}  // namespace machine
