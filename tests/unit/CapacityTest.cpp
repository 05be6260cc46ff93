// Total and used size of a mounted device: what the file system says, in kibibytes and 32 bits.
#include <climits>

#include "FileSystemSize.h"
#include "Observations.h"
#include "TvTest.h"

namespace {

constexpr std::uint64_t KIB = 1024;
constexpr std::uint64_t TIB = KIB * KIB * KIB * KIB;

class CapacityTest : public ManagerTest {
protected:
    /// Plug in a stick with a file system of this size; returns its record.
    CMMDeviceInfo* plugged(const FileSystemSize::Blocks& blocks) {
        const FileSystemSize size(blocks);
        folder = stickFolder();
        CMMDeviceInfo* device = record(plug(folder));
        askedFor = size.askedFor();
        return device;
    }
    bool loggedSizes(const std::string& free, const std::string& total) {
        return logged(
            4, "Mountpath:" + folder + ",freespace:" + free + " KB,totalspace:" + total + " KB");
    }
    std::string folder;
    std::string askedFor;
};

TEST_F(CapacityTest, IsThatOfTheMountPath) {
    plugged({4096, 1000, 400, 300});
    EXPECT_EQ(askedFor, folder);
}

TEST_F(CapacityTest, CountsBlocksThatOnlyTheSuperUserMayUseAsFree) {
    CMMDeviceInfo* device = plugged({4096, 1000, 400, 300});
    EXPECT_EQ(device->GetTotalSize(), 4000);
    EXPECT_EQ(device->GetUsedSize(), 4000 - 1600);
    EXPECT_TRUE(loggedSizes("1600", "4000"));
}

TEST_F(CapacityTest, RoundsFreeAndTotalDownBeforeTheyAreSubtracted) {
    CMMDeviceInfo* device = plugged({512, 5, 3, 3});
    EXPECT_EQ(device->GetTotalSize(), 2);
    EXPECT_EQ(device->GetUsedSize(), 1);
    EXPECT_TRUE(loggedSizes("1", "2"));
}

TEST_F(CapacityTest, OfAFullDeviceIsAllUsed) {
    CMMDeviceInfo* device = plugged({4096, 1000, 0, 0});
    EXPECT_EQ(device->GetTotalSize(), 4000);
    EXPECT_EQ(device->GetUsedSize(), 4000);
}

TEST_F(CapacityTest, IsMultipliedInMoreThan32Bits) {
    CMMDeviceInfo* device = plugged({1 << 20, 1 << 20, 1 << 19, 0});
    EXPECT_EQ(device->GetTotalSize(), 1 << 30);
    EXPECT_EQ(device->GetUsedSize(), 1 << 29);
}

TEST_F(CapacityTest, OfThreeTebibytesIsNegativeAfterTheCutTo32Bits) {
    CMMDeviceInfo* device = plugged({4096, 3 * TIB / 4096, TIB / 4096, TIB / 4096});
    EXPECT_EQ(device->GetTotalSize(), -1073741824);
    EXPECT_EQ(device->GetUsedSize(), INT_MIN);
    EXPECT_TRUE(loggedSizes("1073741824", "3221225472"));
}

TEST_F(CapacityTest, IsSubtractedBeforeTheCutTo32Bits) {
    CMMDeviceInfo* device = plugged({4096, 5 * TIB / 4096, 9 * TIB / 2 / 4096, 0});
    EXPECT_EQ(device->GetTotalSize(), 1 << 30);
    EXPECT_EQ(device->GetUsedSize(), 1 << 29);
    EXPECT_TRUE(loggedSizes("4831838208", "5368709120"));
}

TEST_F(CapacityTest, OfFourTebibytesIsCutToNothing) {
    CMMDeviceInfo* device = plugged({4096, 4 * TIB / 4096, 0, 0});
    EXPECT_EQ(device->GetTotalSize(), 0);
    EXPECT_EQ(device->GetUsedSize(), 0);
}

TEST_F(CapacityTest, OfARealFolderIsItsFileSystems) {
    const std::string here = stickFolder();
    CMMDeviceInfo* device = record(plug(here));
    EXPECT_NE(device->GetTotalSize(), 0);
    const auto logsSizes = [](const std::string& line) {
        return line.find(",freespace:") != std::string::npos &&
               line.find(",totalspace:0 KB") == std::string::npos;
    };
    const Texts lines = messages();
    EXPECT_NE(std::find_if(lines.begin(), lines.end(), logsSizes), lines.end());
}

TEST_F(CapacityTest, OfAFolderThatIsGoneIsNothingAndNoWarning) {
    simulated::UsbDevice stick;
    stick.mountpath = "/no/such/folder";
    const auto id = tv.ports().insert(stick);
    tv.ports().announce(id, "added");
    forget();
    tv.settle();
    EXPECT_EQ(record(id)->GetTotalSize(), 0);
    EXPECT_EQ(record(id)->GetUsedSize(), 0);
    EXPECT_EQ(messages(5), Texts{});
}

TEST_F(CapacityTest, IsForgottenWhenTheFileSystemCanNoLongerBeAsked) {
    const auto id = [&] {
        const FileSystemSize size({4096, 1000, 400, 300});
        return plug();
    }();
    ASSERT_EQ(record(id)->GetTotalSize(), 4000);
    tv.ports().device(id).mountpath = "/no/such/folder";
    tv.ports().announce(id, "added");
    tv.settle();
    EXPECT_EQ(record(id)->GetTotalSize(), 0);
    EXPECT_EQ(record(id)->GetUsedSize(), 0);
}

TEST_F(CapacityTest, OfACameraIsNothing) {
    simulated::UsbDevice camera;
    camera.fileSystem = 99;
    const auto id = tv.ports().plugCamera(camera);
    tv.settle();
    EXPECT_EQ(record(id)->GetTotalSize(), 0);
    EXPECT_EQ(record(id)->GetUsedSize(), 0);
}

TEST_F(CapacityTest, OfAPathThatIsNoUtf8IsAskedWithExactlyItsBytes) {
    const FileSystemSize size({4096, 1000, 400, 300});
    plug(temp.folder("\xff\xfe odd %s"));
    EXPECT_EQ(size.askedFor(), temp.path() + "/\xff\xfe odd %s");
}

}  // namespace
