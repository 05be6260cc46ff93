// What a wake-up does to the device list: it is dropped as it stands, silently, and built again
// when somebody asks; and what follows from that for counters, events and the records that were
// dropped.
#include "Stories.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

class WakeUpListTest : public ManagerTest {
protected:
    void wakeUp() {
        tv.power().sendWakeup(1);
        tv.settle();
    }
    static UsbDevice stick(const std::string& product) {
        UsbDevice device;
        device.product = product;
        device.serial = product;
        return device;
    }
};

TEST_F(WakeUpListTest, TheListIsDroppedWithoutAWordToClients) {
    plug(stick("One"));
    plug(stick("Two"));
    int told = 0;
    mgr->SetDeviceEventCallback(
        [](void* count, CMMDeviceInfo*, bool) { ++*static_cast<int*>(count); }, &told);
    forget();
    wakeUp();
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
    EXPECT_EQ(told, 0);
    EXPECT_EQ(linesOf(tv.journal().calls(mark), {"usb_device_get_device_list(8)"}), Texts{});
    EXPECT_FALSE(logged(4, "before delete,dev list count is 2"));
}

TEST_F(WakeUpListTest, TheNextRequestRebuildsTheListFromWhatIsPresentThen) {
    const DeviceId stays = plug(stick("Stays"));
    const DeviceId goes = plug(stick("Goes"));
    const DeviceId camera = tv.ports().plugCamera();
    tv.settle();
    ASSERT_EQ(mgr->GetDeviceCount(), 3);
    wakeUp();
    tv.ports().vanish(goes);
    ASSERT_NE(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(listedKeys(),
              (Texts{keyOf(tv.ports().device(camera)), keyOf(tv.ports().device(stays))}));
}

TEST_F(WakeUpListTest, CountersAreNotResetAndDouble) {
    plug(stick("One"));
    tv.ports().plugCamera();
    tv.settle();
    wakeUp();
    EXPECT_EQ(mgr->GetDeviceCount(0), 1);
    EXPECT_EQ(mgr->GetDeviceCount(6), 1);
    mgr->GetDeviceList();
    EXPECT_EQ(mgr->GetDeviceCount(), 2);
    EXPECT_EQ(mgr->GetDeviceCount(0), 2);
    EXPECT_EQ(mgr->GetDeviceCount(6), 2);
}

TEST_F(WakeUpListTest, AMountedThatComesAfterAWakeUpIsIgnored) {
    const DeviceId device = tv.ports().insert(stick("One"));
    tv.ports().announce(device, "added");
    tv.settle();
    wakeUp();
    forget();
    tv.ports().mount(device, stickFolder());
    tv.settle();
    EXPECT_TRUE(logged(4, "Request all device"));
    EXPECT_FALSE(logged(4, "clear add action flag!!!"));
    EXPECT_TRUE(tv.screen().history().empty());
    EXPECT_EQ(listedKeys(), Texts{keyOf(tv.ports().device(device))});
}

TEST_F(WakeUpListTest, AStickPulledAfterAWakeUpIsUnknownSoNoClientIsTold) {
    const DeviceId device = plug(stick("One"));
    int told = 0;
    mgr->SetDeviceEventCallback(
        [](void* count, CMMDeviceInfo*, bool) { ++*static_cast<int*>(count); }, &told);
    wakeUp();
    tv.screen().clearHistory();
    forget();
    pull(device);
    EXPECT_TRUE(logged(
        5, "Device " + keyOf(tv.ports().device(device)) + " is NOT found in pDeviceInfoNode"));
    EXPECT_EQ(told, 0);
    ASSERT_EQ(tv.screen().history().size(), 1U);
    EXPECT_EQ(tv.screen().history()[0].title, "One");
    EXPECT_EQ(mgr->GetDeviceCount(0), 1) << "the counter of a dropped record stays";
}

TEST_F(WakeUpListTest, AStickPluggedAfterAWakeUpBringsTheOthersBackAndGetsAPopUpWithoutAScan) {
    const DeviceId old = plug(stick("Old"));
    wakeUp();
    tv.screen().clearHistory();
    const std::size_t scans = tv.scanner().started().size();
    const DeviceId fresh = plug(stick("Fresh"));
    EXPECT_EQ(listedKeys(),
              (Texts{keyOf(tv.ports().device(fresh)), keyOf(tv.ports().device(old))}));
    EXPECT_EQ(tv.screen().history().size(), 1U);
    EXPECT_EQ(tv.scanner().started().size(), scans);
}

// ---- the dropped records

TEST_F(WakeUpListTest, DroppedRecordsAreKeptUntilTheNextWakeUpAndFreedThen) {
    for (const char* product : {"One", "Two", "Three"}) {
        tv.ports().insert(stick(product));
    }
    mgr->GetDeviceList();  // listed silently: nothing points at the records
    wakeUp();
    EXPECT_EQ(access.droppedRecords(), 3U);
    wakeUp();
    EXPECT_EQ(access.droppedRecords(), 0U);
}

TEST_F(WakeUpListTest, EachWakeUpKeepsTheRecordsOfItsOwnListOnly) {
    tv.ports().insert(stick("One"));
    mgr->GetDeviceList();
    wakeUp();
    tv.ports().insert(stick("Two"));
    mgr->GetDeviceList();
    wakeUp();
    EXPECT_EQ(access.droppedRecords(), 2U);
}

TEST_F(WakeUpListTest, TheRecordOfThePopUpOnScreenSurvivesAllWakeUpsUntilAnotherTakesItsPlace) {
    const DeviceId shown = plug(stick("Shown"));
    wakeUp();
    wakeUp();
    wakeUp();
    ASSERT_NE(access.currentDevice(), nullptr);
    EXPECT_EQ(access.currentDevice()->GetDeviceKey(), keyOf(tv.ports().device(shown)));
    EXPECT_EQ(access.displayedDevice(), access.currentDevice());
    plug(stick("Next"));
    wakeUp();
    wakeUp();
    EXPECT_EQ(access.currentDevice()->GetProduct(), "Next");
    EXPECT_EQ(access.droppedRecords(), 1U) << "only the one that is pointed at";
}

TEST_F(WakeUpListTest, TheCurrentDeviceSurvivesThemTooWhenItsPopUpWasHidden) {
    const DeviceId device = plug(stick("Hidden"));
    tv.screen().hide();
    tv.settle();
    ASSERT_EQ(access.displayedDevice(), nullptr);
    wakeUp();
    wakeUp();
    tv.screen().sendButton(1, 0);
    tv.settle();
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("device_key"),
              keyOf(tv.ports().device(device)));
}

