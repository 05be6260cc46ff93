// Every text that a device can bring, as hostile as it can be: the record keeps its bytes, and what
// leaves the daemon - pop-ups, launch requests, device JSON - is valid text that breaks nothing.
#include <json-glib/json-glib.h>

#include "MMDeviceJsonUtil.h"
#include "Surroundings.h"
#include "TvTest.h"

namespace {

using simulated::UsbDevice;
using Field = std::optional<std::string> UsbDevice::*;

struct NamedField {
    const char* name;
    Field field;
    std::string (CMMDeviceInfo::*stored)() const;
};

const NamedField FIELDS[] = {
    {"Manufacturer", &UsbDevice::manufacturer, &CMMDeviceInfo::GetManufacturer},
    {"Product", &UsbDevice::product, &CMMDeviceInfo::GetProduct},
    {"Devname", &UsbDevice::devname, &CMMDeviceInfo::GetDeviceName},
    {"Devpath", &UsbDevice::devpath, &CMMDeviceInfo::GetDevicePath},
    {"Mountpath", &UsbDevice::mountpath, &CMMDeviceInfo::GetMountpath},
    {"Serial", &UsbDevice::serial, &CMMDeviceInfo::GetSerial},
    {"Partlabel", &UsbDevice::partlabel, &CMMDeviceInfo::GetPartitionLabel},
};

struct NamedText {
    const char* name;
    std::string text;
};

const NamedText TEXTS[] = {
    {"Empty", ""},
    {"TenKilobytes", std::string(10000, 'x')},
    {"TenKilobytesOfTwoByteCharacters",
     [] {
         std::string text;
         for (int i = 0; i < 5000; ++i) {
             text += "\xc3\xa9";
         }
         return text;
     }()},
    {"NotUtf8", "\xff\xfe broken \xc3"},
    {"Overlong", "\xc0\xaf\xed\xa0\x80"},
    {"Conversions", "%s%n%d%1000000d%*c"},
    {"Placeholders", "{1}{2}{3}{4}{0}{"},
    {"Markup", "<b>&amp;</b><script>\"'"},
    {"Controls", "\x01\x02\x1b[31m\x1f\x7f\r\n\t"},
    {"Bidirectional", "\xe2\x80\xaegpj.exe\xe2\x81\xa6"},
    {"Json", "\"},{\"Action\":9,\"\\"},
};

/// Texts that show the names which message ids alone would leave out.
const std::map<std::string, std::string> SHOWN = {{"TV_SID_MIX_NEW_DEVICE_CONNECTED", "new: {1}"},
                                                  {"COM_SID_MIX_FILE_NAME_COLON", "file: {1}"}};

class HostileTextTest : public ManagerTest,
                        public ::testing::WithParamInterface<std::tuple<NamedField, NamedText>> {
protected:
    /// Plug in a device with one hostile text; its other texts are harmless.
    simulated::DeviceId plugHostile(int usbClass) {
        const auto& [field, text] = GetParam();
        UsbDevice device;
        device.usbClass = usbClass;
        device.devname = "/dev/sdz1";
        device.devpath = "/devices/usb1/1-1";
        device.mountpath = stickFolder();
        device.*field.field = text.text;
        const auto id = tv.ports().insert(device);
        tv.ports().announce(id, "added");
        if (usbClass == USB_CLASS_MASS_STORAGE) {
            tv.ports().announce(id, "mounted");
        }
        tv.settle();
        return id;
    }

    const TestCatalogue catalogue{temp, SHOWN};

    static void expectValid(const std::optional<std::string>& text) {
        if (text) {
            EXPECT_TRUE(g_utf8_validate(text->data(), static_cast<gssize>(text->size()), nullptr))
                << *text;
        }
    }

    void expectValidSurfaces() {
        for (const simulated::Popup& popup : tv.screen().history()) {
            expectValid(popup.title);
            expectValid(popup.body);
        }
        for (const simulated::Launch& launch : tv.applications().launches()) {
            for (const auto& [key, value] : launch.extraData) {
                expectValid(value);
            }
        }
    }

    static void expectJson(CMMDeviceInfo* device) {
        std::string json;
        ASSERT_EQ(CMMDeviceJsonUtil().DetailParamToJson(device, 1, json), 0);
        expectValid(json);
        g_autoptr(JsonParser) parser = json_parser_new();
        ASSERT_TRUE(json_parser_load_from_data(parser, json.c_str(), -1, nullptr)) << json;
        EXPECT_EQ(json_object_get_size(json_node_get_object(json_parser_get_root(parser))), 19U);
    }
};

TEST_P(HostileTextTest, OfAStickIsKeptAsItIsAndShownAsValidText) {
    const auto id = plugHostile(USB_CLASS_MASS_STORAGE);
    CMMDeviceInfo* device = record(id);
    ASSERT_NE(device, nullptr);
    const auto& [field, text] = GetParam();
    EXPECT_EQ((device->*field.stored)(), text.text);
    ASSERT_EQ(tv.screen().history().size(), 1U);
    const std::string title = *tv.screen().history()[0].title;
    EXPECT_EQ(title.rfind("new: ", 0), 0U);
    EXPECT_EQ(title.size() > 5, !device->GetProduct().empty()) << "the name stands in it";
    expectJson(device);

    tv.screen().press(0);
    tv.settle();
    tv.applications().setRunning("org.norvane.lumet", true);
    tv.ports().announce(id, "added");
    tv.ports().announce(id, "mounted");
    tv.settle();
    EXPECT_EQ(tv.applications().launches().size(), 2U);
    tv.applications().setRunning("org.norvane.lumet", false);
    pull(id);
    EXPECT_EQ(access.list(), nullptr);
    expectValidSurfaces();
}

TEST_P(HostileTextTest, OfACameraIsKeptAsItIsAndShownAsValidText) {
    const auto id = plugHostile(USB_CLASS_STILL_IMAGE);
    CMMDeviceInfo* device = record(id);
    ASSERT_NE(device, nullptr);
    const auto& [field, text] = GetParam();
    EXPECT_EQ((device->*field.stored)(), text.text);
    expectJson(device);
    tv.screen().press(0);
    tv.settle();
    pull(id);
    EXPECT_EQ(access.list(), nullptr);
    expectValidSurfaces();
}

INSTANTIATE_TEST_SUITE_P(EveryField,
                         HostileTextTest,
                         ::testing::Combine(::testing::ValuesIn(FIELDS),
                                            ::testing::ValuesIn(TEXTS)),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).name) + "_" +
                                    std::get<1>(test.param).name;
                         });

