// The index beside the device list, and that a platform which drops the lines of walks is spared the walks
// and nothing else.
#include "MMDeviceIndex.h"

#include "Observations.h"
#include "SeenLines.h"
#include "TvTest.h"

namespace {

struct Record : CMMDeviceInfo {
    Record(const char* key, const char* product, int number = 0) {
        SetDeviceKey(key);
        SetProduct(product);
        SetIndex(number);
    }
};

/// How many records of a product have a number, the one with a key left out.
int used(const CMMDeviceIndex& index, const char* product, const char* key = "nobody") {
    return index.UsedIndexes(product, key).nCount;
}

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

TEST(DeviceIndexTest, TellsTheNumbersOfAProduct) {
    Record one("one", "P", 0);
    Record two("two", "P", 2);
    Record three("three", "Q", 7);
    CMMDeviceIndex index;
    index.Add(&one);
    index.Add(&two);
    index.Add(&three);
    const _stUsedIndexes both = index.UsedIndexes("P", "nobody");
    EXPECT_EQ(both.nCount, 2);
    EXPECT_EQ(both.nMax, 2);
    EXPECT_EQ(both.nLowestFree, 3);
    index.Remove(&one);
    EXPECT_EQ(index.UsedIndexes("P", "nobody").nLowestFree, 0);
    EXPECT_EQ(used(index, "P"), 1);
    EXPECT_EQ(index.UsedIndexes("Q", "nobody").nMax, 7);
    EXPECT_EQ(used(index, "none"), 0);
}

TEST(DeviceIndexTest, LeavesOutTheNumberOfTheRecordThatIsAboutToBeNumbered) {
    Record one("one", "P", 0);
    Record two("two", "P", 2);
    CMMDeviceIndex index;
    index.Add(&one);
    index.Add(&two);
    const _stUsedIndexes others = index.UsedIndexes("P", "two");
    EXPECT_EQ(others.nCount, 1);
    EXPECT_EQ(others.nMax, 0);
    EXPECT_EQ(others.nLowestFree, 2);
    EXPECT_EQ(used(index, "Q", "two"), 0);
}

TEST(DeviceIndexTest, LeavesTheListedRecordInWhenAnotherOfTheSameKeyIsRemoved) {
    Record listed("one", "P");
    Record stranger("one", "P");
    CMMDeviceIndex index;
    index.Add(&listed);
    index.Remove(&stranger);
    EXPECT_EQ(index.Find("one"), &listed);
    EXPECT_EQ(used(index, "P"), 1);
}

TEST(DeviceIndexTest, FollowsARecordToItsNewProductWithItsNumber) {
    Record one("one", "P", 3);
    CMMDeviceIndex index;
    index.Add(&one);
    one.SetProduct("Q");
    index.Changed("one");
    EXPECT_EQ(used(index, "P"), 0);
    EXPECT_EQ(used(index, "Q"), 1);
    EXPECT_EQ(index.UsedIndexes("Q", "nobody").nMax, 3);
    index.Remove(&one);
    EXPECT_EQ(used(index, "Q"), 0);
}

TEST(DeviceIndexTest, FollowsARecordToItsNewNumber) {
    Record one("one", "P", 3);
    CMMDeviceIndex index;
    index.Add(&one);
    one.SetIndex(5);
    index.Changed("one");
    EXPECT_EQ(index.UsedIndexes("P", "nobody").nMax, 5);
    EXPECT_EQ(used(index, "P"), 1);
    index.Remove(&one);
    EXPECT_EQ(used(index, "P"), 0);
}

TEST(DeviceIndexTest, TakesOutARecordUnderWhatItWasCountedAs) {
    Record one("one", "P", 3);
    Record two("two", "P", 4);
    CMMDeviceIndex index;
    index.Add(&one);
    index.Add(&two);
    one.SetProduct("Q");
    one.SetIndex(9);
    index.Remove(&one);
    EXPECT_EQ(used(index, "P"), 1);
    EXPECT_EQ(index.UsedIndexes("P", "nobody").nMax, 4);
    EXPECT_EQ(used(index, "Q"), 0);
}

TEST(DeviceIndexTest, PassesOverAChangeOfARecordThatIsNotIn) {
    Record one("one", "P");
    CMMDeviceIndex index;
    index.Add(&one);
    index.Changed("two");
    EXPECT_EQ(used(index, "P"), 1);
    EXPECT_EQ(index.Count(), 1);
}

TEST(DeviceIndexTest, IsEmptyOnceCleared) {
    Record one("one", "P");
    CMMDeviceIndex index;
    index.Add(&one);
    index.Clear();
    EXPECT_EQ(index.Find("one"), nullptr);
    EXPECT_EQ(used(index, "P"), 0);
    EXPECT_EQ(index.Count(), 0);
}

/// A manager whose platform says that it drops info lines; the simulated TV takes them all the same.
class UnseenWalkTest : public ManagerTest {
protected:
    simulated::DeviceId plugProduct(const std::string& product) {
        simulated::UsbDevice stick;
        stick.product = product;
        return plug(stick);
    }
    std::string name(simulated::DeviceId device) { return record(device)->GetDisplayName(); }

    InfoUnseen unseen;
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
