// What the manager makes of a USB event: which it refuses, what "added" and "mounted" do to a stick
// and to a camera. The enumeration stands in UsbEnumerationTest.cpp, what follows a connection in
// UsbConnectTest.cpp, "removed" in UsbRemovalTest.cpp.
#include "Stories.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

constexpr const char* IGNORED =
    "pUsbDeviceHnd PTR ,MOUNTED but not after add action , ignore !!!! ";

class UsbIntakeTest : public ManagerTest {
protected:
    Texts story(int leastPriority = 3) { return plainStory(tv, mark, leastPriority); }
    bool told(const std::string& line) { return occurrences(story(), line) > 0; }
    std::string key(DeviceId device) { return keyOf(tv.ports().device(device)); }
    void announce(DeviceId device, const std::string& action) {
        tv.ports().announce(device, action);
        tv.settle();
    }
    void mount(DeviceId device) {
        tv.ports().mount(device, stickFolder());
        tv.settle();
    }
    /// How many pop-ups a viewer has seen.
    std::size_t popups() { return tv.screen().history().size(); }
    /// A list that is not empty, so that no enumeration mixes in: a stick of another product.
    DeviceId another() {
        UsbDevice like;
        like.product = "Another";
        like.serial = "another";
        const DeviceId device = tv.ports().insert(like);
        mgr->GetDeviceList();
        forget();
        return device;
    }
    static UsbDevice ofClass(int usbClass, int disk = USB_DISK_USB) {
        UsbDevice device;
        device.usbClass = usbClass;
        device.disk = disk;
        return device;
    }
    std::string free(DeviceId device) { return "free_usb_device_h(<" + key(device) + ">)"; }
};

// ---- refused events

TEST_F(UsbIntakeTest, AKeyboardOfClass3ProducesOnlyTheInfoLine) {
    const DeviceId keyboard = tv.ports().insert(ofClass(3));
    for (const char* action : {"added", "mounted", "removed"}) {
        forget();
        announce(keyboard, action);
        const Texts seen = story();
        ASSERT_EQ(seen.size(), 3U) << action;
        EXPECT_EQ(seen[0], std::string("D pUsbDeviceHnd:PTR  pcAction=") + action);
        EXPECT_EQ(seen[1], "I class[3]. The device is not storage");
        EXPECT_EQ(seen[2].rfind("free_usb_device_h(", 0), 0U);
    }
    EXPECT_EQ(listedKeys(), Texts{});
}

class UnknownDiskTest : public UsbIntakeTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(UnknownDiskTest, AMassStorageDeviceOfDiskType99IsIgnored) {
    const DeviceId disk = tv.ports().insert(ofClass(USB_CLASS_MASS_STORAGE, USB_DISK_UNKNOWN));
    announce(disk, GetParam());
    EXPECT_EQ(story(), (Texts{std::string("D pUsbDeviceHnd:PTR  pcAction=") + GetParam(),
                              "I The device is Usb, but disk type[99] is unkown", free(disk)}));
    EXPECT_EQ(listedKeys(), Texts{});
}

INSTANTIATE_TEST_SUITE_P(OnEachAction,
                         UnknownDiskTest,
                         ::testing::Values("added", "mounted", "removed", "changed"),
                         [](const auto& test) { return std::string(test.param); });

TEST_F(UsbIntakeTest, ACameraOfDiskType99IsTaken) {
    const DeviceId camera = tv.ports().insert(ofClass(USB_CLASS_STILL_IMAGE, USB_DISK_UNKNOWN));
    announce(camera, "added");
    EXPECT_EQ(listedKeys(), Texts{key(camera)});
    EXPECT_EQ(popups(), 1U);
}

TEST_F(UsbIntakeTest, TheDiskTypeIsAskedOfSticksAndCamerasAndOfNothingElse) {
    another();
    for (const int usbClass : {3, 6, 8}) {
        const DeviceId device = tv.ports().insert(ofClass(usbClass));
        forget();
        announce(device, "changed");
        const std::string name = "(<" + key(device) + ">)";
        Texts expected = {"usb_device_get_class" + name};
        if (usbClass != 3) {
            expected.push_back("usb_mass_storage_get_disk_type" + name);
        }
        expected.push_back(free(device));
        EXPECT_EQ(tv.journal().allCalls(mark), expected);
    }
}

