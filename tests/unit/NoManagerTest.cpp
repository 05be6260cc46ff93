// The callbacks of power, timers, settings, notifications and the scan when their user data is null, or a manager that is
// gone: a warning where there is one for it, and nothing else. Those of the USB library stand in
// UsbIntakeTest.cpp and DemoWalkTest.cpp.
#include "MMNames.h"
#include "TvTest.h"

namespace {

using Access = CMMDeviceMgrTestAccess;

/// Each callback is called with the user data of a manager that never was, and of one that is gone.
class NoManagerTest : public StartingManagerTest {
protected:
    NoManagerTest() : dead(mgr) {
        mgr->Destroy();
        CMMDeviceMgr::DestroyInstance();
        mgr = nullptr;
        mark = tv.journal().mark();
    }
    Texts story() { return tv.journal().story(mark, 4); }
    void* const dead;
    std::size_t mark = 0;
};

TEST_F(NoManagerTest, AWakeUpWarnsAndReturnsMinus1) {
    EXPECT_EQ(Access::wakeup(nullptr), -1);
    EXPECT_EQ(Access::wakeup(dead), -1);
    EXPECT_EQ(story(), Texts(2, "W m_WakeupChangedCB: pThis is NULL"));
    EXPECT_TRUE(tv.clock().timers().empty());
}

TEST_F(NoManagerTest, APowerOffNoticeWarns) {
    Access::poweroff(nullptr);
    Access::poweroff(dead);
    EXPECT_EQ(story(), Texts(2, "W m_OnPoweroff_ChangedCB: pThis is NULL"));
}

TEST_F(NoManagerTest, APowerStateIsSilent) {
    Access::powerState(nullptr);
    Access::powerState(dead);
    EXPECT_EQ(story(), Texts{});
}

TEST_F(NoManagerTest, TheActivationTimerWarnsAndEnds) {
    EXPECT_EQ(Access::enableTimer(nullptr), FALSE);
    EXPECT_EQ(Access::enableTimer(dead), FALSE);
    EXPECT_EQ(story(), Texts(2, "W m_ChangeEnableTimerCB: pThis is NULL"));
}

TEST_F(NoManagerTest, TheStartUpTimerIsSilentAndEnds) {
    EXPECT_EQ(Access::startUpTimer(nullptr), FALSE);
    EXPECT_EQ(Access::startUpTimer(dead), FALSE);
    EXPECT_EQ(story(), Texts{});
}

TEST_F(NoManagerTest, TheDemoTimerWarnsWithASmallBAndEnds) {
    EXPECT_EQ(Access::demoTimer(nullptr), FALSE);
    EXPECT_EQ(Access::demoTimer(dead), FALSE);
    EXPECT_EQ(story(), Texts(2, "W m_LaunchAllDemoPlayerTimerCb: pThis is NULL"));
}

TEST_F(NoManagerTest, AUseModeChangeWarns) {
    Access::useMode(nullptr);
    tv.settings().set(MMNames::KEY_USE_MODE, 1);  // the watch outlives the manager
    tv.settle();
    EXPECT_EQ(story(), Texts(2, "W m_UseModeChangedCB: pThis is NULL"));
}

TEST_F(NoManagerTest, AMediaServerThatWentAwayWarns) {
    Access::dlnaName(nullptr);
    tv.settings().set(MMNames::KEY_REMOVED_DLNA_DEVICE, "Server");  // this watch outlives it too
    tv.settle();
    EXPECT_EQ(story(), Texts(2, "W pThis is NULL"));
    EXPECT_TRUE(tv.screen().history().empty());
}

TEST_F(NoManagerTest, AButtonIsSilent) {
    Access::button(nullptr);
    Access::button(dead);
    EXPECT_EQ(story(), Texts{});
}

TEST_F(NoManagerTest, HidingIsSilent) {
    Access::hide(nullptr);
    Access::hide(dead);
    EXPECT_EQ(story(), Texts{});
}

TEST_F(NoManagerTest, ATimeOutIsSilent) {
    Access::timeout(nullptr);
    Access::timeout(dead);
    EXPECT_EQ(story(), Texts{});
}

TEST_F(NoManagerTest, AScanResultWarnsAndIsNotTaken) {
    EXPECT_FALSE(Access::scan(nullptr));
    EXPECT_FALSE(Access::scan(dead));
    const std::string begin = "I m_OnScanDeviceCB begin: event=25, json = {}";
    EXPECT_EQ(story(), (Texts{begin, "W NULL == pThis", begin, "W NULL == pThis"}));
}

}  // namespace
