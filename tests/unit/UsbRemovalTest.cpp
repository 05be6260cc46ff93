// "removed": what becomes of the record, and who hears of it: the viewer, the companion application
// and the clients, in this order. The removal notice itself stands in NotificationTest.cpp.
#include <algorithm>

#include <platform/tv_context.h>

#include "MMNames.h"
#include "Stories.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

const std::string ASK_LUMET = R"(app_manager_is_running("org.norvane.lumet"))";

/// What the client callback was told, and what stood then.
struct Report {
    simulated::SimulatedTv* tv;
    CMMDeviceMgr* mgr;
    Texts lines;
};

void onDeviceEvent(void* user, CMMDeviceInfo* device, bool attached) {
    auto& report = *static_cast<Report*>(user);
    report.tv->journal().called("client", attached ? "attached" : "removed");
    report.lines.push_back(device->GetDeviceKey() + (attached ? " attached of " : " removed of ") +
                           std::to_string(report.mgr->GetDeviceCount()));
}

void onRemoved(void* user, std::string key) {
    auto& report = *static_cast<Report*>(user);
    report.tv->journal().called("extension", key);
    report.lines.push_back("extension " + key);
}

class UsbRemovalTest : public ManagerTest {
protected:
    UsbRemovalTest() { mgr->SetDeviceEventCallback(onDeviceEvent, &report); }
    Texts story() { return plainStory(tv, mark); }
    std::string key(DeviceId device) { return keyOf(tv.ports().device(device)); }
    /// A stick in the list, of which nobody was told.
    DeviceId listed(const std::string& product) {
        UsbDevice device;
        device.product = product;
        device.serial = product;
        const DeviceId id = tv.ports().insert(device);
        tv.ports().announce(id, "added");
        tv.settle();
        forget();
        return id;
    }
    Texts noticeTitles() {
        Texts titles;
        for (const simulated::Popup& popup : tv.screen().history()) {
            if (popup.itemType == 2) {
                titles.push_back(popup.title.value_or("(null)"));
            }
        }
        return titles;
    }
    std::string notFound(DeviceId device) {
        return "Device " + key(device) + " is NOT found in pDeviceInfoNode";
    }

    Report report{&tv, mgr, {}};
};

// ---- a listed device

TEST_F(UsbRemovalTest, OfAListedStickTellsThisStoryAroundItsNotice) {
    const DeviceId stick = listed("One");
    const UsbDevice like = tv.ports().device(stick);
    access.setRemovedCallback(onRemoved, &report);
    pull(stick);
    const Texts seen = story();
    const auto noticeBegins = std::find(seen.begin(), seen.end(), "tvcontext_init()");
    const auto noticeEnds = std::find(noticeBegins, seen.end(), "I end");
    ASSERT_NE(noticeEnds, seen.end());
    EXPECT_EQ(Texts(seen.begin(), noticeBegins),
              joined({{"D pUsbDeviceHnd:PTR  pcAction=removed", "D ", "I Device Class = 8"},
                      searchStory(key(stick), {key(stick)}),
                      {ASK_LUMET, "I bRunning=[0]", "I Device Class = 8"}}));
    EXPECT_EQ(Texts(noticeEnds + 1, seen.end()),
              joined({{"extension(" + key(stick) + ")", "client(removed)", "I m_pDevList:PTR",
                       "I m_pDevList:PTR nCount=1"},
                      deleteStory(like, 1),
                      {"free_usb_device_h(<" + key(stick) + ">)"}}));
    EXPECT_EQ(report.lines, (Texts{"extension " + key(stick), key(stick) + " removed of 1"}));
}

TEST_F(UsbRemovalTest, TakesOnlyThatRecordOutOfTheListAndLowersItsCounter) {
    const DeviceId first = listed("One");
    const DeviceId second = listed("Two");
    const DeviceId third = listed("Three");
    pull(second);
    EXPECT_EQ(listedKeys(), (Texts{key(third), key(first)}));
    EXPECT_EQ(mgr->GetDeviceCount(USB_FILESYSTEM_FAT), 2);
}

TEST_F(UsbRemovalTest, ShowsTheNameOfTheRecordNotOfTheHandle) {
    const DeviceId stick = listed("Before");
    tv.ports().device(stick).product = "After";
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{"Before"});
}

