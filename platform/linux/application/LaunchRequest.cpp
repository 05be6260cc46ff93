// Keeping extra data in order, and writing them down.
#include "LaunchRequest.h"

#include <algorithm>

#include <json-glib/json-glib.h>

namespace machine {

namespace {

std::string valid(const char* text) {
    g_autofree char* made = g_utf8_make_valid(text, -1);
    return made;
}

/// json-glib escapes every control character but one, which no JSON text may hold, and no environment of
/// a service either. Outside of strings there is none.
std::string withoutControlCharacters(const char* json) {
    std::string clean;
    for (const char* byte = json; *byte != '\0'; ++byte) {
        if (*byte == '\x1F') {
            clean += "\\u001f";
        } else {
            clean += *byte;
        }
    }
    return clean;
}

}  // namespace

void LaunchRequest::set(const char* key, const char* value) {
    const std::string name = valid(key);
    extraData.erase(std::remove_if(extraData.begin(), extraData.end(),
                                   [&](const auto& item) { return item.first == name; }),
                    extraData.end());
    extraData.emplace_back(name, valid(value));
}

std::string LaunchRequest::json() const {
    g_autoptr(JsonObject) object = json_object_new();
    for (const auto& [key, value] : extraData) {
        json_object_set_string_member(object, key.c_str(), value.c_str());
    }
    g_autoptr(JsonNode) node = json_node_new(JSON_NODE_OBJECT);
    json_node_set_object(node, object);
    g_autofree char* text = json_to_string(node, FALSE);
    return withoutControlCharacters(text);
}

std::string LaunchRequest::environmentEntry() const {
    return std::string(VARIABLE) + "=" + json();
}

GVariant* LaunchRequest::dictionary() const {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
    for (const auto& [key, value] : extraData) {
        g_variant_builder_add(&builder, "{ss}", key.c_str(), value.c_str());
    }
    return g_variant_builder_end(&builder);
}

}  // namespace machine
