// What a launch said, as it came: texts by key, in the order in which they were last set. The data of
// earlier launches, of other applications too, come along; what is meant is told by the order.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <json-glib/json-glib.h>

namespace handlers {

/// The launch data ask for something that cannot be done; the message says what is wrong with them.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct JsonNodeUnref {
    void operator()(JsonNode* node) const { json_node_unref(node); }
};

class LaunchData {
public:
    /// @param json  one object of texts; throws Refusal for anything else
    explicit LaunchData(const std::string& json);

    /// The text of a key; throws Refusal when it was never set.
    const std::string& at(const std::string& key) const;

    /// Whether a key was set, and after another one, or that one never.
    bool isNewer(const std::string& key, const std::string& other) const;

private:
    using Item = std::pair<std::string, std::string>;
    std::vector<Item>::const_iterator find(const std::string& key) const;

    std::vector<Item> items_;
};

/// Read a text that must be one JSON object. Throws Refusal, naming `what` it was.
std::unique_ptr<JsonNode, JsonNodeUnref> readObject(const std::string& json,
                                                    const std::string& what);

/// A member that must be a text, or null when there is none of this name. Borrowed.
const char* textOf(JsonObject* object, const char* member);

}  // namespace handlers
