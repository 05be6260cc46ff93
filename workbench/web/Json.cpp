// JSON values as C++ values: conversions to and from json-glib's nodes.
#include "Json.h"

#include <algorithm>

namespace workbench {

namespace {

/// The parser recurses; no message is nested that deep.
constexpr int deepest = 100;

/// Each number with so many has a place in 64 bits.
constexpr std::size_t mostDigits = 18;

/// Of a code unit: "\u" and four digits.
constexpr std::size_t escapeSize = 6;

std::string sound(const std::string& text) {
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
    std::string result = valid.get();
    constexpr char notEscaped = '\x1f';
    std::replace(result.begin(), result.end(), notEscaped, '?');
    return result;
}

/// The code unit that is escaped at `i` as "\uXXXX"; none when there is none.
std::optional<unsigned> unitAt(const std::string& text, std::size_t i) {
    if (i + escapeSize > text.size() || text[i] != '\\' || text[i + 1] != 'u') {
        return std::nullopt;
    }
    unsigned unit = 0;
    for (std::size_t k = i + 2; k < i + escapeSize; ++k) {
        const int digit = g_ascii_xdigit_value(text[k]);
        if (digit < 0) {
            return std::nullopt;
        }
        unit = unit * 16 + static_cast<unsigned>(digit);
    }
    return unit;
}

/// What is escaped at `i`: in how many bytes, and whether it has no place in a text. For half of a surrogate
/// pair json-glib would write bytes that are no UTF-8, and a zero would end the text.
struct Escape {
    std::size_t size;
    bool isUnfit;
};
Escape escapeAt(const std::string& text, std::size_t i) {
    const std::optional<unsigned> unit = unitAt(text, i);
    if (!unit || *unit == 0) {
        return {unit ? escapeSize : 2, unit.has_value()};
    }
    if (*unit < 0xD800 || *unit > 0xDFFF) {
        return {escapeSize, false};
    }
    const std::optional<unsigned> next = unitAt(text, i + escapeSize);
    const bool isPair = *unit < 0xDC00 && next && *next >= 0xDC00 && *next <= 0xDFFF;
    return {isPair ? 2 * escapeSize : escapeSize, !isPair};
}

/// A JSON text as json-glib can take it. Throws JsonError for what it would misread in silence or not
/// survive.
std::string digestible(std::string text) {
    int depth = 0;
    std::size_t digits = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        digits = !quoted && g_ascii_isdigit(c) != FALSE ? digits + 1 : 0;
        if (digits > mostDigits) {
            throw JsonError("a number of too many digits");
        }
        if (quoted && c == '\\') {
            const Escape escape = escapeAt(text, i);
            if (escape.isUnfit) {
                text.replace(i, escape.size, R"(\ufffd)");
            }
            i += escape.size - 1;
        } else if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && (c == '[' || c == '{')) {
            if (++depth > deepest) {
                throw JsonError("nested too deeply");
            }
        } else if (!quoted && (c == ']' || c == '}')) {
            --depth;
        }
    }
    return text;
}

JsonNode* newNode(JsonNodeType type) {
    return json_node_new(type);
}

}  // namespace

Json::Json() : Json(newNode(JSON_NODE_NULL)) {}

Json::Json(JsonNode* node) : node_(node != nullptr ? node : newNode(JSON_NODE_NULL), Deleter()) {}

Json::Json(bool value) : Json(newNode(JSON_NODE_VALUE)) {
    json_node_set_boolean(node(), value ? TRUE : FALSE);
}

JsonNode* Json::numberNode(std::int64_t value) {
    return json_node_init_int(json_node_alloc(), value);
}

Json::Json(const std::string& text) : Json(newNode(JSON_NODE_VALUE)) {
    json_node_set_string(node(), sound(text).c_str());
}

Json Json::object(std::initializer_list<Member> members) {
    Json json(newNode(JSON_NODE_OBJECT));
    json_node_take_object(json.node(), json_object_new());
    for (const Member& member : members) {
        json.set(member.first, member.second);
    }
    return json;
}

Json Json::array(const std::vector<Json>& elements) {
    Json json(newNode(JSON_NODE_ARRAY));
    json_node_take_array(json.node(), json_array_new());
    for (const Json& element : elements) {
        json.add(element);
    }
    return json;
}

Json Json::parsed(const std::string& text) {
    const std::string sane = digestible(text);
    GError* error = nullptr;
    JsonNode* const node = json_from_string(sane.c_str(), &error);
    if (error != nullptr) {
        const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
        throw JsonError(error->message);
    }
    return Json(node);
}

bool Json::isNull() const {
    return JSON_NODE_HOLDS_NULL(node());
}

bool Json::isObject() const {
    return JSON_NODE_HOLDS_OBJECT(node());
}

bool Json::isArray() const {
    return JSON_NODE_HOLDS_ARRAY(node());
}

bool Json::isText() const {
    return JSON_NODE_HOLDS_VALUE(node()) && json_node_get_value_type(node()) == G_TYPE_STRING;
}

bool Json::isNumber() const {
    return JSON_NODE_HOLDS_VALUE(node()) && json_node_get_value_type(node()) == G_TYPE_INT64;
}

bool Json::isBool() const {
    return JSON_NODE_HOLDS_VALUE(node()) && json_node_get_value_type(node()) == G_TYPE_BOOLEAN;
}

void Json::set(const std::string& name, const Json& value) {
    json_object_set_member(json_node_get_object(node()), sound(name).c_str(),
                           json_node_copy(value.node()));
}

void Json::add(const Json& value) {
    json_array_add_element(json_node_get_array(node()), json_node_copy(value.node()));
}

Json Json::operator[](const char* name) const {
    if (!isObject() || json_object_has_member(json_node_get_object(node()), name) == FALSE) {
        return {};
    }
    return Json(json_node_copy(json_object_get_member(json_node_get_object(node()), name)));
}

Json Json::at(std::size_t index) const {
    if (index >= size()) {
        return {};
    }
    return Json(json_node_copy(
        json_array_get_element(json_node_get_array(node()), static_cast<guint>(index))));
}

std::size_t Json::size() const {
    return isArray() ? json_array_get_length(json_node_get_array(node())) : 0;
}

std::vector<std::string> Json::names() const {
    std::vector<std::string> names;
    if (isObject()) {
        JsonObjectIter iterator;
        const char* name = nullptr;
        json_object_iter_init_ordered(&iterator, json_node_get_object(node()));
        while (json_object_iter_next_ordered(&iterator, &name, nullptr)) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::string Json::text(const std::string& otherwise) const {
    return isText() ? json_node_get_string(node()) : otherwise;
}

std::int64_t Json::number(std::int64_t otherwise) const {
    return isNumber() ? json_node_get_int(node()) : otherwise;
}

bool Json::truth(bool otherwise) const {
    return isBool() ? json_node_get_boolean(node()) != FALSE : otherwise;
}

std::string Json::written() const {
    const std::unique_ptr<char, decltype(&g_free)> text(json_to_string(node(), FALSE), g_free);
    return text.get();
}

}  // namespace workbench
