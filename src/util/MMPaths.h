// The fixed folders and files of the service, in one place: the platform's image puts them there.
//
// A build for tests and demonstrations defines PORTMELD_PATH_PREFIX, a folder that is put before all
// of them; without it they are the platform's.
#pragma once

#ifndef PORTMELD_PATH_PREFIX
#define PORTMELD_PATH_PREFIX ""
#endif

namespace MMPaths {

/// Message catalogues of the text domain "portmeld".
constexpr const char* LOCALE_DIR = PORTMELD_PATH_PREFIX "/usr/apps/portmeld/res/locale";

/// Folder of the interface description, joined with "/" and its name.
constexpr const char* INTERFACE_DIR = PORTMELD_PATH_PREFIX "/usr/bin";
constexpr const char* INTERFACE_FILE = "portmeld.interface.xml";

/// Videos and pictures of the internal demo.
constexpr const char* INTERNAL_DEMO_DIR = PORTMELD_PATH_PREFIX "/opt/data/demo_movie/";

/// Pictures of the pop-ups.
constexpr const char* ICON_OPEN = PORTMELD_PATH_PREFIX "/usr/apps/portmeld/res/images/i_open.png";
constexpr const char* ICON_CANCEL =
    PORTMELD_PATH_PREFIX "/usr/apps/portmeld/res/images/i_close_cancel.png";
constexpr const char* ICON_CAMERA =
    PORTMELD_PATH_PREFIX "/usr/apps/portmeld/res/images/noti_source_icon_camera.png";
constexpr const char* ICON_USB =
    PORTMELD_PATH_PREFIX "/usr/apps/portmeld/res/images/noti_source_icon_usb.png";

}  // namespace MMPaths
