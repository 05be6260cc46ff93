// The walk over all attached mass-storage devices in search of a demo file: it lists every device
// that it meets, launches for each that has the file, and releases every handle.
#include <algorithm>

#include "MMNames.h"
#include "Stories.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

const std::string ASK_MODE = R"(vconf_get_int("db/menu/support/use_mode"))";
const std::string STARS = "I " + std::string(37, '*');

class DemoWalkTest : public ManagerTest {
protected:
    Texts story() { return plainStory(tv, mark); }
    std::string key(DeviceId device) { return keyOf(tv.ports().device(device)); }
    DeviceId stick(const std::string& product, const std::string& folder = "") {
        UsbDevice device;
        device.product = product;
        device.serial = product;
        const DeviceId id = tv.ports().insert(device);
        if (!folder.empty()) {
            tv.ports().setMounted(id, folder);
        }
        return id;
    }
    std::string demoFolder() {
        const std::string folder = stickFolder();
        temp.file(folder.substr(temp.path().size() + 1) + "/DEMO_LED.tp");
        return folder;
    }
    /// Change to shop mode: there is no internal demo, so the devices are walked at once.
    void walk() {
        tv.settings().set(MMNames::KEY_USE_MODE, 1);
        tv.settle();
    }
    std::string free(DeviceId device) { return "free_usb_device_h(<" + key(device) + ">)"; }
};

TEST_F(DemoWalkTest, AStickWithADemoFileTellsThisStory) {
    const std::string folder = demoFolder();
    const DeviceId device = stick("Demo", folder);
    const UsbDevice& like = tv.ports().device(device);
    const std::string file = folder + "/DEMO_LED.tp";
    walk();
    const Texts seen = story();
    const auto dumpBegins = std::find(seen.begin(), seen.end(), STARS);
    const auto filling = std::find(seen.begin(), seen.end(), "I pUsbDeviceHnd:PTR,pDeviceNode:PTR");
    ASSERT_NE(dumpBegins, seen.end()) << "the device's properties are logged";
    ASSERT_LT(dumpBegins, filling) << "before the record is filled";
    EXPECT_EQ(
        without(Texts(seen.begin(), dumpBegins), {"I Device Class = "}),
        (Texts{ASK_MODE, "I NULL == pMovieDir", "I Check Demo player via m_AllUsbActionCallback\n",
               "usb_mass_storage_foreach()", "I pUsbDeviceHnd:PTR"}));
    EXPECT_EQ(Texts(filling, seen.end()),
              joined({fillStory(like, 0),
                      nameStory(like, 0),
                      insertStory(like, 0, 1),
                      {ASK_MODE, "I File " + file + " exist",
                       R"(aul_app_is_running("org.norvane.floorreel"))",
                       "I m_LaunchDemoPlayer File path =  " + file},
                      launchCalls({{"root_path", file}}, MMNames::APP_SHOPREEL),
                      {"I launch demo player - " + file, free(device)}}));
}

TEST_F(DemoWalkTest, AStickWithoutADemoFileIsListedAndItsHandleReleased) {
    const std::string folder = stickFolder();
    const DeviceId device = stick("Plain", folder);
    walk();
    const Texts seen = story();
    EXPECT_EQ(Texts(seen.end() - 3, seen.end()),
              (Texts{ASK_MODE, "W File " + folder + "/DEMO_LED.tp not exist", free(device)}));
    EXPECT_EQ(listedKeys(), Texts{key(device)});
    EXPECT_TRUE(tv.applications().launches().empty());
}

TEST_F(DemoWalkTest, ListsEveryDeviceWhetherOrNotItCarriesADemoFile) {
    const DeviceId one = stick("One", stickFolder());
    const DeviceId two = stick("Two", demoFolder());
    const DeviceId three = stick("Three");
    walk();
    EXPECT_EQ(listedKeys(), (Texts{key(three), key(two), key(one)}));
    EXPECT_EQ(mgr->GetDeviceCount(USB_FILESYSTEM_FAT), 3);
    EXPECT_EQ(tv.journal().count("free_usb_device_h", mark), 3U);
}

TEST_F(DemoWalkTest, LaunchesForEachStickWithADemoFile) {
    const std::string first = demoFolder();
    const std::string second = demoFolder();
    stick("One", first);
    stick("Two", second);
    walk();
    ASSERT_EQ(tv.applications().launches().size(), 2U);
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("root_path"), first + "/DEMO_LED.tp");
    EXPECT_EQ(tv.applications().launches()[1].extraData.at("root_path"), second + "/DEMO_LED.tp");
}

TEST_F(DemoWalkTest, IsSilentButForTheDemo) {
    int told = 0;
    mgr->SetDeviceEventCallback(
        [](void* count, CMMDeviceInfo*, bool) { ++*static_cast<int*>(count); }, &told);
    const DeviceId device = stick("One", stickFolder());
    walk();
    EXPECT_FALSE(record(device)->GetUsbStorageAddAction());
    EXPECT_TRUE(tv.screen().history().empty());
    EXPECT_TRUE(tv.scanner().started().empty());
    EXPECT_EQ(told, 0);
}

TEST_F(DemoWalkTest, AListedDeviceIsRefusedAndLeavesListAndCountersAsTheyWere) {
    const DeviceId device = plug(stickFolder());
    CMMDeviceInfo* const listed = record(device);
    forget();
    walk();
    EXPECT_TRUE(logged(4, "Device " + key(device) + " is in the list."));
    EXPECT_EQ(record(device), listed);
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
    EXPECT_EQ(mgr->GetDeviceCount(USB_FILESYSTEM_FAT), 1);
    EXPECT_EQ(access.currentDevice(), listed);
}

