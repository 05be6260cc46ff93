// Listing what is attached without an event about it: when the list is asked for, or an event
// comes, while it is empty. Silent, storage before cameras, and a platform that fails to list ends
// it quietly.
#include <algorithm>

#include "Stories.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::Fault;
using simulated::UsbDevice;

class UsbEnumerationTest : public ManagerTest {
protected:
    Texts story() { return plainStory(tv, mark); }
    Texts warnings() {
        Texts lines;
        for (const simulated::LogLine& line : tv.journal().log(mark, 5)) {
            lines.push_back("W " + line.message);
        }
        return lines;
    }
    std::string key(DeviceId device) { return keyOf(tv.ports().device(device)); }
    DeviceId stick(const std::string& product) {
        UsbDevice device;
        device.product = product;
        device.serial = product;
        return tv.ports().insert(device);
    }
    DeviceId camera(const std::string& serial) {
        UsbDevice device;
        device.usbClass = USB_CLASS_STILL_IMAGE;
        device.fileSystem = USB_FILESYSTEM_UNKNOWN;
        device.product = "Camera " + serial;
        device.serial = serial;
        return tv.ports().insert(device);
    }
    void announce(DeviceId device, const std::string& action) {
        tv.ports().announce(device, action);
        tv.settle();
    }
};

const Texts BOTH_LISTS = {"usb_device_get_device_list(8)", "usb_device_get_device_list(6)"};

TEST_F(UsbEnumerationTest, TheFirstEventWithAnEmptyListListsAllStorageAndThenAllCameras) {
    const DeviceId firstCamera = camera("c1");
    const DeviceId first = stick("One");
    const DeviceId secondCamera = camera("c2");
    const DeviceId second = stick("Two");
    announce(second, "added");
    EXPECT_EQ(linesOf(story(), {"I Request all device", BOTH_LISTS[0], BOTH_LISTS[1], "I New ",
                                "D HOST_ADDED pUsbDeviceHnd=PTR", "I Update"}),
              (Texts{"I Request all device", BOTH_LISTS[0], "I New ", "I New ", BOTH_LISTS[1],
                     "I New ", "I New ", "D HOST_ADDED pUsbDeviceHnd=PTR", "I Update"}));
    EXPECT_EQ(listedKeys(), (Texts{key(secondCamera), key(firstCamera), key(second), key(first)}));
}

TEST_F(UsbEnumerationTest, TheCallsComeInThisOrder) {
    stick("One");
    stick("Two");
    camera("c");
    mgr->GetDeviceList();
    EXPECT_EQ(calls(), (Texts{"usb_device_get_device_list(8)", "usb_device_list_get_first()",
                              "usb_device_list_get_next()", "usb_device_list_get_next()",
                              "usb_device_free_device_list()", "usb_device_get_device_list(6)",
                              "usb_device_list_get_first()", "usb_device_list_get_next()",
                              "usb_device_free_device_list()"}));
}

TEST_F(UsbEnumerationTest, TwoSticksTellThisStory) {
    const DeviceId one = stick("One");
    const DeviceId two = stick("Two");
    tv.ports().setMounted(two, stickFolder());
    const UsbDevice& first = tv.ports().device(one);
    const UsbDevice& second = tv.ports().device(two);
    mgr->GetDeviceList();
    const Texts seen = story();
    EXPECT_EQ(Texts(seen.begin(), std::find(seen.begin(), seen.end(), BOTH_LISTS[1])),
              joined({{"I m_pDevList :(nil)", "usb_device_get_device_list(8)",
                       "usb_device_list_get_first()", "I Device Class = 8"},
                      searchStory(key(one), {}),
                      {"I New "},
                      fillStory(first, 0),
                      insertStory(first, 0, 1),
                      {"I Device Class = 8"},
                      searchStory(key(one), {key(one)}),
                      nameStory(first, 1),
                      {"I pDeviceH:PTR strDeviceKey=" + key(one), "usb_device_list_get_next()",
                       "I pDeviceH:PTR", "I Device Class = 8"},
                      searchStory(key(two), {key(one)}),
                      {"I New "},
                      fillStory(second, 1),
                      insertStory(second, 1, 2),
                      {"I Device Class = 8"},
                      searchStory(key(two), {key(two), key(one)}),
                      nameStory(second, 2),
                      {"I pDeviceH:PTR strDeviceKey=" + key(two), "usb_device_list_get_next()",
                       "usb_device_free_device_list()"}}));
}

TEST_F(UsbEnumerationTest, IsSilentNoFlagNoPopUpNoScanNoLaunchNoClient) {
    int told = 0;
    mgr->SetDeviceEventCallback(
        [](void* count, CMMDeviceInfo*, bool) { ++*static_cast<int*>(count); }, &told);
    access.setNotifyCallback([](void* count) { ++*static_cast<int*>(count); }, &told);
    const DeviceId one = stick("One");
    const DeviceId two = camera("c");
    tv.ports().setMounted(one, stickFolder());
    tv.applications().setRunning("org.norvane.lumet", true);
    mgr->GetDeviceList();
    tv.settle();
    EXPECT_EQ(mgr->GetDeviceCount(), 2);
    EXPECT_FALSE(record(one)->GetUsbStorageAddAction());
    EXPECT_FALSE(record(two)->GetUsbStorageAddAction());
    EXPECT_TRUE(tv.screen().history().empty());
    EXPECT_TRUE(tv.scanner().started().empty());
    EXPECT_TRUE(tv.applications().launches().empty());
    EXPECT_EQ(told, 0);
    EXPECT_EQ(access.currentDevice(), nullptr);
}

