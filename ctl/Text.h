// Text from outside (a device, a client, a file) as a terminal may show it, and how wide it is there.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace ctl {

/// Calls function(character, its bytes) for each character of valid UTF-8.
void forEachCharacter(std::string_view text,
                      const std::function<void(char32_t, std::string_view)>& function);

/// A text on one line, valid UTF-8, without a harmful character: each stands there by its number, as
/// "\u001b" or "\U000e0001".
std::string printable(std::string_view bytes);

/// How many columns of a terminal a printable text takes.
std::size_t columnsOf(std::string_view text);

/// A printable text with blanks behind it, up to a number of columns.
std::string padded(const std::string& text, std::size_t columns);

}  // namespace ctl
