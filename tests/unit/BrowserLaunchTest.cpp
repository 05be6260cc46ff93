// Launching the content browser on the current device: what it is told of sticks, cameras and others.
#include <climits>

#include "PopupTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

class BrowserLaunchTest : public PopupTest {
protected:
    /// Plug in a stick and set the sizes that its record has.
    CMMDeviceInfo* plugSized(int total, int used) {
        folder = stickFolder();
        UsbDevice like;
        like.product = "Stick";
        CMMDeviceInfo* device = record(plug(folder, like));
        device->SetTotalSize(total);
        device->SetUsedSize(used);
        forget();
        return device;
    }
    std::string folder;
};

TEST_F(BrowserLaunchTest, OnAStickSendsMinusOneForBusAndAddressAndTheSizes) {
    plugSized(4000, 1500);
    access.launchFolian();
    EXPECT_EQ(
        calls(),
        joined({{extraDataCall("called_app", "org.norvane.lumet"),
                 extraDataCall("device_path", folder), extraDataCall("device_name", "Stick"),
                 extraDataCall("device_type", "USB"), extraDataCall("device_busnumber", "-1"),
                 extraDataCall("device_addressnumber", "-1"), extraDataCall("vendor_name", "Stick"),
                 extraDataCall("available_size", "2500"), extraDataCall("total_size", "4000"),
                 usageCall(30, "USB")},
                launchCalls({{"content_type", "all"}}, "org.quillon.folian")}));
    EXPECT_EQ(messages(),
              (Texts{"call_app = org.norvane.lumet", "total=[4000],used=[1500]", "size=1[2500]",
                     "size=2[4000]", "Select storage device", "launch app[org.quillon.folian]"}));
}

TEST_F(BrowserLaunchTest, OnAStickTellsItsStory) {
    plugSized(4000, 1500);
    access.launchFolian();
    EXPECT_TRUE(inOrder(
        tv.journal().story(mark),
        {extraDataCall("called_app", "org.norvane.lumet"), "I call_app = org.norvane.lumet",
         extraDataCall("device_path", folder), "I total=[4000],used=[1500]",
         "I Select storage device", usageCall(30, "USB"), extraDataCall("content_type", "all"),
         "app_control_send_launch_request()", "I launch app[org.quillon.folian]"}));
}

TEST_F(BrowserLaunchTest, OnACameraSendsBusAndAddress) {
    UsbDevice camera;
    camera.product = "Camera";
    camera.serial = "camera";
    camera.bus = 3;
    camera.address = 12;
    tv.ports().plugCamera(camera);
    tv.settle();
    forget();
    access.launchFolian();
    EXPECT_EQ(calls(),
              joined({{extraDataCall("called_app", "org.norvane.lumet"),
                       extraDataCall("device_path", ""), extraDataCall("device_name", "Camera"),
                       extraDataCall("device_type", "PTP"), extraDataCall("device_busnumber", "3"),
                       extraDataCall("device_addressnumber", "12"), usageCall(30, "PTP")},
                      launchCalls({{"content_type", "all"}}, "org.quillon.folian")}));
    EXPECT_EQ(messages(), (Texts{"call_app = org.norvane.lumet", "Select PTP device",
                                 "launch app[org.quillon.folian]"}));
}

TEST_F(BrowserLaunchTest, OnADeviceOfAnotherClassSendsNeitherTypeNorSizes) {
    plugSized(4000, 1500)->SetClass(9);
    access.launchFolian();
    EXPECT_EQ(calls(), launchCalls({{"called_app", "org.norvane.lumet"},
                                    {"device_path", folder},
                                    {"device_name", "Stick"},
                                    {"content_type", "all"}},
                                   "org.quillon.folian"));
}

TEST_F(BrowserLaunchTest, OnNoDeviceLaunchesNothing) {
    pull(plug());
    forget();
    access.launchFolian();
    EXPECT_EQ(tv.journal().story(mark),
              (Texts{extraDataCall("called_app", "org.norvane.lumet"),
                     "I call_app = org.norvane.lumet", "W the device node is NULL"}));
}

TEST_F(BrowserLaunchTest, NamesTheDeviceWithItsNumberAndTheProductWithout) {
    UsbDevice like;
    like.product = "P";
    plug(like);
    like.serial = "other";
    plug(like);
    forget();
    access.launchFolian();
    EXPECT_TRUE(inOrder(calls(), {extraDataCall("device_name", "P(2&#x202d;)"),
                                  extraDataCall("vendor_name", "P")}));
}

struct Sizes {
    int total;
    int used;
    const char* available;
};

class AvailableSizeTest : public BrowserLaunchTest, public ::testing::WithParamInterface<Sizes> {};

TEST_P(AvailableSizeTest, IsTotalMinusUsedIn32BitsThatWrap) {
    plugSized(GetParam().total, GetParam().used);
    access.launchFolian();
    EXPECT_TRUE(inOrder(calls(), {extraDataCall("available_size", GetParam().available),
                                  extraDataCall("total_size", std::to_string(GetParam().total))}));
}

INSTANTIATE_TEST_SUITE_P(OfAnySize,
                         AvailableSizeTest,
                         ::testing::Values(Sizes{0, 0, "0"},
                                           Sizes{INT_MAX, 0, "2147483647"},
                                           Sizes{INT_MIN, 1, "2147483647"},
                                           Sizes{-1073741824, 2000000000, "1221225472"},
                                           Sizes{INT_MAX, -1, "-2147483648"}));

TEST_F(BrowserLaunchTest, SendsValidUtf8WhateverTheDeviceSays) {
    UsbDevice like;
    like.product = "\xffname%s";
    const std::string odd = temp.folder("\xfe");
    plug(odd, like);
    forget();
    access.launchFolian();
    EXPECT_TRUE(inOrder(calls(), {extraDataCall("device_path", temp.path() + "/\xef\xbf\xbd"),
                                  extraDataCall("device_name", "\xef\xbf\xbdname%s"),
                                  extraDataCall("vendor_name", "\xef\xbf\xbdname%s")}));
}

}  // namespace
