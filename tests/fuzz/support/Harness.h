// What every fuzz harness stands on: a demand that ends the process where it does not hold, so that the
// fuzzer keeps the input, and the cutting of an input into texts. A complaint of GLib ends the process too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {

/// Ends the process by SIGABRT with one line on standard error unless a demand holds.
/// @param demand  what has to hold, in words
/// @param seen    what was seen instead, any bytes
void require(bool holds, const char* demand, const std::string& seen = "");

/// The same for text that has to be valid UTF-8 without NUL.
void requireText(const std::string& text, const char* whose);

/// An input as one text.
std::string wholeText(const std::uint8_t* data, std::size_t size);

/// An input as a C string would have it: up to its first NUL.
std::string cText(const std::uint8_t* data, std::size_t size);

/// An input as several C strings: cut at each NUL. At least one.
std::vector<std::string> texts(const std::uint8_t* data, std::size_t size);

/// The text with every byte that belongs to no UTF-8 character as U+FFFD.
std::string validText(const std::string& text);

/// Whether a text matches a regular expression (PCRE).
bool isLike(const std::string& text, const char* pattern);

/// Write a file below the current folder, whose folder is made.
void writeFile(const std::string& path, const std::string& content);

}  // namespace fuzz
