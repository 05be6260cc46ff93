// The shop's demo: when the internal demo can be launched, which files count, and the demo file on
// a stick that is plugged in. The walk over attached devices stands in DemoWalkTest.cpp, what
// triggers a demo and with which distraction check in DemoTriggerTest.cpp.
#include <algorithm>

#include <platform/tv_context.h>

#include "MMNames.h"
#include "Stories.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;

const int HOME = 0;
const std::string ASK_MODE = R"(vconf_get_int("db/menu/support/use_mode"))";
const std::string ASK_DEMO_MODE = R"(vconf_get_int("db/floorreel/demo_mode"))";
constexpr const char* CAN = "Internal demo CAN be launched";
constexpr const char* CANNOT = "Internal demo CANNOT be launched";
constexpr const char* WALK = "Check Demo player via m_AllUsbActionCallback\n";

class DemoTest : public ManagerTest {
protected:
    Texts story() { return plainStory(tv, mark); }
    void demoFile(const std::string& name) { temp.file("root/opt/data/demo_movie/" + name); }
    void emptyDemoFolder() { temp.folder("root/opt/data/demo_movie"); }
    /// Change to shop mode, which considers a demo at once.
    void shopMode() {
        tv.settings().set(MMNames::KEY_USE_MODE, 1);
        tv.settle();
    }
    /// A folder with a demo file at its root.
    std::string demoStickFolder() {
        const std::string folder = stickFolder();
        temp.file(folder.substr(temp.path().size() + 1) + "/DEMO_LED.tp");
        return folder;
    }
    /// The number of files that count.
    int countedFiles() {
        const std::string text = "file number is = [";
        for (const std::string& message : messages()) {
            if (message.rfind(text, 0) == 0) {
                return std::stoi(message.substr(text.size()));
            }
        }
        return -1;
    }
    Texts launchedApps() {
        Texts apps;
        for (const simulated::Launch& launch : tv.applications().launches()) {
            apps.push_back(launch.appId);
        }
        return apps;
    }
};

// ---- whether the internal demo can be launched

TEST_F(DemoTest, WithOneFileTheInternalDemoIsLaunchedInThisStory) {
    demoFile("a.mp4");
    shopMode();
    // the folder's entries come in any order
    Texts seen = story();
    ASSERT_GT(seen.size(), 5U);
    EXPECT_EQ(seen[0], ASK_MODE);
    EXPECT_EQ(*(std::find(seen.begin(), seen.end(), "I file = [a.mp4]") + 1),
              "I found file = [a.mp4]");
    std::sort(seen.begin() + 1, seen.begin() + 5);
    EXPECT_EQ(
        seen,
        (Texts{
            ASK_MODE, "I file = [..]", "I file = [.]", "I file = [a.mp4]", "I found file = [a.mp4]",
            "I file number is = [1]", isRunningCall(MMNames::APP_SHOPREEL),
            isRunningCall(MMNames::APP_FLOORREEL), "I org.norvane.shopreel running status is 0",
            "I org.norvane.floorreel running status is 0", ASK_DEMO_MODE, std::string("I ") + CAN,
            "I launch internal demo player", R"(app_control_set_app_id("org.norvane.floorreel"))",
            "app_control_send_launch_request()", "I launch internal demo player"}));
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_FLOORREEL});
}

TEST_F(DemoTest, WithoutTheFolderThereIsNoInternalDemoAndNothingElseIsAsked) {
    shopMode();
    EXPECT_EQ(story(), (Texts{ASK_MODE, "I NULL == pMovieDir", std::string("I ") + WALK,
                              "usb_mass_storage_foreach()"}));
}

TEST_F(DemoTest, AnEmptyFolderYieldsCannotBeLaunchedAndDemoModeIsNotRead) {
    emptyDemoFolder();
    shopMode();
    Texts seen = story();
    ASSERT_GT(seen.size(), 3U);
    std::sort(seen.begin() + 1, seen.begin() + 3);
    EXPECT_EQ(seen,
              (Texts{ASK_MODE, "I file = [..]", "I file = [.]", "I file number is = [0]",
                     isRunningCall(MMNames::APP_SHOPREEL), isRunningCall(MMNames::APP_FLOORREEL),
                     "I org.norvane.shopreel running status is 0",
                     "I org.norvane.floorreel running status is 0", std::string("I ") + CANNOT,
                     std::string("I ") + WALK, "usb_mass_storage_foreach()"}));
}

