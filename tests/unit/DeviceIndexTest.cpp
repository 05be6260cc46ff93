// The index beside the device list, and that a platform which drops the lines of walks is spared the walks
// and nothing else.
#include "MMDeviceIndex.h"

#include <platform/log.h>

#include "Observations.h"
#include "TvTest.h"

namespace {

/// What the platform answers to dlog_is_shown() in this program.
bool infoIsShown = true;

}  // namespace

extern "C" int dlog_is_shown(int prio) {
    return infoIsShown || prio > 4 ? 1 : 0;
}

namespace {

struct Record : CMMDeviceInfo {
    Record(const char* key, const char* product) {
        SetDeviceKey(key);
        SetProduct(product);
    }
};

using Records = CMMDeviceIndex::Records;

TEST(DeviceIndexTest, FindsARecordByItsKeyUntilItIsRemoved) {
    Record one("one", "P");
    CMMDeviceIndex index;
    EXPECT_EQ(index.Find("one"), nullptr);
    index.Add(&one);
    EXPECT_EQ(index.Find("one"), &one);
    EXPECT_EQ(index.Count(), 1);
    index.Remove(&one);
    EXPECT_EQ(index.Find("one"), nullptr);
    EXPECT_EQ(index.Count(), 0);
}

TEST(DeviceIndexTest, TellsTheRecordsOfAProduct) {
    Record one("one", "P");
    Record two("two", "P");
    Record three("three", "Q");
    CMMDeviceIndex index;
    index.Add(&one);
    index.Add(&two);
    index.Add(&three);
    EXPECT_EQ(index.OfProduct("P"), (Records{&one, &two}));
    index.Remove(&one);
    EXPECT_EQ(index.OfProduct("P"), Records{&two});
    EXPECT_EQ(index.OfProduct("Q"), Records{&three});
    EXPECT_EQ(index.OfProduct("none"), Records{});
}

TEST(DeviceIndexTest, LeavesTheListedRecordInWhenAnotherOfTheSameKeyIsRemoved) {
    Record listed("one", "P");
    Record stranger("one", "P");
    CMMDeviceIndex index;
    index.Add(&listed);
    index.Remove(&stranger);
    EXPECT_EQ(index.Find("one"), &listed);
    EXPECT_EQ(index.OfProduct("P"), Records{&listed});
}

TEST(DeviceIndexTest, FollowsARecordToItsNewProduct) {
    Record one("one", "P");
    CMMDeviceIndex index;
    index.Add(&one);
    one.SetProduct("Q");
    index.ProductChanged(&one, "P");
    EXPECT_EQ(index.OfProduct("P"), Records{});
    EXPECT_EQ(index.OfProduct("Q"), Records{&one});
    index.Remove(&one);
    EXPECT_EQ(index.OfProduct("Q"), Records{});
}

TEST(DeviceIndexTest, IsEmptyOnceCleared) {
    Record one("one", "P");
    CMMDeviceIndex index;
    index.Add(&one);
    index.Clear();
    EXPECT_EQ(index.Find("one"), nullptr);
    EXPECT_EQ(index.OfProduct("P"), Records{});
    EXPECT_EQ(index.Count(), 0);
}

/// A manager whose platform says that it drops info lines; the simulated TV takes them all the same.
class UnseenWalkTest : public ManagerTest {
protected:
    UnseenWalkTest() { infoIsShown = false; }
    ~UnseenWalkTest() override { infoIsShown = true; }

    simulated::DeviceId plugProduct(const std::string& product) {
        simulated::UsbDevice stick;
        stick.product = product;
        return plug(stick);
    }
    std::string name(simulated::DeviceId device) { return record(device)->GetDisplayName(); }
};

TEST_F(UnseenWalkTest, IsNotMadeWhenADeviceIsLookedUp) {
    const simulated::DeviceId stick = plugProduct("P");
    const std::string key = record(stick)->GetDeviceKey();
    const std::string list = address(access.list());
    forget();
    EXPECT_NE(access.search(key), nullptr);
    EXPECT_EQ(messages(), (Texts{"m_pDevList:" + list + ",strDeviceKey :" + key, "Finde device",
                                 "m_pDevList:" + list}));
    forget();
    EXPECT_TRUE(access.isInList(key));
    EXPECT_EQ(messages(), Texts{"pcDevName:" + key});
}

TEST_F(UnseenWalkTest, ChangesNoListAndNoName) {
    const simulated::DeviceId first = plugProduct("P");
    const simulated::DeviceId second = plugProduct("P");
    const simulated::DeviceId other = plugProduct("Q");
    EXPECT_EQ(name(second), "P(2&#x202d;)");
    EXPECT_EQ(name(other), "Q");
    pull(first);
    const simulated::DeviceId third = plugProduct("P");
    EXPECT_EQ(name(third), "P");
    EXPECT_EQ(listedKeys().size(), 3U);
    EXPECT_GT(occurrences(messages(), "Finde device"), 0);
}

}  // namespace
