// Characters that must never reach a terminal: which they are, and texts without them. How a program
// shows such a character instead is its own affair.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace text {

/// Whether a character can do more to a terminal than be seen: control characters, those that turn the
/// reading direction, line separators, and what Unicode gives no meaning.
/// @param character  a code point
bool isHarmful(char32_t character);

/// A text from outside as valid UTF-8 without a harmful character.
/// @param bytes  any bytes; what is no UTF-8 becomes U+FFFD
/// @param shown  what stands in the place of a harmful character; "" leaves it out
std::string withoutHarmful(std::string_view bytes,
                           const std::function<std::string(char32_t)>& shown);

}  // namespace text