TEST_F(DemoTest, FilesWithoutADotYieldCannotBeLaunched) {
    demoFile("mp4");
    demoFile("README");
    shopMode();
    EXPECT_EQ(countedFiles(), 0);
    EXPECT_TRUE(logged(4, "file = [mp4]"));
    EXPECT_TRUE(logged(4, CANNOT));
    EXPECT_EQ(launchedApps(), Texts{});
}

TEST_F(DemoTest, SeveralFilesAreCountedEach) {
    for (const char* name : {"a.mp4", "b.jpg", "c.txt", "d.tp", "e"}) {
        demoFile(name);
    }
    shopMode();
    EXPECT_EQ(countedFiles(), 3);
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_FLOORREEL});
}

/// A file's name, and whether it counts.
class DemoFileNameTest : public DemoTest,
                         public ::testing::WithParamInterface<std::pair<const char*, bool>> {};

TEST_P(DemoFileNameTest, CountsWhenItsTailFromTheLastDotStandsInAnExtensionList) {
    const auto [name, counts] = GetParam();
    demoFile(name);
    shopMode();
    EXPECT_EQ(countedFiles(), counts ? 1 : 0);
    EXPECT_TRUE(logged(4, "file = [" + std::string(name) + "]"));
    EXPECT_EQ(logged(4, "found file = [" + std::string(name) + "]"), counts);
    EXPECT_EQ(logged(4, CAN), counts);
    EXPECT_EQ(logged(4, CANNOT), !counts);
}

INSTANTIATE_TEST_SUITE_P(Video,
                         DemoFileNameTest,
                         ::testing::Values(std::pair("a.ts", true),
                                           std::pair("a.avi", true),
                                           std::pair("a.mp4", true),
                                           std::pair("a.asf", true),
                                           std::pair("a.wmv", true),
                                           std::pair("a.divx", true),
                                           std::pair("a.ogg", true),
                                           std::pair("a.flv", true),
                                           std::pair("a.mpeg", true),
                                           std::pair("a.mkv", true),
                                           std::pair("a.tp", true),
                                           std::pair("a.MP4", false),
                                           std::pair("a.mov", false),
                                           std::pair("a.tsx", false)));

INSTANTIATE_TEST_SUITE_P(Picture,
                         DemoFileNameTest,
                         ::testing::Values(std::pair("a.jpg", true),
                                           std::pair("a.jpeg", true),
                                           std::pair("a.JPG", true),
                                           std::pair("a.JPEG", true),
                                           std::pair("a.Jpg", false),
                                           std::pair("a.png", false)));

INSTANTIATE_TEST_SUITE_P(PartOfAnExtension,
                         DemoFileNameTest,
                         ::testing::Values(std::pair("a.m", true),
                                           std::pair("a.jp", true),
                                           std::pair("a.", true),
                                           std::pair("a.J", true),
                                           std::pair("a.mpe", true),
                                           std::pair("...", true),
                                           std::pair("a.v", false),
                                           std::pair("a.p4", false)));

INSTANTIATE_TEST_SUITE_P(LastDot,
                         DemoFileNameTest,
                         ::testing::Values(std::pair("a.txt.mp4", true),
                                           std::pair(".ts", true),
                                           std::pair("a.mp4.bak", false),
                                           std::pair(".hidden", false),
                                           std::pair("..x", false),
                                           std::pair("a.mp4 ", false)));

TEST_F(DemoTest, AFolderWithAFittingNameCountsToo) {
    temp.folder("root/opt/data/demo_movie/holiday.mp4");
    shopMode();
    EXPECT_EQ(countedFiles(), 1);
}

TEST_F(DemoTest, DemoModeMinus1WithFilesPresentLaunchesNoInternalDemoAndSearchesTheUsbDevices) {
    demoFile("a.mp4");
    tv.settings().set(MMNames::KEY_DEMO_MODE, -1);
    shopMode();
    EXPECT_TRUE(logged(4, CANNOT));
    EXPECT_TRUE(logged(4, WALK));
    EXPECT_EQ(tv.journal().count("usb_mass_storage_foreach", mark), 1U);
    EXPECT_EQ(launchedApps(), Texts{});
}

