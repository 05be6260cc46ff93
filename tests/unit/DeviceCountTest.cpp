// The counters beside the list, and what other programs ask of it: counts, copies of records, the list
// itself, and being told.
#include <climits>

#include "Observations.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

class DeviceCountTest : public ManagerTest {
protected:
    DeviceId plugWith(int fileSystem) {
        UsbDevice stick;
        stick.fileSystem = fileSystem;
        return plug(stick);
    }
    DeviceId plugCamera(int fileSystem = 99, const std::string& serial = "camera") {
        UsbDevice camera;
        camera.fileSystem = fileSystem;
        camera.serial = serial;
        const DeviceId id = tv.ports().plugCamera(camera);
        tv.settle();
        return id;
    }
    /// The counters for FAT, exFAT, EXT4, NTFS and cameras.
    std::vector<int> counters() {
        std::vector<int> counts;
        for (const int type : {0, 1, 2, 3, 6}) {
            counts.push_back(mgr->GetDeviceCount(type));
        }
        return counts;
    }
};

struct Kind {
    int fileSystem;
    const char* line;
    std::vector<int> counters;
};

class CounterTest : public DeviceCountTest, public ::testing::WithParamInterface<Kind> {};

TEST_P(CounterTest, RisesWithAnAttachedDeviceAndFallsWithItsRemoval) {
    const Kind& kind = GetParam();
    forget();
    const DeviceId stick = plugWith(kind.fileSystem);
    EXPECT_TRUE(logged(4, std::string(kind.line) + " : 1"));
    EXPECT_EQ(counters(), kind.counters);
    plugWith(kind.fileSystem);
    EXPECT_TRUE(logged(4, std::string(kind.line) + " : 2"));
    pull(stick);
    EXPECT_EQ(counters(), kind.counters);
}

TEST_P(CounterTest, NeverFallsBelow0) {
    const Kind& kind = GetParam();
    const DeviceId stick = plugWith(99);
    tv.ports().device(stick).fileSystem = kind.fileSystem;
    tv.ports().announce(stick, "added");
    tv.settle();
    ASSERT_EQ(record(stick)->GetFileSystemType(), kind.fileSystem);
    pull(stick);
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(OfEveryFileSystem,
                         CounterTest,
                         ::testing::Values(Kind{0, "fat Count", {1, 0, 0, 0, 0}},
                                           Kind{1, "exfat Count", {0, 1, 0, 0, 0}},
                                           Kind{2, "EXT4 Count", {0, 0, 1, 0, 0}},
                                           Kind{3, "ntfs Count", {0, 0, 0, 1, 0}}));

TEST_F(DeviceCountTest, AnUnknownFileSystemCountsNowhereAndWarns) {
    const DeviceId stick = plugWith(99);
    EXPECT_TRUE(logged(5, "Unknow device type"));
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0, 0}));
    pull(stick);
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0, 0}));
}

TEST_F(DeviceCountTest, ACameraCountsAsOneAndWarnsAboutItsFileSystem) {
    const DeviceId camera = plugCamera();
    EXPECT_TRUE(logged(5, "Unknow device type"));
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0, 1}));
    pull(camera);
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0, 0}));
}

TEST_F(DeviceCountTest, ACameraWithAFileSystemCountsTwice) {
    plugCamera(USB_FILESYSTEM_EXFAT);
    EXPECT_FALSE(logged(5, "Unknow device type"));
    EXPECT_EQ(counters(), (std::vector<int>{0, 1, 0, 0, 1}));
}

TEST_F(DeviceCountTest, OfCamerasFallsBelow0) {
    // A camera whose serial is the node name of a listed stick takes over its record.
    UsbDevice stick;
    stick.devname = "one key";
    stick.fileSystem = 99;
    plug(stick);
    const DeviceId camera = plugCamera(99, "one key");
    ASSERT_EQ(mgr->GetDeviceCount(), 1);
    pull(camera);
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 0, 0, -1}));
    EXPECT_EQ(mgr->GetDeviceCount(5), -1);
}

TEST_F(DeviceCountTest, DoesNotMoveWhenTheFileSystemChangedAtARefresh) {
    const DeviceId stick = plugWith(USB_FILESYSTEM_EXT4);
    tv.ports().device(stick).fileSystem = USB_FILESYSTEM_NTFS;
    tv.ports().announce(stick, "added");
    tv.settle();
    ASSERT_EQ(record(stick)->GetFileSystemType(), 3);
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 1, 0, 0}));
    pull(stick);
    EXPECT_EQ(counters(), (std::vector<int>{0, 0, 1, 0, 0}));
}

