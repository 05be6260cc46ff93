// The device manager's first 30 seconds and their end: no USB event is taken before, everything
// works after, unless no launch handle can be had. The shop demo at start-up stands in
// DemoTriggerTest.cpp.
#include "MMNames.h"
#include "Stories.h"
#include "TvTest.h"

namespace {

class StartUpTest : public StartingManagerTest {
protected:
    StartUpTest() : mark(tv.journal().mark()) {}
    Texts story() { return plainStory(tv, mark); }
    Texts calls() { return tv.journal().calls(mark); }
    std::size_t mark;
};

TEST_F(StartUpTest, NothingHappensBefore30Seconds) {
    tv.advance(29999);
    EXPECT_EQ(story(), Texts{});
    EXPECT_FALSE(tv.ports().listening());
    EXPECT_FALSE(access.activated());
}

TEST_F(StartUpTest, TheTimerMakesTheLaunchHandleAsksForTheDemoAndTakesUsbEventsLast) {
    startUp();
    EXPECT_EQ(story(),
              (Texts{"app_control_create()", "I NULL == pMovieDir",
                     R"(vconf_get_int("db/menu/support/use_mode"))", "usb_set_connected_cb()"}));
    EXPECT_TRUE(tv.ports().listening());
}

TEST_F(StartUpTest, TheTimerFiresOnce) {
    startUp();
    tv.advanceSeconds(3600);
    EXPECT_EQ(tv.journal().count("app_control_create"), 1U);
    EXPECT_EQ(tv.journal().count("usb_set_connected_cb"), 1U);
    EXPECT_TRUE(tv.clock().timers().empty());
}

TEST_F(StartUpTest, TheTimerActivates) {
    startUp();
    EXPECT_TRUE(popsUp());
}

TEST_F(StartUpTest, ALaterHandleIsNotMadeWhenThereIsOne) {
    startUp();
    CMMDeviceMgrTestAccess::startUpTimer(mgr);
    EXPECT_EQ(tv.journal().count("app_control_create"), 1U);
    EXPECT_EQ(tv.journal().count("usb_set_connected_cb"), 2U);
}

TEST_F(StartUpTest, AClientCanDeactivateAndActivate) {
    startUp();
    mgr->SetActivated(false);
    EXPECT_FALSE(popsUp());
    mgr->SetActivated(true);
    EXPECT_TRUE(popsUp());
}

TEST_F(StartUpTest, ActivatedEarlyByAClientNoUsbEventIsTakenAllTheSame) {
    mgr->SetActivated(true);
    EXPECT_FALSE(popsUp());
    EXPECT_EQ(calls(), Texts{});
}

TEST_F(StartUpTest, TheTimerOverrulesAClientThatDeactivatedBefore) {
    mgr->SetActivated(false);
    startUp();
    EXPECT_TRUE(popsUp());
}

TEST_F(StartUpTest, ADeviceAttachedInTheFirst30SecondsIsNotReportedByAnEvent) {
    tv.advanceSeconds(10);
    plug();
    tv.advanceSeconds(25);
    EXPECT_EQ(mgr->GetDeviceCount(), 0) << "nothing was enumerated yet";
    EXPECT_TRUE(tv.screen().history().empty());
    EXPECT_TRUE(tv.scanner().started().empty());
}

TEST_F(StartUpTest, ADeviceAttachedInTheFirst30SecondsIsFoundByALaterListRequest) {
    const auto stick = plug();
    startUp();
    ASSERT_NE(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(listedKeys(), Texts{keyOf(tv.ports().device(stick))});
}

TEST_F(StartUpTest, ADeviceAttachedInTheFirst30SecondsIsFoundByTheFirstEvent) {
    simulated::UsbDevice early;
    early.product = "Early";
    const auto first = plug(early);
    startUp();
    const auto second = plug();
    EXPECT_EQ(listedKeys(),
              (Texts{keyOf(tv.ports().device(second)), keyOf(tv.ports().device(first))}));
}

TEST_F(StartUpTest, AListRequestedInTheFirst30SecondsIsAnswered) {
    const auto stick = plug();
    ASSERT_NE(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(listedKeys(), Texts{keyOf(tv.ports().device(stick))});
}

TEST_F(StartUpTest, AListRequestedInTheFirst30SecondsIsCleanedByTheTimer) {
    plug();
    mgr->GetDeviceList();
    mark = tv.journal().mark();
    startUp();
    EXPECT_EQ(story(),
              (Texts{"app_control_create()", "I m_pDevList:PTR,eListType:1", "I NULL == pMovieDir",
                     R"(vconf_get_int("db/menu/support/use_mode"))", "usb_set_connected_cb()"}));
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
}

TEST_F(StartUpTest, CountersSurviveTheCleaningAndDouble) {
    plug();
    mgr->GetDeviceList();
    startUp();
    EXPECT_EQ(mgr->GetDeviceCount(0), 1);
    mgr->GetDeviceList();
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
    EXPECT_EQ(mgr->GetDeviceCount(0), 2);
}

TEST_F(StartUpTest, APowerOffNoticeInTheFirst30SecondsDoesNotKeepTheTimerFromActivating) {
    tv.power().sendPoweroff(DEVICE_POWEROFF_BIT_OFF);
    startUp();
    EXPECT_TRUE(popsUp());
}

TEST_F(StartUpTest, AWakeUpInTheFirst30SecondsDoesNotPutOffTheTimer) {
    tv.advanceSeconds(20);
    tv.power().sendWakeup(1);
    tv.advanceSeconds(10);
    EXPECT_TRUE(tv.ports().listening());
    EXPECT_TRUE(popsUp());
}

// ---- no launch handle

class NoLaunchHandleTest : public StartUpTest {
protected:
    NoLaunchHandleTest() { tv.journal().order("app_control_create", simulated::Fault::Fails, 1); }
};

TEST_F(NoLaunchHandleTest, TheTimerWarnsAndStops) {
    plug();
    mgr->GetDeviceList();
    mark = tv.journal().mark();
    startUp();
    EXPECT_EQ(story(), (Texts{"app_control_create()", "W app_control_create fail"}));
    EXPECT_EQ(mgr->GetDeviceCount(), 1) << "cleaned although the timer had stopped before";
}

TEST_F(NoLaunchHandleTest, TheManagerIsActivatedAllTheSame) {
    startUp();
    EXPECT_TRUE(access.activated());
}

TEST_F(NoLaunchHandleTest, NoUsbEventIsEverTaken) {
    startUp();
    tv.advanceSeconds(3600);
    tv.power().standby();
    tv.power().wake();
    tv.advanceSeconds(3600);
    plug();
    EXPECT_FALSE(tv.ports().listening());
    EXPECT_EQ(tv.journal().count("app_control_create"), 1U);
    EXPECT_EQ(tv.journal().count("usb_set_connected_cb"), 0U);
    EXPECT_TRUE(tv.screen().history().empty());
}

TEST_F(NoLaunchHandleTest, TheListIsStillServed) {
    startUp();
    plug();
    EXPECT_NE(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
}

TEST_F(NoLaunchHandleTest, ALaunchIsStillTriedAndAnsweredWithAnErrorByThePlatform) {
    temp.file("root/opt/data/demo_movie/a.mp4");
    startUp();
    mark = tv.journal().mark();
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    EXPECT_EQ(tv.journal().count("app_control_set_app_id", mark), 1U);
    EXPECT_EQ(tv.journal().count("app_control_send_launch_request", mark), 1U);
    EXPECT_TRUE(tv.applications().launches().empty());
}

TEST_F(NoLaunchHandleTest, TheEndHasNoHandleToDestroy) {
    startUp();
    mgr->Destroy();
    EXPECT_EQ(tv.journal().count("app_control_destroy"), 0U);
}

}  // namespace
