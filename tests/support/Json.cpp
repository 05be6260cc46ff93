// The JSON values of Json.h, on json-glib.
#include "Json.h"

#include <glib.h>

namespace {

std::string validUtf8(const std::string& bytes) {
    const std::unique_ptr<char, void (*)(void*)> valid(
        g_utf8_make_valid(bytes.data(), static_cast<gssize>(bytes.size())), g_free);
    return valid.get();
}

}  // namespace

Json nothing() {
    return Json(json_node_new(JSON_NODE_NULL));
}

Json number(std::int64_t value) {
    Json node(json_node_new(JSON_NODE_VALUE));
    json_node_set_int(node.get(), value);
    return node;
}

Json truth(bool value) {
    Json node(json_node_new(JSON_NODE_VALUE));
    json_node_set_boolean(node.get(), value ? TRUE : FALSE);
    return node;
}

Json text(const std::string& value) {
    Json node(json_node_new(JSON_NODE_VALUE));
    json_node_set_string(node.get(), validUtf8(value).c_str());
    return node;
}

Json text(const std::optional<std::string>& value) {
    return value ? text(*value) : nothing();
}

Json texts(const std::vector<std::string>& values) {
    return list(values, [](const std::string& value) { return text(value); });
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

std::string print(const Json& value) {
    const std::unique_ptr<char, void (*)(void*)> line(json_to_string(value.get(), FALSE), g_free);
    return line.get();
}
