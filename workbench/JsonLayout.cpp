// JSON for people: parsing, and packing members into lines.
#include "JsonLayout.h"

#include <functional>
#include <memory>

#include <json-glib/json-glib.h>

#include "Text.h"

namespace workbench {

namespace {

using Lines = std::vector<std::string>;
using OwnedText = std::unique_ptr<char, decltype(&g_free)>;
using OwnedNode = std::unique_ptr<JsonNode, decltype(&json_node_unref)>;

constexpr int indentation = 2;

std::string written(JsonNode* node) {
    const OwnedText text(json_to_string(node, FALSE), g_free);
    return printable(text.get());
}

std::string quoted(const char* name) {
    const OwnedNode node(json_node_init_string(json_node_alloc(), name), json_node_unref);
    return written(node.get());
}

/// Calls function(what stands before the value, value) for each child of an object or array.
void forEachChild(JsonNode* node,
                  const std::function<void(const std::string&, JsonNode*)>& function) {
    if (JSON_NODE_HOLDS_OBJECT(node)) {
        JsonObjectIter iterator;
        const char* name = nullptr;
        JsonNode* value = nullptr;
        json_object_iter_init_ordered(&iterator, json_node_get_object(node));
        while (json_object_iter_next_ordered(&iterator, &name, &value)) {
            function(quoted(name) + ": ", value);
        }
        return;
    }
    JsonArray* const array = json_node_get_array(node);
    for (guint i = 0; i < json_array_get_length(array); ++i) {
        function("", json_array_get_element(array, i));
    }
}

/// The node in one line if that is not wider than `columns`, else opening, contents, closing.
Lines laidOut(JsonNode* node, int columns) {
    if (!JSON_NODE_HOLDS_OBJECT(node) && !JSON_NODE_HOLDS_ARRAY(node)) {
        return {written(node)};
    }
    const int within = columns - indentation;
    Lines contents;
    bool open = false;  // the last line of the contents can take more
    forEachChild(node, [&](const std::string& before, JsonNode* value) {
        Lines lines = laidOut(value, within - columnsOf(before) - 1);
        lines.front() = before + lines.front();
        if (!contents.empty()) {
            contents.back() += ",";
        }
        const bool single = lines.size() == 1;
        if (open && single &&
            columnsOf(contents.back()) + 1 + columnsOf(lines.front()) + 1 <= within) {
            contents.back() += " " + lines.front();
        } else {
            contents.insert(contents.end(), lines.begin(), lines.end());
        }
        open = single;
    });
    const char* const opening = JSON_NODE_HOLDS_OBJECT(node) ? "{" : "[";
    const char* const closing = JSON_NODE_HOLDS_OBJECT(node) ? "}" : "]";
    if (contents.empty()) {
        return {std::string(opening) + closing};
    }
    if (contents.size() == 1 && columnsOf(contents.front()) + 2 <= columns) {
        return {opening + contents.front() + closing};
    }
    Lines lines{opening};
    for (const std::string& line : contents) {
        lines.push_back(repeated(" ", indentation) + line);
    }
    lines.emplace_back(closing);
    return lines;
}

/// The parsed text; null when it is no object or array.
OwnedNode parsed(const std::string& text) {
    OwnedNode root(json_from_string(text.c_str(), nullptr), json_node_unref);
    if (root && !JSON_NODE_HOLDS_OBJECT(root.get()) && !JSON_NODE_HOLDS_ARRAY(root.get())) {
        root.reset();
    }
    return root;
}

}  // namespace

Lines laidOutJson(const std::string& text, int columns) {
    const OwnedNode root = parsed(text);
    return root ? laidOut(root.get(), columns) : wrapped(printable(text), columns);
}

bool isJson(const std::string& text) {
    return parsed(text) != nullptr;
}

}  // namespace workbench
