// The device manager's beginning and end: how it is made, what it subscribes to, what it gives
// back, and the events that come afterwards. What happens 30 s later stands in StartUpTest.cpp,
// callbacks without a manager in NoManagerTest.cpp.
#include "MMNames.h"
#include "Stories.h"
#include "TvTest.h"

namespace {

class LifecycleTest : public StartingManagerTest {
protected:
    /// End the manager. Returns where it was.
    void* end() {
        void* where = mgr;
        mgr->Destroy();
        CMMDeviceMgr::DestroyInstance();
        mgr = nullptr;
        return where;
    }
    std::vector<std::int64_t> waitingTimers() {
        std::vector<std::int64_t> intervals;
        for (const auto& timer : tv.clock().timers()) {
            intervals.push_back(timer.interval);
        }
        return intervals;
    }
};

const Texts& subscriptions() {
    static const Texts calls = {"usb_device_init()",
                                R"(init_notification_data_manager("portmeld", 0))",
                                "register_notification_button_callback()",
                                "register_notification_timeout_callback()",
                                "register_notofication_hide_callback()",
                                "g_timeout_add(30000)",
                                "device_power_subscribe_wakeup()",
                                "device_power_subscribe_poweroff()",
                                "device_power_subscribe_state_changed()",
                                R"(vconf_notify_key_changed("db/menu/support/use_mode"))",
                                "vconf_notify_key_changed("
                                R"("memory/portmeld/removed_dlna_device"))"};
    return calls;
}

// ---- creation

TEST_F(LifecycleTest, CreationSubscribesToThePlatformInThisOrder) {
    const std::string self = address(mgr);
    EXPECT_EQ(
        tv.journal().story(0, 3),
        (Texts{"I Instance :(nil)", "usb_device_init()",
               R"(init_notification_data_manager("portmeld", 0))",
               "register_notification_button_callback()",
               "register_notification_timeout_callback()", "register_notofication_hide_callback()",
               "g_timeout_add(30000)", "device_power_subscribe_wakeup()",
               "device_power_subscribe_poweroff()", "device_power_subscribe_state_changed()",
               "I power_subscribe result_wakeup=0, result_power_off=0, "
               "result_state_change=0, this=" +
                   self,
               R"(vconf_notify_key_changed("db/menu/support/use_mode"))",
               "I RegisterUseModeCb added : 0",
               R"(vconf_notify_key_changed("memory/portmeld/removed_dlna_device"))",
               "I m_RegisterRemovedDLNADeviceNameCallback added : 0", "I Instance :" + self}));
}

TEST_F(LifecycleTest, CreationArmsTheStartUpTimerAndNoOther) {
    EXPECT_EQ(waitingTimers(), (std::vector<std::int64_t>{30000}));
}

TEST_F(LifecycleTest, CreationInstallsNoUsbCallback) {
    EXPECT_FALSE(tv.ports().listening());
}

TEST_F(LifecycleTest, CreationReturnsTrue) {
    EXPECT_TRUE(mgr->Create());
}

TEST_F(LifecycleTest, TheSecondGetInstanceReturnsTheSameManagerAndOnlyLogsIt) {
    const auto since = tv.journal().mark();
    EXPECT_EQ(CMMDeviceMgr::GetInstance(), mgr);
    const std::string line = "I Instance :" + address(mgr);
    EXPECT_EQ(tv.journal().story(since, 3), (Texts{line, line}));
}

TEST_F(LifecycleTest, ANewManagerIsEmpty) {
    EXPECT_FALSE(access.activated());
    EXPECT_FALSE(mgr->IsStandby());
    EXPECT_FALSE(access.notificationShown());
    EXPECT_EQ(access.shownNotification(), "");
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
    EXPECT_EQ(mgr->GetDeviceCount(-1), 0);
    EXPECT_EQ(access.list(), nullptr);
    EXPECT_EQ(access.currentDevice(), nullptr);
    EXPECT_EQ(access.displayedDevice(), nullptr);
    EXPECT_EQ(access.scanFile().nType, 0);
    EXPECT_EQ(access.scanFile().strFilePath, "");
}

TEST_F(LifecycleTest, AButtonOfAnEarlierProcessLifeLaunchesNoPlayer) {
    const auto since = tv.journal().mark();
    tv.screen().sendButton(0, 0);
    tv.settle();
    EXPECT_TRUE(tv.journal().logged(5, "pNode is NULL", since));
    EXPECT_EQ(tv.journal().count("app_control_send_launch_request", since), 0U);
}

/// A TV on which the functions that are to fail can be ordered before the manager comes.
class RefusalTest : public TvTest {
protected:
    void TearDown() override {
        CMMDeviceMgr::GetInstance()->Destroy();
        CMMDeviceMgr::DestroyInstance();
        TvTest::TearDown();
    }
};

class EachRefusalTest : public RefusalTest, public ::testing::WithParamInterface<std::string> {};

TEST_P(EachRefusalTest, StopsNeitherTheSequenceNorTheCreation) {
    tv.journal().order(GetParam(), simulated::Fault::Fails);
    EXPECT_NE(CMMDeviceMgr::GetInstance(), nullptr);
    EXPECT_EQ(tv.journal().calls(), subscriptions());
    EXPECT_FALSE(tv.journal().logged(5, "Create CMMDeviceMgr instance fail"));
}

INSTANTIATE_TEST_SUITE_P(OfASubscription,
                         EachRefusalTest,
                         ::testing::Values("usb_device_init",
                                           "init_notification_data_manager",
                                           "register_notification_button_callback",
                                           "register_notification_timeout_callback",
                                           "register_notofication_hide_callback",
                                           "device_power_subscribe_wakeup",
                                           "device_power_subscribe_poweroff",
                                           "device_power_subscribe_state_changed",
                                           "vconf_notify_key_changed"),
                         [](const auto& test) { return test.param; });

bool anyMessageMatches(simulated::SimulatedTv& tv, const std::string& pattern) {
    for (const std::string& message : tv.journal().messages()) {
        if (g_regex_match_simple(("^" + pattern + "$").c_str(), message.c_str(),
                                 GRegexCompileFlags{}, GRegexMatchFlags{})) {
            return true;
        }
    }
    return false;
}

TEST_F(RefusalTest, OfAPowerNoticeIsLoggedInItsPlace) {
    tv.journal().order("device_power_subscribe_poweroff", simulated::Fault::Fails);
    CMMDeviceMgr::GetInstance();
    EXPECT_TRUE(
        anyMessageMatches(tv,
                          "power_subscribe result_wakeup=0, result_power_off=-?[1-9][0-9]*, "
                          "result_state_change=0, this=0x[0-9a-f]+"));
}

TEST_F(RefusalTest, OfASettingsWatchIsLoggedWithItsResult) {
    tv.journal().order("vconf_notify_key_changed", simulated::Fault::Fails);
    CMMDeviceMgr::GetInstance();
    EXPECT_TRUE(anyMessageMatches(tv, "RegisterUseModeCb added : -?[1-9][0-9]*"));
    EXPECT_TRUE(
        anyMessageMatches(tv, "m_RegisterRemovedDLNADeviceNameCallback added : -?[1-9][0-9]*"));
}

// ---- settings

TEST_F(LifecycleTest, ABooleanSettingIsTrueOnlyWhenItReadsTrue) {
    tv.settings().set("db/on", true);
    tv.settings().set("db/off", false);
    EXPECT_TRUE(access.vconfigBool("db/on"));
    EXPECT_FALSE(access.vconfigBool("db/off"));
    EXPECT_FALSE(access.vconfigBool("db/unset"));
    tv.journal().order("vconf_get_bool", simulated::Fault::Fails);
    EXPECT_FALSE(access.vconfigBool("db/on"));
}

TEST_F(LifecycleTest, ATextSettingIsCopiedAndLoggedAtDebugLevel) {
    tv.settings().set("db/text", "value");
    std::string text = "before";
    const auto since = tv.journal().mark();
    EXPECT_TRUE(access.vconfString("db/text", text));
    EXPECT_EQ(text, "value");
    EXPECT_EQ(tv.journal().story(since, 3),
              (Texts{R"(vconf_get_str("db/text"))", "D stored path are value"}));
}

TEST_F(LifecycleTest, AnUnsetTextSettingWarnsAndEmptiesTheText) {
    std::string text = "before";
    const auto since = tv.journal().mark();
    EXPECT_FALSE(access.vconfString("db/text", text));
    EXPECT_EQ(text, "");
    EXPECT_EQ(tv.journal().story(since, 3),
              (Texts{R"(vconf_get_str("db/text"))", "W NULL == pValue"}));
}

// ---- end

TEST_F(LifecycleTest, DestroyGivesBackEverythingInThisOrder) {
    startUp();
    const auto since = tv.journal().mark();
    mgr->Destroy();
    EXPECT_EQ(tv.journal().story(since, 3),
              (Texts{"I CMMUsbStorage start....\n", "usb_device_fini()", "usb_unset_connected_cb()",
                     "close_notification_data_manager()", "app_control_destroy()",
                     "device_power_unsubscribe_wakeup()", "I power_unsubscribe_wakeup res=0",
                     "device_power_unsubscribe_poweroff()",
                     "device_power_unsubscribe_state_changed()", "I finish....\n"}));
}

TEST_F(LifecycleTest, DestroyBeforeTheStartUpTimerHasNoLaunchHandleToDestroy) {
    mgr->Destroy();
    EXPECT_EQ(tv.journal().count("app_control_destroy"), 0U);
    EXPECT_EQ(tv.journal().count("device_power_unsubscribe_state_changed"), 1U);
}

TEST_F(LifecycleTest, DestroyCleansTheListBeforeItStopsTheUsbLibrary) {
    startUp();
    plug();
    const auto since = tv.journal().mark();
    mgr->Destroy();
    const Texts story = plainStory(tv, since);
    ASSERT_GE(story.size(), 3U);
    EXPECT_EQ(story[0], "I CMMUsbStorage start....\n");
    EXPECT_EQ(story[1], "I m_pDevList:PTR,eListType:1");
    EXPECT_EQ(story[2], "usb_device_fini()");
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
}

TEST_F(LifecycleTest, DestroyTellsNoClientOfTheDevicesThatLeaveTheList) {
    startUp();
    plug();
    int told = 0;
    mgr->SetDeviceEventCallback(
        [](void* count, CMMDeviceInfo*, bool) { ++*static_cast<int*>(count); }, &told);
    mgr->Destroy();
    EXPECT_EQ(told, 0);
}

TEST_F(LifecycleTest, DestroyClearsTheThreeCallbacks) {
    int told = 0;
    mgr->SetDeviceEventCallback(
        [](void* count, CMMDeviceInfo*, bool) { ++*static_cast<int*>(count); }, &told);
    access.setNotifyCallback([](void* count) { ++*static_cast<int*>(count); }, &told);
    access.setRemovedCallback([](void* count, std::string) { ++*static_cast<int*>(count); }, &told);
    mgr->Destroy();

    plug();
    mgr->GetDeviceList();
    const EnumeratedHandle handle(USB_CLASS_MASS_STORAGE);
    CMMDeviceInfo info;
    access.notifyClient(&info);
    access.disconnectedDevice(handle.get());
    EXPECT_EQ(told, 0);
}

TEST_F(LifecycleTest, DestroyLogsARefusedUnsubscription) {
    tv.journal().order("device_power_unsubscribe_wakeup", simulated::Fault::Fails);
    mgr->Destroy();
    EXPECT_TRUE(anyMessageMatches(tv, "power_unsubscribe_wakeup res=-?[1-9][0-9]*"));
}

TEST_F(LifecycleTest, DestroyLeavesTheSettingsWatchesAndTheTimers) {
    tv.power().sendWakeup(1);
    tv.settle();
    mgr->Destroy();
    EXPECT_EQ(tv.settings().watched(),
              (Texts{"db/menu/support/use_mode", "memory/portmeld/removed_dlna_device"}));
    EXPECT_EQ(waitingTimers(), (std::vector<std::int64_t>{30000, 60000}));
}

TEST_F(LifecycleTest, AUseModeChangeAfterDestroyLaunchesWithoutAHandleAndReachesNobody) {
    temp.file("root/opt/data/demo_movie/a.mp4");
    startUp();
    mgr->Destroy();
    const auto since = tv.journal().mark();
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    EXPECT_EQ(tv.journal().count("app_control_set_app_id", since), 1U);
    EXPECT_EQ(tv.journal().count("app_control_send_launch_request", since), 1U);
    EXPECT_TRUE(tv.applications().launches().empty());
}

TEST_F(LifecycleTest, AWakeUpAfterDestroyIsNotHeard) {
    mgr->Destroy();
    const auto since = tv.journal().mark();
    tv.power().sendWakeup(1);
    tv.power().sendPoweroff(DEVICE_POWEROFF_BIT_OFF);
    tv.power().sendState(DEVICE_POWER_STATE_STANDBY);
    tv.settle();
    EXPECT_EQ(tv.journal().story(since, 3), Texts{});
}

TEST_F(LifecycleTest, AStickAfterDestroyIsNotHeard) {
    startUp();
    mgr->Destroy();
    const auto since = tv.journal().mark();
    plug();
    EXPECT_EQ(tv.journal().story(since, 3), Texts{});
}

TEST_F(LifecycleTest, DestroyInstanceWithoutAManagerDoesNothing) {
    end();
    const auto since = tv.journal().mark();
    CMMDeviceMgr::DestroyInstance();
    EXPECT_EQ(tv.journal().story(since, 3), Texts{});
}

TEST_F(LifecycleTest, GetInstanceAfterDestroyInstanceBuildsANewManagerAndCreatesItAgain) {
    startUp();
    end();
    const auto since = tv.journal().mark();
    mgr = CMMDeviceMgr::GetInstance();
    ASSERT_NE(mgr, nullptr);
    EXPECT_EQ(tv.journal().calls(since), subscriptions());
    EXPECT_EQ(tv.journal().messages(since).front(), "Instance :(nil)");
    EXPECT_FALSE(tv.ports().listening());
    EXPECT_EQ(waitingTimers(), (std::vector<std::int64_t>{30000}));
    startUp();
    EXPECT_TRUE(tv.ports().listening());
}

TEST_F(LifecycleTest, TheEndRemovesEverySourceThatWouldCallTheManager) {
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    tv.power().sendWakeup(1);
    tv.power().sendWakeup(1);
    tv.settle();
    ASSERT_EQ(waitingTimers(), (std::vector<std::int64_t>{10000, 10000, 30000, 60000, 60000}));
    end();
    EXPECT_TRUE(waitingTimers().empty());
    const auto since = tv.journal().mark();
    tv.advanceSeconds(120);
    EXPECT_EQ(tv.journal().story(since, 3), Texts{});
}

TEST_F(LifecycleTest, EventsAfterAnEndWithoutDestroyFindNoManagerAndDoNoHarm) {
    startUp();
    const auto stick = plug();
    CMMDeviceMgr::DestroyInstance();
    mgr = nullptr;
    const auto since = tv.journal().mark();
    pull(stick);
    tv.power().sendWakeup(1);
    tv.power().sendPoweroff(DEVICE_POWEROFF_BIT_OFF);
    tv.power().sendState(DEVICE_POWER_STATE_STANDBY);
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    EXPECT_EQ(
        tv.journal().story(since, 4),
        (Texts{"W NULL == pThis", "free_usb_device_h(<" + keyOf(tv.ports().device(stick)) + ">)",
               "W m_WakeupChangedCB: pThis is NULL", "W m_OnPoweroff_ChangedCB: pThis is NULL",
               "W m_UseModeChangedCB: pThis is NULL"}));
}

}  // namespace
