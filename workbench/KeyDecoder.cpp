// From bytes to keys: escape sequences and multi-byte characters become one key each.
#include "KeyDecoder.h"

namespace workbench {

namespace {

constexpr char escape = '\033';
constexpr char endOfTransmission = 4;  // Ctrl-D

bool isWhiteSpace(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

bool isFirstOfMany(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0xC0;
}
bool isLaterOfMany(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The length of the escape sequence at the beginning, 1 for a mere escape character, 0 when its end is
/// not there yet.
std::size_t lengthOfSequence(std::string_view bytes) {
    if (bytes.size() == 1) {
        return 0;
    }
    if (bytes[1] == 'O') {
        return bytes.size() > 2 ? 3 : 0;
    }
    if (bytes[1] != '[') {
        return 1;
    }
    for (std::size_t i = 2; i < bytes.size(); ++i) {
        if (bytes[i] >= '@' && bytes[i] <= '~') {
            return i + 1;
        }
    }
    return 0;
}

int keyOf(char byte) {
    if (byte == '\r') {
        return KeyEnter;
    }
    if (byte == endOfTransmission) {
        return KeyEnd;
    }
    return isFirstOfMany(byte) ? static_cast<int>(KeyOther) : byte;
}

}  // namespace

std::vector<int> KeyDecoder::decode(std::string_view bytes) {
    const std::string all = rest_ + std::string(bytes);
    rest_.clear();
    std::vector<int> keys;
    for (std::size_t at = 0; at < all.size();) {
        if (all[at] == escape) {
            const std::size_t length = lengthOfSequence(std::string_view(all).substr(at));
            if (length == 0) {
                rest_ = all.substr(at);
                break;
            }
            keys.push_back(length == 1 ? KeyEscape : KeyOther);
            at += length;
            continue;
        }
        if (!isLaterOfMany(all[at])) {
            keys.push_back(keyOf(all[at]));
        }
        ++at;
    }
    return keys;
}

std::vector<int> KeyDecoder::giveUpWaiting() {
    std::vector<int> keys;
    if (!rest_.empty()) {
        keys.push_back(rest_.size() == 1 ? KeyEscape : KeyOther);
    }
    rest_.clear();
    return keys;
}

std::vector<int> keysOfPipe(std::string_view bytes) {
    std::vector<int> keys;
    for (const char byte : bytes) {
        if (!isWhiteSpace(byte) && !isLaterOfMany(byte)) {
            keys.push_back(keyOf(byte));
        }
    }
    return keys;
}

}  // namespace workbench
