// One pop-up as the daemon asked for it, and as the arguments of the call Notify of
// org.freedesktop.Notifications. Whether it is shown is not known here.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include <platform/notification.h>

namespace machine {

class Popup {
public:
    /// A pop-up with harmless copies of the record's texts.
    /// @param number  different for each pop-up of this process
    Popup(unsigned number, const NotificationRecord& record);

    unsigned number() const { return number_; }

    /// One of NOTIFICATION_ITEM_...
    int itemType() const { return itemType_; }

    /// How long it may stand; 0 = until somebody ends it.
    int milliseconds() const { return milliseconds_; }

    /// The arguments of Notify, a floating reference.
    /// @param replaces  the id whose place it takes, or 0
    /// @param markup    whether the server reads the body as markup
    /// @param actions   whether the server has buttons
    GVariant* arguments(std::uint32_t replaces, bool markup, bool actions) const;

    /// The button whose key this is; nothing for keys of other pop-ups.
    std::optional<int> buttonOf(const std::string& key) const;

private:
    std::string keyOf(int button) const;

    unsigned number_;
    int itemType_;
    int milliseconds_;
    std::string sender_;
    std::string title_;
    std::string body_;
    std::string icon_;                                  ///< as a URI, or ""
    std::vector<std::pair<int, std::string>> buttons_;  ///< which, and its label
};

}  // namespace machine