TEST_F(UsbRemovalTest, OfACameraIsByItsSerial) {
    const DeviceId camera = tv.ports().plugCamera();
    tv.settle();
    ASSERT_EQ(mgr->GetDeviceCount(6), 1);
    pull(camera);
    EXPECT_EQ(listedKeys(), Texts{});
    EXPECT_EQ(mgr->GetDeviceCount(6), 0);
    EXPECT_EQ(report.lines, Texts{key(camera) + " removed of 1"});
}

TEST_F(UsbRemovalTest, OfAnAnnouncedStickThatWasNeverMountedIsTheSame) {
    const DeviceId stick = listed("One");
    ASSERT_TRUE(record(stick)->GetUsbStorageAddAction());
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{"One"});
    EXPECT_EQ(report.lines.size(), 1U);
}

TEST_F(UsbRemovalTest, IsNotGatedByActivation) {
    const DeviceId stick = listed("One");
    mgr->SetActivated(false);
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{"One"});
    EXPECT_EQ(report.lines.size(), 1U);
}

TEST_F(UsbRemovalTest, InAShopShowsTheNoticeToo) {
    tv.settings().set(MMNames::KEY_USE_MODE, 1);
    tv.settle();
    const DeviceId stick = listed("One");
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{"One"});
}

TEST_F(UsbRemovalTest, OfADeviceWithoutANameShowsNoNotice) {
    const DeviceId stick = listed("");
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{});
    EXPECT_EQ(report.lines.size(), 1U);
}

TEST_F(UsbRemovalTest, WithoutACallbackIsTheSameForTheViewer) {
    mgr->SetDeviceEventCallback(nullptr, nullptr);
    const DeviceId stick = listed("One");
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{"One"});
    EXPECT_EQ(listedKeys(), Texts{});
}

TEST_F(UsbRemovalTest, OfTheCurrentDeviceLeavesNoneSoBrowseLaunchesNothing) {
    const DeviceId stick = plug();
    pull(stick);
    EXPECT_EQ(access.currentDevice(), nullptr);
    forget();
    tv.screen().sendButton(1, 0);
    tv.settle();
    EXPECT_TRUE(logged(5, "pNode is NULL"));
    EXPECT_TRUE(tv.applications().launches().empty());
}

// ---- the companion application

TEST_F(UsbRemovalTest, WhileTheCompanionApplicationRunsSendsItTheRemovalInsteadOfANotice) {
    const DeviceId stick = listed("One");
    tv.applications().setRunning(MMNames::APP_LUMET, true);
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{});
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    const simulated::Launch& launch = tv.applications().launches()[0];
    EXPECT_EQ(launch.appId, MMNames::APP_LUMET);
    EXPECT_EQ(launch.extraData.at("called_app"), "portmeld");
    EXPECT_EQ(launch.extraData.at("device_action"), "DELETE");
    EXPECT_EQ(launch.extraData.at("device_key"), key(stick));
    EXPECT_EQ(report.lines, Texts{key(stick) + " removed of 1"});
}

TEST_F(UsbRemovalTest,
       TheCompanionApplicationIsToldBeforeTheClientsAndNeitherContextNorPopUpAsked) {
    const DeviceId stick = listed("One");
    tv.applications().setRunning(MMNames::APP_LUMET, true);
    pull(stick);
    const Texts seen = without(calls(), {"app_control_add_extra_data("});
    EXPECT_EQ(seen, (Texts{ASK_LUMET, ASK_LUMET, R"(app_control_set_app_id("org.norvane.lumet"))",
                           "app_control_send_launch_request()", "client(removed)",
                           "free_usb_device_h(<" + key(stick) + ">)"}));
}

TEST_F(UsbRemovalTest, TheCompanionApplicationIsToldInDistractionFreeStateAndDeactivatedToo) {
    const DeviceId stick = listed("One");
    tv.applications().setRunning(MMNames::APP_LUMET, true);
    tv.small().contextState = TVCONTEXT_DISTRACTION_FREE_MASK;
    mgr->SetActivated(false);
    pull(stick);
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("device_action"), "DELETE");
}

TEST_F(UsbRemovalTest, AFailingRunningCheckCountsAsNotRunning) {
    const DeviceId stick = listed("One");
    tv.applications().setRunning(MMNames::APP_LUMET, true);
    tv.journal().order("app_manager_is_running", simulated::Fault::Fails);
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{"One"});
    EXPECT_TRUE(tv.applications().launches().empty());
}

