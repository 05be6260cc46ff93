// Power events: wake-ups, power-off notices and power states, the timers that they start and
// remove, and what they do to activation and standby. What a wake-up does to the device list stands
// in WakeUpListTest.cpp, what the demo timer launches in DemoTriggerTest.cpp.
#include <climits>

#include "MMNames.h"
#include "Stories.h"
#include "TvTest.h"

namespace {

using Intervals = std::vector<std::int64_t>;

constexpr int NORMAL = DEVICE_POWER_STATE_NORMAL;
constexpr int STANDBY = DEVICE_POWER_STATE_STANDBY;
constexpr int OFF = DEVICE_POWEROFF_BIT_OFF;
constexpr const char* ACTIVATED = "m_ChangeEnableTimerCB SetEnable to true and return false";
const std::string ASK_MODE = R"(vconf_get_int("db/menu/support/use_mode"))";

class PowerTest : public ManagerTest {
protected:
    Texts story() { return plainStory(tv, mark); }
    void wakeUp(int reason = 1) {
        tv.power().sendWakeup(reason);
        tv.settle();
    }
    void powerOff(int option = OFF) {
        tv.power().sendPoweroff(option);
        tv.settle();
    }
    void state(int value) {
        tv.power().sendState(value);
        tv.settle();
    }
    void shopMode() {
        tv.settings().set(MMNames::KEY_USE_MODE, 1);
        tv.settle();
        forget();
    }
    /// Intervals of the waiting timers, the earliest due first.
    Intervals waitingTimers() {
        Intervals intervals;
        for (const auto& timer : tv.clock().timers()) {
            intervals.push_back(timer.interval);
        }
        return intervals;
    }
    bool demoWasConsidered() { return logged(4, "Check Demo player via m_AllUsbActionCallback\n"); }
};

// ---- wake-up

TEST_F(PowerTest, AWakeUpLogsItsReasonStartsTheActivationTimerAndAsksForTheMode) {
    tv.power().sendWakeup(7);
    tv.settle();
    EXPECT_EQ(tv.journal().story(mark, 3), (Texts{"I m_WakeupChangedCB: reason=7,user_data=" +
                                                      address(mgr) + ", begin to set Enable false",
                                                  "g_timeout_add(60000)", ASK_MODE}));
}

TEST_F(PowerTest, AWakeUpReturns0) {
    EXPECT_EQ(CMMDeviceMgrTestAccess::wakeup(mgr), 0);
}

TEST_F(PowerTest, AWakeUpLeavesActivationAlone) {
    wakeUp();
    EXPECT_TRUE(popsUp());
    mgr->SetActivated(false);
    wakeUp();
    EXPECT_FALSE(popsUp());
}

TEST_F(PowerTest, AWakeUpAtHomeStartsTheActivationTimerOnly) {
    wakeUp();
    EXPECT_EQ(waitingTimers(), (Intervals{60000}));
}

TEST_F(PowerTest, AWakeUpInAShopStartsTheDemoTimerToo) {
    shopMode();
    wakeUp();
    EXPECT_EQ(waitingTimers(), (Intervals{10000, 60000}));
}

TEST_F(PowerTest, TheActivationTimerActivates60SecondsAfterTheWakeUpAndOnce) {
    mgr->SetActivated(false);
    wakeUp();
    tv.advance(59999);
    EXPECT_FALSE(access.activated());
    forget();
    tv.advance(1);
    EXPECT_EQ(story(), Texts{std::string("I ") + ACTIVATED});
    EXPECT_TRUE(popsUp());
    EXPECT_FALSE(logged(5, "m_bActivated is false, don't launch usb notification now!"));
    tv.advanceSeconds(600);
    EXPECT_EQ(occurrences(messages(), ACTIVATED), 1);
}

TEST_F(PowerTest, TwoWakeUpsWithin60SecondsStartTwoActivationTimersAndBothFire) {
    wakeUp();
    tv.advanceSeconds(20);
    wakeUp();
    EXPECT_EQ(waitingTimers(), (Intervals{60000, 60000}));
    forget();
    tv.advanceSeconds(40);
    EXPECT_EQ(occurrences(messages(), ACTIVATED), 1);
    tv.advanceSeconds(20);
    EXPECT_EQ(occurrences(messages(), ACTIVATED), 2);
}

TEST_F(PowerTest, TwoWakeUpsInAShopStartTwoDemoTimersAndBothFire) {
    shopMode();
    wakeUp();
    tv.advanceSeconds(5);
    wakeUp();
    forget();
    tv.advanceSeconds(10);
    EXPECT_EQ(occurrences(messages(), "Check Demo player via m_AllUsbActionCallback\n"), 2);
}

TEST_F(PowerTest, APowerOffAfterTwoWakeUpsRemovesTheSecondActivationTimerAndTheFirstFires) {
    wakeUp();
    tv.advanceSeconds(20);
    wakeUp();
    powerOff();
    EXPECT_FALSE(access.activated());
    ASSERT_EQ(tv.clock().timers().size(), 1U);
    tv.advanceSeconds(40);
    EXPECT_TRUE(popsUp());
    EXPECT_TRUE(waitingTimers().empty() || waitingTimers().front() != 60000);
}

// ---- power-off

TEST_F(PowerTest, APowerOffLogsItsOption) {
    powerOff(OFF);
    EXPECT_EQ(story(), (Texts{"I option = 1073741824", "I m_PoweroffChangedCB over"}));
}

TEST_F(PowerTest, APowerOffReturns0) {
    EXPECT_EQ(CMMDeviceMgrTestAccess::poweroff(mgr), 0);
}

TEST_F(PowerTest, APowerOffDeactivatesUntil60SecondsAfterTheNextWakeUp) {
    powerOff();
    EXPECT_FALSE(popsUp());
    tv.advanceSeconds(3600);
    EXPECT_FALSE(popsUp());
    wakeUp();
    tv.advanceSeconds(59);
    EXPECT_FALSE(popsUp());
    tv.advanceSeconds(1);
    EXPECT_TRUE(popsUp());
}

TEST_F(PowerTest, APowerOffRemovesTheActivationTimerAndTheDemoTimer) {
    shopMode();
    wakeUp();
    powerOff();
    EXPECT_EQ(waitingTimers(), Intervals{});
    forget();
    tv.advanceSeconds(120);
    EXPECT_EQ(story(), Texts{});
    EXPECT_FALSE(access.activated());
}

TEST_F(PowerTest, APowerOffWithoutAWakeUpHasNoTimerToRemove) {
    powerOff();
    EXPECT_EQ(story(), (Texts{"I option = 1073741824", "I m_PoweroffChangedCB over"}));
}

TEST_F(PowerTest, APowerOffAfterBothTimersHaveFiredRemovesNothing) {
    shopMode();
    wakeUp();
    tv.advanceSeconds(60);
    forget();
    powerOff();  // GLib would complain of a source that is not there, and end the test
    EXPECT_EQ(story(), (Texts{"I option = 1073741824", "I m_PoweroffChangedCB over"}));
    EXPECT_FALSE(access.activated());
}

TEST_F(PowerTest, ASecondPowerOffRemovesNothingAnew) {
    shopMode();
    wakeUp();
    powerOff();
    powerOff();
    EXPECT_EQ(waitingTimers(), Intervals{});
    wakeUp();
    EXPECT_EQ(waitingTimers(), (Intervals{10000, 60000}));
}

/// A power-off notice: its option, and whether it counts.
class PowerOffOptionTest : public PowerTest,
                           public ::testing::WithParamInterface<std::pair<int, bool>> {};

TEST_P(PowerOffOptionTest, ClearsStandbyAndOnlyWithBit30AndNot13Or14DeactivatesAndRemovesTimers) {
    const auto [option, counts] = GetParam();
    shopMode();
    wakeUp();
    mgr->SetStandby(true);
    forget();
    powerOff(option);
    EXPECT_FALSE(mgr->IsStandby());
    EXPECT_EQ(waitingTimers(), counts ? Intervals{} : (Intervals{10000, 60000}));
    EXPECT_EQ(story(),
              (Texts{"I option = " + std::to_string(option), "I m_PoweroffChangedCB over"}));
    EXPECT_EQ(popsUp(), !counts);
}

INSTANTIATE_TEST_SUITE_P(Option,
                         PowerOffOptionTest,
                         ::testing::Values(std::pair(0, false),
                                           std::pair(1, false),
                                           std::pair(12, false),
                                           std::pair(13, false),
                                           std::pair(14, false),
                                           std::pair(15, false),
                                           std::pair(OFF, true),
                                           std::pair(OFF | 1, true),
                                           std::pair(OFF | 12, true),
                                           std::pair(OFF | 13, true),
                                           std::pair(OFF | 14, true),
                                           std::pair(OFF | 15, true),
                                           std::pair(OFF - 1, false),
                                           std::pair(0x20000000, false),
                                           std::pair(INT_MAX, true),
                                           std::pair(INT_MIN, false),
                                           std::pair(INT_MIN | OFF, true),
                                           std::pair(-1, true)),
                         [](const auto& test) {
                             const auto bits = static_cast<unsigned>(test.param.first);
                             char name[32];
                             (void)std::snprintf(name, sizeof name, "0x%08X%s", bits,
                                                 test.param.second ? "counts" : "isLetPass");
                             return std::string(name);
                         });

// ---- power states

TEST_F(PowerTest, StandbySetsTheFlagAndLogsTheFlagAsItWas) {
    state(STANDBY);
    EXPECT_TRUE(mgr->IsStandby());
    state(STANDBY);
    EXPECT_EQ(story(),
              (Texts{"I option = 2", "I from Standby = 0", "I m_PowerStateChangedCB over",
                     "I option = 2", "I from Standby = 1", "I m_PowerStateChangedCB over"}));
}

TEST_F(PowerTest, APowerStateReturns1) {
    EXPECT_EQ(CMMDeviceMgrTestAccess::powerState(mgr), 1);
}

TEST_F(PowerTest, StandbyRemovesTheDemoTimerAndLeavesTheActivationTimer) {
    shopMode();
    wakeUp();
    state(STANDBY);
    EXPECT_EQ(waitingTimers(), (Intervals{60000}));
    tv.advanceSeconds(20);
    EXPECT_FALSE(demoWasConsidered());
}

TEST_F(PowerTest, StandbyLeavesActivationAlone) {
    state(STANDBY);
    EXPECT_TRUE(popsUp());
}

TEST_F(PowerTest, StandbyWithoutADemoTimerHasNoneToRemove) {
    state(STANDBY);
    EXPECT_EQ(waitingTimers(), Intervals{});
}

TEST_F(PowerTest, StandbyAfterTheDemoTimerHasFiredRemovesNothing) {
    shopMode();
    wakeUp();
    tv.advanceSeconds(10);
    state(STANDBY);  // GLib would complain of a source that is not there, and end the test
    EXPECT_EQ(waitingTimers(), (Intervals{60000}));
    EXPECT_TRUE(mgr->IsStandby());
}

TEST_F(PowerTest, BackFromStandbyInAShopTheDemoTimerStartsAndStandbyStays) {
    shopMode();
    state(STANDBY);
    forget();
    state(NORMAL);
    EXPECT_EQ(story(), (Texts{"I option = 0", "I from Standby = 1", ASK_MODE,
                              "g_timeout_add(10000)", "I m_PowerStateChangedCB over"}));
    EXPECT_EQ(waitingTimers(), (Intervals{10000}));
    EXPECT_TRUE(mgr->IsStandby());
}

TEST_F(PowerTest, StandbyStaysSoEachFurtherState0StartsADemoTimer) {
    shopMode();
    state(STANDBY);
    state(NORMAL);
    state(NORMAL);
    EXPECT_EQ(waitingTimers(), (Intervals{10000, 10000}));
    state(STANDBY);  // removes the one whose id is kept
    EXPECT_EQ(waitingTimers(), (Intervals{10000}));
}

TEST_F(PowerTest, BackFromStandbyAtHomeStartsNothing) {
    state(STANDBY);
    forget();
    state(NORMAL);
    EXPECT_EQ(story(), (Texts{"I option = 0", "I from Standby = 1", ASK_MODE,
                              "I m_PowerStateChangedCB over"}));
    EXPECT_EQ(waitingTimers(), Intervals{});
}

TEST_F(PowerTest, State0WithoutAPrecedingState2StartsNoDemoTimer) {
    shopMode();
    state(NORMAL);
    EXPECT_EQ(story(),
              (Texts{"I option = 0", "I from Standby = 0", "I m_PowerStateChangedCB over"}));
    EXPECT_EQ(waitingTimers(), Intervals{});
}

TEST_F(PowerTest, State0AfterAPowerOffHasClearedStandbyStartsNoDemoTimer) {
    shopMode();
    state(STANDBY);
    powerOff(DEVICE_POWEROFF_OPTION_13);
    state(NORMAL);
    EXPECT_EQ(waitingTimers(), Intervals{});
}

TEST_F(PowerTest, AnyOtherStateOnlyLogs) {
    shopMode();
    state(STANDBY);
    forget();
    for (const int other : {1, 3, -1, 99}) {
        state(other);
    }
    EXPECT_TRUE(mgr->IsStandby());
    EXPECT_EQ(waitingTimers(), Intervals{});
    Texts expected;
    for (const char* other : {"1", "3", "-1", "99"}) {
        expected.push_back(std::string("I option = ") + other);
        expected.emplace_back("I from Standby = 1");
        expected.emplace_back("I m_PowerStateChangedCB over");
    }
    EXPECT_EQ(story(), expected);
}

TEST_F(PowerTest, AnotherStateKeepsTheDemoTimer) {
    shopMode();
    wakeUp();
    state(1);
    EXPECT_EQ(waitingTimers(), (Intervals{10000, 60000}));
}

TEST_F(PowerTest, StandbyCanBeSetAndRead) {
    EXPECT_FALSE(mgr->IsStandby());
    mgr->SetStandby(true);
    EXPECT_TRUE(mgr->IsStandby());
    mgr->SetStandby(false);
    EXPECT_FALSE(mgr->IsStandby());
}

TEST_F(PowerTest, ANightInStandbyEndsWithPopUpsAMinuteAfterTheMorning) {
    tv.power().standby();
    tv.settle();
    EXPECT_FALSE(popsUp());
    tv.advanceSeconds(8 * 3600);
    tv.power().wake();
    tv.settle();
    EXPECT_FALSE(popsUp());
    tv.advanceSeconds(60);
    EXPECT_TRUE(popsUp());
}

}  // namespace