TEST_F(UsbIntakeTest, ADiskOfAnyOtherTypeIsTaken) {
    for (const int disk : {0, 1, 2, 98}) {
        const DeviceId device = tv.ports().insert(ofClass(USB_CLASS_MASS_STORAGE, disk));
        announce(device, "added");
        EXPECT_EQ(listedKeys().front(), key(device)) << disk;
    }
}

TEST_F(UsbIntakeTest, AnUnknownActionOnlyReleasesTheHandle) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    announce(stick, "changed");
    EXPECT_EQ(story(), (Texts{"D pUsbDeviceHnd:PTR  pcAction=changed", free(stick)}));
}

TEST_F(UsbIntakeTest, AnEventWithoutAnActionWarnsAndReleasesNothing) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    tv.ports().announceNullAction(stick);
    tv.settle();
    EXPECT_EQ(story(), (Texts{"D pUsbDeviceHnd:PTR  pcAction=(null)",
                              "W NULL == pUsbDeviceHnd || NULL == pcAction"}));
}

TEST_F(UsbIntakeTest, AnEventWithoutADeviceWarns) {
    tv.ports().announceNullDevice("added");
    tv.settle();
    EXPECT_EQ(story(), (Texts{"D pUsbDeviceHnd:(nil)  pcAction=added",
                              "W NULL == pUsbDeviceHnd || NULL == pcAction"}));
}

/// Hand an event with user data that is no manager to the callback, with a handle of a walk.
void sendTo(void* user) {
    const auto step = [](usb_device_s* handle, void* data) {
        char action[] = "added";
        CMMDeviceMgrTestAccess::usb(handle, action, data);
        return true;
    };
    (void)usb_mass_storage_foreach(step, user);
}

TEST_F(UsbIntakeTest, AnEventWithoutAManagerWarnsAndReleasesTheHandle) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    sendTo(nullptr);
    EXPECT_EQ(story(), (Texts{"usb_mass_storage_foreach()", "D pUsbDeviceHnd:PTR  pcAction=added",
                              "W NULL == pThis", free(stick)}));
}

TEST_F(UsbIntakeTest, AnEventForAManagerThatIsGoneWarnsAndReleasesTheHandle) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    void* const dead = mgr;
    mgr->Destroy();
    CMMDeviceMgr::DestroyInstance();
    mgr = nullptr;
    forget();
    sendTo(dead);
    EXPECT_EQ(story(), (Texts{"usb_mass_storage_foreach()", "D pUsbDeviceHnd:PTR  pcAction=added",
                              "W NULL == pThis", free(stick)}));
}

// ---- "added" of a stick

TEST_F(UsbIntakeTest, AddedAloneListsTheStickButShowsNothingAndTellsNoClient) {
    int told = 0;
    mgr->SetDeviceEventCallback(
        [](void* count, CMMDeviceInfo*, bool) { ++*static_cast<int*>(count); }, &told);
    another();
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    announce(stick, "added");
    EXPECT_EQ(listedKeys().front(), key(stick));
    EXPECT_TRUE(record(stick)->GetUsbStorageAddAction());
    EXPECT_EQ(calls(), Texts{free(stick)});
    EXPECT_EQ(popups(), 0U);
    EXPECT_EQ(told, 0);
}

TEST_F(UsbIntakeTest, AddedOfAnUnlistedStickTellsThisStory) {
    const DeviceId other = another();
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    const UsbDevice& like = tv.ports().device(stick);
    announce(stick, "added");
    EXPECT_EQ(story(), joined({{"D pUsbDeviceHnd:PTR  pcAction=added", "I pUsbDeviceHnd:PTR",
                                "D HOST_ADDED pUsbDeviceHnd=PTR", "I Device Class = 8"},
                               searchStory(key(stick), {key(other)}),
                               {"I New "},
                               fillStory(like, 1),
                               insertStory(like, 1, 2),
                               {free(stick)}}));
}

TEST_F(UsbIntakeTest, AddedOfAListedStickRefreshesItsRecordAndTellsThisStory) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    mgr->GetDeviceList();
    forget();
    announce(stick, "added");
    EXPECT_EQ(story(), joined({{"D pUsbDeviceHnd:PTR  pcAction=added", "I pUsbDeviceHnd:PTR",
                                "D HOST_ADDED pUsbDeviceHnd=PTR", "I Device Class = 8"},
                               searchStory(key(stick), {key(stick)}),
                               {"I Update"},
                               fillStory(tv.ports().device(stick), 1),
                               {free(stick)}}));
}

