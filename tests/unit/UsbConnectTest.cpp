// What follows when a device is ready for use: the pop-up and the content scan, and when neither
// comes. The demo file on a stick stands in DemoTest.cpp, the pop-up itself in
// NotificationTest.cpp.
#include <algorithm>

#include <platform/tv_context.h>

#include "MMNames.h"
#include "Stories.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

constexpr const char* DEACTIVATED = "m_bActivated is false, don't launch usb notification now!";
const std::string ASK_MODE = R"(vconf_get_int("db/menu/support/use_mode"))";

class UsbConnectTest : public ManagerTest {
protected:
    Texts story() { return plainStory(tv, mark); }
    std::string key(DeviceId device) { return keyOf(tv.ports().device(device)); }
    const std::vector<simulated::Popup>& popups() { return tv.screen().history(); }
    static UsbDevice stick(const std::string& product) {
        UsbDevice device;
        device.product = product;
        device.serial = product;
        return device;
    }
    /// A stick that was announced, and the folder where its "mounted" is going to find it.
    std::pair<DeviceId, std::string> announced() {
        const DeviceId device = tv.ports().insert(stick("One"));
        tv.ports().announce(device, "added");
        tv.settle();
        forget();
        return {device, stickFolder()};
    }
    void mount(DeviceId device, const std::string& folder) {
        tv.ports().mount(device, folder);
        tv.settle();
    }
};

TEST_F(UsbConnectTest, TheFirstStickTellsThisStoryAroundItsPopUp) {
    const auto [device, folder] = announced();
    mount(device, folder);
    const Texts seen = story();
    const auto popupBegins = std::find(seen.begin(), seen.end(), "tvcontext_init()");
    const auto popupEnds = std::find(popupBegins, seen.end(), "I end");
    ASSERT_NE(popupEnds, seen.end());
    EXPECT_EQ(Texts(seen.begin(), popupBegins),
              joined({{"D pUsbDeviceHnd:PTR  pcAction=mounted", "I STORAGE_MOUNTED",
                       "I Device Class = 8"},
                      searchStory(key(device), {key(device)}),
                      {"I clear add action flag!!!", "I pUsbDeviceHnd:PTR", "I Device Class = 8"},
                      searchStory(key(device), {key(device)}),
                      {"I Update"},
                      fillStory(tv.ports().device(device), 1),
                      {"I Device Count :1", ASK_MODE, "I ", "csf_stop_checking_device_v2(null)"}}));
    EXPECT_EQ(Texts(popupEnds + 1, seen.end()),
              (Texts{"I check m_IsMultiHDD", "I pNode:PTR", "I the device is not multi HDD",
                     scanCall(folder), "free_usb_device_h(<" + key(device) + ">)"}));
}

TEST_F(UsbConnectTest, TheRecordIsRefreshedWithItsMountPathBeforeAnythingUsesIt) {
    const auto [device, folder] = announced();
    mount(device, folder);
    EXPECT_EQ(record(device)->GetMountpath(), folder);
    EXPECT_EQ(tv.scanner().started(), Texts{folder});
}

TEST_F(UsbConnectTest, TheDeviceBecomesTheCurrentOneWithABrowsePopUp) {
    const DeviceId device = plug(stick("One"));
    EXPECT_EQ(access.currentDevice(), record(device));
    ASSERT_EQ(popups().size(), 1U);
    EXPECT_EQ(popups()[0].itemType, 1);
}

TEST_F(UsbConnectTest, AfterAPlayPopUpTheNextStickGetsABrowsePopUpAgain) {
    const std::string folder = stickFolder();
    temp.file(folder.substr(temp.path().size() + 1) + "/only.jpg", "\xff\xd8\xff\xe0photo");
    plug(folder, stick("Photo"));
    ASSERT_EQ(popups().back().itemType, 0);
    plug(stick("Other"));
    EXPECT_EQ(popups().back().itemType, 1);
    EXPECT_EQ(access.notificationType(), 1);
}

// ---- which devices are scanned

TEST_F(UsbConnectTest, WithOneStorageDeviceListedASecondShowsThePopUpButStartsNoScan) {
    plug(stick("One"));
    forget();
    plug(stick("Two"));
    EXPECT_EQ(popups().size(), 2U);
    EXPECT_EQ(tv.scanner().started().size(), 1U);
    EXPECT_EQ(
        linesOf(story(),
                {"I Device Count :2", "I check m_IsMultiHDD", "I the device is not multi HDD"}),
        (Texts{"I Device Count :2", "I check m_IsMultiHDD", "I the device is not multi HDD"}));
}

TEST_F(UsbConnectTest, ASecondStickStopsTheScanOfTheFirst) {
    tv.scanner().hold();
    plug(stick("One"));
    ASSERT_EQ(tv.scanner().running(), 1U);
    plug(stick("Two"));
    EXPECT_EQ(tv.scanner().running(), 0U);
}

TEST_F(UsbConnectTest, AStickAfterTheFirstWasPulledIsScannedAndTheOldHandleStoppedBefore) {
    const DeviceId first = plug(stick("One"));
    pull(first);
    forget();
    const std::string folder = stickFolder();
    plug(folder, stick("Two"));
    EXPECT_EQ(linesOf(calls(), {"csf_stop_checking_device_v2()", scanCall(folder)}),
              (Texts{"csf_stop_checking_device_v2()", scanCall(folder)}));
}

