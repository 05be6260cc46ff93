// Reading launch data, which anybody may have written.
#include "LaunchData.h"

#include <algorithm>

namespace handlers {

namespace {

/// json-glib goes one call deeper for each level, until the stack ends.
constexpr int DEEPEST = 100;

bool nestsTooDeep(const std::string& json) {
    int depth = 0;
    bool quoted = false;
    for (std::size_t at = 0; at < json.size(); ++at) {
        const char byte = json[at];
        if (quoted) {
            if (byte == '\\') {
                ++at;
            } else if (byte == '"') {
                quoted = false;
            }
        } else if (byte == '"') {
            quoted = true;
        } else if (byte == '{' || byte == '[') {
            if (++depth > DEEPEST) {
                return true;
            }
        } else if (byte == '}' || byte == ']') {
            --depth;
        }
    }
    return false;
}

}  // namespace

std::unique_ptr<JsonNode, JsonNodeUnref> readObject(const std::string& json,
                                                    const std::string& what) {
    if (g_utf8_validate(json.data(), static_cast<gssize>(json.size()), nullptr) == FALSE) {
        throw Refusal(what + " are not UTF-8");
    }
    if (nestsTooDeep(json)) {
        throw Refusal(what + " are nested too deep");
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
