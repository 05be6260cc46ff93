// Text for a terminal: what is harmless, how wide it is, where it may be broken.
#include "Text.h"

#include <memory>

#include <glib.h>

#include "HarmfulCharacters.h"

namespace workbench {

namespace {

using OwnedText = std::unique_ptr<char, decltype(&g_free)>;

/// Marks that order or isolate, or allow a hyphen: without them the same text is read.
bool isLeftOut(char32_t character) {
    return character == 0x00AD || character == 0x061C || character == 0x200E ||
           character == 0x200F || character == 0xFEFF ||
           (character >= 0x2066 && character <= 0x2069);
}

int columnsOfCharacter(gunichar character) {
    if (g_unichar_iszerowidth(character)) {
        return 0;
    }
    return g_unichar_iswide(character) ? 2 : 1;
}

/// Walks over the characters of valid UTF-8: function(character, bytes of it) returns whether to go on.
template <typename Function>
void forEachCharacter(std::string_view text, Function function) {
    while (!text.empty()) {
        const std::size_t length =
            static_cast<unsigned char>(g_utf8_skip[static_cast<unsigned char>(text.front())]);
        if (!function(g_utf8_get_char(text.data()), text.substr(0, length))) {
            return;
        }
        text.remove_prefix(length);
    }
}

/// The longest beginning that fits, in bytes; at least one character, so that a caller gets on.
std::size_t fitting(std::string_view text, int columns) {
    std::size_t bytes = 0;
    int used = 0;
    forEachCharacter(text, [&](gunichar character, std::string_view encoded) {
        used += columnsOfCharacter(character);
        if (used > columns && bytes != 0) {
            return false;
        }
        bytes += encoded.size();
        return true;
    });
    return bytes;
}

}  // namespace

std::string printable(std::string_view bytes) {
    return text::withoutHarmful(bytes, [](char32_t character) -> std::string {
        if (isLeftOut(character)) {
            return "";
        }
        const OwnedText number(g_strdup_printf("<U+%04X>", character), g_free);
        return number.get();
    });
}

int columnsOf(std::string_view text) {
    int columns = 0;
    forEachCharacter(text, [&](gunichar character, std::string_view) {
        columns += columnsOfCharacter(character);
        return true;
    });
    return columns;
}

std::string clipped(std::string_view text, int columns) {
    if (columns <= 0) {
        return {};
    }
    if (columnsOf(text) <= columns) {
        return std::string(text);
    }
    if (columns == 1) {
        return "…";
    }
    return std::string(text.substr(0, fitting(text, columns - 1))) + "…";
}

std::vector<std::string> wrapped(std::string_view text, int columns) {
    std::vector<std::string> lines;
    while (columnsOf(text) > columns) {
        std::size_t end = fitting(text, columns);
        std::size_t next = end;
        // A blank just behind the line is as good a place as one within it.
        const std::size_t blank = text.rfind(' ', end);
        if (blank != std::string_view::npos && blank > 0) {
            end = blank;
            next = blank + 1;
        }
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(next);
    }
    if (!text.empty() || lines.empty()) {
        lines.emplace_back(text);
    }
    return lines;
}

std::string repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

}  // namespace workbench
