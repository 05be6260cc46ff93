// The fixed folders and files, compiled as a TV's own build compiles them: nothing stands before
// them.
#include <gtest/gtest.h>

#include "MMPaths.h"

namespace {

TEST(PathsTest, WithoutAPrefixEveryPathIsThePlatforms) {
    EXPECT_STREQ(MMPaths::LOCALE_DIR, "/usr/apps/portmeld/res/locale");
    EXPECT_STREQ(MMPaths::INTERFACE_DIR, "/usr/bin");
    EXPECT_STREQ(MMPaths::INTERFACE_FILE, "portmeld.interface.xml");
    EXPECT_STREQ(MMPaths::INTERNAL_DEMO_DIR, "/opt/data/demo_movie/");
    EXPECT_STREQ(MMPaths::ICON_OPEN, "/usr/apps/portmeld/res/images/i_open.png");
    EXPECT_STREQ(MMPaths::ICON_CANCEL, "/usr/apps/portmeld/res/images/i_close_cancel.png");
    EXPECT_STREQ(MMPaths::ICON_CAMERA, "/usr/apps/portmeld/res/images/noti_source_icon_camera.png");
    EXPECT_STREQ(MMPaths::ICON_USB, "/usr/apps/portmeld/res/images/noti_source_icon_usb.png");
}

}  // namespace
