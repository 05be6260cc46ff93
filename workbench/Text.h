// Text for a terminal: made harmless, measured in columns, cut and wrapped. Styles and drawing are
// Terminal's affair.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// A text from outside (a device, a folder, a catalogue) as it may be shown: valid UTF-8 on one line.
/// Control characters and those that turn the reading direction of what follows are shown by their
/// number, as "<U+202E>"; marks that only isolate a name within a sentence are left out.
std::string printable(std::string_view bytes);

/// How many columns of a terminal a printable text takes.
int columnsOf(std::string_view text);

/// A printable text cut to at most `columns` columns; one that was cut ends in "…".
std::string clipped(std::string_view text, int columns);

/// A printable text in lines of at most `columns` columns, broken at blanks where there are any. At
/// least one line.
std::vector<std::string> wrapped(std::string_view text, int columns);

/// `count` times the same text, for rules and padding; nothing for 0 and less.
std::string repeated(std::string_view text, int count);

}  // namespace workbench
