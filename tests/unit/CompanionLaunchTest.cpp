// Telling the companion application of a device: added, removed, and when it is told nothing.
#include "PopupTest.h"

namespace {

using simulated::DeviceId;
using simulated::Fault;
using simulated::UsbDevice;

constexpr const char* LUMET = "org.norvane.lumet";

class CompanionLaunchTest : public PopupTest {
protected:
    CompanionLaunchTest() {
        device.SetDeviceKey("the key");
        device.SetDisplayName("the name");
        device.SetMountpath("/the/path");
        device.SetDamageFlag(true);
        device.SetFileSystemType(3);
        device.SetBus(5);
        device.SetAddress(6);
        device.SetClass(8);
    }
    static ExtraData extraData(const std::string& action) {
        return {{"called_app", "portmeld"},        {"device_action", action},
                {"device_key", "the key"},         {"device_display_name", "the name"},
                {"device_mountpath", "/the/path"}, {"device_damage_flag", "1"},
                {"device_file_system", "3"},       {"device_bus_num", "5"},
                {"device_address", "6"},           {"device_class", "8"}};
    }
    Texts story() { return tv.journal().story(mark); }

    CMMDeviceInfo device;
};

// ---- added

TEST_F(CompanionLaunchTest, OfAnAddedDeviceSendsItsWholeDescription) {
    access.launchLumet(&device, 1);
    EXPECT_EQ(story(), joined({{"I Device Info - nAction:1,m_bActivated pop:1"},
                               contextCalls(),
                               {"I distraction_free MODE : 0", "I distraction_free MODE : 0",
                                "I Connected device:the key"},
                               launchCalls(extraData("ADD"), LUMET),
                               {"I ADD launch org.norvane.lumet"}}));
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.applications().launches()[0].appId, LUMET);
}

TEST_F(CompanionLaunchTest, OfAnUndamagedDeviceSendsTheFlagAs0) {
    device.SetDamageFlag(false);
    access.launchLumet(&device, 1);
    EXPECT_TRUE(inOrder(calls(), {extraDataCall("device_damage_flag", "0")}));
}

TEST_F(CompanionLaunchTest, OfAnAddedDeviceIsSentWhetherTheCompanionRunsOrNot) {
    access.launchLumet(&device, 1);
    companionRuns();
    access.launchLumet(&device, 1);
    EXPECT_EQ(tv.applications().launches().size(), 2U);
    EXPECT_EQ(tv.journal().count("app_manager_is_running", mark), 0U);
}

TEST_F(CompanionLaunchTest, OfAnAddedDeviceIsNotSentWhileNotActivatedAndNoStateIsAsked) {
    mgr->SetActivated(false);
    access.launchLumet(&device, 1);
    EXPECT_EQ(story(), Texts{"I Device Info - nAction:1,m_bActivated pop:0"});
}

class CompanionDistractionTest : public CompanionLaunchTest,
                                 public ::testing::WithParamInterface<int> {};
using CompanionOtherStateTest = CompanionDistractionTest;

TEST_P(CompanionDistractionTest, KeepsAnAddedDeviceBackWithALineOfItsOwn) {
    tv.small().contextState = GetParam();
    access.launchLumet(&device, 1);
    EXPECT_EQ(story(), joined({{"I Device Info - nAction:1,m_bActivated pop:1"},
                               contextCalls(),
                               {"I distraction_free MODE : " + std::to_string(GetParam()),
                                "I distraction_free MODE : " + std::to_string(GetParam() & 0xC80),
                                "I Distraction Free Mode enabled, ignore demo player launch"}}));
}

INSTANTIATE_TEST_SUITE_P(AnyOfBits7_10And11,
                         CompanionDistractionTest,
                         ::testing::Values(0x80, 0x400, 0x800, 0xC80, -1));

