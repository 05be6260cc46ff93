// The list of devices: insertion, removal, look-up and clean-up. The counters beside it, and what
// other programs may ask of it, have a file of their own.
#include "Observations.h"
#include "TvTest.h"

namespace {

using Record = std::unique_ptr<CMMDeviceInfo>;

class DeviceListTest : public ManagerTest {
protected:
    static Record make(const std::string& key, int fileSystem = 0, int usbClass = 8) {
        Record device = std::make_unique<CMMDeviceInfo>();
        device->SetDeviceKey(key);
        device->SetProduct("product of " + key);
        device->SetFileSystemType(fileSystem);
        device->SetClass(usbClass);
        return device;
    }
    /// Put a record into the list, which owns it from then on.
    CMMDeviceInfo* listed(const std::string& key, int fileSystem = 0, int usbClass = 8) {
        Record device = make(key, fileSystem, usbClass);
        EXPECT_EQ(access.insert(device.get()), 0);
        return device.release();
    }
    std::string head() { return address(access.list()); }
    Texts story() { return tv.journal().story(mark); }
};

// ---- insertion

TEST_F(DeviceListTest, AFirstRecordIsInsertedWithItsStory) {
    Record device = make("the key");
    forget();
    EXPECT_EQ(access.insert(device.get()), 0);
    EXPECT_EQ(story(), (Texts{"I pUsbDeviceHnd:" + address(device.get()), "I Device Key the key ",
                              "I pcDevName:the key", "I fat Count : 1", "I m_pDevList:(nil)",
                              "I m_pDevList:" + head()}));
    (void)device.release();
    EXPECT_EQ(listedKeys(), Texts{"the key"});
}

TEST_F(DeviceListTest, ASecondRecordIsComparedWithTheFirst) {
    const CMMDeviceInfo* first = listed("first");
    const std::string oldHead = head();
    forget();
    const CMMDeviceInfo* second = listed("second", 3);
    EXPECT_EQ(story(), (Texts{"I pUsbDeviceHnd:" + address(second), "I Device Key second ",
                              "I pcDevName:second", "I pNode:" + address(first), "I ntfs Count : 1",
                              "I m_pDevList:" + oldHead, "I m_pDevList:" + head()}));
}

TEST_F(DeviceListTest, ThreeDevicesAttachedInTheOrderABCAreWalkedAsCBA) {
    simulated::UsbDevice stick;
    for (const char* node : {"A", "B", "C"}) {
        stick.devname = node;
        plug(stick);
    }
    EXPECT_EQ(listedKeys(), (Texts{"C", "B", "A"}));
}

TEST_F(DeviceListTest, NoRecordIsRefusedWith9) {
    EXPECT_EQ(access.insert(nullptr), 9);
    EXPECT_EQ(story(), (Texts{"I pUsbDeviceHnd:(nil)", "W NULL == pNode"}));
}

TEST_F(DeviceListTest, InsertingARecordWhoseKeyIsListedLeavesListAndCountersAndReturns0) {
    const CMMDeviceInfo* first = listed("key");
    Record second = make("key");
    forget();
    EXPECT_EQ(access.insert(second.get()), 0);
    EXPECT_EQ(story(), (Texts{"I pUsbDeviceHnd:" + address(second.get()), "I Device Key key ",
                              "I pcDevName:key", "I pNode:" + address(first),
                              "I Device key is in the list."}));
    EXPECT_EQ(g_list_length(access.list()), 1U);
    EXPECT_EQ(access.list()->data, first);
    EXPECT_EQ(mgr->GetDeviceCount(0), 1);
}

TEST_F(DeviceListTest, KeysThatDifferInCaseOnlyAreTwo) {
    listed("key");
    listed("KEY");
    EXPECT_EQ(listedKeys(), (Texts{"KEY", "key"}));
}

TEST_F(DeviceListTest, AnEmptyKeyIsAKey) {
    listed("");
    Record second = make("");
    access.insert(second.get());
    EXPECT_EQ(listedKeys(), Texts{""});
}

TEST_F(DeviceListTest, AnUpdateReturns0WhateverHappened) {
    Record device = make("key");
    EXPECT_EQ(access.update(nullptr, true), 0);
    EXPECT_EQ(access.update(nullptr, false), 0);
    EXPECT_EQ(access.update(device.get(), false), 0);
    EXPECT_EQ(access.update(device.get(), true), 0);
    EXPECT_EQ(listedKeys(), Texts{"key"});
    EXPECT_EQ(access.update(device.get(), false), 0);
    EXPECT_EQ(listedKeys(), Texts{});
}

// ---- removal

TEST_F(DeviceListTest, ARecordIsUnlinkedWithItsStoryAndNotFreed) {
    Record first(listed("first"));
    CMMDeviceInfo* second = listed("second");
    const std::string oldHead = head();
    forget();
    EXPECT_EQ(access.remove(first.get()), 0);
    EXPECT_EQ(story(), (Texts{"I pNode:" + address(first.get()), "I pcDevName:first",
                              "I pNode:" + address(second), "I pNode:" + address(first.get()),
                              "I m_pDevList:" + oldHead, "I m_pDevList:" + head()}));
    EXPECT_EQ(listedKeys(), Texts{"second"});
    EXPECT_EQ(first->GetDeviceKey(), "first");
}

TEST_F(DeviceListTest, RemovingTheLastRecordLeavesANullList) {
    Record device(listed("key"));
    access.remove(device.get());
    EXPECT_EQ(access.list(), nullptr);
}

TEST_F(DeviceListTest, RemovingNoRecordIsRefusedWith9) {
    listed("key");
    forget();
    EXPECT_EQ(access.remove(nullptr), 9);
    EXPECT_EQ(story(), (Texts{"I pNode:(nil)", "W NULL == pDeviceInfo"}));
}

TEST_F(DeviceListTest, RemovingARecordThatIsNotListedReturns0) {
    const CMMDeviceInfo* other = listed("other");
    Record device = make("key");
    forget();
    EXPECT_EQ(access.remove(device.get()), 0);
    EXPECT_EQ(story(), (Texts{"I pNode:" + address(device.get()), "I pcDevName:key",
                              "I pNode:" + address(other), "I Device is not in the list."}));
    EXPECT_EQ(mgr->GetDeviceCount(0), 1);
}

TEST_F(DeviceListTest, RemovingFromANullListReturns0) {
    Record device = make("key");
    forget();
    EXPECT_EQ(access.remove(device.get()), 0);
    EXPECT_EQ(story(), (Texts{"I pNode:" + address(device.get()), "I pcDevName:key",
                              "I Device is not in the list."}));
}

TEST_F(DeviceListTest, RemovingAnotherRecordWithAListedKeyLowersItsCounterAndUnlinksNothing) {
    listed("key");
    Record twin = make("key");
    EXPECT_EQ(access.remove(twin.get()), 0);
    EXPECT_EQ(listedKeys(), Texts{"key"});
    EXPECT_EQ(mgr->GetDeviceCount(0), 0);
}

// ---- look-up

TEST_F(DeviceListTest, MembershipIsByKeyFromTheHead) {
    const CMMDeviceInfo* first = listed("first");
    const CMMDeviceInfo* second = listed("second");
    const CMMDeviceInfo* third = listed("third");
    forget();
    EXPECT_TRUE(access.isInList("second"));
    EXPECT_EQ(story(), (Texts{"I pcDevName:second", "I pNode:" + address(third),
                              "I pNode:" + address(second)}));
    forget();
    EXPECT_FALSE(access.isInList("secon"));
    EXPECT_EQ(story(), (Texts{"I pcDevName:secon", "I pNode:" + address(third),
                              "I pNode:" + address(second), "I pNode:" + address(first)}));
}

TEST_F(DeviceListTest, ARecordIsFoundByItsKeyWithAStory) {
    const CMMDeviceInfo* first = listed("first");
    const CMMDeviceInfo* second = listed("second");
    forget();
    EXPECT_EQ(access.search("first"), first);
    EXPECT_EQ(story(), (Texts{"I m_pDevList:" + head() + ",strDeviceKey :first",
                              "I " + address(second), "I Device Key:second", "I " + address(first),
                              "I Device Key:first", "I Finde device", "I m_pDevList:" + head()}));
}

TEST_F(DeviceListTest, AnUnknownKeyIsNotFound) {
    const CMMDeviceInfo* first = listed("first");
    forget();
    EXPECT_EQ(access.search("First"), nullptr);
    EXPECT_EQ(story(),
              (Texts{"I m_pDevList:" + head() + ",strDeviceKey :First", "I " + address(first),
                     "I Device Key:first", "I m_pDevList:" + head()}));
}

TEST_F(DeviceListTest, NothingIsFoundInANullList) {
    forget();
    EXPECT_EQ(access.search("key"), nullptr);
    EXPECT_EQ(story(), (Texts{"I m_pDevList:(nil),strDeviceKey :key", "I m_pDevList is null"}));
}

// ---- clean-up

TEST_F(DeviceListTest, AfterACleanTheListIsEmptyButTheCountersStay) {
    listed("first");
    listed("second");
    const std::string oldHead = head();
    forget();
    access.clean(1);
    EXPECT_EQ(story(), Texts{"I m_pDevList:" + oldHead + ",eListType:1"});
    EXPECT_EQ(access.list(), nullptr);
    EXPECT_EQ(mgr->GetDeviceCount(), 0);
    EXPECT_EQ(mgr->GetDeviceCount(0), 2);
}

TEST_F(DeviceListTest, CountersDoubleWhenACleanedListFillsAgain) {
    tv.ports().insert({});
    ASSERT_NE(mgr->GetDeviceList(), nullptr);
    access.clean(1);
    ASSERT_NE(mgr->GetDeviceList(), nullptr);
    EXPECT_EQ(mgr->GetDeviceCount(), 1);
    EXPECT_EQ(mgr->GetDeviceCount(0), 2);
}

TEST_F(DeviceListTest, OtherKindsOfListAreNotCleaned) {
    listed("key");
    for (const int type : {0, 2, 6}) {
        forget();
        access.clean(type);
        EXPECT_EQ(story(), Texts{"I m_pDevList:" + head() + ",eListType:" + std::to_string(type)});
    }
    EXPECT_EQ(g_list_length(access.list()), 1U);
}

TEST_F(DeviceListTest, CleaningANullListOnlySaysSo) {
    forget();
    access.clean(1);
    EXPECT_EQ(story(), Texts{"I m_pDevList:(nil),eListType:1"});
}

}  // namespace
