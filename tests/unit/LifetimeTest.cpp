// Lifetime of device records: nothing points at a record that is gone, and nothing is lost, in any order
// of events. The sanitizers find what an expectation here cannot see.
#include <memory>

#include "TvTest.h"

namespace {

constexpr const char* LUMET = "org.norvane.lumet";

using LifetimeTest = ManagerTest;

simulated::UsbDevice named(const std::string& product, const std::string& serial) {
    simulated::UsbDevice device;
    device.product = product;
    device.serial = serial;
    return device;
}

TEST_F(LifetimeTest, TheCurrentDeviceBecomesNoneWhenItsStickIsPulled) {
    const auto stick = plug();
    ASSERT_NE(access.currentDevice(), nullptr);
    pull(stick);
    EXPECT_EQ(access.currentDevice(), nullptr);
}

TEST_F(LifetimeTest, TheCurrentDeviceStaysWhenAnotherStickIsPulled) {
    const auto first = plug(named("One", "1"));
    const auto second = plug(named("Two", "2"));
    pull(first);
    EXPECT_EQ(access.currentDevice(), record(second));
}

TEST_F(LifetimeTest, ADisplayedStickPulledWithoutANoticeIsRecognisedWhenItComesBack) {
    const auto stick = plug(named("One", "1"));
    tv.applications().setRunning(LUMET,
                                 true);  // takes the removal: the displayed device is not emptied
    pull(stick);
    EXPECT_NE(access.displayedDevice(), nullptr);
    EXPECT_EQ(access.retiredDevice(), access.displayedDevice());

    tv.applications().setRunning(LUMET, false);
    tv.screen().clearHistory();
    forget();
    plug(named("One", "1"));
    EXPECT_TRUE(logged(4, "No need to notify again"));
    EXPECT_TRUE(tv.screen().history().empty());
}

TEST_F(LifetimeTest, ARetiredRecordIsFreedWhenAnotherStickIsDisplayed) {
    const auto stick = plug(named("One", "1"));
    tv.applications().setRunning(LUMET, true);
    pull(stick);
    tv.applications().setRunning(LUMET, false);
    const auto other = plug(named("Two", "2"));
    EXPECT_EQ(access.displayedDevice(), record(other));
    EXPECT_EQ(access.retiredDevice(), nullptr);
}

TEST_F(LifetimeTest, ARetiredRecordIsFreedWhenTheDisplayIsEmptied) {
    const auto stick = plug(named("One", "1"));
    tv.applications().setRunning(LUMET, true);
    pull(stick);
    tv.screen().sendHide();
    tv.settle();
    EXPECT_EQ(access.displayedDevice(), nullptr);
    EXPECT_EQ(access.retiredDevice(), nullptr);
}

TEST_F(LifetimeTest, ARetiredRecordIsFreedWithTheManager) {
    const auto stick = plug();
    tv.small().contextState =
        0x80;  // distraction-free: no removal notice, the displayed device stays
    pull(stick);
    EXPECT_NE(access.retiredDevice(), nullptr);
}

TEST_F(LifetimeTest, AWakeUpKeepsTheDroppedRecordsUntilTheNextOne) {
    plug(named("One", "1"));
    plug(named("Two", "2"));
    tv.power().sendWakeup(1);
    tv.settle();
    EXPECT_EQ(access.list(), nullptr);
    EXPECT_EQ(access.droppedRecords(), 2U);
}

TEST_F(LifetimeTest, TheNextWakeUpFreesDroppedRecordsExceptThoseStillPointedAt) {
    plug(named("One", "1"));
    const auto second = plug(named("Two", "2"));
    CMMDeviceInfo* current = record(second);
    tv.power().sendWakeup(1);
    tv.settle();
    tv.power().sendWakeup(1);
    tv.settle();
    EXPECT_EQ(access.droppedRecords(), 1U);
    EXPECT_EQ(access.currentDevice(), current);
    EXPECT_EQ(current->GetProduct(), "Two");
}

TEST_F(LifetimeTest, BrowseAfterAWakeUpLaunchesForTheDroppedRecord) {
    plug(named("One", "1"));
    tv.power().sendWakeup(1);
    tv.power().sendWakeup(1);
    tv.settle();
    tv.screen().press(0);
    tv.settle();
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.applications().launches()[0].appId, LUMET);
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("device_display_name"), "One");
}

TEST_F(LifetimeTest, ADroppedDisplayedRecordStillRecognisesItsStick) {
    const auto stick = plug(named("One", "1"));
    tv.power().sendWakeup(1);
    tv.power().sendWakeup(1);
    tv.settle();
    forget();
    tv.ports().announce(stick, "added");
    tv.ports().announce(stick, "mounted");
    tv.settle();
    EXPECT_TRUE(logged(4, "No need to notify again"));
}

TEST_F(LifetimeTest, AHundredWakeUpsKeepNoMoreThanTheRecordsStillPointedAt) {
    plug(named("One", "1"));
    for (int i = 0; i < 100; ++i) {
        tv.power().sendWakeup(1);
        tv.settle();
        mgr->GetDeviceList();  // a client asks: enumerated anew
    }
    EXPECT_LE(access.droppedRecords(), 2U);
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
}

// ---- a record that could not be made

