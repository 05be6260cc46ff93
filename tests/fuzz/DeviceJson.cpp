// The device JSON and the JSON object below it: the input is a text that a client could hand in. It is
// decoded, encoded and decoded again, and read member by member in every type.
#include <algorithm>
#include <cstdarg>
#include <cstdint>

#include "Harness.h"
#include "MMDeviceInfo.h"
#include "MMDeviceJsonUtil.h"
#include "StrictJson.h"
#include "json_value.h"

#include <platform/log.h>

/// The platform's log: a line is made and forgotten.
extern "C" int __dlog_print(int /*buf*/, int /*prio*/, const char* /*tag*/, const char* fmt, ...) {
    va_list arguments;
    va_start(arguments, fmt);
    g_autofree char* line = g_strdup_vprintf(fmt, arguments);
    va_end(arguments);
    return line != nullptr ? 0 : -1;
}

namespace {

using fuzz::JsonMembers;
using fuzz::JsonValue;
using fuzz::require;

constexpr std::size_t MEMBERS_OF_A_DEVICE = 19;
constexpr int UNTOUCHED = -77;
constexpr int DEEPEST_LEVEL = 1000;

struct NumberMember {
    const char* key;
    int (CMMDeviceInfo::*get)() const;
};

struct TextMember {
    const char* key;
    std::string (CMMDeviceInfo::*get)() const;
};

const NumberMember NUMBERS[] = {
    {"Class", &CMMDeviceInfo::GetClass},
    {"SubClass", &CMMDeviceInfo::GetSubClass},
    {"Protocol", &CMMDeviceInfo::GetProtocol},
    {"VendorId", &CMMDeviceInfo::GetVendorId},
    {"VendorId", &CMMDeviceInfo::GetProductId},
    {"Bus", &CMMDeviceInfo::GetBus},
    {"Address", &CMMDeviceInfo::GetAddress},
    {"Number", &CMMDeviceInfo::GetNumber},
    {"TotalSize", &CMMDeviceInfo::GetTotalSize},
    {"UsedSize", &CMMDeviceInfo::GetUsedSize},
    {"FileSystem", &CMMDeviceInfo::GetFileSystemType},
};

const TextMember TEXTS[] = {
    {"Manufacturer", &CMMDeviceInfo::GetManufacturer},
    {"Product", &CMMDeviceInfo::GetProduct},
    {"DeviceName", &CMMDeviceInfo::GetDeviceName},
    {"DevicePath", &CMMDeviceInfo::GetDevicePath},
    {"Serial", &CMMDeviceInfo::GetSerial},
    {"Mountpath", &CMMDeviceInfo::GetMountpath},
    {"DisplayName", &CMMDeviceInfo::GetDisplayName},
    {"DeviceKey", &CMMDeviceInfo::GetDeviceKey},
};

int decode(const std::string& json, CMMDeviceInfo& device) {
    int action = UNTOUCHED;
    std::string text = json;
    CMMDeviceJsonUtil().JsonToParam(text.data(), action, &device);
    return action;
}

std::string encode(CMMDeviceInfo& device, int action) {
    std::string json;
    require(CMMDeviceJsonUtil().DetailParamToJson(&device, action, json) == 0,
            "a device can be encoded");
    return json;
}

/// What was written is the device, as a strict reader sees it.
void requireEncoding(const std::string& json, const CMMDeviceInfo& device) {
    const JsonMembers members = fuzz::requireObject(json, "a device's JSON");
    require(members.size() == MEMBERS_OF_A_DEVICE, "a device has 19 members", json);
    for (const NumberMember& member : NUMBERS) {
        if (member.get != &CMMDeviceInfo::GetVendorId) {
            require(requireJsonInteger(members, std::string("/") + member.key) ==
                        (device.*member.get)(),
                    "a number is written as it is", member.key);
        }
    }
    for (const TextMember& member : TEXTS) {
        (void)requireJsonText(members, std::string("/") + member.key);
    }
}

/// What a strict reader sees in the text is what was decoded: a member that is missing, or is an array or
/// an object, as 0 or "".
void requireDecoding(const JsonMembers& seen, const CMMDeviceInfo& device) {
    for (const NumberMember& member : NUMBERS) {
        const auto found = seen.find(std::string("/") + member.key);
        require(found != seen.end() || (device.*member.get)() == 0, "no number is 0", member.key);
        if (found != seen.end() && found->second.kind == JsonValue::Kind::Integer &&
            found->second.number == static_cast<std::int32_t>(found->second.number)) {
            require((device.*member.get)() == found->second.number, "a number is decoded",
                    member.key);
        }
    }
    for (const TextMember& member : TEXTS) {
        const auto found = seen.find(std::string("/") + member.key);
        require(found != seen.end() || (device.*member.get)().empty(), "no text is empty",
                member.key);
        if (found != seen.end() && found->second.kind == JsonValue::Kind::Text &&
            found->second.text.find('\0') == std::string::npos) {
            require((device.*member.get)() == found->second.text, "a text is decoded", member.key);
        }
    }
}

/// A member reads in each type; its being there is the same answer in all of them but the list's.
void readAs(CMMDeviceJsonValue& value, const std::string& key) {
    bool truth = false;
    int number = UNTOUCHED;
    std::string text = "untouched";
    std::vector<std::string> list;
    const bool there = value.Get(key, number);
    require(there || number == UNTOUCHED, "a missing number is left alone", key);
    require(value.Get(key, truth) == there, "each type finds the member", key);
    require(value.Get(key, text) == there, "each type finds the member", key);
    require(there || text == "untouched", "a missing text is left alone", key);
    require(!value.Get(key, list) || there, "a list is found where there is a member", key);
}

/// How deep a written JSON text nests.
int depthOf(const std::string& json) {
    int depth = 0;
    int deepest = 0;
    bool quoted = false;
    for (std::size_t at = 0; at < json.size(); ++at) {
        const char byte = json[at];
        if (byte == '"') {
            quoted = !quoted;
        } else if (quoted) {
            at += byte == '\\' ? 1 : 0;
        } else if (byte == '{' || byte == '[') {
            deepest = std::max(deepest, ++depth);
        } else if (byte == '}' || byte == ']') {
            --depth;
        }
    }
    return deepest;
}

void readMembers(const std::string& json, const std::optional<JsonMembers>& seen) {
    CMMDeviceJsonValue value(json);
    readAs(value, "Class");
    readAs(value, "");
    if (seen) {
        for (const auto& [place, member] : *seen) {
            const std::string key = place.substr(place.empty() ? 0 : 1);
            if (key.find_first_of("/~") == std::string::npos) {
                readAs(value, key);
            }
        }
    }
    const std::string written = value.ToString();
    require(!seen || !written.empty(), "what is an object to a strict reader is one", json);
    require(depthOf(written) <= DEEPEST_LEVEL, "no deep nesting is taken", json);
    if (!written.empty()) {
        value.Set("Product", std::string("\xff\x1f"));
        std::string product;
        require(value.Get("Product", product) && product == "\xef\xbf\xbd\xef\xbf\xbd",
                "a text that is set is valid", product);
        value.Remove("Product");
        require(!value.Get("Product", product), "a removed member is gone");
    }
    value.Destroy(false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string json = fuzz::cText(data, size);
    const auto seen = fuzz::strictObject(json);

    CMMDeviceInfo device;
    const int action = decode(json, device);
    if (seen) {
        requireDecoding(*seen, device);
    }
    const std::string once = encode(device, action);
    requireEncoding(once, device);

    CMMDeviceInfo again;
    require(decode(once, again) == action, "the action comes back", once);
    require(encode(again, action) == once, "a device comes back from its JSON", once);

    readMembers(json, seen);
    return 0;
}
