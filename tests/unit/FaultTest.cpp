// Every function of the platform failing, or giving nothing: the daemon goes on, keeps the contract, and
// works again when the platform does.
#include "MMDeviceJsonUtil.h"
#include "MMLogger.h"
#include "TvTest.h"

namespace {

using simulated::CallJournal;
using simulated::Fault;

/// A day in the life of a TV: every kind of event that reaches the device manager.
class FaultTest : public TvTest,
                  public ::testing::WithParamInterface<std::pair<std::string, Fault>> {
protected:
    void TearDown() override {
        CMMDeviceMgr::GetInstance()->Destroy();
        CMMDeviceMgr::DestroyInstance();
        CMMLogService::Get()->Destroy();
        TvTest::TearDown();
    }

    void start() {
        tv.settings().set("db/menu_widget/language", "de_DE");
        CMMDeviceMgr::GetInstance();
        tv.advanceSeconds(30);
    }

    simulated::DeviceId plugPhoto(const std::string& product) {
        const std::string folder = stickFolder();
        temp.file(folder.substr(temp.path().size() + 1) + "/only.jpg", "\xff\xd8\xff\xe0photo");
        simulated::UsbDevice like;
        like.product = product;
        like.serial = product;
        const auto stick = tv.ports().plug(folder, like);
        tv.settle();
        return stick;
    }

    void pull(simulated::DeviceId device) {
        tv.ports().pull(device);
        tv.settle();
    }

    void aDay() {
        const auto first = plugPhoto("First");
        tv.screen().press(0);
        tv.settle();
        simulated::UsbDevice camera;
        camera.product = "Camera";
        const auto cam = tv.ports().plugCamera(camera);
        const auto second = plugPhoto("Second");
        tv.screen().press(0);
        tv.settle();
        pull(first);
        tv.advanceSeconds(4);
        tv.applications().setRunning("org.norvane.lumet", true);
        const auto third = plugPhoto("Third");
        pull(third);
        tv.applications().setRunning("org.norvane.lumet", false);
        CMMDeviceMgr::GetInstance()->GetDeviceList();
        tv.settings().set("memory/portmeld/removed_dlna_device_icon_path", "/icon.png");
        tv.settings().set("memory/portmeld/removed_dlna_device", "Server");
        tv.settle();
        tv.screen().hide();
        tv.settings().set("db/menu/support/use_mode", 1);
        tv.settle();
        tv.power().standby();
        tv.advanceSeconds(20);
        tv.power().wake();
        tv.advanceSeconds(61);
        tv.settings().set("db/menu/support/use_mode", 0);
        pull(second);
        pull(cam);
        tv.advanceSeconds(60);
    }

    /// A client that comes to know the devices finds every listed one with its key.
    void expectSoundList() {
        CMMDeviceMgr* mgr = CMMDeviceMgr::GetInstance();
        int length = 0;
        for (GList* node = mgr->GetDeviceList(); node != nullptr; node = node->next, ++length) {
            std::string json;
            EXPECT_EQ(CMMDeviceJsonUtil().DetailParamToJson(static_cast<CMMDeviceInfo*>(node->data),
                                                            1, json),
                      0);
        }
        EXPECT_EQ(mgr->GetDeviceCount(), length);
    }
};

TEST_P(FaultTest, FromTheStartIsSurvivedForAWholeDay) {
    const auto& [function, fault] = GetParam();
    tv.journal().order(function, fault);
    start();
    aDay();
    expectSoundList();
}

TEST_P(FaultTest, LaterIsSurvivedAndForgottenWhenThePlatformWorksAgain) {
    const auto& [function, fault] = GetParam();
    start();
    tv.journal().order(function, fault);
    aDay();
    expectSoundList();

    tv.journal().clearFaults();
    tv.screen().sendHide();
    tv.settle();
    for (const simulated::DeviceId device : tv.ports().present()) {
        pull(device);
    }
    tv.power().sendWakeup(1);  // what was pulled while the library said nothing of it is forgotten
    tv.settle();
    CMMDeviceMgr::GetInstance()->SetActivated(true);
    tv.applications().setRunning("org.norvane.lumet", false);
    tv.screen().clearHistory();
    plugPhoto("Fresh");
    ASSERT_FALSE(tv.screen().history().empty());
    EXPECT_EQ(tv.screen().history().back().itemType, NOTIFICATION_ITEM_PLAY_FILE);
}

TEST_P(FaultTest, OnceAtEachPlugIsSurvived) {
    const auto& [function, fault] = GetParam();
    start();
    for (int round = 0; round < 3; ++round) {
        tv.journal().order(function, fault, round + 1);
        const auto stick = plugPhoto("Stick");
        tv.screen().press(round % 2);
        tv.settle();
        pull(stick);
    }
    expectSoundList();
}

INSTANTIATE_TEST_SUITE_P(EveryFunction,
                         FaultTest,
                         ::testing::ValuesIn(CallJournal::faultable()),
                         [](const auto& test) {
                             std::string name = test.param.first;
                             for (char& c : name) {
                                 if (!g_ascii_isalnum(c)) {
                                     c = '_';
                                 }
                             }
                             return name;
                         });

}  // namespace
