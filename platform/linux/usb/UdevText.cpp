// Decoding the texts of the udev database.
#include "UdevText.h"

#include <glib.h>

namespace machine {

std::string decodeUdev(const std::string& encoded) {
    std::string text;
    for (std::size_t at = 0; at < encoded.size(); ++at) {
        if (encoded.compare(at, 2, "\\x") == 0 && at + 3 < encoded.size()) {
            const int high = g_ascii_xdigit_value(encoded[at + 2]);
            const int low = g_ascii_xdigit_value(encoded[at + 3]);
            const int byte = high * 16 + low;
            if (high >= 0 && low >= 0 && byte != 0) {
                text += static_cast<char>(byte);
                at += 3;
                continue;
            }
        }
        text += encoded[at];
    }
    return text;
}

}  // namespace machine
