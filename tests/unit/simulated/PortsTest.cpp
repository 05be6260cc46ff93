// The ports: which events reach a program that listens, when, and with what handle.
#include <utility>

#include <gtest/gtest.h>

#include "Observations.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

/// A program that listens and gives every handle back, as the contract wants it.
class PortsTest : public TvTest {
protected:
    PortsTest() { listen(); }

    void listen() {
        usb_device_init();
        usb_set_connected_cb(take, this);
    }
    static void take(usb_device_s* device, char* action, void* user) {
        auto& test = *static_cast<PortsTest*>(user);
        const char* name = device != nullptr ? usb_device_get_devname(device) : nullptr;
        const char* serial = device != nullptr ? usb_device_get_serial(device) : nullptr;
        const char* mount = device != nullptr ? usb_device_get_mountpath(device) : nullptr;
        const std::string who = name != nullptr ? name : serial != nullptr ? serial : "nothing";
        test.seen.push_back(std::string(action != nullptr ? action : "null") + " " + who +
                            (mount != nullptr ? std::string(" at ") + mount : ""));
        if (device != nullptr && action != nullptr) {
            free_usb_device_h(device);
        }
    }
    Texts settled() {
        tv.settle();
        return std::exchange(seen, {});
    }

    Texts seen;
};

TEST_F(PortsTest, DeliverNothingBeforeTheMainContextRuns) {
    tv.ports().plug("/stick");
    EXPECT_TRUE(seen.empty());
    EXPECT_FALSE(settled().empty());
}

TEST_F(PortsTest, TellOfAStickFirstThatItWasAddedThenThatItIsMounted) {
    const DeviceId stick = tv.ports().plug("/stick");
    EXPECT_EQ(settled(), (Texts{"added /dev/sda1", "mounted /dev/sda1 at /stick"}));
    EXPECT_EQ(tv.ports().device(stick).mountpath, "/stick");
}

TEST_F(PortsTest, TellOfADiskFirstThatAllPartitionsWereAddedThenOfTheMounts) {
    tv.ports().plugDisk({"/one", "/two"});
    EXPECT_EQ(settled(), (Texts{"added /dev/sda1", "added /dev/sda2", "mounted /dev/sda1 at /one",
                                "mounted /dev/sda2 at /two"}));
}

TEST_F(PortsTest, GivePartitionsOfADiskOneAddressAndDifferentNumbers) {
    const auto partitions = tv.ports().plugDisk({"/one", "/two"});
    const UsbDevice& first = tv.ports().device(partitions[0]);
    const UsbDevice& second = tv.ports().device(partitions[1]);
    EXPECT_EQ(first.address, second.address);
    EXPECT_NE(first.number, second.number);
    EXPECT_NE(first.devpath, second.devpath);
}

TEST_F(PortsTest, NameTheDisksInTheOrderOfPlugging) {
    for (int i = 0; i < 25; ++i) {
        tv.ports().insert({});
    }
    EXPECT_EQ(tv.ports().device(tv.ports().insert({})).devname, "/dev/sdz1");
    EXPECT_EQ(tv.ports().device(tv.ports().insert({})).devname, "/dev/sdaa1");
}

TEST_F(PortsTest, KeepThePropertiesThatWereGiven) {
    UsbDevice like;
    like.devname = "";
    like.devpath = "/given";
    like.address = 77;
    like.number = 78;
    const UsbDevice& device = tv.ports().device(tv.ports().insert(like));
    EXPECT_EQ(device.devname, "");
    EXPECT_EQ(device.devpath, "/given");
    EXPECT_EQ(device.address, 77);
    EXPECT_EQ(device.number, 78);
}

TEST_F(PortsTest, TellOfACameraOnlyThatItWasAdded) {
    UsbDevice like;
    like.serial = "C1";
    const DeviceId camera = tv.ports().plugCamera(like);
    EXPECT_EQ(settled(), Texts{"added C1"});
    const UsbDevice& device = tv.ports().device(camera);
    EXPECT_EQ(device.usbClass, USB_CLASS_STILL_IMAGE);
    EXPECT_EQ(device.subClass, 1);
    EXPECT_EQ(device.fileSystem, USB_FILESYSTEM_UNKNOWN);
    EXPECT_EQ(device.devname, std::nullopt);
}

TEST_F(PortsTest, TellOfARemovalWithAHandleThatStillAnswers) {
    const DeviceId stick = tv.ports().plug("/stick");
    settled();
    tv.ports().pull(stick);
    EXPECT_EQ(settled(), Texts{"removed /dev/sda1 at /stick"});
    EXPECT_TRUE(tv.ports().present().empty());
}

TEST_F(PortsTest, NeverMountAStickThatIsPulledAtOnce) {
    const DeviceId stick = tv.ports().plug("/stick");
    tv.ports().pull(stick);
    EXPECT_EQ(settled(), (Texts{"added /dev/sda1", "removed /dev/sda1"}));
}

TEST_F(PortsTest, ForgetWhatHappensWhileNobodyListens) {
    usb_unset_connected_cb();
    tv.ports().plug("/stick");
    listen();
    EXPECT_EQ(settled(), Texts{});
    EXPECT_EQ(tv.ports().present().size(), 1U);
}

TEST_F(PortsTest, DeliverNothingAfterTheLibraryWasStopped) {
    tv.ports().plug("/stick");
    usb_device_fini();
    EXPECT_EQ(settled(), Texts{});
    EXPECT_FALSE(tv.ports().listening());
}

