// What happened, line by line: the time on the TV's clock, who it concerns, what it was. Everything that
// the workbench says passes through here; where it goes is the terminal's affair.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Terminal.h"

namespace workbench {

class Transcript {
public:
    /// `now` tells the TV's time in milliseconds.
    Transcript(Terminal& terminal, std::function<std::int64_t()> now)
        : terminal_(terminal), now_(std::move(now)) {}

    /// One event. `subject` is a word ("usb", "bus"), `text` may hold anything that a device says.
    void tell(const char* subject, const std::string& text, Style style = Style::Plain);

    /// Lines that belong to the event before, indented below it; as they are.
    void detail(const std::vector<std::string>& lines, Style style = Style::Plain);
    void detail(const std::vector<Line>& lines);

    /// A line of its own, from the first column on and never broken.
    void plain(const std::string& text, Style style = Style::Plain);

    /// Whether the state of the TV is drawn below it.
    bool isAboveScreen() const { return terminal_.isLive(); }

    /// How many columns a detail line should keep to.
    int detailColumns() const;

private:
    Terminal& terminal_;
    std::function<std::int64_t()> now_;
};

/// A time as "1:05", or "1:02:05" from an hour on.
std::string clockText(std::int64_t milliseconds);

}  // namespace workbench