TEST_F(DemoWalkTest, AListedDeviceIsNotRefreshed) {
    const DeviceId device = plug(stickFolder());
    tv.ports().device(device).product = "Renamed";
    walk();
    EXPECT_EQ(record(device)->GetProduct(), "Stick");
}

TEST_F(DemoWalkTest, ADemoFileIsLookedForWhereTheDeviceIsMountedNowNotWhereItsListedRecordSays) {
    const DeviceId device = stick("Late");
    mgr->GetDeviceList();  // listed before it was mounted
    const std::string folder = demoFolder();
    tv.ports().setMounted(device, folder);
    walk();
    EXPECT_EQ(record(device)->GetMountpath(), "");
    ASSERT_EQ(tv.applications().launches().size(), 1U);
    EXPECT_EQ(tv.applications().launches()[0].extraData.at("root_path"), folder + "/DEMO_LED.tp");
}

TEST_F(DemoWalkTest, AStickThatWasWalkedAndIsMountedLaterIsIgnored) {
    const DeviceId device = stick("One");
    walk();
    forget();
    tv.ports().mount(device, stickFolder());
    tv.settle();
    EXPECT_FALSE(logged(4, "clear add action flag!!!"));
    EXPECT_TRUE(tv.screen().history().empty());
}

TEST_F(DemoWalkTest, AStickBetweenAddedAndMountedKeepsItsFlag) {
    const DeviceId device = stick("One");
    tv.ports().announce(device, "added");
    tv.settle();
    walk();
    EXPECT_TRUE(record(device)->GetUsbStorageAddAction());
}

TEST_F(DemoWalkTest, CamerasAreNotWalked) {
    UsbDevice camera;
    camera.usbClass = USB_CLASS_STILL_IMAGE;
    tv.ports().insert(camera);
    walk();
    EXPECT_EQ(listedKeys(), Texts{});
    EXPECT_EQ(tv.journal().count("free_usb_device_h", mark), 0U);
}

TEST_F(DemoWalkTest, AWalkThatFailsListsNothing) {
    stick("One", demoFolder());
    tv.journal().order("usb_mass_storage_foreach", simulated::Fault::Fails);
    walk();
    EXPECT_EQ(listedKeys(), Texts{});
    EXPECT_EQ(tv.journal().log(mark, 5).size(), 0U);
}

TEST_F(DemoWalkTest, WhileTheInternalDemoRunsNoDemoPlayerIsLaunchedButTheFileLogged) {
    tv.applications().setRunning(MMNames::APP_FLOORREEL, true);
    const std::string folder = demoFolder();
    stick("Demo", folder);
    walk();
    EXPECT_TRUE(tv.applications().launches().empty());
    EXPECT_TRUE(inOrder(messages(), {"internal demo is running. don't launch demo player!",
                                     "launch demo player - " + folder + "/DEMO_LED.tp"}));
}

TEST_F(DemoWalkTest, WhileTheDemoPlayerRunsItIsLaunchedAgain) {
    tv.applications().setRunning(MMNames::APP_SHOPREEL, true);
    stick("Demo", demoFolder());
    walk();
    EXPECT_EQ(tv.applications().launches().size(), 1U);
}

TEST_F(DemoWalkTest, AtHomeTheFileIsNotLookedFor) {
    const DeviceId device = stick("Demo", demoFolder());
    access.scanUsbStorage();
    const Texts seen = story();
    EXPECT_EQ(Texts(seen.end() - 2, seen.end()), (Texts{ASK_MODE, free(device)}));
    EXPECT_EQ(listedKeys(), Texts{key(device)});
    EXPECT_TRUE(tv.applications().launches().empty());
}

TEST_F(DemoWalkTest, IsNotGatedByActivation) {
    mgr->SetActivated(false);
    stick("Demo", demoFolder());
    walk();
    EXPECT_EQ(tv.applications().launches().size(), 1U);
}

// ---- a step without a device or a manager

TEST_F(DemoWalkTest, AStepWithoutADeviceWarnsAndGoesOn) {
    EXPECT_TRUE(CMMDeviceMgrTestAccess::demoWalk(nullptr, mgr));
    EXPECT_EQ(story(),
              (Texts{"I pUsbDeviceHnd:(nil)", "W NULL == pUsbDeviceHnd || NULL == pThis"}));
}

TEST_F(DemoWalkTest, AStepWithoutAManagerWarnsAndTouchesNothing) {
    stick("One");
    const EnumeratedHandle handle(USB_CLASS_MASS_STORAGE);
    forget();
    EXPECT_TRUE(CMMDeviceMgrTestAccess::demoWalk(handle.get(), nullptr));
    EXPECT_EQ(story(), (Texts{"I pUsbDeviceHnd:PTR", "W NULL == pUsbDeviceHnd || NULL == pThis"}));
}

TEST_F(DemoWalkTest, AStepForAManagerThatIsGoneWarnsAndTouchesNothing) {
    stick("One");
    const EnumeratedHandle handle(USB_CLASS_MASS_STORAGE);
    void* const dead = mgr;
    mgr->Destroy();
    CMMDeviceMgr::DestroyInstance();
    mgr = nullptr;
    forget();
    EXPECT_TRUE(CMMDeviceMgrTestAccess::demoWalk(handle.get(), dead));
    EXPECT_EQ(story(), (Texts{"I pUsbDeviceHnd:PTR", "W NULL == pUsbDeviceHnd || NULL == pThis"}));
}

}  // namespace
