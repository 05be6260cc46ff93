// The device record: what a blank one holds, what goes in and comes out, and which copy takes what.
#include <string>

#include <gtest/gtest.h>

#include "MMDeviceInfo.h"

namespace {

/// The base copy is open to derived records only.
class OpenRecord : public CMMDeviceInfo {
public:
    using CMMDeviceInfo::m_CopyBaseInfo;
};

struct Number {
    const char* name;
    void (CMMDeviceInfo::*set)(int);
    int (CMMDeviceInfo::*get)() const;
    bool inBaseCopy;
    bool inCopy;
};

const Number NUMBERS[] = {
    {"disk type", &CMMDeviceInfo::SetDiskType, &CMMDeviceInfo::GetDiskType, false, false},
    {"class", &CMMDeviceInfo::SetClass, &CMMDeviceInfo::GetClass, true, true},
    {"subclass", &CMMDeviceInfo::SetSubClass, &CMMDeviceInfo::GetSubClass, true, true},
    {"protocol", &CMMDeviceInfo::SetProtocol, &CMMDeviceInfo::GetProtocol, true, true},
    {"vendor id", &CMMDeviceInfo::SetVendorId, &CMMDeviceInfo::GetVendorId, true, true},
    {"product id", &CMMDeviceInfo::SetProductId, &CMMDeviceInfo::GetProductId, true, true},
    {"bus", &CMMDeviceInfo::SetBus, &CMMDeviceInfo::GetBus, true, true},
    {"address", &CMMDeviceInfo::SetAddress, &CMMDeviceInfo::GetAddress, true, true},
    {"number", &CMMDeviceInfo::SetNumber, &CMMDeviceInfo::GetNumber, true, true},
    {"file system", &CMMDeviceInfo::SetFileSystemType, &CMMDeviceInfo::GetFileSystemType, true,
     true},
    {"total size", &CMMDeviceInfo::SetTotalSize, &CMMDeviceInfo::GetTotalSize, true, true},
    {"used size", &CMMDeviceInfo::SetUsedSize, &CMMDeviceInfo::GetUsedSize, true, true},
    {"index", &CMMDeviceInfo::SetIndex, &CMMDeviceInfo::GetIndex, false, true},
};

struct Flag {
    const char* name;
    void (CMMDeviceInfo::*set)(bool);
    bool (CMMDeviceInfo::*get)() const;
    bool copied;  // by every copy
};

const Flag FLAGS[] = {
    {"damage", &CMMDeviceInfo::SetDamageFlag, &CMMDeviceInfo::GetDamageFlag, true},
    {"add action", &CMMDeviceInfo::SetUsbStorageAddAction, &CMMDeviceInfo::GetUsbStorageAddAction,
     false},
};

struct Text {
    const char* name;
    void (CMMDeviceInfo::*set)(std::string);
    std::string (CMMDeviceInfo::*get)() const;
    void (CMMDeviceInfo::*lend)(std::string**);
    bool inBaseCopy;
    bool inCopy;
};

#define TEXT(accessor, inBaseCopy, inCopy)                                       \
    {                                                                            \
#accessor, &CMMDeviceInfo::Set##accessor, &CMMDeviceInfo::Get##accessor, \
            &CMMDeviceInfo::Get##accessor, inBaseCopy, inCopy                    \
    }

const Text TEXTS[] = {
    TEXT(Manufacturer, true, true),   TEXT(Product, true, true),
    TEXT(DeviceName, true, true),     TEXT(DevicePath, true, true),
    TEXT(Mountpath, true, true),      TEXT(Serial, true, true),
    TEXT(DisplayName, false, true),   TEXT(DisplayNameForNotification, false, false),
    TEXT(PartitionLabel, true, true), TEXT(DeviceKey, true, true),
};

#undef TEXT

/// A record of which no field is blank, or equal to another field or to a record of another `seed`.
void fill(CMMDeviceInfo& record, int seed) {
    int value = seed;
    for (const Number& number : NUMBERS) {
        (record.*number.set)(++value);
    }
    for (const Flag& flag : FLAGS) {
        (record.*flag.set)(true);
    }
    for (const Text& text : TEXTS) {
        (record.*text.set)(text.name + std::to_string(seed));
    }
}

/// Everything that a record tells, one line per field.
std::string told(const CMMDeviceInfo& record) {
    std::string all;
    for (const Number& number : NUMBERS) {
        all += std::string(number.name) + "=" + std::to_string((record.*number.get)()) + "\n";
    }
    for (const Flag& flag : FLAGS) {
        all += std::string(flag.name) + "=" + ((record.*flag.get)() ? "true" : "false") + "\n";
    }
    for (const Text& text : TEXTS) {
        all += std::string(text.name) + "=\"" + (record.*text.get)() + "\"\n";
    }
    return all;
}

/// What `target` becomes when the fields that are marked come from `source`.
template <class Marked>
std::string mixed(CMMDeviceInfo& target, const CMMDeviceInfo& source, Marked marked) {
    for (const Number& number : NUMBERS) {
        if (marked(number)) {
            (target.*number.set)((source.*number.get)());
        }
    }
    for (const Flag& flag : FLAGS) {
        if (flag.copied) {
            (target.*flag.set)((source.*flag.get)());
        }
    }
    for (const Text& text : TEXTS) {
        if (marked(text)) {
            (target.*text.set)((source.*text.get)());
        }
    }
    return told(target);
}

const auto inBaseCopy = [](const auto& field) { return field.inBaseCopy; };
const auto inCopy = [](const auto& field) { return field.inCopy; };

TEST(DeviceInfoTest, ABlankRecordHoldsZerosEmptyTextsAndNoFlag) {
    const CMMDeviceInfo record;
    for (const Number& number : NUMBERS) {
        EXPECT_EQ((record.*number.get)(), 0) << number.name;
    }
    for (const Flag& flag : FLAGS) {
        EXPECT_FALSE((record.*flag.get)()) << flag.name;
    }
    for (const Text& text : TEXTS) {
        EXPECT_EQ((record.*text.get)(), "") << text.name;
    }
}

TEST(DeviceInfoTest, EachFieldKeepsItsOwnValueUnchanged) {
    CMMDeviceInfo record;
    fill(record, 100);
    int value = 100;
    for (const Number& number : NUMBERS) {
        EXPECT_EQ((record.*number.get)(), ++value) << number.name;
        (record.*number.set)(-2147483647 - 1);
        EXPECT_EQ((record.*number.get)(), -2147483647 - 1) << number.name;
    }
    for (const Flag& flag : FLAGS) {
        EXPECT_TRUE((record.*flag.get)()) << flag.name;
        (record.*flag.set)(false);
        EXPECT_FALSE((record.*flag.get)()) << flag.name;
    }
    for (const Text& text : TEXTS) {
        EXPECT_EQ((record.*text.get)(), text.name + std::string("100"));
        (record.*text.set)("\xff\x01 not UTF-8");
        EXPECT_EQ((record.*text.get)(), "\xff\x01 not UTF-8") << text.name;
    }
}

TEST(DeviceInfoTest, CreateAndDestroyWithoutASourceChangeNothing) {
    CMMDeviceInfo record;
    fill(record, 100);
    const std::string before = told(record);
    EXPECT_TRUE(record.Create());
    record.Destroy();
    EXPECT_EQ(told(record), before);
}

TEST(DeviceInfoTest, CopiesFromNullReturnFalseAndChangeNothing) {
    OpenRecord record;
    fill(record, 100);
    const std::string before = told(record);
    EXPECT_FALSE(record.Copy(nullptr));
    EXPECT_EQ(told(record), before);
    EXPECT_FALSE(record.Create(nullptr));
    EXPECT_EQ(told(record), before);
    EXPECT_FALSE(record.m_CopyBaseInfo(nullptr));
    EXPECT_EQ(told(record), before);
}

TEST(DeviceInfoTest, AfterCopyDiskTypeNameForNotificationAndAddActionAreStillTheTargets) {
    CMMDeviceInfo source;
    fill(source, 100);
    source.SetUsbStorageAddAction(false);
    source.SetDamageFlag(false);
    CMMDeviceInfo target;
    fill(target, 200);
    ASSERT_TRUE(target.Copy(&source));
    EXPECT_EQ(target.GetDiskType(), 201);
    EXPECT_EQ(target.GetDisplayNameForNotification(), "DisplayNameForNotification200");
    EXPECT_TRUE(target.GetUsbStorageAddAction());
    EXPECT_FALSE(target.GetDamageFlag());

    CMMDeviceInfo expected;
    fill(expected, 200);
    EXPECT_EQ(told(target), mixed(expected, source, inCopy));
}

TEST(DeviceInfoTest, AfterTheBaseCopyDisplayNameAndIndexAreStillTheTargets) {
    CMMDeviceInfo source;
    fill(source, 100);
    OpenRecord target;
    fill(target, 200);
    ASSERT_TRUE(target.m_CopyBaseInfo(&source));
    EXPECT_EQ(target.GetDisplayName(), "DisplayName200");
    EXPECT_EQ(target.GetIndex(), 213);

    CMMDeviceInfo expected;
    fill(expected, 200);
    EXPECT_EQ(told(target), mixed(expected, source, inBaseCopy));
}

TEST(DeviceInfoTest, CreateFromARecordIsTheBaseCopy) {
    CMMDeviceInfo source;
    fill(source, 100);
    CMMDeviceInfo created;
    fill(created, 200);
    ASSERT_TRUE(created.Create(&source));
    CMMDeviceInfo expected;
    fill(expected, 200);
    EXPECT_EQ(told(created), mixed(expected, source, inBaseCopy));
}

TEST(DeviceInfoTest, ARecordBuiltByTheCopyingConstructorHasEmptyDisplayNamesAndNothingUnset) {
    CMMDeviceInfo source;
    fill(source, 100);
    const CMMDeviceInfo copy(&source);
    EXPECT_EQ(copy.GetDisplayName(), "");
    EXPECT_EQ(copy.GetDisplayNameForNotification(), "");
    EXPECT_EQ(copy.GetDiskType(), 0);
    EXPECT_EQ(copy.GetIndex(), 0);
    EXPECT_FALSE(copy.GetUsbStorageAddAction());
    EXPECT_TRUE(copy.GetDamageFlag());

    CMMDeviceInfo expected;
    EXPECT_EQ(told(copy), mixed(expected, source, inBaseCopy));
}

TEST(DeviceInfoTest, ARecordBuiltFromNullIsBlank) {
    const CMMDeviceInfo record(static_cast<CMMDeviceInfo*>(nullptr));
    EXPECT_EQ(told(record), told(CMMDeviceInfo()));
}

TEST(DeviceInfoTest, ThePointerFormOfAGetterDoesNothingWithNull) {
    CMMDeviceInfo record;
    fill(record, 100);
    const std::string before = told(record);
    for (const Text& text : TEXTS) {
        (record.*text.lend)(nullptr);
    }
    EXPECT_EQ(told(record), before);
}

TEST(DeviceInfoTest, ThePointerFormLendsTheRecordsOwnStringSoThatALaterSetIsSeenThroughIt) {
    CMMDeviceInfo record;
    for (const Text& text : TEXTS) {
        std::string* lent = nullptr;
        (record.*text.lend)(&lent);
        ASSERT_NE(lent, nullptr) << text.name;
        EXPECT_EQ(*lent, "") << text.name;
        (record.*text.set)("later");
        EXPECT_EQ(*lent, "later") << text.name;
    }
}

}  // namespace