TEST_F(UsbIntakeTest, AnAnnouncedStickAddedAgainIsRefreshedAndStaysAnnounced) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    announce(stick, "added");
    tv.ports().device(stick).product = "Renamed";
    announce(stick, "added");
    EXPECT_EQ(listedKeys(), Texts{key(stick)});
    EXPECT_EQ(record(stick)->GetProduct(), "Renamed");
    EXPECT_TRUE(record(stick)->GetUsbStorageAddAction());
    mount(stick);
    EXPECT_EQ(popups(), 1U);
}

TEST_F(UsbIntakeTest, AConnectedStickAddedAgainIsAnnouncedAgain) {
    const DeviceId stick = plug();
    tv.screen().hide();
    tv.settle();
    announce(stick, "added");
    EXPECT_TRUE(record(stick)->GetUsbStorageAddAction());
    announce(stick, "mounted");
    EXPECT_EQ(popups(), 2U);
}

TEST_F(UsbIntakeTest, ARefreshWithAnotherFileSystemMovesNoCounter) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    announce(stick, "added");
    tv.ports().device(stick).fileSystem = USB_FILESYSTEM_NTFS;
    announce(stick, "added");
    EXPECT_EQ(record(stick)->GetFileSystemType(), USB_FILESYSTEM_NTFS);
    EXPECT_EQ(mgr->GetDeviceCount(USB_FILESYSTEM_FAT), 1);
    EXPECT_EQ(mgr->GetDeviceCount(USB_FILESYSTEM_NTFS), 0);
}

TEST_F(UsbIntakeTest, ADamagedDiskStaysDamagedWhenARefreshFindsAFileSystem) {
    UsbDevice damaged;
    damaged.fileSystem = USB_FILESYSTEM_UNKNOWN;
    const DeviceId disk = tv.ports().insert(damaged);
    announce(disk, "added");
    tv.ports().device(disk).fileSystem = USB_FILESYSTEM_FAT;
    announce(disk, "added");
    EXPECT_TRUE(record(disk)->GetDamageFlag());
    EXPECT_EQ(record(disk)->GetFileSystemType(), USB_FILESYSTEM_FAT);
}

// ---- "mounted" of a stick

TEST_F(UsbIntakeTest, MountedOfAnUnlistedStickIsIgnored) {
    const DeviceId other = another();
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    mount(stick);
    EXPECT_EQ(story(), joined({{"D pUsbDeviceHnd:PTR  pcAction=mounted", "I STORAGE_MOUNTED",
                                "I Device Class = 8"},
                               searchStory(key(stick), {key(other)}),
                               {std::string("I ") + IGNORED, free(stick)}}));
    EXPECT_EQ(listedKeys(), Texts{key(other)});
}

TEST_F(UsbIntakeTest, MountedWithAnEmptyListEnumeratesTheStickWithTheFlagClearAndIsIgnored) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    mount(stick);
    EXPECT_TRUE(told("I Request all device"));
    EXPECT_TRUE(told(std::string("I ") + IGNORED));
    EXPECT_EQ(listedKeys(), Texts{key(stick)});
    EXPECT_FALSE(record(stick)->GetUsbStorageAddAction());
    EXPECT_EQ(popups(), 0U);
    EXPECT_TRUE(tv.scanner().started().empty());
}

TEST_F(UsbIntakeTest, MountedOfAnAnnouncedStickClearsTheFlagAndConnects) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    announce(stick, "added");
    forget();
    mount(stick);
    EXPECT_EQ(
        linesOf(story(), {"I STORAGE_MOUNTED", "I clear add action flag!!!", "I Device Count :1"}),
        (Texts{"I STORAGE_MOUNTED", "I clear add action flag!!!", "I Device Count :1"}));
    EXPECT_FALSE(record(stick)->GetUsbStorageAddAction());
    EXPECT_EQ(popups(), 1U);
}

TEST_F(UsbIntakeTest, MountedAgainOfAConnectedStickIsIgnored) {
    const DeviceId stick = plug();
    tv.screen().hide();
    tv.settle();
    forget();
    announce(stick, "mounted");
    EXPECT_TRUE(told(std::string("I ") + IGNORED));
    EXPECT_EQ(calls(), Texts{free(stick)});
    EXPECT_EQ(popups(), 1U);
}

