// The device JSON: its members, their order, and the way back into a record.
#include "MMDeviceInfo.h"
#include "MMDeviceJsonUtil.h"
#include "Observations.h"
#include "TvTest.h"

namespace {

class DeviceJsonTest : public TvTest {
protected:
    DeviceJsonTest() : parser_(json_parser_new()) {}
    ~DeviceJsonTest() override { g_object_unref(parser_); }

    static std::string encoded(CMMDeviceInfo* device, int action) {
        std::string json = "replaced";
        EXPECT_EQ(CMMDeviceJsonUtil().DetailParamToJson(device, action, json), 0);
        return json;
    }

    Texts encodedMembers(CMMDeviceInfo* device, int action) {
        JsonObject* object = objectIn(parser_, encoded(device, action));
        return object != nullptr ? members(object) : Texts{"no JSON object"};
    }

    static void decode(std::string json, int& action, CMMDeviceInfo* device) {
        CMMDeviceJsonUtil().JsonToParam(json.data(), action, device);
    }

private:
    JsonParser* parser_;
};

void fill(CMMDeviceInfo& device) {
    device.SetClass(8);
    device.SetSubClass(6);
    device.SetProtocol(80);
    device.SetVendorId(0x1234);
    device.SetProductId(0x5678);
    device.SetBus(1);
    device.SetAddress(2);
    device.SetNumber(-3);
    device.SetTotalSize(2147483647);
    device.SetUsedSize(-2147483647 - 1);
    device.SetManufacturer("Acme");
    device.SetProduct("Stick \"quoted\"");
    device.SetDeviceName("/dev/sda1");
    device.SetDevicePath("/devices/usb1");
    device.SetMountpath("/media/stick");
    device.SetFileSystemType(99);
    device.SetSerial("0001");
    device.SetDisplayName("Stick 1");
    device.SetDeviceKey("/dev/sda1");
}

const Texts FILLED = {
    "Action=1",
    "Class=8",
    "SubClass=6",
    "Protocol=80",
    "VendorId=22136",
    "Bus=1",
    "Address=2",
    "Number=-3",
    "TotalSize=2147483647",
    "UsedSize=-2147483648",
    "Manufacturer=\"Acme\"",
    "Product=\"Stick \\\"quoted\\\"\"",
    "DeviceName=\"/dev/sda1\"",
    "DevicePath=\"/devices/usb1\"",
    "Mountpath=\"/media/stick\"",
    "FileSystem=99",
    "Serial=\"0001\"",
    "DisplayName=\"Stick 1\"",
    "DeviceKey=\"/dev/sda1\"",
};

TEST_F(DeviceJsonTest, ARecordIsNineteenMembersInOrder) {
    CMMDeviceInfo device;
    fill(device);
    EXPECT_EQ(encodedMembers(&device, 1), FILLED);
}

TEST_F(DeviceJsonTest, ANullDeviceWithAction4GivesTheSingleMemberAction) {
    EXPECT_EQ(encodedMembers(nullptr, 4), Texts{"Action=4"});
    EXPECT_EQ(encoded(nullptr, 4), "{\"Action\":4}");
}

TEST_F(DeviceJsonTest, VendorIdCarriesTheProductIdAndThereIsNoOtherIdMember) {
    CMMDeviceInfo device;
    device.SetVendorId(0x1234);
    device.SetProductId(0x5678);
    const Texts all = encodedMembers(&device, 2);
    EXPECT_EQ(occurrences(all, "VendorId=22136"), 1);
    EXPECT_EQ(without(all, {"VendorId="}).size(), 18U);
    for (const std::string& member : all) {
        EXPECT_EQ(member.find("ProductId"), std::string::npos) << member;
        EXPECT_EQ(member.find("4660"), std::string::npos) << member;
    }
}

TEST_F(DeviceJsonTest, ARecordWithEmptyStringsStillYieldsEveryStringKeyWithAnEmptyText) {
    CMMDeviceInfo device;
    const Texts all = encodedMembers(&device, 1);
    EXPECT_EQ(all.size(), 19U);
    EXPECT_TRUE(
        inOrder(all, {"Manufacturer=\"\"", "Product=\"\"", "DeviceName=\"\"", "DevicePath=\"\"",
                      "Mountpath=\"\"", "Serial=\"\"", "DisplayName=\"\"", "DeviceKey=\"\""}));
}

TEST_F(DeviceJsonTest, EncodingLogsTheActionAndTheReleaseOfTheObject) {
    encoded(nullptr, 4);
    EXPECT_EQ(tv.journal().story(), (Texts{"I nAction = 4", "I unref JsonObject"}));
}

TEST_F(DeviceJsonTest, TextsOfADeviceAreMadeValidInTheJsonOnly) {
    CMMDeviceInfo device;
    device.SetProduct("bad \xff byte and \x1f separator");
    EXPECT_TRUE(inOrder(encodedMembers(&device, 1),
                        {"Product=\"bad \xef\xbf\xbd byte and \xef\xbf\xbd separator\""}));
    EXPECT_EQ(device.GetProduct(), "bad \xff byte and \x1f separator");
}

TEST_F(DeviceJsonTest, DecodingStoresTheOneIdAsVendorAndProductIdAndWritesTheAction) {
    CMMDeviceInfo device;
    fill(device);
    CMMDeviceInfo decoded;
    int action = 0;
    decode(encoded(&device, 2), action, &decoded);
    EXPECT_EQ(action, 2);
    EXPECT_EQ(decoded.GetVendorId(), 22136);
    EXPECT_EQ(decoded.GetProductId(), 22136);
    Texts expected = FILLED;
    expected[0] = "Action=2";
    EXPECT_EQ(encodedMembers(&decoded, action), expected);
}

TEST_F(DeviceJsonTest, DecodingReadsTheMembersInTheirOrderWithVendorIdTwice) {
    CMMDeviceInfo device;
    const std::string json = encoded(&device, 1);
    const std::size_t mark = tv.journal().mark();
    int action = 0;
    decode(json, action, &device);
    Texts keys;
    for (const std::string& message : tv.journal().messages(mark)) {
        if (message.rfind("key :", 0) == 0) {
            keys.push_back(message.substr(5, message.find(',') - 5));
        }
    }
    EXPECT_EQ(keys, (Texts{"Class",        "SubClass",   "Protocol",    "VendorId",   "VendorId",
                           "Bus",          "Address",    "Number",      "TotalSize",  "UsedSize",
                           "Manufacturer", "Product",    "DeviceName",  "DevicePath", "Serial",
                           "Mountpath",    "FileSystem", "DisplayName", "DeviceKey",  "Action"}));
    ASSERT_FALSE(tv.journal().log(mark).empty());
    EXPECT_EQ(tv.journal().log(mark).front().priority, 3);
    EXPECT_EQ(tv.journal().log(mark).front().message, "");
}

TEST_F(DeviceJsonTest, DecodingWithANullRecordLeavesTheActionUntouchedAndReadsNothing) {
    int action = 17;
    decode("{\"Action\":2}", action, nullptr);
    EXPECT_EQ(action, 17);
    EXPECT_TRUE(tv.journal().messages().empty());
}

TEST_F(DeviceJsonTest, DecodingOverwritesEveryFieldWhoseKeyIsMissingWithZeroOrEmptyText) {
    CMMDeviceInfo device;
    fill(device);
    int action = 17;
    decode("{}", action, &device);
    EXPECT_EQ(action, 17);
    CMMDeviceInfo blank;
    EXPECT_EQ(encoded(&device, 1), encoded(&blank, 1));
    EXPECT_EQ(device.GetVendorId(), 0);
}

TEST_F(DeviceJsonTest, DecodingAMalformedOrNullTextGivesABlankRecord) {
    CMMDeviceInfo device;
    CMMDeviceInfo blank;
    for (const char* text : {"", "no JSON", "[1]", "null", "{\"Class\":8"}) {
        fill(device);
        int action = 17;
        decode(text, action, &device);
        EXPECT_EQ(action, 17) << text;
        EXPECT_EQ(encoded(&device, 1), encoded(&blank, 1)) << text;
    }
    fill(device);
    int action = 17;
    CMMDeviceJsonUtil().JsonToParam(nullptr, action, &device);
    EXPECT_EQ(action, 17);
    EXPECT_EQ(encoded(&device, 1), encoded(&blank, 1));
}

TEST_F(DeviceJsonTest, DecodingLeavesFieldsThatAreNotInTheTextAlone) {
    CMMDeviceInfo device;
    device.SetDiskType(1);
    device.SetIndex(5);
    device.SetDamageFlag(true);
    device.SetPartitionLabel("LABEL");
    device.SetDisplayNameForNotification("Name");
    int action = 0;
    decode("{\"Action\":1}", action, &device);
    EXPECT_EQ(device.GetDiskType(), 1);
    EXPECT_EQ(device.GetIndex(), 5);
    EXPECT_TRUE(device.GetDamageFlag());
    EXPECT_EQ(device.GetPartitionLabel(), "LABEL");
    EXPECT_EQ(device.GetDisplayNameForNotification(), "Name");
}

}  // namespace
