// What comes back from a pop-up: buttons, hiding, time-outs, and what is reported to the usage
// statistics of all that.
#include "PopupTest.h"

namespace {

using simulated::DeviceId;

constexpr const char* LUMET = "org.norvane.lumet";
constexpr const char* FOLIAN = "org.quillon.folian";
constexpr const char* VIDREEL = "org.norvane.vidreel";

class ButtonTest : public PopupTest {
protected:
    /// Application ids of all launches.
    Texts launched() {
        Texts ids;
        for (const simulated::Launch& launch : tv.applications().launches()) {
            ids.push_back(launch.appId);
        }
        return ids;
    }
    /// Usage records since the last forget(), each as its kind and its texts.
    Texts usage() {
        Texts records;
        for (const simulated::UsageRecord& record : tv.small().usage) {
            records.push_back(std::to_string(record.type) + " [" + record.first + "] [" +
                              record.second + "] [" + record.third + "]");
        }
        return records;
    }
    void forgetAll() {
        forget();
        tv.small().usage.clear();
        tv.applications().clearLaunches();
    }
    void sendButton(int itemType, int button) {
        tv.screen().sendButton(itemType, button);
        tv.settle();
    }
    void plugForBrowse() {
        plug();
        forgetAll();
    }
    void plugForPlay() {
        plug();
        reportScan(videoJson());
        forgetAll();
    }
};

// ---- the first button

TEST_F(ButtonTest, BrowseWithOneDeviceLaunchesTheContentBrowser) {
    plugForBrowse();
    press(0);
    EXPECT_EQ(launched(), Texts{FOLIAN});
    EXPECT_EQ(usage(), Texts{"30 [USB] [] []"});
    EXPECT_TRUE(inOrder(messages(), {"pressed button is 0(0 is play or browser,other is cancel)",
                                     "clicked first button.", "launch app[org.quillon.folian]"}));
}

TEST_F(ButtonTest, BrowseWithACameraIsReportedAsPtp) {
    plugCamera();
    forgetAll();
    press(0);
    EXPECT_EQ(launched(), Texts{FOLIAN});
    EXPECT_EQ(usage(), Texts{"30 [PTP] [] []"});
}

TEST_F(ButtonTest, BrowseWithTwoDevicesLaunchesTheCompanionAndReportsNothing) {
    plugProduct("One", "1");
    const DeviceId second = plugProduct("Two", "2");
    forgetAll();
    press(0);
    ASSERT_EQ(launched(), Texts{LUMET});
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("device_action"), "ADD");
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("device_key"),
              record(second)->GetDeviceKey());
    EXPECT_EQ(usage(), Texts{});
}

TEST_F(ButtonTest, BrowseWithNoDeviceListedLaunchesTheCompanion) {
    const DeviceId stick = plug();
    const std::string key = record(stick)->GetDeviceKey();
    tv.power().wake();
    tv.settle();
    ASSERT_EQ(access.list(), nullptr);
    forgetAll();
    press(0);
    ASSERT_EQ(launched(), Texts{LUMET});
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("device_key"), key);
}

TEST_F(ButtonTest, BrowseWithTheDeviceGoneLaunchesNothing) {
    const DeviceId stick = plug();
    pull(stick);
    forgetAll();
    sendButton(1, 0);
    EXPECT_EQ(launched(), Texts{});
    EXPECT_TRUE(inOrder(messages(), {"clicked first button.", "pNode is NULL"}));
    EXPECT_TRUE(logged(5, "pNode is NULL"));
    EXPECT_EQ(usage(), Texts{});
}

TEST_F(ButtonTest, PlayLaunchesThePlayerAndIsReported) {
    plugForPlay();
    press(0);
    EXPECT_EQ(launched(), Texts{VIDREEL});
    EXPECT_EQ(usage(), Texts{"36 [] [] []"});
    EXPECT_TRUE(
        inOrder(tv.journal().story(mark),
                {"I pressed button is 0(0 is play or browser,other is cancel)",
                 "I clicked first button.", usageCall(36), "I enter m_LaunchPlayer, type=2"}));
}

TEST_F(ButtonTest, PlayWithTwoDevicesStillLaunchesThePlayer) {
    plugForPlay();
    plugCamera();
    reportScan(videoJson());
    ASSERT_EQ(mgr->GetDeviceCount(), 2);
    press(0);
    EXPECT_EQ(launched(), Texts{VIDREEL});
}

TEST_F(ButtonTest, TheKindOfTheLastPopUpCountsAndNotTheItemTypeThatComesBack) {
    plugForPlay();
    sendButton(1, 0);
    EXPECT_EQ(launched(), Texts{VIDREEL});
    access.setNotificationType(1);
    forgetAll();
    sendButton(0, 0);
    EXPECT_EQ(launched(), Texts{FOLIAN});
}

TEST_F(ButtonTest, OfAnEarlierLifeOfTheDaemonLaunchesNoPlayer) {
    sendButton(0, 0);
    EXPECT_EQ(launched(), Texts{});
    EXPECT_TRUE(logged(4, "clicked first button."));
    EXPECT_TRUE(logged(5, "pNode is NULL"));
    EXPECT_EQ(usage(), Texts{});
    sendButton(0, 1);
    EXPECT_EQ(usage(), Texts{"31 [] [] []"});
}

// ---- the second button

class CancelTest : public ButtonTest, public ::testing::WithParamInterface<int> {};

TEST_P(CancelTest, OnABrowsePopUpIsReportedAndLaunchesNothing) {
    plugForBrowse();
    sendButton(1, GetParam());
    EXPECT_EQ(launched(), Texts{});
    EXPECT_EQ(usage(), Texts{"31 [] [] []"});
    EXPECT_TRUE(logged(4, "pressed button is " + std::to_string(GetParam()) +
                              "(0 is play or browser,other is cancel)"));
    EXPECT_FALSE(logged(4, "clicked first button."));
}