TEST_F(PortsTest, DeliverNothingAfterTheCallbackWasTakenBack) {
    tv.ports().plug("/stick");
    usb_unset_connected_cb();
    EXPECT_EQ(settled(), Texts{});
}

TEST_F(PortsTest, ShowTheDeviceAsItWasWhenTheEventCameAbout) {
    const DeviceId stick = tv.ports().insert({});
    tv.ports().setMounted(stick, "/before");
    tv.ports().announce(stick, "changed");
    tv.ports().setMounted(stick, "/after");
    EXPECT_EQ(settled(), Texts{"changed /dev/sda1 at /before"});
}

TEST_F(PortsTest, CanSendWhatABrokenLibraryWouldSend) {
    const DeviceId stick = tv.ports().insert({});
    tv.ports().announceNullAction(stick);
    tv.ports().announceNullDevice("added");
    EXPECT_EQ(settled(), (Texts{"null /dev/sda1", "added nothing"}));
}

// ---- enumeration and walks

Texts enumerated(int usbClass) {
    Texts names;
    usb_device_list_s* list = nullptr;
    usb_device_s* device = nullptr;
    EXPECT_EQ(usb_device_get_device_list(usbClass, &list), 0);
    for (int more = usb_device_list_get_first(list, &device); more == 0;
         more = usb_device_list_get_next(list, &device)) {
        const char* name = usb_device_get_devname(device);
        names.emplace_back(name != nullptr ? name : usb_device_get_serial(device));
    }
    EXPECT_EQ(usb_device_free_device_list(list), 0);
    return names;
}

TEST_F(PortsTest, EnumerateThePresentDevicesOfAClassInTheOrderOfPlugging) {
    tv.ports().insert({});
    const DeviceId gone = tv.ports().insert({});
    tv.ports().insert({});
    UsbDevice camera;
    camera.serial = "C1";
    tv.ports().plugCamera(camera);
    tv.ports().vanish(gone);
    EXPECT_EQ(enumerated(USB_CLASS_MASS_STORAGE), (Texts{"/dev/sda1", "/dev/sdc1"}));
    EXPECT_EQ(enumerated(USB_CLASS_STILL_IMAGE), Texts{"C1"});
    EXPECT_EQ(enumerated(3), Texts{});
}

TEST_F(PortsTest, ListWhatCameBackInItsOldPlaceWithoutAnEvent) {
    const DeviceId first = tv.ports().insert({});
    tv.ports().insert({});
    tv.ports().vanish(first);
    tv.ports().comeBack(first);
    EXPECT_EQ(enumerated(USB_CLASS_MASS_STORAGE), (Texts{"/dev/sda1", "/dev/sdb1"}));
    EXPECT_EQ(settled(), Texts{});
}

bool takeTwo(usb_device_s* device, void* user) {
    auto& names = *static_cast<Texts*>(user);
    names.emplace_back(usb_device_get_devname(device));
    free_usb_device_h(device);
    return names.size() < 2;
}

TEST_F(PortsTest, WalkTheMassStorageUntilTheCallbackHasEnough) {
    for (int i = 0; i < 3; ++i) {
        tv.ports().insert({});
        tv.ports().plugCamera();
    }
    Texts names;
    EXPECT_EQ(usb_mass_storage_foreach(takeTwo, &names), 0);
    EXPECT_EQ(names, (Texts{"/dev/sda1", "/dev/sdb1"}));
}

TEST_F(PortsTest, AnswerEveryPropertyOfAHandle) {
    UsbDevice like;
    like.manufacturer = "Maker";
    like.partlabel = "LABEL";
    like.mountpath = "/mnt";
    like.fileSystem = USB_FILESYSTEM_NTFS;
    like.disk = USB_DISK_ATA;
    const UsbDevice& device = tv.ports().device(tv.ports().insert(like));
    const EnumeratedHandle enumeratedHandle(USB_CLASS_MASS_STORAGE);
    usb_device_s* handle = enumeratedHandle.get();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(usb_device_get_class(handle), 8);
    EXPECT_EQ(usb_device_get_sub_class(handle), 6);
    EXPECT_EQ(usb_device_get_protocol(handle), 80);
    EXPECT_EQ(usb_device_get_vendor_id(handle), 0x0781);
    EXPECT_EQ(usb_device_get_product_id(handle), 0x5567);
    EXPECT_EQ(usb_device_get_bus(handle), 1);
    EXPECT_EQ(usb_device_get_address(handle), device.address);
    EXPECT_EQ(usb_device_get_number(handle), device.number);
    EXPECT_STREQ(usb_device_get_manufacturer(handle), "Maker");
    EXPECT_STREQ(usb_device_get_product(handle), "Stick");
    EXPECT_STREQ(usb_device_get_devname(handle), "/dev/sda1");
    EXPECT_EQ(usb_device_get_devpath(handle), *device.devpath);
    EXPECT_STREQ(usb_device_get_mountpath(handle), "/mnt");
    EXPECT_STREQ(usb_device_get_serial(handle), "0001");
    EXPECT_STREQ(usb_device_get_partlabel(handle), "LABEL");
    EXPECT_EQ(usb_mass_storage_get_filesystem_type(handle), USB_FILESYSTEM_NTFS);
    EXPECT_EQ(usb_mass_storage_get_disk_type(handle), USB_DISK_ATA);
}

}  // namespace
