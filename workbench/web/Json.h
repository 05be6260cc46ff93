// JSON values as C++ values: a thin holder of json-glib's nodes, for building and reading messages. What
// is in the messages is not known here.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <json-glib/json-glib.h>

namespace workbench {

/// A text that is no JSON; says where.
struct JsonError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Json {
public:
    using Member = std::pair<const char*, Json>;

    // Whatever has a form in JSON is a value: messages are written down with it.
    // NOLINTBEGIN(google-explicit-constructor)
    /// null
    Json();
    Json(std::nullptr_t) : Json() {}
    Json(bool value);
    template <
        class Number,
        std::enable_if_t<std::is_integral_v<Number> && !std::is_same_v<Number, bool>, int> = 0>
    Json(Number value) : Json(numberNode(static_cast<std::int64_t>(value))) {}
    /// Bytes that are no UTF-8, and the one control character that json-glib does not escape, are
    /// replaced.
    Json(const std::string& text);
    Json(const char* text) : Json(std::string(text)) {}
    Json(const std::optional<std::string>& text) : Json(text ? Json(*text) : Json()) {}
    // NOLINTEND(google-explicit-constructor)

    /// Takes over a node; null is JSON's null.
    explicit Json(JsonNode* node);

    static Json object(std::initializer_list<Member> members = {});
    static Json array(const std::vector<Json>& elements = {});

    /// Throws JsonError; for texts nested deeper than any message is, and for numbers of more digits than
    /// can be kept, too. A zero and half of a surrogate pair become U+FFFD, as they have no place in
    /// a text.
    static Json parsed(const std::string& text);

    bool isNull() const;
    bool isObject() const;
    bool isArray() const;
    bool isText() const;
    /// A whole number; one with a point or an exponent is none.
    bool isNumber() const;
    bool isBool() const;

    /// Only for objects: set a member.
    void set(const std::string& name, const Json& value);
    /// Only for arrays: add an element.
    void add(const Json& value);

    /// A member; null when there is none, or when this is no object.
    Json operator[](const char* name) const;
    Json operator[](const std::string& name) const { return (*this)[name.c_str()]; }
    /// An element; null when there is none, or when this is no array.
    Json at(std::size_t index) const;
    /// Elements of an array; 0 for anything else.
    std::size_t size() const;
    /// Names of an object's members in their order.
    std::vector<std::string> names() const;

    /// What it holds, or the given value when it holds something else.
    std::string text(const std::string& otherwise = "") const;
    std::int64_t number(std::int64_t otherwise = 0) const;
    bool truth(bool otherwise = false) const;

    /// As JSON text, on one line.
    std::string written() const;

    /// Lent.
    JsonNode* node() const { return node_.get(); }

private:
    static JsonNode* numberNode(std::int64_t value);
    struct Deleter {
        void operator()(JsonNode* node) const { json_node_unref(node); }
    };
    std::shared_ptr<JsonNode> node_;
};

}  // namespace workbench