// ---- distraction-free

TEST_F(UsbRemovalTest, InDistractionFreeStateShowsNoNoticeButTellsTheClients) {
    const DeviceId stick = listed("One");
    tv.small().contextState = TVCONTEXT_DISTRACTION_FREE_BIT_7;
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{});
    EXPECT_EQ(report.lines, Texts{key(stick) + " removed of 1"});
    EXPECT_EQ(listedKeys(), Texts{});
}

TEST_F(UsbRemovalTest, InDistractionFreeStateTheSameStickAgainIsNotAnnouncedAgain) {
    const DeviceId stick = plug();
    tv.small().contextState = TVCONTEXT_DISTRACTION_FREE_BIT_7;
    pull(stick);
    tv.small().contextState = 0;
    tv.screen().clearHistory();
    forget();
    plug();
    EXPECT_TRUE(logged(4, "No need to notify again"));
    EXPECT_TRUE(tv.screen().history().empty());
}

// ---- an unlisted device

TEST_F(UsbRemovalTest, OfAnUnlistedStickWarnsAndShowsANoticeWithTheNameOfTheHandle) {
    UsbDevice device;
    device.product = "Stranger";
    const DeviceId stick = tv.ports().insert(device);
    pull(stick);
    EXPECT_EQ(noticeTitles(), Texts{"Stranger"});
    EXPECT_EQ(report.lines, Texts{});
    const Texts seen = story();
    const auto noticeBegins = std::find(seen.begin(), seen.end(), "tvcontext_init()");
    EXPECT_EQ(Texts(seen.begin(), noticeBegins),
              joined({{"D pUsbDeviceHnd:PTR  pcAction=removed", "D ", "I Device Class = 8"},
                      searchStory(key(stick), {}),
                      {"W " + notFound(stick), "I Device Class = 8", "I Device Class = 8"}}));
    EXPECT_EQ(seen.back(), "free_usb_device_h(<" + key(stick) + ">)");
}

TEST_F(UsbRemovalTest, OfAnUnlistedCameraShowsANoticeWithItsIcon) {
    UsbDevice device;
    device.usbClass = USB_CLASS_STILL_IMAGE;
    device.product = "Camera";
    const DeviceId camera = tv.ports().insert(device);
    pull(camera);
    EXPECT_TRUE(logged(5, notFound(camera)));
    ASSERT_EQ(noticeTitles(), Texts{"Camera"});
    EXPECT_EQ(tv.screen().history()[0].sourceIcon,
              tvPath("/usr/apps/portmeld/res/images/noti_source_icon_camera.png"));
}

TEST_F(UsbRemovalTest, OfAnUnlistedDeviceWhileTheCompanionApplicationRunsTellsNobody) {
    tv.applications().setRunning(MMNames::APP_LUMET, true);
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    pull(stick);
    EXPECT_TRUE(logged(4, "No need to notify"));
    EXPECT_EQ(noticeTitles(), Texts{});
    EXPECT_TRUE(tv.applications().launches().empty());
    EXPECT_EQ(report.lines, Texts{});
}

TEST_F(UsbRemovalTest, OfAnUnlistedStickLeavesTheListedOnes) {
    const DeviceId stays = listed("Stays");
    UsbDevice device;
    device.product = "Stranger";
    pull(tv.ports().insert(device));
    EXPECT_EQ(listedKeys(), Texts{key(stays)});
}

TEST_F(UsbRemovalTest, OfADeviceOfAnotherClassShowsNoNotice) {
    UsbDevice device;
    device.usbClass = 3;
    tv.ports().insert(device);
    const EnumeratedHandle handle(3);
    ASSERT_NE(handle.get(), nullptr);
    forget();
    access.disconnectedDevice(handle.get());
    EXPECT_EQ(story(), (Texts{"D ", "I Device Class = 3",
                              "I m_pDevList:(nil),strDeviceKey :", "I m_pDevList is null",
                              "W Device  is NOT found in pDeviceInfoNode", "I Device Class = 3"}));
}

TEST_F(UsbRemovalTest, WithoutAHandleWarns) {
    access.disconnectedDevice(nullptr);
    EXPECT_EQ(story(), (Texts{"D ", "W NULL == pUsbDeviceHnd"}));
}

}  // namespace
