// What a device is to the daemon: its key, and how a handle is read into a record. Capacity and the
// names that viewers see have files of their own.
#include "FileSystemSize.h"
#include "Observations.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

class IdentificationTest : public ManagerTest {
protected:
    /// A device that is there without anyone having told the daemon.
    DeviceId present(const UsbDevice& device) { return tv.ports().insert(device); }

    /// Read the first present device of a class into a record, as any event would.
    void fill(int usbClass, CMMDeviceInfo& record) {
        const EnumeratedHandle handle(usbClass);
        ASSERT_NE(handle.get(), nullptr);
        forget();
        access.usbStorageInfo(handle.get(), &record);
    }
};

UsbDevice everyPropertyDifferent() {
    UsbDevice device;
    device.subClass = 11;
    device.protocol = 12;
    device.vendorId = 13;
    device.productId = 14;
    device.bus = 15;
    device.address = 16;
    device.number = 17;
    device.fileSystem = USB_FILESYSTEM_NTFS;
    device.manufacturer = "the manufacturer";
    device.product = "the product";
    device.devname = "/dev/node";
    device.devpath = "/devices/path";
    device.mountpath = "/no/such/mount";
    device.serial = "the serial";
    device.partlabel = "the label";
    return device;
}

// ---- keys

TEST_F(IdentificationTest, TheKeyOfAStickIsItsNodeNameWithNothingTrimmedOrFolded) {
    UsbDevice stick;
    stick.devname = " /dev/SDa1\t";
    plug(stick);
    EXPECT_EQ(listedKeys(), Texts{" /dev/SDa1\t"});
}

TEST_F(IdentificationTest, TheKeyOfACameraIsItsSerialWithNothingTrimmedOrFolded) {
    UsbDevice camera;
    camera.devname = "/dev/bus/usb/001/004";
    camera.serial = " Serial 42 ";
    tv.ports().plugCamera(camera);
    tv.settle();
    EXPECT_EQ(listedKeys(), Texts{" Serial 42 "});
}

TEST_F(IdentificationTest, TheKeyOfAnyOtherClassIsEmpty) {
    UsbDevice keyboard = everyPropertyDifferent();
    keyboard.usbClass = 3;
    present(keyboard);
    CMMDeviceInfo device;
    device.SetDeviceKey("earlier");
    fill(3, device);
    EXPECT_EQ(device.GetDeviceKey(), "");
}

TEST_F(IdentificationTest, TwoCamerasWithAnEmptySerialAreOneAndTheSecondRefreshesTheFirst) {
    UsbDevice camera;
    camera.serial = "";
    camera.product = "First";
    tv.ports().plugCamera(camera);
    tv.settle();
    CMMDeviceInfo* first = access.search("");
    ASSERT_NE(first, nullptr);
    camera.product = "Second";
    tv.ports().plugCamera(camera);
    tv.settle();
    EXPECT_EQ(listedKeys(), Texts{""});
    EXPECT_EQ(access.search(""), first);
    EXPECT_EQ(first->GetProduct(), "Second");
    EXPECT_EQ(mgr->GetDeviceCount(6), 1);
}

TEST_F(IdentificationTest, TwoPartitionsOfOneDiskHaveDifferentKeys) {
    const auto partitions = tv.ports().plugDisk({stickFolder(), stickFolder()});
    tv.settle();
    ASSERT_EQ(partitions.size(), 2U);
    const std::string first = tv.ports().device(partitions[0]).devname.value();
    const std::string second = tv.ports().device(partitions[1]).devname.value();
    EXPECT_NE(first, second);
    EXPECT_EQ(listedKeys(), (Texts{second, first}));
}

// ---- filling a record

TEST_F(IdentificationTest, AFilledRecordHoldsEveryPropertyOfTheHandle) {
    present(everyPropertyDifferent());
    CMMDeviceInfo device;
    fill(USB_CLASS_MASS_STORAGE, device);
    EXPECT_EQ(device.GetClass(), 8);
    EXPECT_EQ(device.GetSubClass(), 11);
    EXPECT_EQ(device.GetProtocol(), 12);
    EXPECT_EQ(device.GetVendorId(), 13);
    EXPECT_EQ(device.GetProductId(), 14);
    EXPECT_EQ(device.GetBus(), 15);
    EXPECT_EQ(device.GetAddress(), 16);
    EXPECT_EQ(device.GetNumber(), 17);
    EXPECT_EQ(device.GetFileSystemType(), 3);
    EXPECT_FALSE(device.GetDamageFlag());
    EXPECT_EQ(device.GetManufacturer(), "the manufacturer");
    EXPECT_EQ(device.GetProduct(), "the product");
    EXPECT_EQ(device.GetDisplayName(), "the product");
    EXPECT_EQ(device.GetDisplayNameForNotification(), "the product");
    EXPECT_EQ(device.GetDeviceName(), "/dev/node");
    EXPECT_EQ(device.GetDevicePath(), "/devices/path");
    EXPECT_EQ(device.GetMountpath(), "/no/such/mount");
    EXPECT_EQ(device.GetSerial(), "the serial");
    EXPECT_EQ(device.GetDiskType(), 1);
    EXPECT_EQ(device.GetPartitionLabel(), "the label");
    EXPECT_EQ(device.GetDeviceKey(), "/dev/node");
    EXPECT_EQ(device.GetIndex(), 0);
}