TEST_F(DeviceCountTest, OfAnyOtherCodeIsTheSumOfAllFiveCamerasIncluded) {
    for (const int fileSystem : {0, 1, 1, 2, 3}) {
        plugWith(fileSystem);
    }
    plugCamera(USB_FILESYSTEM_NTFS);
    for (const int code : {5, 4, 7, 99, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(mgr->GetDeviceCount(code), 7) << code;
    }
    EXPECT_EQ(mgr->GetDeviceCount(), 6);
}

TEST_F(DeviceCountTest, IsLogged) {
    for (const int fileSystem : {0, 0, 0, 1, 1, 2, 2, 2, 2}) {
        plugWith(fileSystem);
    }
    forget();
    counters();
    (void)mgr->GetDeviceCount(5);
    EXPECT_EQ(
        tv.journal().story(mark),
        (Texts{"I FS type :0", "I 3", "I FS type :1", "I m_nExFatFsDeviceCount :2", "I FS type :2",
               "I 4", "I FS type :3", "I 0", "I FS type :6", "I 0", "I FS type :5", "I 9"}));
}

TEST_F(DeviceCountTest, OfTheListIsItsLengthAndLogged) {
    plug();
    plug();
    forget();
    EXPECT_EQ(mgr->GetDeviceCount(), 2);
    const std::string head = address(access.list());
    EXPECT_EQ(tv.journal().story(mark),
              (Texts{"I m_pDevList:" + head, "I m_pDevList:" + head + " nCount=2"}));
}

TEST_F(DeviceCountTest, BeforeAnyEnumerationIs0WhateverIsPluggedIn) {
    tv.ports().insert({});
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
    EXPECT_EQ(mgr->GetDeviceCount(0), 0);
    EXPECT_EQ(tv.journal().calls(mark), Texts{});
}

TEST_F(DeviceCountTest, OfAListIsRightForANodeInItsMiddleAndForNone) {
    plug();
    plug();
    plug();
    EXPECT_EQ(get_list_count(nullptr), 0);
    EXPECT_EQ(get_list_count(access.list()), 3);
    EXPECT_EQ(get_list_count(access.list()->next), 3);
    EXPECT_EQ(get_list_count(access.list()->next->next), 3);
}

// ---- copies of records

class DeviceQueryTest : public DeviceCountTest {};

TEST_F(DeviceQueryTest, ACopyHoldsTheDisplayNameAndTheIndexOfTheRecord) {
    UsbDevice stick;
    stick.product = "P";
    plug(stick);
    stick.devname = "second";
    plug(stick);
    CMMDeviceInfo copy;
    copy.SetDisplayNameForNotification("mine");
    copy.SetDiskType(77);
    std::string key = "second";
    forget();
    EXPECT_EQ(mgr->GetDeviceInfo(key, &copy), 0);
    EXPECT_EQ(messages().front(), "Device Name :second, pDeviceInfo :" + address(&copy));
    EXPECT_TRUE(logged(4, "Finde device"));
    EXPECT_EQ(copy.GetDeviceKey(), "second");
    EXPECT_EQ(copy.GetDisplayName(), "P(2&#x202d;)");
    EXPECT_EQ(copy.GetIndex(), 2);
    EXPECT_EQ(copy.GetDisplayNameForNotification(), "mine");
    EXPECT_EQ(copy.GetDiskType(), 77);
}

TEST_F(DeviceQueryTest, AnUnknownKeyReturns10AndLeavesTheTargetUntouched) {
    plug();
    CMMDeviceInfo copy;
    copy.SetProduct("mine");
    copy.SetDeviceKey("mine");
    std::string key = "unknown";
    EXPECT_EQ(mgr->GetDeviceInfo(key, &copy), 10);
    EXPECT_EQ(copy.GetProduct(), "mine");
    EXPECT_EQ(copy.GetDeviceKey(), "mine");
}

TEST_F(DeviceQueryTest, AnEmptyListReturns10) {
    CMMDeviceInfo copy;
    std::string key = "unknown";
    EXPECT_EQ(mgr->GetDeviceInfo(key, &copy), 10);
}

TEST_F(DeviceQueryTest, NoTargetReturns10ForAListedDeviceToo) {
    const DeviceId stick = plug();
    std::string key = record(stick)->GetDeviceKey();
    forget();
    EXPECT_EQ(mgr->GetDeviceInfo(key, nullptr), 10);
    EXPECT_EQ(messages().front(), "Device Name :" + key + ", pDeviceInfo :(nil)");
}

// ---- the list

TEST_F(DeviceQueryTest, AnEmptyListIsEnumeratedFirstSticksThenCameras) {
    UsbDevice camera;
    camera.usbClass = USB_CLASS_STILL_IMAGE;
    camera.serial = "camera";
    tv.ports().insert(camera);
    UsbDevice stick;
    stick.devname = "stick";
    tv.ports().insert(stick);
    GList* list = mgr->GetDeviceList();
    EXPECT_EQ(list, access.list());
    EXPECT_EQ(listedKeys(), (Texts{"camera", "stick"}));
    EXPECT_EQ(messages().front(), "m_pDevList :(nil)");
    EXPECT_TRUE(
        inOrder(calls(), {"usb_device_get_device_list(8)", "usb_device_get_device_list(6)"}));
}

TEST_F(DeviceQueryTest, AListThatIsNotEmptyIsHandedOutAsItIs) {
    plug();
    tv.ports().insert({});
    forget();
    EXPECT_EQ(mgr->GetDeviceList(), access.list());
    EXPECT_EQ(tv.journal().story(mark), Texts{"I m_pDevList :" + address(access.list())});
    EXPECT_EQ(listedKeys().size(), 1U);
}

TEST_F(DeviceQueryTest, AListMayStayNull) {
    EXPECT_EQ(mgr->GetDeviceList(), nullptr);
}

TEST_F(DeviceQueryTest, AListStaysNullWhenTheLibraryCannotTell) {
    tv.ports().insert({});
    tv.journal().order("usb_device_get_device_list", simulated::Fault::Fails);
    EXPECT_EQ(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(tv.journal().count("usb_device_get_device_list", mark), 2U);
    EXPECT_EQ(tv.journal().count("usb_device_free_device_list", mark), 0U);
}

TEST_F(StartingManagerTest, AListIsEnumeratedBeforeTheStartUpTimerToo) {
    tv.ports().insert({});
    EXPECT_NE(mgr->GetDeviceList(), nullptr);
}

// ---- being told

struct Told {
    Texts calls;
    static void notify(void* user) { static_cast<Told*>(user)->calls.emplace_back("notify"); }
    static void event(void* user, CMMDeviceInfo* device, bool attached) {
        static_cast<Told*>(user)->calls.push_back("event " + address(device) +
                                                  (attached ? " attached" : " removed"));
    }
};

TEST_F(DeviceQueryTest, ClientsAreToldOfAnAttachedDeviceFirstTheNoticeThenTheEvent) {
    Told told;
    CMMDeviceInfo device;
    access.setNotifyCallback(&Told::notify, &told);
    mgr->SetDeviceEventCallback(&Told::event, &told);
    access.notifyClient(&device);
    EXPECT_EQ(told.calls, (Texts{"notify", "event " + address(&device) + " attached"}));
}

TEST_F(DeviceQueryTest, ClientsAreToldByWhicheverCallbackIsSet) {
    Told told;
    CMMDeviceInfo device;
    access.notifyClient(&device);
    EXPECT_EQ(told.calls, Texts{});
    mgr->SetDeviceEventCallback(&Told::event, &told);
    access.notifyClient(&device);
    EXPECT_EQ(told.calls, Texts{"event " + address(&device) + " attached"});
    mgr->SetDeviceEventCallback(nullptr, nullptr);
    access.setNotifyCallback(&Told::notify, &told);
    access.notifyClient(&device);
    EXPECT_EQ(told.calls, (Texts{"event " + address(&device) + " attached", "notify"}));
}

TEST_F(DeviceQueryTest, ClientsAreNotToldOfAttachedDevicesByAnyEvent) {
    Told told;
    access.setNotifyCallback(&Told::notify, &told);
    mgr->SetDeviceEventCallback(&Told::event, &told);
    const DeviceId stick = plug();
    plugCamera();
    EXPECT_EQ(told.calls, Texts{});
    const std::string pointer = address(record(stick));
    pull(stick);
    EXPECT_EQ(told.calls, Texts{"event " + pointer + " removed"});
}

}  // namespace
