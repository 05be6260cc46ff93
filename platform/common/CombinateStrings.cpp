// Filling the placeholders of a message, as <platform/i18n.h> promises it. Looking messages up is
// the C library's business, choosing their language CatalogueBinding's.
#include <platform/i18n.h>

#include <array>
#include <cstring>
#include <string>

namespace {

constexpr std::size_t PLACEHOLDER_LENGTH = 3;  // "{1}"

/// The longest beginning of `text` of at most `limit` bytes that ends between two UTF-8 characters.
/// Bytes that form no character may be cut anywhere.
std::size_t cutAtCharacter(const std::string& text, std::size_t limit) {
    const auto continues = [&](std::size_t at) {
        return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
    };
    constexpr std::size_t MOST_CONTINUATIONS = 3;
    std::size_t cut = limit;
    while (cut > 0 && limit - cut < MOST_CONTINUATIONS && continues(cut)) {
        --cut;
    }
    return continues(cut) ? limit : cut;
}

}  // namespace

bool CStringUtil::CombinateStrings(char* out,
                                   int maxLength,
                                   const char* format,
                                   const char* a1,
                                   const char* a2,
                                   const char* a3,
                                   const char* a4) {
    if (out == nullptr || maxLength < 0) {
        return false;
    }
    const auto limit = static_cast<std::size_t>(maxLength);
    const std::array<const char*, 4> arguments = {a1, a2, a3, a4};
    std::string text;
    // One byte more than the limit tells that the text does not fit; the rest need not be composed.
    const char* from = format != nullptr ? format : "";
    while (*from != '\0' && text.size() <= limit) {
        if (from[0] == '{' && from[1] >= '1' && from[1] <= '4' && from[2] == '}') {
            const char* argument = arguments[static_cast<std::size_t>(from[1] - '1')];
            if (argument != nullptr) {
                text.append(argument, strnlen(argument, limit + 1));
            }
            from += PLACEHOLDER_LENGTH;
        } else {
            text += *from++;
        }
    }
    const bool fits = text.size() <= limit;
    const std::size_t length = fits ? text.size() : cutAtCharacter(text, limit);
    std::memcpy(out, text.data(), length);
    out[length] = '\0';
    return fits;
}
