// Harmful characters by their Unicode category, as GLib knows it.
#include "HarmfulCharacters.h"

#include <memory>

#include <glib.h>

namespace text {

namespace {

constexpr char32_t zeroWidthNonJoiner = 0x200C;
constexpr char32_t zeroWidthJoiner = 0x200D;

}  // namespace

bool isHarmful(char32_t character) {
    switch (g_unichar_type(character)) {
        case G_UNICODE_CONTROL:
        case G_UNICODE_LINE_SEPARATOR:
        case G_UNICODE_PARAGRAPH_SEPARATOR:
        case G_UNICODE_SURROGATE:
        case G_UNICODE_UNASSIGNED:
        case G_UNICODE_PRIVATE_USE:
            return true;
        case G_UNICODE_FORMAT:
            // Joiners are letters' business in many scripts.
            return character != zeroWidthNonJoiner && character != zeroWidthJoiner;
        default:
            return false;
    }
}

std::string withoutHarmful(std::string_view bytes,
                           const std::function<std::string(char32_t)>& shown) {
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(bytes.data(), static_cast<gssize>(bytes.size())), g_free);
    std::string result;
    for (char* at = valid.get(); *at != '\0';) {
        const char32_t character = g_utf8_get_char(at);
        char* const next = g_utf8_next_char(at);
        if (isHarmful(character)) {
            result += shown(character);
        } else {
            result.append(at, next);
        }
        at = next;
    }
    return result;
}

}  // namespace text
