// The notice that a device went away: what it says, what suppresses it, and media servers that go away
// from the network.
#include "PopupTest.h"

namespace {

using simulated::DeviceId;
using simulated::Fault;
using simulated::UsbDevice;

const std::string nameKey = "memory/portmeld/removed_dlna_device";
const std::string iconKey = "memory/portmeld/removed_dlna_device_icon_path";

class RemovalNoticeTest : public PopupTest {
protected:
    /// Titles of all removal notices so far.
    Texts notices() {
        Texts titles;
        for (const simulated::Popup& popup : tv.screen().history()) {
            if (popup.itemType == 2) {
                titles.push_back(popup.title.value_or("(none)"));
            }
        }
        return titles;
    }
    void serverGone(const std::string& name) {
        tv.settings().set(nameKey, name.c_str());
        tv.settle();
    }
};

// ---- the record, word by word

void expectNotice(const simulated::Popup& popup, const std::string& title) {
    EXPECT_EQ(popup.word0, 1);
    EXPECT_EQ(popup.word4, 1);
    EXPECT_EQ(popup.word8, 2);
    EXPECT_EQ(popup.sender, "portmeld");
    EXPECT_EQ(popup.itemType, 2);
    EXPECT_EQ(popup.timeout, 3);
    EXPECT_EQ(popup.title, title);
    EXPECT_EQ(popup.body, "TV_SID_DEVICE_BEEN_DISCONNECTED");
    EXPECT_EQ(popup.buttonCount, 0);
    EXPECT_EQ(popup.firstButton, std::nullopt);
    EXPECT_EQ(popup.secondButton, std::nullopt);
    EXPECT_EQ(popup.firstButtonIcon, std::nullopt);
    EXPECT_EQ(popup.secondButtonIcon, std::nullopt);
    EXPECT_TRUE(popup.reservedAreZero);
}

TEST_F(RemovalNoticeTest, OfAStickHasItsRecordWordByWord) {
    pull(plugProduct("My stick"));
    ASSERT_EQ(notices(), Texts{"My stick"});
    expectNotice(last(), "My stick");
    EXPECT_EQ(last().sourceIcon, tvPath("/usr/apps/portmeld/res/images/noti_source_icon_usb.png"));
}

TEST_F(RemovalNoticeTest, OfACameraHasTheCamerasIcon) {
    pull(plugCamera("My camera"));
    ASSERT_EQ(notices(), Texts{"My camera"});
    expectNotice(last(), "My camera");
    EXPECT_EQ(last().sourceIcon,
              tvPath("/usr/apps/portmeld/res/images/noti_source_icon_camera.png"));
}

TEST_F(RemovalNoticeTest, OfAMediaServerHasTheServersIcon) {
    tv.settings().set(iconKey, "/icons/server.png");
    serverGone("My server");
    ASSERT_EQ(notices(), Texts{"My server"});
    expectNotice(last(), "My server");
    EXPECT_EQ(last().sourceIcon, "/icons/server.png");
}

TEST_F(RemovalNoticeTest, NamesTheDeviceWithoutItsNumber) {
    plugProduct("P");
    const DeviceId second = plugProduct("P");
    ASSERT_EQ(record(second)->GetDisplayName(), "P(2&#x202d;)");
    pull(second);
    EXPECT_EQ(notices(), Texts{"P"});
}

TEST_F(RemovalNoticeTest, OfALongNameIsWholeAndNoFormat) {
    const std::string name = std::string(400, 'x') + "%s%n{1}";
    pull(plugProduct(name));
    EXPECT_EQ(notices(), Texts{name});
}

TEST_F(RemovalNoticeTest, OfADeviceThatWasNeverListedTakesNameAndIconFromTheHandle) {
    UsbDevice stick;
    stick.product = "Never listed";
    const DeviceId id = tv.ports().insert(stick);
    pull(id);
    EXPECT_EQ(notices(), Texts{"Never listed"});
    EXPECT_EQ(last().sourceIcon, tvPath("/usr/apps/portmeld/res/images/noti_source_icon_usb.png"));
    hide();
    UsbDevice camera;
    camera.usbClass = USB_CLASS_STILL_IMAGE;
    camera.product = "Camera";
    pull(tv.ports().insert(camera));
    EXPECT_EQ(notices(), (Texts{"Never listed", "Camera"}));
    EXPECT_EQ(last().sourceIcon,
              tvPath("/usr/apps/portmeld/res/images/noti_source_icon_camera.png"));
}

// ---- the story

TEST_F(RemovalNoticeTest, TellsItsStory) {
    tv.settings().set(iconKey, "/icon.png");
    forget();
    serverGone("Server");
    Texts told = without(tv.journal().story(mark), {"dgettext", "vconf_get_str(\"" + iconKey});
    EXPECT_EQ(told, joined({{"vconf_get_str(\"" + nameKey + "\")"},
                            contextCalls(),
                            {"I distraction_free MODE : 0", "I distraction_free MODE : 0",
                             "W Distraction Free Mode disabled", isRunningCall("org.norvane.lumet"),
                             "I bRunning=[0]", "add_notification_data(2)", "I end"}}));
    EXPECT_TRUE(inOrder(calls(), lookUpCalls({"TV_SID_DEVICE_BEEN_DISCONNECTED"})));
}

TEST_F(RemovalNoticeTest, SetsItsState) {
    pull(plug());
    EXPECT_TRUE(access.notificationShown());
    EXPECT_EQ(access.shownNotification(), "Stick");
    EXPECT_EQ(access.displayedDevice(), nullptr);
}

// ---- one at a time

TEST_F(RemovalNoticeTest, IsNotShownWhileAnotherOneIsWhateverTheNames) {
    const DeviceId first = plugProduct("First", "1");
    const DeviceId second = plugProduct("Second", "2");
    const DeviceId twin = plugProduct("First", "3");
    pull(first);
    pull(second);
    pull(twin);
    EXPECT_EQ(notices(), Texts{"First"});
    EXPECT_EQ(access.shownNotification(), "First");
}

TEST_F(RemovalNoticeTest, ThatIsSuppressedStillForgetsTheDisplayedDevice) {
    const DeviceId first = plugProduct("First", "1");
    pull(first);
    const DeviceId second = plugProduct("Second", "2");
    plugProduct("Third", "3");
    ASSERT_NE(access.displayedDevice(), nullptr);
    forget();
    pull(second);
    EXPECT_EQ(notices(), Texts{"First"});
    EXPECT_EQ(access.displayedDevice(), nullptr);
    EXPECT_TRUE(logged(4, "end"));
}

TEST_F(RemovalNoticeTest, IsShownAgainAfterTheTimeOutOf3) {
    const DeviceId first = plugProduct("First", "1");
    const DeviceId twin = plugProduct("First", "2");
    const DeviceId third = plugProduct("Third", "3");
    pull(first);
    tv.advanceSeconds(3);
    pull(twin);
    tv.advanceSeconds(3);
    pull(third);
    EXPECT_EQ(notices(), (Texts{"First", "First", "Third"}));
}

TEST_F(RemovalNoticeTest, OfTheSameNameIsShownAgainAfterAHide) {
    const DeviceId first = plugProduct("Stick", "1");
    const DeviceId twin = plugProduct("Stick", "2");
    pull(first);
    hide();
    pull(twin);
    EXPECT_EQ(notices(), (Texts{"Stick", "Stick"}));
}

TEST_F(RemovalNoticeTest, IsShownWhileAConnectionPopUpIsUp) {
    const DeviceId stick = plug();
    ASSERT_NE(tv.screen().popup(), nullptr);
    pull(stick);
    EXPECT_EQ(notices(), Texts{"Stick"});
}

TEST_F(RemovalNoticeTest, DoesNotKeepAConnectionPopUpAway) {
    pull(plug());
    plug();
    EXPECT_EQ(last().itemType, 1);
}

TEST_F(RemovalNoticeTest, ThatFailedToShowStillBlocksTheNextUntilATimeOut) {
    const DeviceId first = plugProduct("First", "1");
    const DeviceId second = plugProduct("Second", "2");
    const DeviceId third = plugProduct("Third", "3");
    tv.journal().order("add_notification_data", Fault::Fails, 1);
    forget();
    pull(first);
    EXPECT_TRUE(inOrder(messages(), {"notification save error2", "end"}));
    EXPECT_TRUE(logged(4, "notification save error2"));
    EXPECT_TRUE(access.notificationShown());
    EXPECT_EQ(access.shownNotification(), "First");
    pull(second);
    EXPECT_EQ(notices(), Texts{});
    tv.screen().sendTimeOut(2);
    tv.settle();
    pull(third);
    EXPECT_EQ(notices(), Texts{"Third"});
}

TEST_F(RemovalNoticeTest, ThatFailedToShowBlocksNoMoreAfterAHide) {
    const DeviceId first = plugProduct("First", "1");
    const DeviceId second = plugProduct("Second", "2");
    tv.journal().order("add_notification_data", Fault::Fails, 1);
    forget();
    pull(first);
    tv.screen().sendHide();
    tv.settle();
    pull(second);
    EXPECT_EQ(notices(), Texts{"Second"});
}

TEST_F(RemovalNoticeTest, OfADeviceWithoutANameIsNotShownButForgetsTheDisplayedDevice) {
    const DeviceId stick = plugProduct("");
    ASSERT_NE(access.displayedDevice(), nullptr);
    forget();
    pull(stick);
    EXPECT_EQ(notices(), Texts{});
    EXPECT_FALSE(access.notificationShown());
    EXPECT_EQ(access.displayedDevice(), nullptr);
    EXPECT_TRUE(logged(4, "end"));
}

// ---- distraction-free, companion

TEST_F(RemovalNoticeTest, IsNotShownInDistractionFreeStateAndNothingChanges) {
    const DeviceId stick = plug();
    for (const int state : {0x80, 0x400, 0x800}) {
        tv.small().contextState = state;
        serverGone("Server");
        EXPECT_TRUE(logged(5, "Distraction Free Mode enabled, ignore popup launch"));
    }
    pull(stick);
    EXPECT_EQ(notices(), Texts{});
    EXPECT_FALSE(access.notificationShown());
    EXPECT_EQ(access.shownNotification(), "");
    EXPECT_NE(access.displayedDevice(), nullptr);
    EXPECT_FALSE(logged(4, "No need to notify"));
}

TEST_F(RemovalNoticeTest, InDistractionFreeStateKeepsAShownNotice) {
    const DeviceId first = plugProduct("First", "1");
    const DeviceId second = plugProduct("Second", "2");
    pull(first);
    tv.small().contextState = 0x80;
    pull(second);
    EXPECT_TRUE(access.notificationShown());
    EXPECT_EQ(access.shownNotification(), "First");
}

TEST_F(RemovalNoticeTest, IsADeleteLaunchInsteadWhileTheCompanionRuns) {
    const DeviceId stick = plug();
    companionRuns();
    forget();
    pull(stick);
    EXPECT_EQ(notices(), Texts{});
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.applications().launches()[0].appId, "org.norvane.lumet");
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("device_action"), "DELETE");
    EXPECT_NE(access.displayedDevice(), nullptr);
    EXPECT_FALSE(access.notificationShown());
    EXPECT_EQ(tv.journal().count("tvcontext_init", mark), 0U);
}

