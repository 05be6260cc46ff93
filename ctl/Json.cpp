// JSON on json-glib, which leaves some control characters as they are when it writes.
#include "Json.h"

#include <utility>

#include "HarmfulCharacters.h"
#include "Text.h"

namespace ctl {

namespace {

struct ObjectDeleter {
    void operator()(void* object) const { g_object_unref(object); }
};

JsonNode* memberOf(const Json& object, const char* name, GType type) {
    JsonNode* const member = json_object_get_member(json_node_get_object(object.get()), name);
    return member != nullptr && json_node_get_value_type(member) == type ? member : nullptr;
}

/// A character as JSON writes it by number: one UTF-16 unit, or two.
std::string byNumber(gunichar character) {
    gunichar2 units[2] = {};
    const bool two = character > 0xFFFF;
    if (two) {
        units[0] = static_cast<gunichar2>(0xD800 + ((character - 0x10000) >> 10));
        units[1] = static_cast<gunichar2>(0xDC00 + ((character - 0x10000) & 0x3FF));
    } else {
        units[0] = static_cast<gunichar2>(character);
    }
    g_autofree char* text = two ? g_strdup_printf("\\u%04x\\u%04x", units[0], units[1])
                                : g_strdup_printf("\\u%04x", units[0]);
    return text;
}

}  // namespace

Json jsonNumber(std::optional<std::int64_t> value) {
    Json node(json_node_new(value ? JSON_NODE_VALUE : JSON_NODE_NULL));
    if (value) {
        json_node_set_int(node.get(), *value);
    }
    return node;
}

Json jsonTruth(bool value) {
    Json node(json_node_new(JSON_NODE_VALUE));
    json_node_set_boolean(node.get(), value ? TRUE : FALSE);
    return node;
}

Json jsonString(const std::optional<std::string>& value) {
    Json node(json_node_new(value ? JSON_NODE_VALUE : JSON_NODE_NULL));
    if (value) {
        json_node_set_string(node.get(), value->c_str());
    }
    return node;
}

Json jsonList(std::vector<Json> items) {
    Json node(json_node_new(JSON_NODE_ARRAY));
    json_node_take_array(node.get(), json_array_new());
    for (Json& item : items) {
        json_array_add_element(json_node_get_array(node.get()), item.release());
    }
    return node;
}

JsonMembers::JsonMembers() : node_(json_node_new(JSON_NODE_OBJECT)) {
    json_node_take_object(node_.get(), json_object_new());
}

JsonMembers& JsonMembers::with(const char* name, Json value) {
    json_object_set_member(json_node_get_object(node_.get()), name, value.release());
    return *this;
}

Json JsonMembers::done() {
    return std::move(node_);
}

std::string jsonText(const Json& value, bool ascii) {
    g_autofree char* written = json_to_string(value.get(), FALSE);
    std::string result;
    // Outside of texts everything is harmless ASCII.
    forEachCharacter(written, [&](char32_t character, std::string_view encoded) {
        if (text::isHarmful(character) || (ascii && character > 0x7F)) {
            result += byNumber(character);
        } else {
            result += encoded;
        }
    });
    return result;
}

Json parsedObject(const std::string& text) {
    const std::unique_ptr<JsonParser, ObjectDeleter> parser(json_parser_new());
    if (json_parser_load_from_data(parser.get(), text.data(), static_cast<gssize>(text.size()),
                                   nullptr) == FALSE) {
        return nullptr;
    }
    Json root(json_parser_steal_root(parser.get()));
    return root != nullptr && JSON_NODE_HOLDS_OBJECT(root.get()) ? std::move(root) : nullptr;
}

std::int64_t numberMember(const Json& object, const char* name) {
    JsonNode* const member = memberOf(object, name, G_TYPE_INT64);
    return member != nullptr ? json_node_get_int(member) : 0;
}

std::string textMember(const Json& object, const char* name) {
    JsonNode* const member = memberOf(object, name, G_TYPE_STRING);
    return member != nullptr ? json_node_get_string(member) : "";
}

}  // namespace ctl
