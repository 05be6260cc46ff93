// The record that a television's notification service gets: 88 bytes on its 32 bits, every word at its
// offset. What the pop-ups say is the subject of other files.
#include <platform/notification.h>

#include "PopupTest.h"
#include "RecordBytes.h"

namespace {

class NotificationRecordTest : public PopupTest {
protected:
    /// The words of the only record that was handed over.
    RecordBytes::Words onlyRecord() const {
        EXPECT_EQ(bytes.records().size(), 1U);
        return bytes.records().empty() ? RecordBytes::Words{} : bytes.records().front();
    }

    static std::string image(const std::string& offset, const std::string& name) {
        return offset + "=\"" + tvPath("/usr/apps/portmeld/res/images/") + name + '"';
    }

    /// A connection pop-up, of which three words differ.
    static RecordBytes::Words connectionPopup(const std::string& itemType,
                                              const std::string& body,
                                              const std::string& firstButton) {
        return {"0=1",
                "4=1",
                "8=2",
                "12=\"portmeld\"",
                "16=" + itemType,
                "20=0",
                "24=30",
                "28=0",
                "32=\"TV_SID_MIX_NEW_DEVICE_CONNECTED\"",
                "36=\"" + body + '"',
                image("40", "noti_source_icon_usb.png"),
                "44=0",
                "48=0",
                "52=0",
                "56=2",
                "60=0",
                "64=\"" + firstButton + '"',
                "68=\"COM_SID_CANCEL\"",
                "72=0",
                image("76", "i_open.png"),
                image("80", "i_close_cancel.png"),
                "84=0"};
    }

    /// A removal notice.
    static RecordBytes::Words removalNotice(const std::string& title, const std::string& icon) {
        return {"0=1",
                "4=1",
                "8=2",
                "12=\"portmeld\"",
                "16=2",
                "20=0",
                "24=3",
                "28=0",
                "32=\"" + title + '"',
                "36=\"TV_SID_DEVICE_BEEN_DISCONNECTED\"",
                icon,
                "44=0",
                "48=0",
                "52=0",
                "56=0",
                "60=0",
                "64=null",
                "68=null",
                "72=0",
                "76=null",
                "80=null",
                "84=0"};
    }

    RecordBytes bytes;
};

TEST_F(NotificationRecordTest, HasEightyEightBytesWhereAPointerHasFour) {
    EXPECT_EQ(sizeof(NotificationRecord), sizeof(void*) == 4 ? 88U : 136U);
    EXPECT_EQ(sizeof(NotificationRecord), RecordBytes::size());
}

TEST_F(NotificationRecordTest, OfABrowsePopUpHasEveryWordAtItsOffset) {
    plug();
    EXPECT_EQ(onlyRecord(),
              connectionPopup("1", "TV_SID_WOULD_U_LIKE_BROWSE_FILES", "COM_COMMONCTRL_BROWSE"));
}

TEST_F(NotificationRecordTest, OfAPlayPopUpHasEveryWordAtItsOffset) {
    plug();
    reportScan(videoJson());
    ASSERT_EQ(bytes.records().size(), 2U);
    EXPECT_EQ(bytes.records().back(),
              connectionPopup("0",
                              "COM_SID_FILE_DETECTED_ON_THIS_DEVICE TV_SID_LIKE_TO_PLAY_FILE "
                              "COM_SID_MIX_FILE_NAME_COLON",
                              "SID_PLAY"));
}

TEST_F(NotificationRecordTest, OfARemovalNoticeHasEveryWordAtItsOffsetAndNoButtons) {
    pull(plugProduct("My stick"));
    ASSERT_EQ(bytes.records().size(), 2U);
    EXPECT_EQ(bytes.records().back(),
              removalNotice("My stick", image("40", "noti_source_icon_usb.png")));
}

TEST_F(NotificationRecordTest, OfANoticeWithoutAnIconHasNoAddressThere) {
    tv.settings().set("memory/portmeld/removed_dlna_device", "Server");
    tv.settle();
    EXPECT_EQ(onlyRecord(), removalNotice("Server", "40=null"));
}

}  // namespace
