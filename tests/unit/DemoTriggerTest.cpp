// What makes a shop's TV consider a demo, and which of these triggers respect that a viewer must
// not be distracted: start-up, wake-up, the return from standby, and a change of the mode. A stick
// that is plugged in stands in DemoTest.cpp.
#include <algorithm>
#include <functional>

#include <platform/tv_context.h>

#include "MMNames.h"
#include "Stories.h"
#include "TvTest.h"

namespace {

using simulated::UsbDevice;

const int HOME = 0;
const std::string ASK_MODE = R"(vconf_get_int("db/menu/support/use_mode"))";
constexpr const char* LAUNCH_INTERNAL = "launch internal demo player";
constexpr const char* WALK = "Check Demo player via m_AllUsbActionCallback\n";
constexpr const char* DISTRACTED = "Distraction Free Mode enabled, ignore demo player launch";

/// What every trigger's tests need, before or after the start.
template <class Base>
class DemoTriggers : public Base {
protected:
    using Base::temp;
    using Base::tv;

    void internalDemo() { temp.file("root/opt/data/demo_movie/a.mp4"); }
    void distractionFree() { tv.small().contextState = TVCONTEXT_DISTRACTION_FREE_BIT_7; }
    /// A stick with a demo file, there without an event. Returns the file.
    std::string demoStick() {
        const std::string folder = Base::stickFolder();
        const auto stick = tv.ports().insert(UsbDevice{});
        tv.ports().setMounted(stick, folder);
        return temp.file(folder.substr(temp.path().size() + 1) + "/DEMO_LED.tp");
    }
    Texts launchedApps() {
        Texts apps;
        for (const simulated::Launch& launch : tv.applications().launches()) {
            apps.push_back(launch.appId);
        }
        return apps;
    }
};

// ---- start-up

class DemoStartUpTest : public DemoTriggers<StartingManagerTest> {
protected:
    /// Let the TV start in shop mode. The notice of the mode itself comes before, with nothing to
    /// play.
    void startInShop() {
        tv.settings().set(MMNames::KEY_USE_MODE, 1);
        tv.settle();
        for (const auto& prepare : preparations) {
            prepare();
        }
        mark = tv.journal().mark();
        startUp();
    }
    Texts messages() { return tv.journal().messages(mark); }
    std::vector<std::function<void()>> preparations;
    std::size_t mark = 0;
};

TEST_F(DemoStartUpTest, InAShopLaunchesTheInternalDemoAndTakesUsbEventsAfterwards) {
    preparations = {[this] { internalDemo(); }};
    startInShop();
    const Texts seen = plainStory(tv, mark);
    const auto can = std::find(seen.begin(), seen.end(), "I Internal demo CAN be launched");
    EXPECT_EQ(
        Texts(can, seen.end()),
        joined({{"I Internal demo CAN be launched", ASK_MODE, std::string("I ") + LAUNCH_INTERNAL},
                contextCalls(),
                {"I distraction_free MODE : 0", "I distraction_free MODE : 0"},
                launchCalls({}, MMNames::APP_FLOORREEL),
                {std::string("I ") + LAUNCH_INTERNAL, "usb_set_connected_cb()"}}));
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_FLOORREEL});
}

TEST_F(DemoStartUpTest, InAShopWithoutInternalDemoWalksTheDevicesForADemoFile) {
    preparations = {[this] { demoStick(); }};
    startInShop();
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_SHOPREEL});
    EXPECT_TRUE(inOrder(tv.journal().calls(mark),
                        {"app_control_create()", "usb_mass_storage_foreach()",
                         "app_control_send_launch_request()", "usb_set_connected_cb()"}));
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
    EXPECT_FALSE(tv.journal().logged(4, WALK, mark)) << "belongs to the other triggers";
}

TEST_F(DemoStartUpTest, TheInternalDemoGoesBeforeADemoFile) {
    preparations = {[this] { internalDemo(); }, [this] { demoStick(); }};
    startInShop();
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_FLOORREEL});
    EXPECT_EQ(tv.journal().count("usb_mass_storage_foreach", mark), 0U);
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
}