TEST_F(IdentificationTest, PropertiesAreReadInTheirOrder) {
    present(everyPropertyDifferent());
    CMMDeviceInfo device;
    const EnumeratedHandle handle(USB_CLASS_MASS_STORAGE);
    forget();
    access.usbStorageInfo(handle.get(), &device);
    Texts names;
    for (const std::string& call : tv.journal().allCalls(mark)) {
        names.push_back(call.substr(0, call.find('(')));
    }
    EXPECT_EQ(names, (Texts{"usb_device_get_class",
                            "usb_device_get_sub_class",
                            "usb_device_get_protocol",
                            "usb_device_get_vendor_id",
                            "usb_device_get_product_id",
                            "usb_device_get_bus",
                            "usb_device_get_address",
                            "usb_device_get_number",
                            "usb_mass_storage_get_filesystem_type",
                            "usb_device_get_manufacturer",
                            "usb_device_get_product",
                            "usb_device_get_product",
                            "usb_device_get_devname",
                            "usb_device_get_devpath",
                            "usb_device_get_mountpath",
                            "usb_device_get_serial",
                            "usb_mass_storage_get_disk_type",
                            "usb_device_get_partlabel",
                            "usb_device_get_class",
                            "usb_device_get_devname"}));
}

TEST_F(IdentificationTest, FillingTellsItsStory) {
    present(everyPropertyDifferent());
    CMMDeviceInfo device;
    const EnumeratedHandle handle(USB_CLASS_MASS_STORAGE);
    const FileSystemSize size({4096, 1000, 400, 300});
    forget();
    access.usbStorageInfo(handle.get(), &device);
    EXPECT_EQ(
        tv.journal().story(mark),
        (Texts{"I pUsbDeviceHnd:" + address(handle.get()) + ",pDeviceNode:" + address(&device),
               "I Device Class = 8", "I Mountpath :/no/such/mount,pDeviceNode:" + address(&device),
               "I Mountpath:/no/such/mount,freespace:1600 KB,totalspace:4000 KB",
               "I Device Class = 8",
               "I Product:the product key=/dev/node name=/dev/node Device count=0",
               "I IndexVector size :0, MaxIndex:0",
               "I Product:the product key=/dev/node name=/dev/node nValidIndex=0"}));
}

TEST_F(IdentificationTest, WithoutAHandleNothingIsFilled) {
    CMMDeviceInfo device;
    device.SetProduct("untouched");
    forget();
    access.usbStorageInfo(nullptr, &device);
    EXPECT_EQ(tv.journal().story(mark),
              (Texts{"I pUsbDeviceHnd:(nil),pDeviceNode:" + address(&device),
                     "W NULL == pUsbDeviceHnd || NULL == pDeviceNode"}));
    EXPECT_EQ(device.GetProduct(), "untouched");
}

TEST_F(IdentificationTest, WithoutARecordNothingIsRead) {
    present(everyPropertyDifferent());
    const EnumeratedHandle handle(USB_CLASS_MASS_STORAGE);
    forget();
    access.usbStorageInfo(handle.get(), nullptr);
    EXPECT_EQ(tv.journal().story(mark),
              (Texts{"I pUsbDeviceHnd:" + address(handle.get()) + ",pDeviceNode:(nil)",
                     "W NULL == pUsbDeviceHnd || NULL == pDeviceNode"}));
    EXPECT_EQ(tv.journal().allCalls(mark), Texts{});
}

TEST_F(IdentificationTest, TextsThatTheLibraryDoesNotHaveAreStoredEmpty) {
    UsbDevice camera;
    camera.usbClass = USB_CLASS_STILL_IMAGE;
    camera.manufacturer = camera.product = camera.mountpath = camera.serial = std::nullopt;
    camera.partlabel = std::nullopt;
    const DeviceId id = present(camera);
    tv.ports().device(id).devname = tv.ports().device(id).devpath = std::nullopt;
    CMMDeviceInfo device;
    device.SetManufacturer("x");
    device.SetProduct("x");
    device.SetDeviceName("x");
    device.SetDevicePath("x");
    device.SetMountpath("x");
    device.SetSerial("x");
    device.SetDisplayName("x");
    device.SetDisplayNameForNotification("x");
    device.SetPartitionLabel("x");
    device.SetDeviceKey("x");
    fill(USB_CLASS_STILL_IMAGE, device);
    EXPECT_EQ(device.GetManufacturer() + device.GetProduct() + device.GetDeviceName() +
                  device.GetDevicePath() + device.GetMountpath() + device.GetSerial() +
                  device.GetDisplayName() + device.GetDisplayNameForNotification() +
                  device.GetPartitionLabel() + device.GetDeviceKey(),
              "");
}

