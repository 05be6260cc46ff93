// The state of the daemon as a value: it tells what is, and reading it leaves no trace.
#include "BusServiceTest.h"
#include "MMDeviceState.h"
#include "gmock/gmock.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DeviceStateTest : public BusServiceTest {
protected:
    _stMMDeviceState read() {
        _stMMDeviceState state;
        EXPECT_TRUE(MMReadDeviceState(state));
        return state;
    }
};

simulated::UsbDevice stickWith(int fileSystem) {
    simulated::UsbDevice stick;
    stick.fileSystem = fileSystem;
    return stick;
}

TEST_F(DeviceStateTest, ListsTheRecordsThemselvesNewestFirst) {
    const simulated::DeviceId first = plug();
    const simulated::DeviceId second = plug();
    EXPECT_THAT(read().vDevices, ElementsAre(record(second), record(first)));
}

TEST_F(DeviceStateTest, CountsEachFileSystemAndTheCameras) {
    plug(stickWith(USB_FILESYSTEM_FAT));
    plug(stickWith(USB_FILESYSTEM_EXFAT));
    plug(stickWith(USB_FILESYSTEM_EXFAT));
    plug(stickWith(USB_FILESYSTEM_NTFS));
    tv.ports().plugCamera();
    tv.settle();
    const _stMMDeviceState state = read();
    EXPECT_EQ(state.nFatCount, 1);
    EXPECT_EQ(state.nExFatCount, 2);
    EXPECT_EQ(state.nExt4Count, 0);
    EXPECT_EQ(state.nNtfsCount, 1);
    EXPECT_EQ(state.nCameraCount, 1);
}

TEST_F(DeviceStateTest, TellsThePopUpAndItsDevice) {
    EXPECT_EQ(read().nNotificationType, -1);
    EXPECT_EQ(read().pCurrentDevice, nullptr);
    const simulated::DeviceId stick = plug(temp.folder("empty"));
    const _stMMDeviceState state = read();
    EXPECT_EQ(state.nNotificationType, 1);
    EXPECT_EQ(state.pCurrentDevice, record(stick));
    EXPECT_EQ(state.pDisplayedDevice, record(stick));
}

TEST_F(DeviceStateTest, TellsTheFileThatAScanFound) {
    const std::string film = temp.file("stick/Film.mkv");
    EXPECT_EQ(read().nScanFileType, 0);
    plug(temp.folder("stick"));
    const _stMMDeviceState state = read();
    EXPECT_EQ(state.nNotificationType, 0);
    EXPECT_EQ(state.nScanFileType, 2);
    EXPECT_EQ(state.strScanFileName, "Film.mkv");
    EXPECT_EQ(state.strScanFilePath, film);
}

TEST_F(DeviceStateTest, TellsActivationStandbyAndTheRemovalNotice) {
    EXPECT_TRUE(read().bActivated);
    EXPECT_FALSE(read().bStandby);
    mgr->SetActivated(false);
    mgr->SetStandby(true);
    EXPECT_FALSE(read().bActivated);
    EXPECT_TRUE(read().bStandby);
    EXPECT_FALSE(read().bRemovalNotice);
    pull(plug());
    EXPECT_TRUE(read().bRemovalNotice);
    EXPECT_EQ(read().strRemovalNotice, "Stick");
}

TEST_F(DeviceStateTest, TellsTheClientsWithTheirBusNames) {
    EXPECT_THAT(read().vClients, IsEmpty());
    startService();
    CMMDeviceClientMgr& registry = *Access::registry(*server);
    registry.AddClient(7, nullptr, ":1.7", "/path", "a.b");
    registry.AddClient(3, nullptr, ":1.3", "/path", "a.b");
    const _stMMDeviceState state = read();
    ASSERT_EQ(state.vClients.size(), 2U);
    EXPECT_EQ(state.vClients[0].nClientId, 7);
    EXPECT_EQ(state.vClients[0].strSender, ":1.7");
    EXPECT_EQ(state.vClients[1].nClientId, 3);
    Access::loseRegistry(*server);
    EXPECT_THAT(read().vClients, IsEmpty());
}

TEST_F(DeviceStateTest, ReadingLeavesNoTrace) {
    startService();
    tv.ports().setMounted(tv.ports().insert({}), stickFolder());
    forget();
    EXPECT_THAT(read().vDevices, IsEmpty());
    EXPECT_THAT(tv.journal().story(mark, 3), IsEmpty());
}

TEST_F(TvTest, WithoutAManagerThereIsNoState) {
    _stMMDeviceState state;
    state.nFatCount = 5;
    EXPECT_FALSE(MMReadDeviceState(state));
    EXPECT_EQ(state.nFatCount, 0);
}

}  // namespace