TEST_P(CancelTest, OnAPlayPopUpIsReportedAndLaunchesNothing) {
    plugForPlay();
    sendButton(0, GetParam());
    EXPECT_EQ(launched(), Texts{});
    EXPECT_EQ(usage(), Texts{"37 [] [] []"});
}

INSTANTIATE_TEST_SUITE_P(IsAnyButtonButTheFirst, CancelTest, ::testing::Values(1, 2, 99, -1));

TEST_F(ButtonTest, CancelPressedByAViewerChangesNoState) {
    plugForBrowse();
    const CMMDeviceInfo* displayed = access.displayedDevice();
    press(1);
    EXPECT_EQ(usage(), Texts{"31 [] [] []"});
    EXPECT_EQ(access.displayedDevice(), displayed);
    EXPECT_EQ(access.notificationType(), 1);
}

// ---- foreign item types

class ForeignItemTest : public ButtonTest, public ::testing::WithParamInterface<int> {};

TEST_P(ForeignItemTest, IsRefusedWhateverTheButton) {
    plugForPlay();
    for (const int button : {0, 1}) {
        forget();
        sendButton(GetParam(), button);
        EXPECT_EQ(tv.journal().story(mark), (Texts{"I pressed button is " + std::to_string(button) +
                                                       "(0 is play or browser,other is cancel)",
                                                   "W Invalid item ID"}));
    }
    EXPECT_EQ(launched(), Texts{});
    EXPECT_EQ(usage(), Texts{});
}

INSTANTIATE_TEST_SUITE_P(AnyBut0And1, ForeignItemTest, ::testing::Values(2, 3, 1000, -1));

// ---- hiding

TEST_F(ButtonTest, HidingAPopUpForgetsTheDisplayedDeviceAndReportsNothing) {
    plugForBrowse();
    ASSERT_NE(access.displayedDevice(), nullptr);
    hide();
    EXPECT_EQ(tv.journal().story(mark), Texts{"I Hide by action"});
    EXPECT_EQ(access.displayedDevice(), nullptr);
    EXPECT_EQ(usage(), Texts{});
}

TEST_F(ButtonTest, HidingARemovalNoticeForgetsIt) {
    pull(plug());
    ASSERT_TRUE(access.notificationShown());
    ASSERT_EQ(access.shownNotification(), "Stick");
    hide();
    EXPECT_FALSE(access.notificationShown());
    EXPECT_EQ(access.shownNotification(), "");
}

TEST_F(ButtonTest, HidingAConnectionPopUpForgetsARemovalNoticeToo) {
    pull(plugProduct("Gone", "1"));
    plugProduct("There", "2");
    ASSERT_EQ(last().itemType, 1);
    ASSERT_TRUE(access.notificationShown());
    hide();
    EXPECT_FALSE(access.notificationShown());
    EXPECT_EQ(access.shownNotification(), "");
}

// ---- time-outs

TEST_F(ButtonTest, ABrowsePopUpLeftToTimeOutIsReportedAndForgotten) {
    plugForBrowse();
    tv.advanceSeconds(30);
    EXPECT_EQ(tv.journal().story(mark), (Texts{"I Hide by timeout", usageCall(32)}));
    EXPECT_EQ(usage(), Texts{"32 [] [] []"});
    EXPECT_EQ(access.displayedDevice(), nullptr);
    EXPECT_EQ(launched(), Texts{});
}

TEST_F(ButtonTest, APlayPopUpLeftToTimeOutIsReportedAndForgotten) {
    plugForPlay();
    ASSERT_NE(access.displayedDevice(), nullptr);
    tv.advanceSeconds(30);
    EXPECT_EQ(usage(), Texts{"32 [] [] []"});
    EXPECT_EQ(access.displayedDevice(), nullptr);
}

TEST_F(ButtonTest, TheTimeOutOfAConnectionPopUpLeavesARemovalNotice) {
    pull(plug());
    for (const int itemType : {0, 1, 3, -1}) {
        tv.screen().sendTimeOut(itemType);
        tv.settle();
        EXPECT_TRUE(access.notificationShown());
        EXPECT_EQ(access.shownNotification(), "Stick");
    }
}

TEST_F(ButtonTest, ARemovalNoticeTimesOutReportedAndForgotten) {
    pull(plug());
    forgetAll();
    tv.advanceSeconds(3);
    EXPECT_EQ(tv.journal().story(mark), (Texts{"I Hide by timeout", usageCall(32)}));
    EXPECT_EQ(usage(), Texts{"32 [] [] []"});
    EXPECT_FALSE(access.notificationShown());
    EXPECT_EQ(access.shownNotification(), "");
}

TEST_F(ButtonTest, TheTimeOutOfARemovalNoticeForgetsTheDisplayedDeviceToo) {
    const DeviceId gone = plugProduct("Gone", "1");
    pull(gone);
    plugProduct("There", "2");
    ASSERT_NE(access.displayedDevice(), nullptr);
    tv.screen().sendTimeOut(2);
    tv.settle();
    EXPECT_EQ(access.displayedDevice(), nullptr);
}

// ---- reports

TEST_F(ButtonTest, EveryConnectionPopUpIsReportedWhenItIsLaunched) {
    plug();
    EXPECT_EQ(usage(), Texts{"29 [] [] []"});
    reportScan(videoJson());
    EXPECT_EQ(usage(), (Texts{"29 [] [] []", "29 [] [] []"}));
}

TEST_F(ButtonTest, ARemovalNoticeIsNotReported) {
    const DeviceId stick = plug();
    forgetAll();
    pull(stick);
    EXPECT_EQ(usage(), Texts{});
}

}  // namespace