TEST_F(WakeUpListTest, TheDisplayedDeviceSurvivesThemTooWhenAnotherIsTheCurrentOne) {
    const DeviceId shown = plug(stick("Shown"));
    tv.applications().setRunning("org.norvane.lumet", true);
    plug(stick("Current"));  // told to the companion application: the displayed device stays
    tv.applications().setRunning("org.norvane.lumet", false);
    ASSERT_NE(access.displayedDevice(), access.currentDevice());
    wakeUp();
    wakeUp();
    forget();
    tv.ports().announce(shown, "added");
    tv.ports().announce(shown, "mounted");
    tv.settle();
    EXPECT_TRUE(logged(4, "the device is same with previous device"));
}

TEST_F(WakeUpListTest, DroppedRecordsGoWithTheManager) {
    // That nothing is left over is for the leak sanitizer to see; that nothing is freed twice, for
    // the address sanitizer: one record is dropped and pointed at, one is only dropped, one is
    // listed.
    plug(stick("Pointed at"));
    tv.ports().insert(stick("Dropped"));
    wakeUp();
    mgr->GetDeviceList();
    EXPECT_EQ(access.droppedRecords(), 1U);
    EXPECT_EQ(mgr->GetDeviceCount(), 2);
    mgr->Destroy();
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
    EXPECT_EQ(access.droppedRecords(), 1U);
}

}  // namespace
