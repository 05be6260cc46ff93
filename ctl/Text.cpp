// Texts on a terminal: harmful characters by number, and widths, as GLib knows them.
#include "Text.h"

#include <memory>

#include <glib.h>

#include "HarmfulCharacters.h"

namespace ctl {

namespace {

using OwnedText = std::unique_ptr<char, decltype(&g_free)>;

}  // namespace

void forEachCharacter(std::string_view text,
                      const std::function<void(char32_t, std::string_view)>& function) {
    while (!text.empty()) {
        const auto first = static_cast<unsigned char>(text.front());
        const auto length =
            static_cast<std::size_t>(static_cast<unsigned char>(g_utf8_skip[first]));
        function(g_utf8_get_char(text.data()), text.substr(0, length));
        text.remove_prefix(length);
    }
}

std::string printable(std::string_view bytes) {
    return text::withoutHarmful(bytes, [](char32_t character) -> std::string {
        const OwnedText number(character > 0xFFFF ? g_strdup_printf("\\U%08x", character)
                                                  : g_strdup_printf("\\u%04x", character),
                               g_free);
        return number.get();
    });
}

std::size_t columnsOf(std::string_view text) {
    std::size_t columns = 0;
    forEachCharacter(text, [&](char32_t character, std::string_view) {
        if (g_unichar_iszerowidth(character) == FALSE) {
            columns += g_unichar_iswide(character) != FALSE ? 2 : 1;
        }
    });
    return columns;
}

std::string padded(const std::string& text, std::size_t columns) {
    const std::size_t taken = columnsOf(text);
    return taken < columns ? text + std::string(columns - taken, ' ') : text;
}

}  // namespace ctl