TEST_F(DemoStartUpTest, AtHomeTheInternalDemoIsAskedForAndNothingLaunched) {
    internalDemo();
    demoStick();
    mark = tv.journal().mark();
    startUp();
    EXPECT_TRUE(inOrder(plainStory(tv, mark),
                        {"I Internal demo CAN be launched", ASK_MODE, "usb_set_connected_cb()"}));
    EXPECT_EQ(launchedApps(), Texts{});
    EXPECT_EQ(tv.journal().count("usb_mass_storage_foreach", mark), 0U);
}

TEST_F(DemoStartUpTest, InDistractionFreeStateNoInternalDemoIsLaunchedAndNoDeviceWalked) {
    preparations = {[this] { internalDemo(); }, [this] { demoStick(); },
                    [this] { distractionFree(); }};
    startInShop();
    EXPECT_EQ(launchedApps(), Texts{});
    EXPECT_TRUE(inOrder(messages(), {LAUNCH_INTERNAL, DISTRACTED, LAUNCH_INTERNAL}));
    EXPECT_EQ(tv.journal().count("usb_mass_storage_foreach", mark), 0U);
    EXPECT_TRUE(tv.ports().listening());
}

TEST_F(DemoStartUpTest, InDistractionFreeStateADemoFileIsPlayedAllTheSame) {
    preparations = {[this] { demoStick(); }, [this] { distractionFree(); }};
    startInShop();
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_SHOPREEL});
    EXPECT_EQ(tv.journal().count("tvcontext_query_state", mark), 0U);
}

TEST_F(DemoStartUpTest, AModeChangeInTheFirst30SecondsReachesNoApplication) {
    internalDemo();
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    EXPECT_EQ(tv.journal().count("app_control_send_launch_request"), 1U);
    EXPECT_EQ(launchedApps(), Texts{});
}

// ---- wake-up, and the return from standby: the demo timer

class DemoTimerTest : public DemoTriggers<ManagerTest>, public ::testing::WithParamInterface<bool> {
protected:
    DemoTimerTest() {
        tv.settings().set(MMNames::KEY_USE_MODE, 1);
        tv.settle();
        forget();
    }
    /// Wake up, or come back from standby.
    void trigger() {
        if (GetParam()) {
            tv.power().sendWakeup(1);
        } else {
            tv.power().sendState(DEVICE_POWER_STATE_STANDBY);
            tv.power().sendState(DEVICE_POWER_STATE_NORMAL);
        }
        tv.settle();
    }
};

INSTANTIATE_TEST_SUITE_P(After, DemoTimerTest, ::testing::Bool(), [](const auto& test) {
    return std::string(test.param ? "AWakeUp" : "TheReturnFromStandby");
});

TEST_P(DemoTimerTest, TheInternalDemoIsLaunched10SecondsLaterAndOnce) {
    internalDemo();
    trigger();
    tv.advance(9999);
    EXPECT_EQ(launchedApps(), Texts{});
    tv.advance(1);
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_FLOORREEL});
    tv.applications().endForeground();
    tv.advanceSeconds(3600);
    EXPECT_EQ(launchedApps().size(), 1U);
}

TEST_P(DemoTimerTest, TheInternalDemoIsAnnouncedByCalleeAndCaller) {
    internalDemo();
    trigger();
    tv.advanceSeconds(10);
    EXPECT_EQ(occurrences(messages(), LAUNCH_INTERNAL), 2);
}

TEST_P(DemoTimerTest, ADemoFileIsPlayedWhenThereIsNoInternalDemo) {
    demoStick();
    trigger();
    tv.advanceSeconds(10);
    EXPECT_TRUE(logged(4, WALK));
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_SHOPREEL});
}

TEST_P(DemoTimerTest, InDistractionFreeStateNoInternalDemoIsLaunched) {
    internalDemo();
    distractionFree();
    trigger();
    tv.advanceSeconds(10);
    EXPECT_EQ(launchedApps(), Texts{});
    EXPECT_TRUE(inOrder(messages(), {LAUNCH_INTERNAL, DISTRACTED, LAUNCH_INTERNAL}));
    EXPECT_EQ(tv.journal().count("tvcontext_query_state", mark), 1U);
}

