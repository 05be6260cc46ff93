// JSON for programs, out and in: values made from C++ values and printed on one line, and the members of
// a parsed object. What a device or a setting looks like in JSON is decided elsewhere.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <json-glib/json-glib.h>

namespace ctl {

struct JsonNodeDeleter {
    void operator()(JsonNode* node) const { json_node_unref(node); }
};

/// One JSON value.
using Json = std::unique_ptr<JsonNode, JsonNodeDeleter>;

/// A whole number; null when there is none.
Json jsonNumber(std::optional<std::int64_t> value);
/// A truth value.
Json jsonTruth(bool value);
/// A text, valid UTF-8 without NUL; null when there is none.
Json jsonString(const std::optional<std::string>& value);
/// A list.
Json jsonList(std::vector<Json> items);

/// An object under construction; its members are written in the order of their adding.
class JsonMembers {
public:
    JsonMembers();
    /// Add a member.
    JsonMembers& with(const char* name, Json value);
    /// The finished object; this one is empty afterwards.
    Json done();

private:
    Json node_;
};

/// A value on one line. Characters that could harm a terminal are written by their number, which
/// changes nothing for whoever parses it.
/// @param ascii  do the same with everything that is not ASCII
std::string jsonText(const Json& value, bool ascii);

/// Parse a text that is one JSON object; null for any other.
Json parsedObject(const std::string& text);

/// A number of an object; 0 when it has no such number.
std::int64_t numberMember(const Json& object, const char* name);
/// A text of an object; "" when it has no such text.
std::string textMember(const Json& object, const char* name);

}  // namespace ctl