TEST_F(UsbConnectTest, ACameraIsNotScannedAndNotTestedForPartitions) {
    tv.ports().plugCamera();
    tv.settle();
    EXPECT_EQ(popups().size(), 1U);
    EXPECT_TRUE(tv.scanner().started().empty());
    EXPECT_EQ(tv.journal().count("csf_stop_checking_device_v2", mark), 1U);
    EXPECT_FALSE(logged(4, "check m_IsMultiHDD"));
}

TEST_F(UsbConnectTest, AStickBesideACameraIsNotScanned) {
    tv.ports().plugCamera();
    tv.settle();
    plug(stick("One"));
    EXPECT_TRUE(tv.scanner().started().empty());
    EXPECT_EQ(popups().size(), 2U);
}

TEST_F(UsbConnectTest, ADiskOfTwoPartitionsIsNotScanned) {
    tv.ports().plugDisk({stickFolder(), stickFolder()}, stick("Disk"));
    tv.settle();
    EXPECT_EQ(mgr->GetDeviceCount(), 2);
    EXPECT_TRUE(tv.scanner().started().empty());
}

TEST_F(UsbConnectTest, AStickBesideOneThatOnlyTheEnumerationKnowsIsNotScanned) {
    tv.ports().insert(stick("Silent"));
    plug(stick("Loud"));
    EXPECT_TRUE(tv.scanner().started().empty());
    EXPECT_EQ(popups().size(), 1U);
}

// ---- when no pop-up comes

TEST_F(UsbConnectTest, DeactivatedTheStickIsListedAndNothingElse) {
    const auto [device, folder] = announced();
    mgr->SetActivated(false);
    mount(device, folder);
    const Texts seen = story();
    EXPECT_EQ(Texts(seen.end() - 5, seen.end()),
              (Texts{"I Device Count :1", ASK_MODE, "I ", std::string("I ") + DEACTIVATED,
                     "free_usb_device_h(<" + key(device) + ">)"}));
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
    EXPECT_EQ(access.currentDevice(), nullptr);
    EXPECT_TRUE(popups().empty());
    EXPECT_TRUE(tv.scanner().started().empty());
}

TEST_F(UsbConnectTest, DeactivatedARunningScanGoesOn) {
    tv.scanner().hold();
    plug(stick("One"));
    mgr->SetActivated(false);
    plug(stick("Two"));
    EXPECT_EQ(tv.scanner().running(), 1U);
}

TEST_F(UsbConnectTest, DeactivatedACameraIsListedAndNothingElse) {
    mgr->SetActivated(false);
    tv.ports().plugCamera();
    tv.settle();
    EXPECT_TRUE(logged(4, DEACTIVATED));
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
    EXPECT_TRUE(popups().empty());
}

TEST_F(UsbConnectTest, DeactivatedTheRunningCompanionApplicationIsNotToldEither) {
    tv.applications().setRunning(MMNames::APP_LUMET, true);
    mgr->SetActivated(false);
    plug(stick("One"));
    EXPECT_TRUE(tv.applications().launches().empty());
    EXPECT_EQ(linesOf(calls(), {isRunningCall(MMNames::APP_LUMET)}), Texts{});
}

TEST_F(UsbConnectTest, DeactivatedDoesNotGateThePopUpOfAScanResult) {
    const std::string folder = stickFolder();
    temp.file(folder.substr(temp.path().size() + 1) + "/only.jpg", "\xff\xd8\xff\xe0photo");
    tv.scanner().hold();
    plug(folder, stick("Photo"));
    mgr->SetActivated(false);
    tv.scanner().release();
    tv.settle();
    EXPECT_EQ(popups().back().itemType, 0);
}

TEST_F(UsbConnectTest, ActivatedTheRunningCompanionApplicationIsToldInsteadAndTheStickScanned) {
    tv.applications().setRunning(MMNames::APP_LUMET, true);
    const DeviceId device = plug(stick("One"));
    EXPECT_TRUE(popups().empty());
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    const simulated::Launch& launch = tv.applications().launches()[0];
    EXPECT_EQ(launch.appId, MMNames::APP_LUMET);
    EXPECT_EQ(launch.extraData.at("device_action"), "ADD");
    EXPECT_EQ(launch.extraData.at("device_key"), key(device));
    EXPECT_EQ(tv.scanner().started().size(), 1U);
}

TEST_F(UsbConnectTest, InDistractionFreeStateNoPopUpComesButTheStickIsScanned) {
    tv.small().contextState = TVCONTEXT_DISTRACTION_FREE_BIT_10;
    const DeviceId device = plug(stick("One"));
    EXPECT_TRUE(popups().empty());
    EXPECT_EQ(access.currentDevice(), record(device));
    EXPECT_EQ(access.displayedDevice(), nullptr);
    EXPECT_EQ(tv.scanner().started().size(), 1U);
}

TEST_F(UsbConnectTest, NoClientIsToldOfANewDevice) {
    int told = 0;
    mgr->SetDeviceEventCallback(
        [](void* count, CMMDeviceInfo*, bool) { ++*static_cast<int*>(count); }, &told);
    access.setNotifyCallback([](void* count) { ++*static_cast<int*>(count); }, &told);
    plug(stick("One"));
    tv.ports().plugCamera();
    tv.settle();
    EXPECT_EQ(told, 0);
}

}  // namespace
