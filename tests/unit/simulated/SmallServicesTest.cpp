// Power, watchdog, TV context and usage statistics of the TV.
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <platform/tv_context.h>
#include <platform/usage_statistics.h>
#include <platform/watchdog.h>

#include "SimulatedTv.h"

namespace {

using simulated::SimulatedTv;
using Texts = std::vector<std::string>;

// ---- power

class SimulatedPowerTest : public ::testing::Test {
protected:
    SimulatedPowerTest() {
        device_power_subscribe_wakeup(wakeup, &told);
        device_power_subscribe_poweroff(poweroff, &told);
        device_power_subscribe_state_changed(state, &told);
    }
    static int take(const char* name, int value, void* user) {
        static_cast<Texts*>(user)->push_back(name + std::to_string(value));
        return 0;
    }
    static int wakeup(int value, void* user) { return take("wakeup ", value, user); }
    static int poweroff(int value, void* user) { return take("poweroff ", value, user); }
    static int state(int value, void* user) { return take("state ", value, user); }
    Texts settled() {
        tv.settle();
        return std::exchange(told, {});
    }

    SimulatedTv tv;
    Texts told;
};

TEST_F(SimulatedPowerTest, GoesToStandbyByStateAndThenPowersOff) {
    tv.power().standby();
    EXPECT_TRUE(tv.power().inStandby());
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(settled(), (Texts{"state 2", "poweroff 1073741824"}));
}

TEST_F(SimulatedPowerTest, WakesUpAndIsThenInNormalUse) {
    tv.power().standby();
    settled();
    tv.power().wake();
    EXPECT_FALSE(tv.power().inStandby());
    EXPECT_EQ(settled(), (Texts{"wakeup 1", "state 0"}));
}

TEST_F(SimulatedPowerTest, SendsSingleNotices) {
    tv.power().sendPoweroff(13);
    tv.power().sendState(5);
    tv.power().sendWakeup(-1);
    EXPECT_EQ(settled(), (Texts{"poweroff 13", "state 5", "wakeup -1"}));
}

TEST_F(SimulatedPowerTest, TellsNothingToASubscriberThatLeft) {
    tv.power().wake();
    EXPECT_EQ(device_power_unsubscribe_wakeup(wakeup), 0);
    EXPECT_EQ(device_power_unsubscribe_state_changed(state), 0);
    EXPECT_EQ(settled(), Texts{});
    EXPECT_NE(device_power_unsubscribe_wakeup(wakeup), 0);
    EXPECT_NE(device_power_unsubscribe_poweroff(wakeup), 0) << "another's subscription";
    EXPECT_EQ(device_power_unsubscribe_poweroff(poweroff), 0);
}

// ---- the rest

class SmallServicesTest : public ::testing::Test {
protected:
    SimulatedTv tv;
};

TEST_F(SmallServicesTest, TheWatchdogCountsItsFeeds) {
    EXPECT_EQ(smart_deadlock_register_watchdog_service(60), 0);
    EXPECT_EQ(smart_deadlock_watchdog_notify(), 0);
    EXPECT_EQ(smart_deadlock_watchdog_notify(), 0);
    EXPECT_EQ(tv.small().watchdogPeriod, 60);
    EXPECT_EQ(tv.small().watchdogFeeds, 2);
}

TEST_F(SmallServicesTest, TheContextAnswersItsStateWithinABracket) {
    tv.small().contextState = 0x480;
    int state = 0;
    EXPECT_EQ(tvcontext_init(), 0);
    EXPECT_EQ(tvcontext_query_state(&state), 0);
    EXPECT_EQ(tvcontext_fini(), 0);
    EXPECT_EQ(state, 0x480);
    tv.checkLeaks();
    EXPECT_EQ(tv.journal().breaches(), Texts{});
}

TEST_F(SmallServicesTest, TheContextNotesABracketThatIsNotOpenedOrNotClosed) {
    int state = 0;
    tvcontext_query_state(&state);
    EXPECT_NE(tvcontext_fini(), 0);
    tvcontext_init();
    tv.checkLeaks();
    EXPECT_EQ(tv.journal().breaches(), (Texts{"tvcontext_query_state: without tvcontext_init",
                                              "tvcontext_fini: without tvcontext_init",
                                              "tvcontext_init: 1 without tvcontext_fini"}));
}

TEST_F(SmallServicesTest, ABracketWhoseFunctionsFailIsKeptByCallingThem) {
    for (const char* function : {"tvcontext_init", "tvcontext_fini"}) {
        tv.journal().clearFaults();
        tv.journal().order(function, simulated::Fault::Fails);
        int state = 0;
        tvcontext_init();
        tvcontext_query_state(&state);
        tvcontext_fini();
    }
    tv.checkLeaks();
    EXPECT_EQ(tv.journal().breaches(), Texts{});
}

TEST_F(SmallServicesTest, TheStatisticsKeepWhatWasSent) {
    {
        CKPILogService service;
        EXPECT_EQ(service.SetKPILogServiceconfInfo(KPI_APP_USB), 0);
        EXPECT_EQ(service.SendKPILog(KPI_LOG_USB_BROWSER_LAUNCHED, "USB", "", ""), 0);
    }
    EXPECT_EQ(tv.small().usageAppType, 3);
    ASSERT_EQ(tv.small().usage.size(), 1U);
    EXPECT_EQ(tv.small().usage[0].type, 30);
    EXPECT_EQ(tv.small().usage[0].first, "USB");
    EXPECT_EQ(tv.journal().calls(), (Texts{"CKPILogService::CKPILogService()",
                                           "CKPILogService::SetKPILogServiceconfInfo(3)",
                                           "CKPILogService::SendKPILog(30, \"USB\", \"\", \"\")",
                                           "CKPILogService::~CKPILogService()"}));
}

}  // namespace
