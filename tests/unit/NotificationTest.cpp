// The connection pop-up: what it says, when it is left out, and what suppresses a repeat. Removal
// notices and what buttons do have files of their own.
#include "PopupTest.h"
#include "Surroundings.h"

namespace {

using simulated::DeviceId;
using simulated::Fault;
using simulated::UsbDevice;

class NotificationTest : public PopupTest {
protected:
    /// How every pop-up that is not kept away begins.
    const Texts beginning = joined({contextCalls(),
                                    {"I distraction_free MODE : 0", "I distraction_free MODE : 0",
                                     "W Distraction Free Mode disabled",
                                     isRunningCall("org.norvane.lumet"), "I bRunning=[0]"}});
};

// ---- the record, word by word

TEST_F(NotificationTest, ABrowsePopUpHasItsRecordWordByWord) {
    plug();
    ASSERT_EQ(shownCount(), 1U);
    EXPECT_EQ(last().word0, 1);
    EXPECT_EQ(last().word4, 1);
    EXPECT_EQ(last().word8, 2);
    EXPECT_EQ(last().sender, "portmeld");
    EXPECT_EQ(last().itemType, 1);
    EXPECT_EQ(last().timeout, 30);
    EXPECT_EQ(last().title, "TV_SID_MIX_NEW_DEVICE_CONNECTED");
    EXPECT_EQ(last().body, "TV_SID_WOULD_U_LIKE_BROWSE_FILES");
    EXPECT_EQ(last().sourceIcon, tvPath("/usr/apps/portmeld/res/images/noti_source_icon_usb.png"));
    EXPECT_EQ(last().buttonCount, 2);
    EXPECT_EQ(last().firstButton, "COM_COMMONCTRL_BROWSE");
    EXPECT_EQ(last().secondButton, "COM_SID_CANCEL");
    EXPECT_EQ(last().firstButtonIcon, tvPath("/usr/apps/portmeld/res/images/i_open.png"));
    EXPECT_EQ(last().secondButtonIcon, tvPath("/usr/apps/portmeld/res/images/i_close_cancel.png"));
    EXPECT_TRUE(last().reservedAreZero);
}

TEST_F(NotificationTest, APlayPopUpHasItsRecordWordByWord) {
    plug();
    reportScan(videoJson());
    ASSERT_EQ(shownCount(), 2U);
    EXPECT_EQ(last().word0, 1);
    EXPECT_EQ(last().word4, 1);
    EXPECT_EQ(last().word8, 2);
    EXPECT_EQ(last().sender, "portmeld");
    EXPECT_EQ(last().itemType, 0);
    EXPECT_EQ(last().timeout, 30);
    EXPECT_EQ(last().title, "TV_SID_MIX_NEW_DEVICE_CONNECTED");
    EXPECT_EQ(last().body,
              "COM_SID_FILE_DETECTED_ON_THIS_DEVICE TV_SID_LIKE_TO_PLAY_FILE "
              "COM_SID_MIX_FILE_NAME_COLON");
    EXPECT_EQ(last().sourceIcon, tvPath("/usr/apps/portmeld/res/images/noti_source_icon_usb.png"));
    EXPECT_EQ(last().buttonCount, 2);
    EXPECT_EQ(last().firstButton, "SID_PLAY");
    EXPECT_EQ(last().secondButton, "COM_SID_CANCEL");
    EXPECT_EQ(last().firstButtonIcon, tvPath("/usr/apps/portmeld/res/images/i_open.png"));
    EXPECT_EQ(last().secondButtonIcon, tvPath("/usr/apps/portmeld/res/images/i_close_cancel.png"));
    EXPECT_TRUE(last().reservedAreZero);
}

TEST_F(NotificationTest, ACamerasPopUpHasTheCamerasIcon) {
    plugCamera();
    ASSERT_EQ(shownCount(), 1U);
    EXPECT_EQ(last().itemType, 1);
    EXPECT_EQ(last().sourceIcon,
              tvPath("/usr/apps/portmeld/res/images/noti_source_icon_camera.png"));
}

TEST_F(NotificationTest, ADeviceOfAnotherClassGetsAPopUpWithoutASourceIcon) {
    plug();
    hide();
    for (const int usbClass : {0, -1, 3, 7, 9}) {
        access.currentDevice()->SetClass(usbClass);
        access.launchAddNotification();
        hide();
        EXPECT_EQ(last().sourceIcon, std::nullopt) << usbClass;
        EXPECT_EQ(last().buttonCount, 2);
    }
    EXPECT_EQ(shownCount(), 6U);
}

// ---- texts

TEST_F(NotificationTest, TextsAreThoseOfTheMenuLanguageWithTheNamesInTheirPlaces) {
    const TestCatalogue catalogue(temp,
                                  {{"TV_SID_MIX_NEW_DEVICE_CONNECTED", "Gerät »{1}« ist da"},
                                   {"TV_SID_WOULD_U_LIKE_BROWSE_FILES", "Durchsuchen, 100 %s?"},
                                   {"COM_COMMONCTRL_BROWSE", "Los"},
                                   {"COM_SID_MIX_FILE_NAME_COLON", "{1}: Datei"},
                                   {"COM_SID_FILE_DETECTED_ON_THIS_DEVICE", "Fund."},
                                   {"TV_SID_LIKE_TO_PLAY_FILE", "Spielen?"},
                                   {"SID_PLAY", "Spiel"},
                                   {"COM_SID_CANCEL", "Lass"}});
    plugProduct("Stick");
    EXPECT_EQ(last().title, "Gerät »Stick« ist da");
    EXPECT_EQ(last().body, "Durchsuchen, 100 %s?");
    EXPECT_EQ(last().firstButton, "Los");
    EXPECT_EQ(last().secondButton, "Lass");
    reportScan(videoJson());
    EXPECT_EQ(last().title, "Gerät »Stick« ist da");
    EXPECT_EQ(last().body, "Fund. Spielen? clip.mkv: Datei");
    EXPECT_EQ(last().firstButton, "Spiel");
    EXPECT_EQ(last().secondButton, "Lass");
}

class NamedPopupTest : public PopupTest {
protected:
    const TestCatalogue catalogue{temp,
                                  {{"TV_SID_MIX_NEW_DEVICE_CONNECTED", "{1}"},
                                   {"COM_SID_MIX_FILE_NAME_COLON", "{1}"},
                                   {"COM_SID_FILE_DETECTED_ON_THIS_DEVICE", "a"},
                                   {"TV_SID_LIKE_TO_PLAY_FILE", "b"}}};
};

TEST_F(NamedPopupTest, TheTitleNamesTheDeviceWithoutItsNumber) {
    plugProduct("Stick");
    const DeviceId second = plugProduct("Stick", "other");
    ASSERT_EQ(record(second)->GetDisplayName(), "Stick(2&#x202d;)");
    EXPECT_EQ(shown(), (Texts{"1 Stick", "1 Stick"}));
}

TEST_F(NamedPopupTest, NamesAreNeverFormatsNorPlaceholders) {
    plugProduct("%s%n{1}{2}");
    EXPECT_EQ(last().title, "%s%n{1}{2}");
    reportScan(videoJson("%d%n{1}.mkv"));
    EXPECT_EQ(last().body, "a b %d%n{1}.mkv");
    EXPECT_TRUE(logged(4, "file name:%d%n{1}.mkv"));
}

TEST_F(NamedPopupTest, TextsOf255BytesAreWhole) {
    const std::string name(255, 'x');
    plugProduct(name);
    EXPECT_EQ(last().title, name);
    reportScan(videoJson(name));
    EXPECT_EQ(last().body, "a b " + name);
}

TEST_F(NamedPopupTest, LongerTextsAreCutTo255Bytes) {
    const std::string name(300, 'x');
    plugProduct(name);
    EXPECT_EQ(last().title, std::string(255, 'x'));
    reportScan(videoJson(name));
    EXPECT_EQ(last().body, "a b " + std::string(255, 'x'));
}

TEST_F(NamedPopupTest, LongTextsAreCutBetweenCharacters) {
    std::string fitting;
    for (int i = 0; i < 127; ++i) {
        fitting += "é";
    }
    plugProduct(fitting + "éé");
    EXPECT_EQ(last().title, fitting);
    reportScan(videoJson(fitting + "éé"));
    EXPECT_EQ(last().body, "a b " + fitting);
}

TEST_F(NamedPopupTest, BytesThatAreNoUtf8AreReplaced) {
    plugProduct("\xffStick\xc3");
    ASSERT_TRUE(last().title.has_value());
    EXPECT_TRUE(g_utf8_validate(last().title->c_str(), -1, nullptr));
    EXPECT_NE(last().title->find("Stick"), std::string::npos);
}

// ---- the story

TEST_F(NotificationTest, ABrowsePopUpTellsItsStory) {
    plug();
    hide();
    forget();
    access.launchAddNotification();
    EXPECT_EQ(
        tv.journal().story(mark),
        joined({beginning,
                {"I New device is connected"},
                lookUpCalls({"TV_SID_MIX_NEW_DEVICE_CONNECTED"}),
                {usageCall(29)},
                lookUpCalls({"TV_SID_WOULD_U_LIKE_BROWSE_FILES", "COM_COMMONCTRL_BROWSE",
                             "COM_SID_CANCEL"}),
                {"I m_LaunchAddNotification nItemType = 1", "add_notification_data(1)", "I end"}}));
}

TEST_F(NotificationTest, APlayPopUpTellsItsStory) {
    plug();
    reportScan(videoJson());
    forget();
    access.launchAddNotification();
    EXPECT_EQ(
        tv.journal().story(mark),
        joined({beginning,
                lookUpCalls({"TV_SID_MIX_NEW_DEVICE_CONNECTED"}),
                {usageCall(29), "I file name:clip.mkv"},
                lookUpCalls({"COM_SID_MIX_FILE_NAME_COLON", "COM_SID_FILE_DETECTED_ON_THIS_DEVICE",
                             "TV_SID_LIKE_TO_PLAY_FILE", "SID_PLAY", "COM_SID_CANCEL"}),
                {"I m_LaunchAddNotification nItemType = 0", "add_notification_data(0)", "I end"}}));
}

TEST_F(NotificationTest, AnyOtherKindOfPopUpIsNotShown) {
    plug();
    for (const int type : {-1, 2, 7}) {
        access.setNotificationType(type);
        forget();
        access.launchAddNotification();
        EXPECT_EQ(messages().back(), "No Need to add notification");
        EXPECT_EQ(tv.journal().count("add_notification_data", mark), 0U);
        EXPECT_EQ(tv.journal().count("CKPILogService::SendKPILog", mark), 0U);
    }
}

TEST_F(NotificationTest, AFailureToShowIsLoggedAndOtherwiseIgnored) {
    tv.journal().order("add_notification_data", Fault::Fails, 1);
    const DeviceId stick = plug();
    EXPECT_EQ(shownCount(), 0U);
    EXPECT_TRUE(inOrder(
        messages(), {"m_LaunchAddNotification nItemType = 1", "notification save error2", "end"}));
    EXPECT_TRUE(logged(4, "notification save error2"));
    EXPECT_EQ(tv.small().usage.size(), 1U);
    // The device counts as displayed all the same.
    EXPECT_EQ(access.displayedDevice(), record(stick));
    replug(stick);
    EXPECT_EQ(shownCount(), 0U);
    EXPECT_TRUE(logged(4, "No need to notify again"));
}

TEST_F(NotificationTest, WithoutACurrentDeviceNothingIsShown) {
    for (const int type : {0, 1}) {
        access.setNotificationType(type);
        forget();
        access.launchAddNotification();
        EXPECT_TRUE(logged(5, "m_pDeviceInfo = NULL")) << type;
    }
    EXPECT_EQ(shownCount(), 0U);
    EXPECT_TRUE(tv.small().usage.empty());
}

TEST_F(NotificationTest, WithoutACurrentDeviceTheRunningCompanionIsNotLaunched) {
    companionRuns();
    access.setNotificationType(0);
    access.launchAddNotification();
    EXPECT_TRUE(logged(5, "pNode is NULL"));
    EXPECT_TRUE(tv.applications().launches().empty());
}

TEST_F(NotificationTest, ARepeatTellsItsStory) {
    plug();
    forget();
    access.launchAddNotification();
    EXPECT_EQ(tv.journal().story(mark),
              joined({beginning,
                      {"I the device is same with previous device", "I No need to notify again"}}));
}

TEST_F(NotificationTest, AServiceThatIsNotActivatedShowsNothingForAConnection) {
    mgr->SetActivated(false);
    const DeviceId stick = plug();
    EXPECT_EQ(shownCount(), 0U);
    EXPECT_TRUE(logged(4, "m_bActivated is false, don't launch usb notification now!"));
    EXPECT_NE(record(stick), nullptr);
}

// ---- distraction-free

class DistractionTest : public PopupTest, public ::testing::WithParamInterface<int> {};
using OtherStateTest = DistractionTest;

TEST_P(DistractionTest, KeepsThePopUpAwayAndChangesNothing) {
    tv.small().contextState = GetParam();
    forget();
    plug();
    EXPECT_TRUE(inOrder(tv.journal().story(mark),
                        joined({contextCalls(),
                                {"I distraction_free MODE : " + std::to_string(GetParam()),
                                 "I distraction_free MODE : " + std::to_string(GetParam() & 0xC80),
                                 "W Distraction Free Mode enabled, ignore popup launch"}})));
    EXPECT_EQ(shownCount(), 0U);
    EXPECT_TRUE(tv.small().usage.empty());
    EXPECT_EQ(access.displayedDevice(), nullptr);
    EXPECT_FALSE(access.notificationShown());
    EXPECT_EQ(access.shownNotification(), "");
    EXPECT_EQ(tv.journal().count("app_manager_is_running", mark), 0U);
    EXPECT_EQ(tv.small().contextQueries, 0);
}

TEST_P(DistractionTest, KeepsAPlayPopUpAwayToo) {
    plug();
    tv.small().contextState = GetParam();
    reportScan(videoJson());
    EXPECT_EQ(shownCount(), 1U);
    EXPECT_EQ(access.notificationType(), 0);
    EXPECT_EQ(access.scanFile().strFileName, "clip.mkv");
}

INSTANTIATE_TEST_SUITE_P(AnyOfBits7_10And11,
                         DistractionTest,
                         ::testing::Values(0x80, 0x400, 0x800, 0xC80, 0x81, 0x7FFFFFFF, -1));

TEST_P(OtherStateTest, LetsPopUpsThrough) {
    tv.small().contextState = GetParam();
    plug();
    EXPECT_EQ(shownCount(), 1U);
    EXPECT_TRUE(
        inOrder(messages(), {"distraction_free MODE : " + std::to_string(GetParam()),
                             "distraction_free MODE : 0", "Distraction Free Mode disabled"}));
    EXPECT_TRUE(logged(5, "Distraction Free Mode disabled"));
}

INSTANTIATE_TEST_SUITE_P(AnyOtherBits,
                         OtherStateTest,
                         ::testing::Values(0, 1, 0x40, 0x100, 0x200, 0x1000, ~0xC80));

class ContextFaultTest : public PopupTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(ContextFaultTest, IsIgnoredAndAllThreeCallsAreMade) {
    tv.journal().order(GetParam(), Fault::Fails);
    plug();
    EXPECT_EQ(shownCount(), 1U);
    EXPECT_TRUE(inOrder(calls(), contextCalls()));
}

INSTANTIATE_TEST_SUITE_P(OfEachCall,
                         ContextFaultTest,
                         ::testing::Values("tvcontext_init",
                                           "tvcontext_query_state",
                                           "tvcontext_fini"));

TEST_F(NotificationTest, AFailedQueryCountsAsNotDistractionFree) {
    tv.small().contextState = 0x80;
    tv.journal().order("tvcontext_query_state", Fault::Fails);
    plug();
    EXPECT_EQ(shownCount(), 1U);
    EXPECT_TRUE(logged(4, "distraction_free MODE : 0"));
}

// ---- the companion application

TEST_F(NotificationTest, WhileTheCompanionRunsAConnectionLaunchesItWithAddAndShowsNoPopUp) {
    companionRuns();
    plug();
    EXPECT_EQ(shownCount(), 0U);
    EXPECT_TRUE(tv.small().usage.empty());
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.applications().launches()[0].appId, "org.norvane.lumet");
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("device_action"), "ADD");
    EXPECT_TRUE(logged(4, "bRunning=[1]"));
    EXPECT_EQ(access.displayedDevice(), nullptr);
}

TEST_F(NotificationTest, WhileTheCompanionRunsAScanResultLaunchesItAgain) {
    companionRuns();
    plug();
    reportScan(videoJson());
    EXPECT_EQ(shownCount(), 0U);
    EXPECT_EQ(tv.applications().launches().size(), 2U);
}

TEST_F(NotificationTest, WhenItCannotBeAskedTheCompanionCountsAsNotRunning) {
    companionRuns();
    tv.journal().order("app_manager_is_running", Fault::Fails);
    plug();
    EXPECT_EQ(shownCount(), 1U);
}

}  // namespace
