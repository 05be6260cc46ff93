// The terminal as a surface: styles, redrawing in place, and writing.
#include "Terminal.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "Text.h"

namespace workbench {

namespace {

constexpr int columnsWithoutTerminal = 100;
constexpr int usualColumns = 80;
constexpr int usualRows = 24;
constexpr int fewestColumns = 20;
constexpr std::size_t mostRecent = 200;

bool mayColour(int output) {
    const char* const refusal = std::getenv("NO_COLOR");
    const char* const kind = std::getenv("TERM");
    return isatty(output) != 0 && (refusal == nullptr || *refusal == '\0') && kind != nullptr &&
           std::strcmp(kind, "dumb") != 0;
}

const char* sequence(Style style) {
    switch (style) {
        case Style::Faint:
            return "\033[2m";
        case Style::Strong:
            return "\033[1m";
        case Style::Button:
            return "\033[7m";
        case Style::Good:
            return "\033[32m";
        case Style::Warning:
            return "\033[33m";
        case Style::Plain:
            break;
    }
    return "";
}

winsize sizeOf(int output) {
    winsize size{};
    if (ioctl(output, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
        size.ws_col = usualColumns;
        size.ws_row = usualRows;
    }
    return size;
}

int rowsOf(const Line& line, int columns) {
    int width = 0;
    for (const Span& span : line) {
        width += columnsOf(span.text);
    }
    return std::max(1, (width + columns - 1) / columns);
}

}  // namespace

Terminal::Terminal(int output, bool live)
    : output_(output), live_(live), colours_(mayColour(output)) {}

Terminal::~Terminal() {
    write(erasure());
}

int Terminal::columns() const {
    return live_ ? std::max<int>(sizeOf(output_).ws_col, fewestColumns) : columnsWithoutTerminal;
}

int Terminal::rows() const {
    return sizeOf(output_).ws_row;
}

void Terminal::print(const Line& line) {
    // One write, so that nobody sees the live area gone.
    write(erasure() + rendered(line, -1) + "\n" + drawn_);
    if (live_) {
        recent_.push_back(line);
        if (recent_.size() > mostRecent) {
            recent_.pop_front();
        }
    }
}

void Terminal::setLive(const std::vector<Line>& lines) {
    if (!live_) {
        return;
    }
    std::string drawing;
    for (const Line& line : lines) {
        drawing += (drawing.empty() ? "" : "\n") + rendered(line, columns() - 1);
    }
    if (drawing != drawn_) {
        write(erasure() + drawing);
        drawn_ = drawing;
        drawnRows_ = static_cast<int>(lines.size());
    }
}

void Terminal::repaint() {
    const int width = columns();
    int left = rows() - drawnRows_;
    auto first = recent_.end();
    while (first != recent_.begin() && left >= rowsOf(*(first - 1), width)) {
        --first;
        left -= rowsOf(*first, width);
    }
    std::string all = "\033[H\033[2J";
    for (; first != recent_.end(); ++first) {
        all += rendered(*first, -1) + "\n";
    }
    write(all + drawn_);
}

/// The line with its styles, cut to `columns` (-1: as long as it is).
std::string Terminal::rendered(const Line& line, int columns) const {
    std::string result;
    int left = columns;
    for (const Span& span : line) {
        const std::string text = columns < 0 ? span.text : clipped(span.text, left);
        left -= columnsOf(text);
        const bool plain = !colours_ || span.style == Style::Plain || text.empty();
        result += plain ? text : sequence(span.style) + text + "\033[0m";
    }
    return result;
}

/// Leads back to where the live area begins and clears from there.
std::string Terminal::erasure() const {
    if (drawn_.empty()) {
        return {};
    }
    const std::string up = drawnRows_ > 1 ? "\033[" + std::to_string(drawnRows_ - 1) + "A" : "";
    return "\r" + up + "\033[J";
}

void Terminal::write(const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size() && !broken_) {
        const ssize_t count = ::write(output_, bytes.data() + done, bytes.size() - done);
        if (count >= 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN) {
            // Whoever shares the terminal made it non-blocking.
            pollfd writable{output_, POLLOUT, 0};
            poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            broken_ = true;
        }
    }
}

}  // namespace workbench
