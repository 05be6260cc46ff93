// Making foreign bytes fit for bus, notifications and launch requests; see MMUtf8.h.
#include "MMUtf8.h"

#include <glib.h>

std::string MMString(const char* pText) {
    return pText != nullptr ? pText : "";
}

std::string MMValidUtf8(const std::string& text) {
    g_autofree char* pValid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    return pValid;
}

std::string MMJsonUtf8(const std::string& text) {
    std::string valid = MMValidUtf8(text);
    for (std::size_t at = 0; (at = valid.find('\x1f', at)) != std::string::npos;) {
        valid.replace(at, 1, "\xef\xbf\xbd");
    }
    return valid;
}
