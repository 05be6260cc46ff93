// Beginning and end of the daemon on the TV, and what holds for everything that it shows and launches.
#include "Television.h"

#include <libintl.h>

#include <cstring>
#include <optional>

#include <glib.h>

#include "Harness.h"
#include "MMLogger.h"
#include "NotificationText.h"

namespace {

/// As in the English catalogue: with the place for the name. All other texts are their ids.
constexpr const char* SHOWN[][2] = {
    {"TV_SID_MIX_NEW_DEVICE_CONNECTED", "New device connected: {1}"},
    {"COM_SID_MIX_FILE_NAME_COLON", "File name: {1}"},
};

/// Longest message with a name in it.
constexpr std::size_t MESSAGE_LIMIT = 255;

/// What the service manager and the bus are told of.
constexpr const char* DESCRIPTION = "root/usr/bin/portmeld.interface.xml";

}  // namespace

/// In place of the C library's: a harness has no catalogue.
extern "C" char* dgettext(const char* domain, const char* id) noexcept {
    (void)domain;
    for (const auto& [known, text] : SHOWN) {
        if (std::strcmp(id, known) == 0) {
            return const_cast<char*>(text);
        }
    }
    return const_cast<char*>(id);
}

namespace fuzz {

Television::Television() : mgr_(CMMDeviceMgr::GetInstance()) {
    // Nobody reads what happened before.
    tv.journal().setLimit(1);
    tv.advanceSeconds(30);
}

Television::~Television() {
    if (server_ != nullptr) {
        server_->Destroy();
        CMMDeviceDbusServer::DestroyInstance();
    }
    mgr_->Destroy();
    CMMDeviceMgr::DestroyInstance();
    CMMLogService::Get()->Destroy();
    tv.settle();
    tv.checkLeaks();
    for (const std::string& breach : tv.journal().breaches()) {
        require(false, "the daemon keeps the platform's contract", breach);
    }
}

bool Television::serve(const std::string& interfaceDescription) {
    static std::optional<std::string> written;
    if (written != interfaceDescription) {
        writeFile(DESCRIPTION, interfaceDescription);
        written = interfaceDescription;
    }
    server_ = CMMDeviceDbusServer::GetInstance();
    if (server_ != nullptr) {
        bus.acquireBus();
    }
    return server_ != nullptr;
}

const std::string& installedDescription() {
    static const std::string text = [] {
        g_autofree char* content = nullptr;
        require(g_file_get_contents(PORTMELD_INTERFACE, &content, nullptr, nullptr) != FALSE,
                "the interface description can be read", PORTMELD_INTERFACE);
        return std::string(content);
    }();
    return text;
}

void requireShowable(const simulated::Popup& popup) {
    for (const auto& text : {popup.title, popup.body}) {
        require(text.has_value(), "a pop-up has a title and a body");
        requireText(*text, "a pop-up's text");
        const std::string shown = machine::harmlessText(text->c_str());
        requireText(shown, "a pop-up's text on a Linux machine");
        for (const char byte : shown) {
            require(g_ascii_iscntrl(byte) == FALSE, "a pop-up is one line", shown);
        }
        GMarkupParser nothing = {};
        g_autoptr(GMarkupParseContext) markup =
            g_markup_parse_context_new(&nothing, GMarkupParseFlags{}, nullptr, nullptr);
        const std::string escaped = "<t>" + machine::escapedForMarkup(shown) + "</t>";
        require(
            g_markup_parse_context_parse(markup, escaped.data(),
                                         static_cast<gssize>(escaped.size()), nullptr) != FALSE &&
                g_markup_parse_context_end_parse(markup, nullptr) != FALSE,
            "a pop-up's body is markup without a tag", escaped);
    }
    if (popup.itemType != NOTIFICATION_ITEM_DISCONNECTED) {
        require(popup.title->size() <= MESSAGE_LIMIT, "a title has its limit", *popup.title);
    }
}

void requireValidLaunch(const simulated::Launch& launch) {
    for (const auto& [key, value] : launch.extraData) {
        requireText(value, key.c_str());
    }
}

}  // namespace fuzz
