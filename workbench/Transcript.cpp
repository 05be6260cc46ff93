// What happened, line by line: the columns of a line, and where a long one is broken.
#include "Transcript.h"

#include <memory>

#include <glib.h>

#include "Text.h"

namespace workbench {

namespace {

constexpr int timeColumns = 7;
constexpr int subjectColumns = 8;
constexpr int indentation = timeColumns + subjectColumns;
/// Long lines are hard to read, however wide the terminal is.
constexpr int mostColumns = 110;

std::string padded(const std::string& text, int columns) {
    return text + repeated(" ", columns - columnsOf(text));
}

}  // namespace

void Transcript::tell(const char* subject, const std::string& text, Style style) {
    const std::string shown = printable(text);
    // Programs that read along get one line for one event.
    const std::vector<std::string> lines =
        terminal_.isLive() ? wrapped(shown, detailColumns()) : std::vector<std::string>{shown};
    const std::string time = clockText(now_());
    terminal_.print({{repeated(" ", timeColumns - 2 - columnsOf(time)) + time + "  ", Style::Faint},
                     {padded(subject, subjectColumns), Style::Faint},
                     {lines.front(), style}});
    detail({lines.begin() + 1, lines.end()}, style);
}

void Transcript::detail(const std::vector<std::string>& lines, Style style) {
    for (const std::string& line : lines) {
        terminal_.print({{repeated(" ", indentation)}, {line, style}});
    }
}

void Transcript::detail(const std::vector<Line>& lines) {
    for (Line line : lines) {
        line.insert(line.begin(), Span{repeated(" ", indentation)});
        terminal_.print(line);
    }
}

void Transcript::plain(const std::string& text, Style style) {
    terminal_.print({{text, style}});
}

int Transcript::detailColumns() const {
    return std::min(terminal_.columns() - 1, mostColumns) - indentation;
}

std::string clockText(std::int64_t milliseconds) {
    constexpr int minute = 60;
    const auto seconds = static_cast<int>(milliseconds / 1000);
    const int hours = seconds / (minute * minute);
    const int minutes = seconds / minute % minute;
    const std::unique_ptr<char, decltype(&g_free)> text(
        hours > 0 ? g_strdup_printf("%d:%02d:%02d", hours, minutes, seconds % minute)
                  : g_strdup_printf("%d:%02d", minutes, seconds % minute),
        g_free);
    return text.get();
}

}  // namespace workbench