TEST_F(RemovalNoticeTest, DoesNothingItselfWhileTheCompanionRuns) {
    plug();
    companionRuns();
    forget();
    serverGone("Server");
    EXPECT_EQ(notices(), Texts{});
    EXPECT_TRUE(tv.applications().launches().empty());
    EXPECT_EQ(messages().back(), "No need to notify");
    EXPECT_TRUE(logged(4, "bRunning=[1]"));
    EXPECT_NE(access.displayedDevice(), nullptr);
    EXPECT_EQ(access.shownNotification(), "");
}

TEST_F(RemovalNoticeTest, IsShownToAServiceThatIsNotActivated) {
    const DeviceId stick = plug();
    mgr->SetActivated(false);
    pull(stick);
    EXPECT_EQ(notices(), Texts{"Stick"});
}

// ---- media servers

TEST_F(RemovalNoticeTest, OfAMediaServerWithoutAnIconHasNone) {
    serverGone("Server");
    ASSERT_EQ(notices(), Texts{"Server"});
    EXPECT_EQ(last().sourceIcon, std::nullopt);
}

TEST_F(RemovalNoticeTest, ReadsTheIconKeyOnlyWhenItIsReallyShown) {
    const std::string readIcon = "vconf_get_str(\"" + iconKey + "\")";
    serverGone("First");
    EXPECT_EQ(occurrences(calls(), readIcon), 1);
    forget();
    serverGone("Second");
    EXPECT_EQ(occurrences(calls(), readIcon), 0);
    hide();
    tv.small().contextState = 0x80;
    serverGone("Third");
    tv.small().contextState = 0;
    companionRuns();
    serverGone("Fourth");
    companionRuns(false);
    serverGone("");
    EXPECT_EQ(occurrences(calls(), readIcon), 0);
    serverGone("Fifth");
    EXPECT_EQ(occurrences(calls(), readIcon), 1);
    EXPECT_EQ(notices(), (Texts{"First", "Fifth"}));
}

