// The same stick announced twice gets one browse pop-up: what counts as the same, and what makes the
// daemon forget that it has shown it.
#include "PopupTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

class SameDeviceTest : public PopupTest {};

TEST_F(SameDeviceTest, TheSameStickTwiceInARowGetsOnePopUp) {
    const DeviceId stick = plug();
    replug(stick);
    EXPECT_EQ(shownCount(), 1U);
    EXPECT_TRUE(inOrder(
        messages(), {"New device is connected", "end", "the device is same with previous device",
                     "No need to notify again"}));
    EXPECT_EQ(tv.small().usage.size(), 1U);
}

TEST_F(SameDeviceTest, AScanResultForTheSameStickStillShowsThePlayPopUp) {
    const DeviceId stick = plug();
    replug(stick);
    reportScan(videoJson());
    reportScan(videoJson());
    EXPECT_EQ(shown(),
              (Texts{"1 TV_SID_MIX_NEW_DEVICE_CONNECTED", "0 TV_SID_MIX_NEW_DEVICE_CONNECTED",
                     "0 TV_SID_MIX_NEW_DEVICE_CONNECTED"}));
}

TEST_F(SameDeviceTest, ARepeatIsStillTheCurrentDeviceOfABrowsePopUp) {
    const DeviceId stick = plug();
    reportScan(videoJson());
    ASSERT_EQ(access.notificationType(), 0);
    replug(stick);
    EXPECT_EQ(access.notificationType(), 1);
    EXPECT_EQ(access.currentDevice(), record(stick));
}

TEST_F(SameDeviceTest, AnotherStickWithEqualIdsAndSerialIsTheSameToo) {
    plug();
    plug();
    EXPECT_EQ(shownCount(), 1U);
    EXPECT_EQ(mgr->GetDeviceCount(), 2);
}

TEST_F(SameDeviceTest, AnotherProductNameMakesNoDifference) {
    plugProduct("One");
    plugProduct("Two");
    EXPECT_EQ(shownCount(), 1U);
}

struct Difference {
    const char* name;
    void (*make)(UsbDevice&);
};

class DifferentDeviceTest : public PopupTest, public ::testing::WithParamInterface<Difference> {};

TEST_P(DifferentDeviceTest, GetsItsOwnPopUpAndSoDoesTheFirstOneThen) {
    const DeviceId first = plug();
    UsbDevice other;
    GetParam().make(other);
    const DeviceId second = plug(other);
    EXPECT_EQ(shownCount(), 2U);
    EXPECT_TRUE(logged(4, "the device is different with previous device"));
    EXPECT_EQ(access.displayedDevice(), record(second));
    replug(second);
    EXPECT_EQ(shownCount(), 2U);
    replug(first);
    EXPECT_EQ(shownCount(), 3U);
}

INSTANTIATE_TEST_SUITE_P(
    InEachOfThree,
    DifferentDeviceTest,
    ::testing::Values(Difference{"ProductId", [](UsbDevice& device) { ++device.productId; }},
                      Difference{"VendorId", [](UsbDevice& device) { ++device.vendorId; }},
                      Difference{"Serial", [](UsbDevice& device) { device.serial = "0002"; }},
                      Difference{"LongerSerial", [](UsbDevice& device) { *device.serial += "0"; }},
                      Difference{"NoSerial", [](UsbDevice& device) { device.serial.reset(); }}),
    [](const auto& difference) { return difference.param.name; });

TEST_F(SameDeviceTest, IsShownAgainAfterAHide) {
    const DeviceId stick = plug();
    hide();
    replug(stick);
    EXPECT_EQ(shownCount(), 2U);
}

TEST_F(SameDeviceTest, IsShownAgainAfterATimeOut) {
    const DeviceId stick = plug();
    tv.advanceSeconds(30);
    replug(stick);
    EXPECT_EQ(shownCount(), 2U);
}

TEST_F(SameDeviceTest, IsShownAgainAfterARemovalOfAnyDevice) {
    const DeviceId other = plugProduct("Other", "other");
    const DeviceId stick = plug();
    ASSERT_EQ(shownCount(), 2U);
    pull(other);
    replug(stick);
    EXPECT_EQ(shown(),
              (Texts{"1 TV_SID_MIX_NEW_DEVICE_CONNECTED", "1 TV_SID_MIX_NEW_DEVICE_CONNECTED",
                     "2 Other", "1 TV_SID_MIX_NEW_DEVICE_CONNECTED"}));
}

TEST_F(SameDeviceTest, IsNotShownAgainAfterAButton) {
    const DeviceId stick = plug();
    press(1);
    replug(stick);
    EXPECT_EQ(shownCount(), 1U);
    EXPECT_TRUE(logged(4, "No need to notify again"));
}

TEST_F(SameDeviceTest, IsRecognisedAfterItsRecordWasRemovedWhileTheCompanionRan) {
    UsbDevice like;
    like.devname = "node";
    const DeviceId stick = plug(like);
    companionRuns();
    pull(stick);
    companionRuns(false);
    ASSERT_EQ(access.list(), nullptr);
    plug(like);
    EXPECT_EQ(shownCount(), 1U);
    EXPECT_TRUE(logged(4, "the device is same with previous device"));
}

TEST_F(SameDeviceTest, IsRecognisedAfterItsRecordWasRemovedInDistractionFreeState) {
    const DeviceId stick = plug();
    tv.small().contextState = 0x400;
    pull(stick);
    tv.small().contextState = 0;
    plug();
    EXPECT_EQ(shownCount(), 1U);
}

TEST_F(SameDeviceTest, IsRecognisedAfterAWakeUpDroppedTheList) {
    const DeviceId stick = plug();
    tv.power().wake();
    tv.settle();
    replug(stick);
    EXPECT_EQ(shownCount(), 1U);
    EXPECT_TRUE(logged(4, "the device is same with previous device"));
}

TEST_F(SameDeviceTest, TheTestWithoutACurrentDeviceIsFalseWithAWarning) {
    forget();
    EXPECT_FALSE(access.isSameDevice());
    EXPECT_EQ(tv.journal().story(mark), Texts{"W m_pDeviceInfo = NULL"});
    EXPECT_EQ(access.displayedDevice(), nullptr);
}

}  // namespace
