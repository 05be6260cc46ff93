// Names that the service and the rest of the TV know each other by: itself, applications, settings, files.
#pragma once

namespace MMNames {

/// The service itself: text domain, sender of notifications, and caller of the companion application.
constexpr const char* SELF = "portmeld";

/// Its name on the system bus.
constexpr const char* BUS_NAME = "com.norvane.portmeld";

// Applications.
constexpr const char* APP_LUMET = "org.norvane.lumet";          ///< companion UI application
constexpr const char* APP_FOLIAN = "org.quillon.folian";        ///< content browser
constexpr const char* APP_VIDREEL = "org.norvane.vidreel";      ///< video player
constexpr const char* APP_PICREEL = "org.norvane.picreel";      ///< photo player
constexpr const char* APP_SHOPREEL = "org.norvane.shopreel";    ///< demo player for a USB demo file
constexpr const char* APP_FLOORREEL = "org.norvane.floorreel";  ///< internal demo player

// Settings.
constexpr const char* KEY_LANGUAGE = "db/menu_widget/language";   ///< text: the menu language
constexpr const char* KEY_USE_MODE = "db/menu/support/use_mode";  ///< number: 1 = shop mode
constexpr const char* KEY_DEMO_MODE = "db/floorreel/demo_mode";   ///< number: -1 = no internal demo
constexpr const char* KEY_REMOVED_DLNA_DEVICE =
    "memory/portmeld/removed_dlna_device";  ///< text: a media server's name
constexpr const char* KEY_REMOVED_DLNA_ICON =
    "memory/portmeld/removed_dlna_device_icon_path";  ///< text: its picture

/// Demo video at the root of a shop's stick.
constexpr const char* USB_DEMO_FILE = "DEMO_LED.tp";

}  // namespace MMNames