TEST_F(RemovalNoticeTest, OfADeviceNeverReadsTheIconKey) {
    const DeviceId stick = plug();
    forget();
    pull(stick);
    EXPECT_EQ(tv.journal().count("vconf_get_str", mark), 0U);
}

TEST_F(RemovalNoticeTest, OfAMediaServerNamesWhatTheStoreHoldsAndNotWhatTheNoticeCarries) {
    tv.settings().set(nameKey, "Stored");
    tv.settings().sendNotice(nameKey.c_str(), "Carried");
    tv.settle();
    EXPECT_EQ(notices(), Texts{"Stored"});
}

TEST_F(RemovalNoticeTest, OfAMediaServerWhoseNameIsUnsetIsNotShown) {
    tv.settings().unset(nameKey);
    tv.settings().sendNotice(nameKey.c_str(), nullptr);
    tv.settle();
    EXPECT_EQ(notices(), Texts{});
    EXPECT_TRUE(logged(4, "end"));
}

TEST_F(RemovalNoticeTest, OfAMediaServerForgetsTheDisplayedDeviceToo) {
    plug();
    ASSERT_NE(access.displayedDevice(), nullptr);
    serverGone("Server");
    EXPECT_EQ(access.displayedDevice(), nullptr);
}

TEST_F(RemovalNoticeTest, OfAMediaServerWithoutUserDataIsAWarning) {
    serverGone("Server");
    hide();
    forget();
    CMMDeviceMgrTestAccess::dlnaName(nullptr);
    EXPECT_EQ(tv.journal().story(mark), Texts{"W pThis is NULL"});
    EXPECT_EQ(notices(), Texts{"Server"});
}

TEST_F(StartingManagerTest, ARemovedMediaServerIsToldBeforeTheStartUpTimerToo) {
    tv.settings().set(nameKey, "Server");
    tv.settle();
    ASSERT_EQ(tv.screen().history().size(), 1U);
    EXPECT_EQ(tv.screen().history()[0].title, "Server");
}

}  // namespace