TEST_P(DemoTimerTest, InDistractionFreeStateADemoFileIsPlayedAllTheSame) {
    demoStick();
    distractionFree();
    trigger();
    tv.advanceSeconds(10);
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_SHOPREEL});
    EXPECT_EQ(tv.journal().count("tvcontext_query_state", mark), 0U);
}

TEST_P(DemoTimerTest, NothingIsLaunchedWhenTheModeHasChangedMeanwhile) {
    internalDemo();
    demoStick();
    trigger();
    tv.settings().set(MMNames::KEY_USE_MODE, HOME);
    tv.settle();
    forget();
    tv.advanceSeconds(10);
    EXPECT_EQ(calls(), Texts{ASK_MODE});
    EXPECT_EQ(launchedApps(), Texts{});
}

TEST_P(DemoTimerTest, NothingIsLaunchedAfterAPowerOffWithin10Seconds) {
    internalDemo();
    trigger();
    tv.advance(9999);
    tv.power().sendPoweroff(DEVICE_POWEROFF_BIT_OFF);
    tv.advanceSeconds(60);
    EXPECT_EQ(launchedApps(), Texts{});
}

TEST_P(DemoTimerTest, NothingIsLaunchedAfterStandbyWithin10Seconds) {
    internalDemo();
    trigger();
    tv.advance(9999);
    tv.power().sendState(DEVICE_POWER_STATE_STANDBY);
    tv.advanceSeconds(60);
    EXPECT_EQ(launchedApps(), Texts{});
}

TEST_P(DemoTimerTest, IsNotGatedByActivation) {
    internalDemo();
    mgr->SetActivated(false);
    trigger();
    tv.advanceSeconds(10);
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_FLOORREEL});
}

TEST_P(DemoTimerTest, ARunningInternalDemoIsNotStartedAgain) {
    internalDemo();
    trigger();
    tv.advanceSeconds(10);
    trigger();
    tv.advanceSeconds(10);
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_FLOORREEL});
    tv.applications().endForeground();
    trigger();
    tv.advanceSeconds(10);
    EXPECT_EQ(launchedApps().size(), 2U);
}

// ---- the mode's change

using DemoModeTest = DemoTriggers<ManagerTest>;

TEST_F(DemoModeTest, AChangeToShopModeLaunchesTheInternalDemoWithoutADistractionCheck) {
    internalDemo();
    distractionFree();
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_FLOORREEL});
    EXPECT_EQ(tv.journal().count("tvcontext_query_state", mark), 0U);
    EXPECT_EQ(occurrences(messages(), LAUNCH_INTERNAL), 2);
}

TEST_F(DemoModeTest, AChangeToShopModePlaysADemoFileWithoutADistractionCheck) {
    const std::string file = demoStick();
    distractionFree();
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    ASSERT_EQ(launchedApps(), Texts{MMNames::APP_SHOPREEL});
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("root_path"), file);
    EXPECT_EQ(tv.journal().count("tvcontext_query_state", mark), 0U);
}

TEST_F(DemoModeTest, AChangeToAValueOtherThan1LaunchesNothing) {
    internalDemo();
    demoStick();
    for (const simulated::Settings::Value& value :
         {simulated::Settings::Value(0), simulated::Settings::Value(2),
          simulated::Settings::Value(-1), simulated::Settings::Value("1")}) {
        forget();
        tv.settings().set(MMNames::KEY_USE_MODE, value);
        tv.settle();
        EXPECT_EQ(plainStory(tv, mark), Texts{ASK_MODE});
    }
    EXPECT_EQ(launchedApps(), Texts{});
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
}

TEST_F(DemoModeTest, AModeThatCannotBeReadIsHome) {
    internalDemo();
    tv.journal().order("vconf_get_int", simulated::Fault::Fails);
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    EXPECT_EQ(launchedApps(), Texts{});
}

TEST_F(DemoModeTest, AChangeIsNotGatedByActivation) {
    internalDemo();
    mgr->SetActivated(false);
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_FLOORREEL});
}

}  // namespace