class HostileScanTest : public ManagerTest, public ::testing::WithParamInterface<NamedText> {
protected:
    const TestCatalogue catalogue{temp, SHOWN};
};

TEST_P(HostileScanTest, AScannedFileNameIsShownAndLaunchedAsValidText) {
    for (const int mediaType : {2, 3, 5}) {
        plug();
        g_autoptr(JsonBuilder) builder = json_builder_new();
        json_builder_begin_object(builder);
        json_builder_set_member_name(builder, "MEDIA_TYPE");
        json_builder_add_int_value(builder, mediaType);
        for (const char* key : {"DISPLAY_NAME", "FILE_PATH", "TITLE", "ARTIST", "ALBUM"}) {
            g_autofree char* valid = g_utf8_make_valid(GetParam().text.c_str(), -1);
            json_builder_set_member_name(builder, key);
            json_builder_add_string_value(builder, valid);
        }
        json_builder_end_object(builder);
        g_autoptr(JsonNode) root = json_builder_get_root(builder);
        g_autofree char* json = json_to_string(root, FALSE);
        tv.scanner().report(25, json);
        tv.settle();
        ASSERT_NE(tv.screen().popup(), nullptr);
        const std::string body = *tv.screen().popup()->body;
        EXPECT_NE(body.find("file: "), std::string::npos);
        EXPECT_TRUE(g_utf8_validate(body.c_str(), -1, nullptr));
        tv.screen().press(0);
        tv.settle();
    }
    ASSERT_EQ(tv.applications().launches().size(), 3U);
    for (const simulated::Launch& launch : tv.applications().launches()) {
        for (const auto& [key, value] : launch.extraData) {
            EXPECT_TRUE(g_utf8_validate(value.data(), static_cast<gssize>(value.size()), nullptr));
        }
        g_autoptr(JsonParser) parser = json_parser_new();
        EXPECT_TRUE(json_parser_load_from_data(
            parser, launch.extraData.at("play_list_data").c_str(), -1, nullptr));
    }
}

INSTANTIATE_TEST_SUITE_P(EveryText,
                         HostileScanTest,
                         ::testing::ValuesIn(TEXTS),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
