// What orders say with numbers: only such as fit everywhere they go are taken.
#include "Order.h"

#include <limits>

#include <glib.h>

namespace workbench {

namespace {

using Limits = std::numeric_limits<int>;

bool fits(std::int64_t number) {
    return number >= Limits::min() && number <= Limits::max();
}

}  // namespace

std::optional<int> wholeNumber(const std::string& word) {
    gint64 number = 0;
    const bool isOne = g_ascii_string_to_signed(word.c_str(), 10, Limits::min(), Limits::max(),
                                                &number, nullptr) != FALSE;
    return isOne ? std::optional(static_cast<int>(number)) : std::nullopt;
}

int wholeNumber(const Json& with, const char* name) {
    const Json value = with[name];
    if (!value.isNumber() || !fits(value.number())) {
        throw OrderError(std::string(name) + " is no number that fits: whole, and of 32 bits");
    }
    return static_cast<int>(value.number());
}

int wholeNumber(const Json& with, const char* name, int otherwise) {
    return with[name].isNull() ? otherwise : wholeNumber(with, name);
}

}  // namespace workbench
