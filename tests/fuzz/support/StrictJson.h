// JSON as somebody else reads it, who takes the standard at its word (RFC 8259): the judge of what the
// daemon writes, and of what it makes of a text that is beyond doubt.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace fuzz {

/// A value that is neither an array nor an object with something in it.
struct JsonValue {
    enum class Kind { Text, Integer, Boolean, Other };
    Kind kind = Kind::Other;
    std::string text;         ///< of a Text
    std::int64_t number = 0;  ///< of an Integer; 0 or 1 of a Boolean
};

/// The values of an object by where they are (RFC 6901, JSON pointer): "/items/0/file_path".
using JsonMembers = std::map<std::string, JsonValue>;

/// Take an object apart. Nothing for what is no JSON object by the standard, is no valid UTF-8, or nests
/// deeper than 90 levels, which the daemon and its neighbours all take.
std::optional<JsonMembers> strictObject(const std::string& text);

/// The same for what must be an object; ends the process when it is none.
JsonMembers requireObject(const std::string& text, const char* whose);

/// The text or the number at a place; ends the process when it is missing or of another kind.
std::string requireJsonText(const JsonMembers& members, const std::string& place);
std::int64_t requireJsonInteger(const JsonMembers& members, const std::string& place);

}  // namespace fuzz