TEST_F(DemoTest, AnyOtherOrUnreadableDemoModeAllowsTheInternalDemo) {
    demoFile("a.mp4");
    for (const simulated::Settings::Value& value :
         {simulated::Settings::Value(0), simulated::Settings::Value(1),
          simulated::Settings::Value(-2), simulated::Settings::Value("-1")}) {
        tv.settings().set(MMNames::KEY_DEMO_MODE, value);
        tv.applications().setRunning(MMNames::APP_FLOORREEL, false);
        forget();
        shopMode();
        EXPECT_TRUE(logged(4, CAN));
    }
    EXPECT_EQ(launchedApps().size(), 4U);
}

// ---- running players

TEST_F(DemoTest, WhileTheDemoPlayerRunsTheInternalDemoCannotBeLaunched) {
    demoFile("a.mp4");
    tv.applications().setRunning(MMNames::APP_SHOPREEL, true);
    shopMode();
    EXPECT_TRUE(inOrder(messages(), {"org.norvane.shopreel running status is 1",
                                     "org.norvane.floorreel running status is 0", CANNOT, WALK}));
    EXPECT_EQ(occurrences(calls(), ASK_DEMO_MODE), 1) << "read whether or not a player runs";
}

TEST_F(DemoTest, WhileTheInternalDemoPlayerRunsTheInternalDemoCannotBeLaunchedAgain) {
    demoFile("a.mp4");
    tv.applications().setRunning(MMNames::APP_FLOORREEL, true);
    shopMode();
    EXPECT_TRUE(inOrder(messages(), {"org.norvane.shopreel running status is 0",
                                     "org.norvane.floorreel running status is 1", CANNOT, WALK}));
    EXPECT_EQ(launchedApps(), Texts{});
}

TEST_F(DemoTest, ARunningCheckThatFailsCountsAsNotRunning) {
    demoFile("a.mp4");
    tv.applications().setRunning(MMNames::APP_FLOORREEL, true);
    tv.journal().order("app_manager_is_running", simulated::Fault::Fails);
    shopMode();
    EXPECT_TRUE(logged(4, CAN));
}

TEST_F(DemoTest, ALaunchThatFailsIsNotRetried) {
    demoFile("a.mp4");
    tv.journal().order("app_control_send_launch_request", simulated::Fault::Fails);
    shopMode();
    tv.advanceSeconds(3600);
    EXPECT_EQ(tv.journal().count("app_control_send_launch_request", mark), 1U);
    EXPECT_EQ(tv.journal().log(mark, 5).size(), 0U);
}

// ---- a demo file on a stick that is plugged in

class DemoStickTest : public DemoTest {
protected:
    DemoStickTest() {
        shopMode();
        forget();
    }
    /// What happens between the refresh of the record and the release of the handle.
    Texts afterTheCount() {
        const Texts seen = story();
        const auto count = std::find(seen.begin(), seen.end(), "I Device Count :1");
        return count == seen.end() ? Texts{} : Texts(count + 1, seen.end() - 1);
    }
    const std::string folder = demoStickFolder();
    const std::string file = folder + "/DEMO_LED.tp";
};

TEST_F(DemoStickTest, StartsTheDemoAndShowsNoPopUpAndStartsNoScan) {
    plug(folder);
    EXPECT_EQ(afterTheCount(),
              joined({{ASK_MODE, "I File " + file + " exist", "I "},
                      contextCalls(),
                      {"I distraction_free MODE : 0", "I distraction_free MODE : 0",
                       R"(aul_app_is_running("org.norvane.floorreel"))",
                       "I m_LaunchDemoPlayer File path =  " + file},
                      launchCalls({{"root_path", file}}, MMNames::APP_SHOPREEL)}));
    EXPECT_TRUE(tv.screen().history().empty());
    EXPECT_TRUE(tv.scanner().started().empty());
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
    EXPECT_EQ(access.currentDevice(), nullptr);
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("root_path"), file);
}

TEST_F(DemoStickTest, DeactivatedStartsNoDemoAndShowsNoPopUpButIsListed) {
    mgr->SetActivated(false);
    const DeviceId stick = plug(folder);
    EXPECT_EQ(afterTheCount(), (Texts{ASK_MODE, "I File " + file + " exist", "I ",
                                      "I m_bActivated is false, don't launch usb demo now!"}));
    EXPECT_EQ(listedKeys(), Texts{keyOf(tv.ports().device(stick))});
    EXPECT_TRUE(tv.screen().history().empty());
    EXPECT_TRUE(tv.scanner().started().empty());
}

TEST_F(DemoStickTest, DeactivatedItsFileIsFoundAgainAtTheNextWakeUp) {
    mgr->SetActivated(false);
    plug(folder);
    tv.power().sendWakeup(1);
    tv.advanceSeconds(10);
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_SHOPREEL});
}

