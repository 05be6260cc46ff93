// Reading launch data, which anybody may have written.
#include "LaunchData.h"

#include <algorithm>

namespace handlers {

namespace {

/// json-glib goes one call deeper for each level, until the stack ends.
constexpr int DEEPEST = 100;

/// The number in the escape "\uXXXX" that begins at `at`; -1 when there is none.
int codeUnit(const std::string& json, std::size_t at) {
    if (json.compare(at, 2, "\\u") != 0 || json.size() < at + 6) {
        return -1;
    }
    int unit = 0;
    for (std::size_t digit = at + 2; digit < at + 6; ++digit) {
        const int value = g_ascii_xdigit_value(json[digit]);
        if (value < 0) {
            return -1;
        }
        unit = unit * 16 + value;
    }
    return unit;
}

bool isHighSurrogate(int unit) {
    return unit >= 0xd800 && unit <= 0xdbff;
}

bool isLowSurrogate(int unit) {
    return unit >= 0xdc00 && unit <= 0xdfff;
}

/// How many bytes the escape takes that begins at `at`; 0 for what is none. Half a surrogate pair is none
/// either: json-glib does not find the end of a string with one.
std::size_t lengthOfEscape(const std::string& json, std::size_t at) {
    const int unit = codeUnit(json, at);
    if (isHighSurrogate(unit)) {
        return isLowSurrogate(codeUnit(json, at + 6)) ? 12 : 0;
    }
    if (unit >= 0) {
        return isLowSurrogate(unit) ? 0 : 6;
    }
    static const std::string SHORT = "\"\\/bfnrt";
    return at + 1 < json.size() && SHORT.find(json[at + 1]) != std::string::npos ? 2 : 0;
}

/// Where the string ends that opens at `at`; npos when it does not, or holds what is no escape.
std::size_t endOfString(const std::string& json, std::size_t at) {
    while (++at < json.size() && json[at] != '"') {
        if (json[at] != '\\') {
            continue;
        }
        const std::size_t length = lengthOfEscape(json, at);
        if (length == 0) {
            return std::string::npos;
        }
        at += length - 1;
    }
    return at < json.size() ? at : std::string::npos;
}

/// What keeps a text from the parser; "" when nothing does. The parser takes single quotes and comments
/// too, in which brackets could be hidden from whoever counts them, and the last of several values.
std::string flawOf(const std::string& json) {
    int depth = 0;
    for (std::size_t at = 0; at < json.size(); ++at) {
        const char byte = json[at];
        if (byte == '"') {
            at = endOfString(json, at);
            if (at == std::string::npos) {
                return " are no JSON: a string is broken";
            }
        } else if (byte == '{' || byte == '[') {
            if (depth == 0 && json.find_first_not_of(" \t\r\n") != at) {
                return " are no JSON: there is more than one value";
            }
            if (++depth > DEEPEST) {
                return " are nested too deep";
            }
        } else if (byte == '}' || byte == ']') {
            --depth;
        } else if (byte == '\'' || byte == '/' || byte == '#') {
            return std::string(" are no JSON: unexpected ") + byte;
        }
    }
    return "";
}

}  // namespace

std::unique_ptr<JsonNode, JsonNodeUnref> readObject(const std::string& json,
                                                    const std::string& what) {
    if (g_utf8_validate(json.data(), static_cast<gssize>(json.size()), nullptr) == FALSE) {
        throw Refusal(what + " are not UTF-8");
    }
    if (const std::string flaw = flawOf(json); !flaw.empty()) {
        throw Refusal(what + flaw);
    }
    g_autoptr(GError) error = nullptr;
    std::unique_ptr<JsonNode, JsonNodeUnref> node(json_from_string(json.c_str(), &error));
    if (error != nullptr) {
        throw Refusal(what + " are no JSON: " + error->message);
    }
    if (node == nullptr || !JSON_NODE_HOLDS_OBJECT(node.get())) {
        throw Refusal(what + " are no JSON object");
    }
    return node;
}

const char* textOf(JsonObject* object, const char* member) {
    JsonNode* const node = json_object_get_member(object, member);
    const bool isText = node != nullptr && JSON_NODE_HOLDS_VALUE(node) &&
                        json_node_get_value_type(node) == G_TYPE_STRING;
    return isText ? json_node_get_string(node) : nullptr;
}

LaunchData::LaunchData(const std::string& json) {
    const auto node = readObject(json, "the launch data");
    JsonObject* const object = json_node_get_object(node.get());
    JsonObjectIter iterator;
    const char* key = nullptr;
    json_object_iter_init_ordered(&iterator, object);
    while (json_object_iter_next_ordered(&iterator, &key, nullptr) != FALSE) {
        const char* const text = textOf(object, key);
        if (text == nullptr) {
            throw Refusal(std::string("'") + key + "' of the launch data is no text");
        }
        items_.emplace_back(key, text);
    }
}

std::vector<LaunchData::Item>::const_iterator LaunchData::find(const std::string& key) const {
    return std::find_if(items_.begin(), items_.end(),
                        [&](const Item& item) { return item.first == key; });
}

const std::string& LaunchData::at(const std::string& key) const {
    const auto item = find(key);
    if (item == items_.end()) {
        throw Refusal("the launch data lack '" + key + "'");
    }
    return item->second;
}

bool LaunchData::isNewer(const std::string& key, const std::string& other) const {
    const auto item = find(key);
    const auto otherItem = find(other);
    return item != items_.end() && (otherItem == items_.end() || otherItem < item);
}

}  // namespace handlers
