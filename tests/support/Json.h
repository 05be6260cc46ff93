// JSON values for the answers of the daemon under test: made from C++ values, printed on one line.
// Nothing here reads JSON, and nothing here is the daemon's own JSON.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <json-glib/json-glib.h>

struct JsonNodeDeleter {
    void operator()(JsonNode* node) const { json_node_unref(node); }
};

/// One JSON value.
using Json = std::unique_ptr<JsonNode, JsonNodeDeleter>;

/// null
Json nothing();
/// A whole number.
Json number(std::int64_t value);
/// A truth value.
Json truth(bool value);
/// A text; bytes that are no UTF-8 are replaced.
Json text(const std::string& value);
/// A text, or null.
Json text(const std::optional<std::string>& value);
/// A list of texts.
Json texts(const std::vector<std::string>& values);

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

/// A list of what `make` makes of each item.
template <class Items, class Make>
Json list(const Items& items, Make make) {
    Json node(json_node_new(JSON_NODE_ARRAY));
    json_node_take_array(node.get(), json_array_new());
    for (const auto& item : items) {
        json_array_add_element(json_node_get_array(node.get()), make(item).release());
    }
    return node;
}

/// The value on one line.
std::string print(const Json& value);