TEST_F(DemoStickTest, DeactivatedItsFileIsFoundAgainAtTheNextStandbyReturn) {
    mgr->SetActivated(false);
    plug(folder);
    tv.power().sendState(DEVICE_POWER_STATE_STANDBY);
    tv.power().sendState(DEVICE_POWER_STATE_NORMAL);
    tv.advanceSeconds(10);
    EXPECT_EQ(launchedApps(), Texts{MMNames::APP_SHOPREEL});
}

TEST_F(DemoStickTest, InDistractionFreeStateStartsNoDemoAndShowsNoPopUp) {
    tv.small().contextState = TVCONTEXT_DISTRACTION_FREE_BIT_11 | 1;
    plug(folder);
    EXPECT_EQ(afterTheCount(),
              joined({{ASK_MODE, "I File " + file + " exist", "I "},
                      contextCalls(),
                      {"I distraction_free MODE : 2049", "I distraction_free MODE : 2048",
                       "I Distraction Free Mode enabled, ignore demo player launch"}}));
    EXPECT_TRUE(tv.screen().history().empty());
}

TEST_F(DemoStickTest, WhileTheInternalDemoRunsStartsNoDemo) {
    tv.applications().setRunning(MMNames::APP_FLOORREEL, true);
    plug(folder);
    EXPECT_EQ(afterTheCount().back(), "I internal demo is running. don't launch demo player!");
    EXPECT_EQ(launchedApps(), Texts{});
    EXPECT_TRUE(tv.screen().history().empty());
}

TEST_F(DemoStickTest, LeavesARunningScanAlone) {
    tv.scanner().hold();
    simulated::UsbDevice like;
    like.product = "Other";
    plug(like);
    ASSERT_EQ(tv.scanner().running(), 1U);
    plug(folder);
    EXPECT_EQ(tv.scanner().running(), 1U);
}

TEST_F(DemoStickTest, WithoutADemoFileIsAStickLikeAtHome) {
    const std::string other = stickFolder();
    plug(other);
    const Texts seen = afterTheCount();
    ASSERT_GT(seen.size(), 4U);
    EXPECT_EQ(Texts(seen.begin(), seen.begin() + 4),
              (Texts{ASK_MODE, "W File " + other + "/DEMO_LED.tp not exist", "I ",
                     "csf_stop_checking_device_v2(null)"}));
    EXPECT_EQ(tv.screen().history().size(), 1U);
    EXPECT_EQ(tv.scanner().started(), Texts{other});
}

TEST_F(DemoStickTest, AtHomeIsAStickLikeAnyOtherAndItsFileIsNotLookedFor) {
    tv.settings().set(MMNames::KEY_USE_MODE, HOME);
    tv.settle();
    forget();
    plug(folder);
    const Texts seen = afterTheCount();
    ASSERT_GT(seen.size(), 3U);
    EXPECT_EQ(Texts(seen.begin(), seen.begin() + 3),
              (Texts{ASK_MODE, "I ", "csf_stop_checking_device_v2(null)"}));
    ASSERT_FALSE(tv.screen().history().empty());
    EXPECT_EQ(tv.screen().history()[0].itemType, 1);
    EXPECT_EQ(launchedApps(), Texts{});
}

TEST_F(DemoStickTest, WithTheFileInAFolderHasNoDemo) {
    const std::string other = stickFolder();
    temp.file(other.substr(temp.path().size() + 1) + "/folder/DEMO_LED.tp");
    plug(other);
    EXPECT_EQ(launchedApps(), Texts{});
    ASSERT_FALSE(tv.screen().history().empty());
    EXPECT_EQ(tv.screen().history()[0].itemType, 1);
}

TEST_F(DemoStickTest, WithTheNameInLowerCaseHasNoDemo) {
    const std::string other = stickFolder();
    temp.file(other.substr(temp.path().size() + 1) + "/demo_led.tp");
    plug(other);
    EXPECT_EQ(launchedApps(), Texts{});
}

TEST_F(DemoStickTest, ACameraIsTestedForTheFileAtTheRootOfTheSystemAndGetsItsPopUp) {
    tv.ports().plugCamera();
    tv.settle();
    EXPECT_TRUE(logged(5, "File /DEMO_LED.tp not exist"));
    EXPECT_EQ(tv.screen().history().size(), 1U);
}

}  // namespace
