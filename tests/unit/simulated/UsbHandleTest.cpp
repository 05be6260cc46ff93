// The rules for handles of the USB library: each way to break one is noted, names the handle, and has no
// further effect.
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SimulatedTv.h"

namespace {

using simulated::SimulatedTv;
using Texts = std::vector<std::string>;

class UsbHandleTest : public ::testing::Test {
protected:
    UsbHandleTest() {
        usb_device_init();
        tv.ports().insert({});
    }

    /// Send an event to a program that does `act` with its handle.
    void event(const std::string& action, const std::function<void(usb_device_s*)>& act) {
        const auto take = [](usb_device_s* device, char*, void* user) {
            (*static_cast<std::function<void(usb_device_s*)>*>(user))(device);
        };
        std::function<void(usb_device_s*)> taken = act;
        usb_set_connected_cb(take, &taken);
        tv.ports().announce(1, action);
        tv.settle();
        usb_unset_connected_cb();
    }
    usb_device_list_s* list() {
        usb_device_list_s* made = nullptr;
        usb_device_get_device_list(USB_CLASS_MASS_STORAGE, &made);
        return made;
    }
    Texts breaches() { return tv.journal().breaches(); }

    SimulatedTv tv;
};

TEST_F(UsbHandleTest, OfAnEventThatIsFreedOnceIsNoBreach) {
    event("added", [](usb_device_s* device) { free_usb_device_h(device); });
    EXPECT_EQ(breaches(), Texts{});
}

TEST_F(UsbHandleTest, OfAnEventThatIsNeverFreedIsABreach) {
    event("added", [](usb_device_s*) {});
    EXPECT_EQ(breaches(), Texts{"event \"added\": the handle of </dev/sda1> was not freed"});
}

TEST_F(UsbHandleTest, OfAnEventWithoutActionIsNotForTheCalleeToFree) {
    usb_set_connected_cb([](usb_device_s*, char*, void*) {}, nullptr);
    tv.ports().announceNullAction(1);
    tv.settle();
    EXPECT_EQ(breaches(), Texts{});
}

TEST_F(UsbHandleTest, ThatIsFreedTwiceIsABreach) {
    event("added", [](usb_device_s* device) {
        free_usb_device_h(device);
        free_usb_device_h(device);
    });
    EXPECT_EQ(breaches(), Texts{"free_usb_device_h: </dev/sda1> was freed before"});
}

TEST_F(UsbHandleTest, ThatIsReadAfterItWasFreedIsABreachAndAnswersNothing) {
    event("added", [](usb_device_s* device) {
        free_usb_device_h(device);
        EXPECT_EQ(usb_device_get_product(device), nullptr);
        EXPECT_LT(usb_device_get_class(device), 0);
    });
    EXPECT_EQ(breaches(), (Texts{"usb_device_get_product: the handle of </dev/sda1> is not alive",
                                 "usb_device_get_class: the handle of </dev/sda1> is not alive"}));
}

TEST_F(UsbHandleTest, ThatIsReadAfterItsCallbackReturnedIsABreach) {
    usb_device_s* kept = nullptr;
    event("added", [&kept](usb_device_s* device) {
        kept = device;
        free_usb_device_h(device);
    });
    event("removed", [&kept](usb_device_s* device) {
        EXPECT_NE(device, kept) << "a new handle must not look like a dead one";
        free_usb_device_h(device);
    });
    EXPECT_EQ(usb_device_get_serial(kept), nullptr);
    EXPECT_EQ(breaches().size(), 1U);
}

TEST_F(UsbHandleTest, ThatWasNeverGivenOutIsABreach) {
    int something = 0;
    auto* invented = reinterpret_cast<usb_device_s*>(&something);
    free_usb_device_h(invented);
    free_usb_device_h(nullptr);
    EXPECT_LT(usb_mass_storage_get_disk_type(nullptr), 0);
    EXPECT_EQ(
        breaches(),
        (Texts{"free_usb_device_h: <unknown> is no handle", "free_usb_device_h: null is no handle",
               "usb_mass_storage_get_disk_type: the handle of null is not alive"}));
}

TEST_F(UsbHandleTest, OfAWalkThatIsNeverFreedIsABreach) {
    usb_mass_storage_foreach([](usb_device_s*, void*) { return true; }, nullptr);
    EXPECT_EQ(breaches(),
              Texts{"usb_mass_storage_foreach: the handle of </dev/sda1> was not freed"});
}

TEST_F(UsbHandleTest, OfAListIsNotFreedOnItsOwn) {
    usb_device_list_s* devices = list();
    usb_device_s* device = nullptr;
    ASSERT_EQ(usb_device_list_get_first(devices, &device), 0);
    free_usb_device_h(device);
    EXPECT_EQ(breaches(), Texts{"free_usb_device_h: </dev/sda1> belongs to a list"});
    EXPECT_STREQ(usb_device_get_product(device), "Stick");
    usb_device_free_device_list(devices);
}

TEST_F(UsbHandleTest, OfAListDiesWithTheList) {
    usb_device_list_s* devices = list();
    usb_device_s* device = nullptr;
    ASSERT_EQ(usb_device_list_get_first(devices, &device), 0);
    usb_device_free_device_list(devices);
    EXPECT_EQ(usb_device_get_product(device), nullptr);
    EXPECT_EQ(breaches(), Texts{"usb_device_get_product: the handle of </dev/sda1> is not alive"});
}

TEST_F(UsbHandleTest, AListThatIsFreedTwiceOrUsedAfterwardsIsABreach) {
    usb_device_list_s* devices = list();
    usb_device_free_device_list(devices);
    usb_device_s* device = nullptr;
    EXPECT_NE(usb_device_free_device_list(devices), 0);
    EXPECT_NE(usb_device_list_get_first(devices, &device), 0);
    EXPECT_NE(usb_device_list_get_next(devices, &device), 0);
    EXPECT_EQ(device, nullptr);
    EXPECT_EQ(breaches(), (Texts{"usb_device_free_device_list: the list is not alive",
                                 "usb_device_list_get_first: the list is not alive",
                                 "usb_device_list_get_next: the list is not alive"}));
}

TEST_F(UsbHandleTest, AListThatIsNeverFreedIsFoundAtTheEnd) {
    list();
    EXPECT_EQ(breaches(), Texts{});
    tv.checkLeaks();
    EXPECT_EQ(breaches(), Texts{"usb_device_get_device_list: a list of 1 devices was not freed"});
}

TEST_F(UsbHandleTest, AListWhoseReleaseWasOrderedToFailIsReleasedAllTheSame) {
    usb_device_list_s* devices = list();
    tv.journal().order("usb_device_free_device_list", simulated::Fault::Fails);
    EXPECT_NE(usb_device_free_device_list(devices), 0);
    tv.checkLeaks();
    EXPECT_EQ(breaches(), Texts{});
}

TEST_F(UsbHandleTest, TheNextDeviceAfterTheLastLeavesTheHandleAsItWas) {
    usb_device_list_s* devices = list();
    usb_device_s* device = nullptr;
    ASSERT_EQ(usb_device_list_get_first(devices, &device), 0);
    usb_device_s* const last = device;
    EXPECT_NE(usb_device_list_get_next(devices, &device), 0);
    EXPECT_EQ(device, last);
    EXPECT_EQ(usb_device_list_get_first(devices, &device), 0) << "a list can be read again";
    usb_device_free_device_list(devices);
}

}  // namespace