TEST_F(UsbIntakeTest, MountedOfAStickListedByEnumerationIsIgnored) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    mgr->GetDeviceList();
    forget();
    mount(stick);
    EXPECT_TRUE(told(std::string("I ") + IGNORED));
    EXPECT_EQ(calls(), Texts{free(stick)});
    EXPECT_EQ(record(stick)->GetMountpath(), "") << "ignored, so not refreshed either";
    EXPECT_EQ(popups(), 0U);
}

TEST_F(UsbIntakeTest, AStickListedByEnumerationConnectsOnMountedOnceItWasAdded) {
    const DeviceId stick = tv.ports().insert(UsbDevice{});
    mgr->GetDeviceList();
    announce(stick, "added");
    mount(stick);
    EXPECT_EQ(popups(), 1U);
}

// ---- cameras

TEST_F(UsbIntakeTest, ACameraConnectsOnAddedAtOnce) {
    another();
    const DeviceId camera = tv.ports().plugCamera();
    tv.settle();
    EXPECT_EQ(linesOf(story(), {"I New ", "I Device Count :2", "D HOST_ADDED pUsbDeviceHnd=PTR"}),
              (Texts{"I New ", "I Device Count :2"}));
    EXPECT_EQ(listedKeys().front(), key(camera));
    EXPECT_FALSE(record(camera)->GetUsbStorageAddAction());
    EXPECT_EQ(popups(), 1U);
}

TEST_F(UsbIntakeTest, ACameraThatTheEnumerationHasJustFoundIsRefreshedAndConnected) {
    tv.ports().plugCamera();
    tv.settle();
    EXPECT_EQ(linesOf(story(), {"I Request all device", "I New ", "I Update", "I Device Count :1"}),
              (Texts{"I Request all device", "I New ", "I Update", "I Device Count :1"}));
    EXPECT_EQ(popups(), 1U);
}

TEST_F(UsbIntakeTest, MountedOfACameraIsIgnored) {
    another();
    const DeviceId camera = tv.ports().insert(ofClass(USB_CLASS_STILL_IMAGE));
    announce(camera, "mounted");
    EXPECT_EQ(story(), (Texts{"D pUsbDeviceHnd:PTR  pcAction=mounted", free(camera)}));
    EXPECT_EQ(popups(), 0U);
}

TEST_F(UsbIntakeTest, MountedOfACameraWithAnEmptyListListsItSilently) {
    const DeviceId camera = tv.ports().insert(ofClass(USB_CLASS_STILL_IMAGE));
    announce(camera, "mounted");
    EXPECT_TRUE(told("I Request all device"));
    EXPECT_FALSE(told("I STORAGE_MOUNTED"));
    EXPECT_EQ(listedKeys(), Texts{key(camera)});
    EXPECT_EQ(popups(), 0U);
}

TEST_F(UsbIntakeTest, ACameraAddedAgainConnectsAgain) {
    const DeviceId camera = tv.ports().plugCamera();
    tv.settle();
    tv.screen().hide();
    tv.settle();
    announce(camera, "added");
    EXPECT_EQ(popups(), 2U);
    EXPECT_EQ(listedKeys(), Texts{key(camera)});
}

// ---- handles

/// A class with an action.
class EventHandleTest : public UsbIntakeTest,
                        public ::testing::WithParamInterface<std::tuple<int, const char*>> {};

TEST_P(EventHandleTest, IsReleasedOnceAndLast) {
    const auto [usbClass, action] = GetParam();
    const DeviceId device = tv.ports().insert(ofClass(usbClass));
    tv.ports().announce(device, "added");  // listed or not: both releases are counted
    announce(device, action);
    EXPECT_EQ(tv.journal().count("free_usb_device_h", mark), 2U);
    EXPECT_EQ(story().back().rfind("free_usb_device_h(", 0), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    OfEachClassOnEachAction,
    EventHandleTest,
    ::testing::Combine(::testing::Values(3, 6, 8),
                       ::testing::Values("added", "mounted", "removed", "changed")),
    [](const auto& test) {
        return "class" + std::to_string(std::get<0>(test.param)) + std::get<1>(test.param);
    });

}  // namespace
