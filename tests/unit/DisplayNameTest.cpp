// The names that viewers see: the product, numbered when several listed devices have the same one.
#include "Observations.h"
#include "TvTest.h"

namespace {

using simulated::DeviceId;
using simulated::UsbDevice;

class DisplayNameTest : public ManagerTest {
protected:
    DeviceId plugProduct(const std::string& product) {
        UsbDevice stick;
        stick.product = product;
        return plug(stick);
    }
    std::string name(DeviceId device) { return record(device)->GetDisplayName(); }
    int index(DeviceId device) { return record(device)->GetIndex(); }
};

TEST_F(DisplayNameTest, OfTheFirstStickOfAProductIsTheProductWithIndex0) {
    const DeviceId first = plugProduct("P");
    EXPECT_EQ(name(first), "P");
    EXPECT_EQ(index(first), 0);
}

TEST_F(DisplayNameTest, OfTheSecondStickHasTheNumber2AndALeftToRightOverrideInAscii) {
    plugProduct("P");
    const DeviceId second = plugProduct("P");
    EXPECT_EQ(name(second), "P(2&#x202d;)");
    EXPECT_EQ(index(second), 2);
}

TEST_F(DisplayNameTest, OfTheThirdStickHasTheNumber3) {
    plugProduct("P");
    plugProduct("P");
    const DeviceId third = plugProduct("P");
    EXPECT_EQ(name(third), "P(3&#x202d;)");
    EXPECT_EQ(index(third), 3);
}

TEST_F(DisplayNameTest, OfAFourthStickAfterTheFirstLeftIsTheBareProductWithIndex0) {
    const DeviceId first = plugProduct("P");
    plugProduct("P");
    plugProduct("P");
    pull(first);
    const DeviceId fourth = plugProduct("P");
    EXPECT_EQ(name(fourth), "P");
    EXPECT_EQ(index(fourth), 0);
}

TEST_F(DisplayNameTest, OfANewStickFillsTheLowestGap) {
    plugProduct("P");
    const DeviceId second = plugProduct("P");
    const DeviceId third = plugProduct("P");
    plugProduct("P");
    pull(third);
    pull(second);
    const DeviceId fifth = plugProduct("P");
    EXPECT_EQ(name(fifth), "P(2&#x202d;)");
    const DeviceId sixth = plugProduct("P");
    EXPECT_EQ(name(sixth), "P(3&#x202d;)");
    const DeviceId seventh = plugProduct("P");
    EXPECT_EQ(name(seventh), "P(5&#x202d;)");
}

TEST_F(DisplayNameTest, OfADozenSticksAreNumberedFrom0Over2To12) {
    Texts names;
    for (int i = 0; i < 12; ++i) {
        names.push_back(name(plugProduct("P")));
    }
    EXPECT_EQ(names, (Texts{"P", "P(2&#x202d;)", "P(3&#x202d;)", "P(4&#x202d;)", "P(5&#x202d;)",
                            "P(6&#x202d;)", "P(7&#x202d;)", "P(8&#x202d;)", "P(9&#x202d;)",
                            "P(10&#x202d;)", "P(11&#x202d;)", "P(12&#x202d;)"}));
}

TEST_F(DisplayNameTest, OfListedSticksStaysWhenAnotherLeaves) {
    const DeviceId first = plugProduct("P");
    const DeviceId second = plugProduct("P");
    const DeviceId third = plugProduct("P");
    pull(first);
    EXPECT_EQ(name(second), "P(2&#x202d;)");
    EXPECT_EQ(name(third), "P(3&#x202d;)");
}

TEST_F(DisplayNameTest, OfASecondStickRefreshedAloneLosesTheNumberWhileItsIndexStays) {
    const DeviceId first = plugProduct("P");
    const DeviceId second = plugProduct("P");
    pull(first);
    tv.ports().announce(second, "added");
    tv.settle();
    EXPECT_EQ(name(second), "P");
    EXPECT_EQ(index(second), 2);
    const DeviceId third = plugProduct("P");
    EXPECT_EQ(name(third), "P");
    const DeviceId fourth = plugProduct("P");
    EXPECT_EQ(name(fourth), "P(3&#x202d;)");
}

TEST_F(DisplayNameTest, ANumberThatTwoSticksHaveStaysTakenWhenOneOfThemLeaves) {
    const DeviceId firstP = plugProduct("P");
    const DeviceId secondP = plugProduct("P");
    const DeviceId firstQ = plugProduct("Q");
    const DeviceId secondQ = plugProduct("Q");
    pull(firstP);
    pull(firstQ);
    tv.ports().device(secondP).product = "Q";
    tv.ports().announce(secondP, "added");
    tv.settle();
    EXPECT_EQ(name(secondP), "Q");
    EXPECT_EQ(index(secondP), 2);
    EXPECT_EQ(index(secondQ), 2);
    pull(secondP);
    EXPECT_EQ(name(plugProduct("Q")), "Q");
    EXPECT_EQ(name(plugProduct("Q")), "Q(3&#x202d;)");
}

TEST_F(DisplayNameTest, OfARefreshedStickIsNotNumberedAgainstItself) {
    const DeviceId first = plugProduct("P");
    tv.ports().announce(first, "added");
    tv.settle();
    EXPECT_EQ(name(first), "P");
    EXPECT_EQ(index(first), 0);
}

TEST_F(DisplayNameTest, OfTheSecondPartitionOfADiskHasTheNumber2) {
    UsbDevice disk;
    disk.product = "Disk";
    const auto partitions = tv.ports().plugDisk({stickFolder(), stickFolder()}, disk);
    tv.settle();
    EXPECT_EQ(name(partitions[0]), "Disk");
    EXPECT_EQ(name(partitions[1]), "Disk(2&#x202d;)");
}

TEST_F(DisplayNameTest, OfProductsThatDifferInCaseOnlyAreNotNumbered) {
    plugProduct("Stick");
    const DeviceId other = plugProduct("STICK");
    EXPECT_EQ(name(other), "STICK");
    EXPECT_EQ(index(other), 0);
}

TEST_F(DisplayNameTest, OfProductsOfWhichOneBeginsWithTheOtherAreNotNumbered) {
    plugProduct("Stick");
    EXPECT_EQ(name(plugProduct("Stick 2")), "Stick 2");
}

TEST_F(DisplayNameTest, OfACameraAndAStickOfOneProductAreNumbered) {
    plugProduct("P");
    UsbDevice camera;
    camera.product = "P";
    camera.serial = "camera";
    tv.ports().plugCamera(camera);
    tv.settle();
    EXPECT_EQ(access.search("camera")->GetDisplayName(), "P(2&#x202d;)");
}

TEST_F(DisplayNameTest, OfSticksWithoutAProductIsTheNumberAlone) {
    EXPECT_EQ(name(plugProduct("")), "");
    EXPECT_EQ(name(plugProduct("")), "(2&#x202d;)");
}

TEST_F(DisplayNameTest, ForNotificationsStaysWithoutTheNumber) {
    plugProduct("P");
    EXPECT_EQ(record(plugProduct("P"))->GetDisplayNameForNotification(), "P");
}

TEST_F(DisplayNameTest, IsNoFormatForTheNumber) {
    plugProduct("%s%n%d");
    EXPECT_EQ(name(plugProduct("%s%n%d")), "%s%n%d(2&#x202d;)");
}

TEST_F(DisplayNameTest, OfALongProductIsNotCut) {
    const std::string product(1000, 'x');
    plugProduct(product);
    EXPECT_EQ(name(plugProduct(product)), product + "(2&#x202d;)");
}

TEST_F(DisplayNameTest, TakesManufacturerAndPartitionLabelNoAccountOf) {
    UsbDevice stick;
    stick.product = "P";
    stick.manufacturer = "One";
    stick.partlabel = "one";
    plug(stick);
    stick.manufacturer = "Two";
    stick.partlabel = "two";
    EXPECT_EQ(name(plug(stick)), "P(2&#x202d;)");
}

TEST_F(DisplayNameTest, IsGivenToDevicesOfAnEnumerationToo) {
    UsbDevice stick;
    stick.product = "P";
    const DeviceId first = tv.ports().insert(stick);
    const DeviceId second = tv.ports().insert(stick);
    ASSERT_NE(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(name(first), "P");
    EXPECT_EQ(name(second), "P(2&#x202d;)");
    EXPECT_EQ(index(second), 2);
}

TEST_F(DisplayNameTest, IsSettledWithAStoryThatNamesEveryListedDevice) {
    plugProduct("P");
    plugProduct("Other");
    CMMDeviceInfo device;
    device.SetProduct("P");
    device.SetDeviceKey("the key");
    device.SetDeviceName("the node");
    forget();
    access.checkProductName(&device);
    const GList* list = access.list();
    EXPECT_EQ(tv.journal().story(mark),
              (Texts{"I Product:P key=the key name=the node Device count=2",
                     "I pNode:" + address(list->data), "I pNode:" + address(list->next->data),
                     "I IndexVector size :1, MaxIndex:0",
                     "I Product:P key=the key name=the node nValidIndex=2"}));
    EXPECT_EQ(device.GetDisplayName(), "P(2&#x202d;)");
}

TEST_F(DisplayNameTest, OfNoRecordIsAWarning) {
    forget();
    access.checkProductName(nullptr);
    EXPECT_EQ(tv.journal().story(mark), Texts{"W NULL == pDeviceInfo"});
}

// ---- the rule for numbers

struct Choice {
    std::vector<int> used;
    int maximum;
    int index;
};

class ValidIndexTest : public ManagerTest, public ::testing::WithParamInterface<Choice> {};

TEST_P(ValidIndexTest, IsTheLowestFreeOneOf0_2_3AndSoOn) {
    const Choice& choice = GetParam();
    forget();
    EXPECT_EQ(access.validIndex(choice.used, choice.maximum), choice.index);
    EXPECT_EQ(tv.journal().story(mark),
              Texts{"I IndexVector size :" + std::to_string(choice.used.size()) +
                    ", MaxIndex:" + std::to_string(choice.maximum)});
}

INSTANTIATE_TEST_SUITE_P(NothingUsedGives0WhateverTheMaximum,
                         ValidIndexTest,
                         ::testing::Values(Choice{{}, 0, 0}, Choice{{}, 7, 0}, Choice{{}, -1, 0}));
INSTANTIATE_TEST_SUITE_P(NegativeMaximumGives0,
                         ValidIndexTest,
                         ::testing::Values(Choice{{0}, -1, 0}, Choice{{0, 2}, -5, 0}));
INSTANTIATE_TEST_SUITE_P(NextNumber,
                         ValidIndexTest,
                         ::testing::Values(Choice{{0}, 0, 2},
                                           Choice{{0, 2}, 2, 3},
                                           Choice{{3, 2, 0}, 3, 4},
                                           Choice{{0, 0, 2, 2}, 2, 3}));
INSTANTIATE_TEST_SUITE_P(Gap,
                         ValidIndexTest,
                         ::testing::Values(Choice{{2}, 2, 0},
                                           Choice{{0, 3}, 3, 2},
                                           Choice{{0, 2, 4, 6}, 6, 3},
                                           Choice{{3, 2}, 3, 0},
                                           Choice{{0, 1}, 1, 2}));
INSTANTIATE_TEST_SUITE_P(CandidateAboveTheMaximumIsNotTested,
                         ValidIndexTest,
                         ::testing::Values(Choice{{0, 2}, 0, 2}, Choice{{0, 2, 3}, 2, 3}));

}  // namespace
