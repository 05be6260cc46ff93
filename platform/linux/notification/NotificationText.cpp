// Which characters go, which become blanks.
#include "NotificationText.h"

#include <glib.h>

namespace machine {

namespace {

/// Unicode Standard Annex #9, explicit directional isolates.
constexpr const char* FIRST_STRONG_ISOLATE = "\u2068";
constexpr const char* POP_DIRECTIONAL_ISOLATE = "\u2069";

bool changesDirection(gunichar character) {
    return (character >= 0x202A && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

bool endsLine(gunichar character) {
    return g_unichar_iscntrl(character) != FALSE || character == 0x2028 || character == 0x2029;
}

}  // namespace

std::string harmlessText(const char* text) {
    if (text == nullptr) {
        return "";
    }
    g_autofree char* made = g_utf8_make_valid(text, -1);
    const std::string valid = made;
    const std::size_t opening = valid.find(FIRST_STRONG_ISOLATE);
    std::size_t closing = std::string::npos;
    if (opening != std::string::npos) {
        const std::size_t last = valid.rfind(POP_DIRECTIONAL_ISOLATE);
        closing = last != std::string::npos && last > opening ? last : std::string::npos;
    }
    std::string harmless;
    for (std::size_t offset = 0; offset < valid.size();) {
        const char* const here = valid.c_str() + offset;
        const gunichar character = g_utf8_get_char(here);
        const auto length =
            static_cast<unsigned char>(g_utf8_skip[static_cast<unsigned char>(*here)]);
        if (endsLine(character)) {
            harmless += ' ';
        } else if (!changesDirection(character) || offset == opening || offset == closing) {
            harmless.append(here, length);
        }
        offset += length;
    }
    if (opening != std::string::npos && closing == std::string::npos) {
        harmless += POP_DIRECTIONAL_ISOLATE;
    }
    return harmless;
}

std::string escapedForMarkup(const std::string& text) {
    g_autofree char* escaped = g_markup_escape_text(text.c_str(), static_cast<gssize>(text.size()));
    return escaped;
}

}  // namespace machine