TEST_F(IdentificationTest, ARefreshOverwritesEveryFieldOfTheSameRecord) {
    const DeviceId stick = plug();
    CMMDeviceInfo* device = record(stick);
    ASSERT_NE(device, nullptr);
    UsbDevice changed = everyPropertyDifferent();
    changed.devname = tv.ports().device(stick).devname;
    changed.disk = 5;
    tv.ports().device(stick) = changed;
    tv.ports().announce(stick, "added");
    tv.settle();
    ASSERT_EQ(record(stick), device);
    EXPECT_EQ(device->GetSubClass(), 11);
    EXPECT_EQ(device->GetProtocol(), 12);
    EXPECT_EQ(device->GetVendorId(), 13);
    EXPECT_EQ(device->GetProductId(), 14);
    EXPECT_EQ(device->GetBus(), 15);
    EXPECT_EQ(device->GetAddress(), 16);
    EXPECT_EQ(device->GetNumber(), 17);
    EXPECT_EQ(device->GetFileSystemType(), 3);
    EXPECT_EQ(device->GetTotalSize(), 0);
    EXPECT_EQ(device->GetUsedSize(), 0);
    EXPECT_EQ(device->GetManufacturer(), "the manufacturer");
    EXPECT_EQ(device->GetProduct(), "the product");
    EXPECT_EQ(device->GetDisplayName(), "the product");
    EXPECT_EQ(device->GetDisplayNameForNotification(), "the product");
    EXPECT_EQ(device->GetDevicePath(), "/devices/path");
    EXPECT_EQ(device->GetMountpath(), "/no/such/mount");
    EXPECT_EQ(device->GetSerial(), "the serial");
    EXPECT_EQ(device->GetPartitionLabel(), "the label");
    EXPECT_EQ(device->GetDiskType(), 2);
}

struct DiskType {
    int read;
    int stored;
};

class DiskTypeTest : public IdentificationTest, public ::testing::WithParamInterface<DiskType> {};

TEST_P(DiskTypeTest, IsStoredAsAtaUsbOrOther) {
    UsbDevice disk = everyPropertyDifferent();
    disk.disk = GetParam().read;
    present(disk);
    CMMDeviceInfo device;
    fill(USB_CLASS_MASS_STORAGE, device);
    EXPECT_EQ(device.GetDiskType(), GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(Every,
                         DiskTypeTest,
                         ::testing::Values(DiskType{0, 0},
                                           DiskType{1, 1},
                                           DiskType{2, 2},
                                           DiskType{99, 2},
                                           DiskType{-1, 2}));

// ---- damage

TEST_F(IdentificationTest, AStickWithAnUnreadableFileSystemIsListedAsDamaged) {
    UsbDevice stick;
    stick.fileSystem = 99;
    const DeviceId id = plug(stick);
    ASSERT_NE(record(id), nullptr);
    EXPECT_TRUE(record(id)->GetDamageFlag());
    EXPECT_EQ(record(id)->GetFileSystemType(), 99);
}

TEST_F(IdentificationTest, ACameraIsNotDamagedForHavingNoFileSystem) {
    UsbDevice camera;
    camera.fileSystem = 99;
    const DeviceId id = tv.ports().plugCamera(camera);
    tv.settle();
    ASSERT_NE(record(id), nullptr);
    EXPECT_FALSE(record(id)->GetDamageFlag());
}

TEST_F(IdentificationTest, DamageIsNeverTakenBack) {
    UsbDevice stick;
    stick.fileSystem = 99;
    const DeviceId id = plug(stick);
    tv.ports().device(id).fileSystem = USB_FILESYSTEM_FAT;
    tv.ports().announce(id, "added");
    tv.settle();
    ASSERT_NE(record(id), nullptr);
    EXPECT_EQ(record(id)->GetFileSystemType(), 0);
    EXPECT_TRUE(record(id)->GetDamageFlag());
}

TEST_F(IdentificationTest, AStickThatBecomesUnreadableIsMarkedAtItsRefresh) {
    const DeviceId id = plug();
    tv.ports().device(id).fileSystem = 99;
    tv.ports().announce(id, "added");
    tv.settle();
    EXPECT_TRUE(record(id)->GetDamageFlag());
}

}  // namespace