TEST_F(LifetimeTest, AConnectionWithoutARecordStartsNothing) {
    forget();
    access.connectedDevice(nullptr);
    EXPECT_TRUE(logged(5, "NULL == pUsbDeviceHnd"));
    EXPECT_EQ(access.currentDevice(), nullptr);
    EXPECT_EQ(calls(), Texts{});
}

TEST_F(LifetimeTest, AnAddedDeviceWithoutARecordIsAWarning) {
    forget();
    access.attachEvent(nullptr, USB_CLASS_MASS_STORAGE, false);
    EXPECT_TRUE(logged(5, "add failed !!!! pUsbDeviceHnd:(nil)"));
    EXPECT_EQ(access.list(), nullptr);
}

// ---- pulls at every moment

class PullTest : public ManagerTest {
protected:
    std::string photoStick() {
        const std::string folder = stickFolder();
        temp.file(folder.substr(temp.path().size() + 1) + "/only.jpg", "\xff\xd8\xff\xe0photo");
        return folder;
    }
};

TEST_F(PullTest, WhileThePopUpIsUpAndItsBrowseButtonPressedLaterLaunchesNothing) {
    const auto stick = plug();
    simulated::Popup popup = *tv.screen().popup();
    pull(stick);
    forget();
    tv.screen().sendButton(popup.itemType, 0);
    tv.settle();
    EXPECT_TRUE(logged(5, "pNode is NULL"));
    EXPECT_TRUE(tv.applications().launches().empty());
}

TEST_F(PullTest, WhileThePlayPopUpIsUpAndPlayPressedLaterLaunchesThePlayerWithoutRootPath) {
    const auto stick = plug(photoStick());
    ASSERT_EQ(tv.screen().popup()->itemType, 0);
    pull(stick);
    forget();
    tv.screen().sendButton(0, 0);
    tv.settle();
    EXPECT_TRUE(logged(5, "NULL == pNode"));
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    const simulated::Launch& launch = tv.applications().launches()[0];
    EXPECT_EQ(launch.appId, "org.norvane.picreel");
    EXPECT_EQ(launch.extraData.at("play_list_data").find("root_path"), std::string::npos);
    EXPECT_NE(launch.extraData.at("play_list_data").find("only.jpg"), std::string::npos);
}

TEST_F(PullTest, WhileTheScanRunsShowsNoPopUpForItsLateResult) {
    tv.scanner().hold();
    const auto stick = plug(photoStick());
    pull(stick);
    tv.screen().clearHistory();
    forget();
    tv.scanner().release();
    tv.settle();
    EXPECT_TRUE(logged(4, "single media"));
    EXPECT_TRUE(logged(5, "m_pDeviceInfo = NULL"));
    EXPECT_TRUE(tv.screen().history().empty());
}

TEST_F(PullTest, BetweenAddedAndMountedForgetsTheStick) {
    simulated::UsbDevice like;
    const auto stick = tv.ports().insert(like);
    tv.ports().announce(stick, "added");
    tv.settle();
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
    pull(stick);
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
    EXPECT_EQ(tv.scanner().started().size(), 0U);
}

TEST_F(PullTest, InTheSameBreathAsPluggingLeavesNothingBehind) {
    const auto stick = tv.ports().plug(stickFolder());
    tv.ports().pull(stick);
    tv.settle();
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
    EXPECT_EQ(access.currentDevice(), nullptr);
}

TEST_F(PullTest, DuringStandbyTakesTheStickOutOfTheListAndShowsTheNotice) {
    const auto stick = plug(named("One", "1"));
    tv.power().standby();
    tv.settle();
    tv.screen().clearHistory();
    pull(stick);
    EXPECT_EQ(access.list(), nullptr);
    ASSERT_EQ(tv.screen().history().size(), 1U);
    EXPECT_EQ(tv.screen().history()[0].title, "One");
    EXPECT_EQ(tv.screen().history()[0].itemType, 2);

    tv.power().wake();
    tv.advanceSeconds(61);
    EXPECT_EQ(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(access.droppedRecords(), 0U);
}

TEST_F(PullTest, OfASecondStickIsAnnouncedAlthoughAPopUpCoveredTheFirstNotice) {
    const auto first = plug(named("One", "1"));
    pull(first);
    const auto second = plug(named("Two", "2"));
    tv.advanceSeconds(4);
    tv.screen().clearHistory();
    pull(second);
    ASSERT_EQ(tv.screen().history().size(), 1U);
    EXPECT_EQ(tv.screen().history()[0].title, "Two");
}

TEST_F(PullTest, TwiceReportsTheSecondAsUnknown) {
    const auto stick = plug(named("One", "1"));
    pull(stick);
    forget();
    tv.ports().announce(stick, "removed");
    tv.settle();
    EXPECT_TRUE(logged(
        5, "Device " + *tv.ports().device(stick).devname + " is NOT found in pDeviceInfoNode"));
}

TEST_F(StartingManagerTest, AStickPulledBeforeTheStartUpTimerIsNeverListed) {
    const auto stick = plug();
    pull(stick);
    startUp();
    EXPECT_EQ(mgr->GetDeviceList(), nullptr);
    EXPECT_TRUE(tv.screen().history().empty());
}

TEST_F(StartingManagerTest, AStickListedForAClientAndPulledBeforeTheStartUpTimerIsCleanedAway) {
    const auto stick = plug();
    mgr->GetDeviceList();
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
    pull(stick);
    EXPECT_EQ(mgr->GetDeviceCount(), 1);  // no event is taken yet
    startUp();
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
}

}  // namespace
