// Text of devices and files as others may have it. Records keep the bytes that a device gave; what
// leaves the process is made valid here, at the border.
#pragma once

#include <string>

/// A C string as a string; null, which is what a device without such a text gives, as "".
std::string MMString(const char* pText);

/// The text as valid UTF-8: bytes that are none, and NULs, become U+FFFD.
std::string MMValidUtf8(const std::string& text);

/// The same for a JSON string: the byte 0x1F becomes U+FFFD too, since json-glib would write it
/// unescaped and the text would be no JSON.
std::string MMJsonUtf8(const std::string& text);
