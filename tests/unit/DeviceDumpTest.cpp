// What the daemon tells and asks of a device without changing anything: the diagnostic dump of a walk,
// and whether the current device is a disk of several.
#include "Observations.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

struct DiskType {
    int read;
    const char* text;
};

UsbDevice everyPropertyDifferent() {
    UsbDevice device;
    device.bus = 15;
    device.address = 16;
    device.fileSystem = USB_FILESYSTEM_NTFS;
    device.product = "the product";
    device.devname = "/dev/node";
    device.devpath = "/devices/path";
    device.mountpath = "/no/such/mount";
    device.serial = "the serial";
    device.partlabel = "the label";
    return device;
}

class DumpTest : public ManagerTest, public ::testing::WithParamInterface<DiskType> {
protected:
    /// The lines of a walk over the one present device.
    Texts walked() {
        forget();
        access.scanUsbStorage();
        return messages();
    }
    const std::string frame = std::string(37, '*');
};

TEST_P(DumpTest, OfAWalkedDeviceNamesEveryValueInAFrame) {
    UsbDevice disk = everyPropertyDifferent();
    disk.disk = GetParam().read;
    tv.ports().insert(disk);
    const std::string number = std::to_string(GetParam().read);
    const Texts lines = walked();
    EXPECT_TRUE(
        inOrder(lines, {frame, "class : 8", "bus : 15", "address : 16", "devname : /dev/node",
                        "devpath : /devices/path", "mount path : /no/such/mount",
                        "serial :the serial", "product :the product", "model:the product",
                        "key :/dev/node", "Partition label :the label", "Disk Type :" + number,
                        std::string("Disk Type :") + GetParam().text, "Fs : 3"}));
    EXPECT_EQ(occurrences(lines, frame), 2);
    EXPECT_EQ(occurrences(lines,
                          "class[8] bus[15] address[16] devname[/dev/node] devpath[/devices/path] "
                          "mountpath[/no/such/mount] serial[the serial] product[the product] "
                          "key[/dev/node] PartitionLabel[the label] DiskType[" +
                              number + "] Fs[3]"),
              1);
}

INSTANTIATE_TEST_SUITE_P(EveryDiskType,
                         DumpTest,
                         ::testing::Values(DiskType{0, "DISKTYPE_ATA"},
                                           DiskType{1, "DISKTYPE_USB"},
                                           DiskType{5, "DISKTYPE_USB"},
                                           DiskType{99, "DISKTYPE_USB"}));

TEST_F(DumpTest, OfADeviceWithoutTextsSaysSo) {
    UsbDevice disk = everyPropertyDifferent();
    disk.product = disk.serial = disk.partlabel = std::nullopt;
    tv.ports().insert(disk);
    EXPECT_TRUE(inOrder(walked(), {"serial :(null)", "product :(null)", "model:(null)",
                                   "Partition label :(null)"}));
}

TEST_F(DumpTest, TakesNoTextOfADeviceForAFormat) {
    UsbDevice disk = everyPropertyDifferent();
    disk.product = "%s%n%d";
    tv.ports().insert(disk);
    EXPECT_TRUE(inOrder(walked(), {"product :%s%n%d", "model:%s%n%d"}));
}

// ---- several disks in one

class MultiHddTest : public ManagerTest {
protected:
    /// The current device and, under the same key, what is listed there after a wake-up.
    bool multiHdd(const std::string& product, const std::string& serial) {
        UsbDevice disk;
        disk.product = "Disk";
        disk.serial = "1";
        const DeviceId id = plug(disk);
        tv.power().wake();
        tv.settle();
        tv.ports().device(id).product = product;
        tv.ports().device(id).serial = serial;
        EXPECT_NE(mgr->GetDeviceList(), nullptr);
        listed = access.list()->data;
        forget();
        return access.isMultiHdd();
    }
    const void* listed = nullptr;
};

TEST_F(MultiHddTest, IsADeviceWhoseProductAndSerialChangedUnderItsKey) {
    EXPECT_TRUE(multiHdd("Other disk", "2"));
    EXPECT_EQ(tv.journal().story(mark), (Texts{"I check m_IsMultiHDD", "I pNode:" + address(listed),
                                               "I the device is multi HDD"}));
}

TEST_F(MultiHddTest, IsNotOneWithTheSameProduct) {
    EXPECT_FALSE(multiHdd("Disk", "2"));
    EXPECT_EQ(tv.journal().story(mark), (Texts{"I check m_IsMultiHDD", "I pNode:" + address(listed),
                                               "I the device is not multi HDD"}));
}

TEST_F(MultiHddTest, IsNotOneWithTheSameSerial) {
    EXPECT_FALSE(multiHdd("Other disk", "1"));
}

TEST_F(MultiHddTest, IsNotOneBesideDifferentDevicesWithOtherKeys) {
    UsbDevice disk;
    plug(disk);
    disk.product = "Other";
    disk.serial = "2";
    plug(disk);
    EXPECT_FALSE(access.isMultiHdd());
}

TEST_F(MultiHddTest, IsNotAskedWithoutACurrentDevice) {
    forget();
    EXPECT_FALSE(access.isMultiHdd());
    EXPECT_EQ(tv.journal().story(mark), Texts{"W m_pDeviceInfo = NULL"});
}

}  // namespace
