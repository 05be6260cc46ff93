// From the record to the arguments of Notify.
#include "Popup.h"

#include <algorithm>
#include <limits>

#include "NotificationText.h"

namespace machine {

namespace {

/// The unit of the record's time-out is a second, that of Notify a millisecond.
constexpr int MILLISECONDS = 1'000;
constexpr int MOST_SECONDS = std::numeric_limits<int>::max() / MILLISECONDS - 1;

/// The hint "urgency".
constexpr guchar URGENCY_NORMAL = 1;

std::string uriOf(const char* path) {
    if (path == nullptr || *path == '\0') {
        return "";
    }
    // By name alone: a GFile would bring the machine's virtual file systems into the process, and they wait
    // for the session bus.
    g_autofree char* absolute = g_canonicalize_filename(path, nullptr);
    g_autofree char* uri = g_filename_to_uri(absolute, nullptr, nullptr);
    return uri != nullptr ? uri : "";
}

}  // namespace

Popup::Popup(unsigned number, const NotificationRecord& record)
    : number_(number),
      itemType_(record.nItemType),
      milliseconds_(std::clamp<int>(record.nTimeout, 0, MOST_SECONDS) * MILLISECONDS),
      sender_(harmlessText(record.pSender)),
      title_(harmlessText(record.pTitle)),
      body_(harmlessText(record.pBody)),
      icon_(uriOf(record.pSourceIcon)) {
    const char* const labels[] = {record.pFirstButton, record.pSecondButton};
    for (int button = 0; button < std::min<int>(record.nButtonCount, 2); ++button) {
        if (labels[button] != nullptr) {
            buttons_.emplace_back(button, harmlessText(labels[button]));
        }
    }
}

GVariant* Popup::arguments(std::uint32_t replaces, bool markup, bool actions) const {
    GVariantBuilder keysAndLabels;
    g_variant_builder_init(&keysAndLabels, G_VARIANT_TYPE("as"));
    if (actions) {
        for (const auto& [button, label] : buttons_) {
            g_variant_builder_add(&keysAndLabels, "s", keyOf(button).c_str());
            g_variant_builder_add(&keysAndLabels, "s", label.c_str());
        }
    }
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(URGENCY_NORMAL));
    g_variant_builder_add(
        &hints, "{sv}", "category",
        g_variant_new_string(itemType_ == NOTIFICATION_ITEM_DISCONNECTED ? "device.removed"
                                                                         : "device.added"));
    // No history of questions that nobody can answer any more.
    g_variant_builder_add(&hints, "{sv}", "transient", g_variant_new_boolean(TRUE));
    return g_variant_new("(susssasa{sv}i)", sender_.c_str(), replaces, icon_.c_str(),
                         title_.c_str(), (markup ? escapedForMarkup(body_) : body_).c_str(),
                         &keysAndLabels, &hints, milliseconds_);
}

std::optional<int> Popup::buttonOf(const std::string& key) const {
    for (const auto& [button, label] : buttons_) {
        if (key == keyOf(button)) {
            return button;
        }
    }
    return std::nullopt;
}

/// A server may tell late of the button of a pop-up that had the same id: the key is no other's.
std::string Popup::keyOf(int button) const {
    return std::to_string(number_) + ":" + std::to_string(button);
}

}  // namespace machine