TEST_F(UsbEnumerationTest, AnEventWithAListThatIsNotEmptyEnumeratesNothing) {
    stick("Listed");
    mgr->GetDeviceList();
    const DeviceId missed = stick("Missed");
    const DeviceId event = stick("Event");
    forget();
    announce(event, "added");
    EXPECT_EQ(linesOf(calls(), BOTH_LISTS), Texts{});
    EXPECT_EQ(linesOf(listedKeys(), {key(missed)}), Texts{});
}

TEST_F(UsbEnumerationTest, RemovedWithAnEmptyListEnumeratesNothing) {
    stick("Present");
    const DeviceId gone = stick("Gone");
    pull(gone);
    EXPECT_EQ(linesOf(story(), {"I Request all device", BOTH_LISTS[0], BOTH_LISTS[1]}), Texts{});
    EXPECT_EQ(listedKeys(), Texts{});
}

TEST_F(UsbEnumerationTest, AListThatStaysEmptyIsEnumeratedOnEachRequest) {
    EXPECT_EQ(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(linesOf(calls(), BOTH_LISTS),
              (Texts{BOTH_LISTS[0], BOTH_LISTS[1], BOTH_LISTS[0], BOTH_LISTS[1]}));
}

TEST_F(UsbEnumerationTest, AnEventAboutADeviceThatIsNoLongerPresentListsItAllTheSame) {
    const DeviceId stays = stick("Stays");
    const DeviceId flies = stick("Flies");
    tv.ports().announce(flies, "added");
    tv.ports().vanish(flies);
    tv.settle();
    EXPECT_EQ(listedKeys(), (Texts{key(flies), key(stays)}));
}

TEST_F(UsbEnumerationTest, ItsHandlesAreReleasedWithTheListAndNeverOneByOne) {
    const DeviceId one = stick("One");
    stick("Two");
    camera("c");
    announce(one, "added");
    EXPECT_EQ(tv.journal().count("usb_device_free_device_list", mark), 2U);
    EXPECT_EQ(tv.journal().count("free_usb_device_h", mark), 1U) << "the one of the event";
}

// ---- disks of an unknown type

TEST_F(UsbEnumerationTest, ADiskOfType99IsListedAndThenNoEventRemovesIt) {
    UsbDevice unknown;
    unknown.disk = USB_DISK_UNKNOWN;
    unknown.product = "Unknown";
    const DeviceId disk = tv.ports().insert(unknown);
    const DeviceId other = stick("Other");
    announce(other, "added");
    EXPECT_EQ(listedKeys(), (Texts{key(other), key(disk)}));
    pull(disk);
    EXPECT_EQ(listedKeys(), (Texts{key(other), key(disk)}));
    pull(other);
    EXPECT_EQ(listedKeys(), Texts{key(disk)});
    EXPECT_EQ(record(disk)->GetDiskType(), 2);
}

// ---- a platform that fails

TEST_F(UsbEnumerationTest, AListThatCannotBeHadEndsThatHalfQuietly) {
    stick("One");
    const DeviceId cam = camera("c");
    tv.journal().order("usb_device_get_device_list", Fault::Fails, 1);
    mgr->GetDeviceList();
    EXPECT_EQ(calls(), (Texts{"usb_device_get_device_list(8)", "usb_device_get_device_list(6)",
                              "usb_device_list_get_first()", "usb_device_list_get_next()",
                              "usb_device_free_device_list()"}));
    EXPECT_EQ(listedKeys(), Texts{key(cam)});
    EXPECT_EQ(warnings(), Texts{"W Unknow device type"}) << "of the camera; no other";
}

TEST_F(UsbEnumerationTest, TwoListsThatCannotBeHadLeaveNothingToRelease) {
    stick("One");
    tv.journal().order("usb_device_get_device_list", Fault::Fails);
    EXPECT_EQ(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(calls(), BOTH_LISTS);
    EXPECT_EQ(warnings(), Texts{});
}

TEST_F(UsbEnumerationTest, AListWithoutAFirstDeviceIsStillAskedForTheNextAndReleased) {
    mgr->GetDeviceList();
    EXPECT_EQ(calls(), (Texts{"usb_device_get_device_list(8)", "usb_device_list_get_first()",
                              "usb_device_list_get_next()", "usb_device_free_device_list()",
                              "usb_device_get_device_list(6)", "usb_device_list_get_first()",
                              "usb_device_list_get_next()", "usb_device_free_device_list()"}));
}

TEST_F(UsbEnumerationTest, AnEventWorksWhenNothingCanBeEnumerated) {
    tv.journal().order("usb_device_get_device_list", Fault::Fails);
    const DeviceId device = plug();
    EXPECT_EQ(listedKeys(), Texts{key(device)});
    EXPECT_EQ(tv.screen().history().size(), 1U);
}

// ---- the operations themselves

TEST_F(UsbEnumerationTest, AddingWithoutAHandleWarnsAndGivesNoRecord) {
    EXPECT_EQ(access.addDeviceNode(nullptr), nullptr);
    EXPECT_EQ(story(), Texts{"W NULL == pUsbDeviceHnd"});
}

TEST_F(UsbEnumerationTest, AddingTheSameHandleTwiceGivesTheSameRecord) {
    const DeviceId device = stick("One");
    const EnumeratedHandle handle(USB_CLASS_MASS_STORAGE);
    CMMDeviceInfo* first = access.addDeviceNode(handle.get());
    EXPECT_EQ(access.addDeviceNode(handle.get()), first);
    EXPECT_EQ(first, record(device));
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
}

TEST_F(UsbEnumerationTest, TheScanOfAllStorageWalksTheAttachedDevices) {
    stick("One");
    camera("c");
    access.scanUsbStorage();
    EXPECT_EQ(calls().front(), "usb_mass_storage_foreach()");
    EXPECT_EQ(tv.journal().count("free_usb_device_h", mark), 1U) << "cameras are not walked";
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
}

}  // namespace
