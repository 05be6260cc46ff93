// Reading with a library that shares nothing with the daemon's.
#include "StrictJson.h"

#include <limits>

#include <nlohmann/json.hpp>

#include "Harness.h"

namespace fuzz {

namespace {

using nlohmann::json;

/// What is done with a text goes one call deeper for each level.
constexpr int DEEPEST = 90;

JsonValue valueOf(const json& node) {
    JsonValue value;
    if (node.is_string()) {
        value.kind = JsonValue::Kind::Text;
        value.text = node.get<std::string>();
    } else if (node.is_boolean()) {
        value.kind = JsonValue::Kind::Boolean;
        value.number = node.get<bool>() ? 1 : 0;
    } else if (node.is_number_integer() &&
               (!node.is_number_unsigned() ||
                node.get<std::uint64_t>() <= std::numeric_limits<std::int64_t>::max())) {
        value.kind = JsonValue::Kind::Integer;
        value.number = node.get<std::int64_t>();
    }
    return value;
}

const JsonValue& at(const JsonMembers& members, const std::string& place, JsonValue::Kind kind) {
    const auto member = members.find(place);
    require(member != members.end(), "a JSON text has this member", place);
    require(member->second.kind == kind, "a JSON member is of its kind", place);
    return member->second;
}

}  // namespace

std::optional<JsonMembers> strictObject(const std::string& text) {
    bool tooDeep = false;
    const json root = json::parse(
        text,
        [&](int depth, json::parse_event_t, json&) {
            tooDeep = tooDeep || depth > DEEPEST;
            return !tooDeep;
        },
        false);
    if (tooDeep || !root.is_object()) {
        return std::nullopt;
    }
    JsonMembers members;
    if (!root.empty()) {
        const json flat = root.flatten();
        for (const auto& [place, node] : flat.items()) {
            members[place] = valueOf(node);
        }
    }
    return members;
}

JsonMembers requireObject(const std::string& text, const char* whose) {
    requireText(text, whose);
    const auto members = strictObject(text);
    require(members.has_value(), "is one JSON object", std::string(whose) + " " + text);
    return *members;
}

std::string requireJsonText(const JsonMembers& members, const std::string& place) {
    return at(members, place, JsonValue::Kind::Text).text;
}

std::int64_t requireJsonInteger(const JsonMembers& members, const std::string& place) {
    return at(members, place, JsonValue::Kind::Integer).number;
}

}  // namespace fuzz