TEST_P(CompanionOtherStateTest, LetsAnAddedDeviceThrough) {
    tv.small().contextState = GetParam();
    access.launchLumet(&device, 1);
    EXPECT_EQ(tv.applications().launches().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(AnyOtherBits,
                         CompanionOtherStateTest,
                         ::testing::Values(0x40, 0x100, 0x200, 0x1000, ~0xC80));

// ---- removed

TEST_F(CompanionLaunchTest, OfARemovedDeviceSendsItsWholeDescription) {
    companionRuns();
    access.launchLumet(&device, 2);
    EXPECT_EQ(story(),
              joined({{"I Device Info - nAction:2,m_bActivated pop:1", isRunningCall(LUMET),
                       "I org.norvane.lumet running status is 1", "I Disconnected device:the key"},
                      launchCalls(extraData("DELETE"), LUMET),
                      {"I DELETE launch org.norvane.lumet"}}));
}

TEST_F(CompanionLaunchTest, OfARemovedDeviceSendsNothingWhileTheCompanionDoesNotRun) {
    access.launchLumet(&device, 2);
    EXPECT_EQ(story(), (Texts{"I Device Info - nAction:2,m_bActivated pop:1", isRunningCall(LUMET),
                              "I org.norvane.lumet running status is 0"}));
}

TEST_F(CompanionLaunchTest, OfARemovedDeviceIsSentThoughNotActivatedAndDistractionFree) {
    companionRuns();
    mgr->SetActivated(false);
    tv.small().contextState = 0xC80;
    access.launchLumet(&device, 2);
    EXPECT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.journal().count("tvcontext_query_state", mark), 0U);
}

TEST_F(CompanionLaunchTest, OfARemovedDeviceSendsNothingWhenTheCompanionCannotBeAsked) {
    companionRuns();
    tv.journal().order("app_manager_is_running", Fault::Fails);
    access.launchLumet(&device, 2);
    EXPECT_TRUE(tv.applications().launches().empty());
}

// ---- anything else

class OtherActionTest : public CompanionLaunchTest, public ::testing::WithParamInterface<int> {};

TEST_P(OtherActionTest, SendsNothing) {
    companionRuns();
    access.launchLumet(&device, GetParam());
    EXPECT_EQ(story(), Texts{"I Device Info - nAction:" + std::to_string(GetParam()) +
                             ",m_bActivated pop:1"});
}

INSTANTIATE_TEST_SUITE_P(Than1And2, OtherActionTest, ::testing::Values(0, 3, 4, -1));

TEST_F(CompanionLaunchTest, OfNoDeviceIsAWarning) {
    companionRuns();
    for (const int action : {1, 2, 3}) {
        forget();
        access.launchLumet(nullptr, action);
        EXPECT_EQ(story(), Texts{"W pNode is NULL"});
    }
}

TEST_F(CompanionLaunchTest, IsAlwaysEnabled) {
    EXPECT_TRUE(access.enableLumet());
}

// ---- by events

TEST_F(CompanionLaunchTest, OfAStickPluggedAndPulledSendsAddAndDelete) {
    companionRuns();
    UsbDevice like;
    like.devname = "node";
    like.fileSystem = 99;
    const DeviceId stick = plug(like);
    pull(stick);
    const auto& launches = tv.applications().launches();
    ASSERT_EQ(launches.size(), 2U);
    EXPECT_EQ(launches[0].extraData.at("device_action"), "ADD");
    EXPECT_EQ(launches[1].extraData.at("device_action"), "DELETE");
    for (const simulated::Launch& launch : launches) {
        EXPECT_EQ(launch.appId, LUMET);
        EXPECT_EQ(launch.extraData.at("device_key"), "node");
        EXPECT_EQ(launch.extraData.at("device_damage_flag"), "1");
        EXPECT_EQ(launch.extraData.at("device_file_system"), "99");
        EXPECT_EQ(launch.extraData.at("device_class"), "8");
    }
}

}  // namespace
