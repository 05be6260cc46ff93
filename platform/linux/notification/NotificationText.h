// Texts on their way to the screen: whatever a device calls itself, it neither breaks the line nor
// turns the direction of what stands around it, and it is no markup.
#pragma once

#include <string>

namespace machine {

/// A text as a pop-up may show it: one line of valid UTF-8.
///
/// Control characters and line ends (C0, C1, U+2028, U+2029) become blanks. What embeds, overrides
/// or isolates a direction (U+202A to U+202E, U+2066 to U+2069) is dropped, but for one pair of
/// first strong isolate and pop directional isolate, the outermost: the catalogues of languages
/// written from right to left put it around a device's name. The pair is completed when its end was
/// cut off.
/// @param text  any bytes; null means ""
std::string harmlessText(const char* text);

/// The text for a server that reads the body as markup: "&", "<", ">" and quotes are escaped.
std::string escapedForMarkup(const std::string& text);

}  // namespace machine
