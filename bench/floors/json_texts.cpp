// What a JSON text of 19 members costs with json-glib's object and generator, in instructions counted by
// callgrind: json-texts COUNT. The members are those of a device as clients get it.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <json-glib/json-glib.h>

#include "../programs/Counting.h"

namespace {

struct Member {
    const char* name;
    const char* text;  ///< null for a number
};

constexpr Member MEMBERS[] = {
    {"Action", nullptr},
    {"Class", nullptr},
    {"SubClass", nullptr},
    {"Protocol", nullptr},
    {"VendorId", nullptr},
    {"Bus", nullptr},
    {"Address", nullptr},
    {"Number", nullptr},
    {"TotalSize", nullptr},
    {"UsedSize", nullptr},
    {"Manufacturer", "Norvane"},
    {"Product", "Flash Disk 1"},
    {"DeviceName", "/dev/sd1"},
    {"DevicePath", "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-1"},
    {"Mountpath", "/media/stick1"},
    {"FileSystem", nullptr},
    {"Serial", "04018bd3f34f4b851"},
    {"DisplayName", "Flash Disk 1"},
    {"DeviceKey", "/dev/sd1"},
};

/// The text of a new object; its length.
std::size_t makeText() {
    JsonObject* object = json_object_new();
    int number = 0;
    for (const Member& member : MEMBERS) {
        if (member.text != nullptr) {
            json_object_set_string_member(object, member.name, member.text);
        } else {
            json_object_set_int_member(object, member.name, number++);
        }
    }
    g_autoptr(JsonGenerator) generator = json_generator_new();
    g_autoptr(JsonNode) root = json_node_new(JSON_NODE_OBJECT);
    json_node_take_object(root, object);
    json_generator_set_root(generator, root);
    g_autofree char* text = json_generator_to_data(generator, nullptr);
    return std::strlen(text);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const int count = std::atoi(argv[1]);
    std::size_t length = makeText();  // the first text pays for what a process needs only once
    startCounting();
    for (int i = 0; i < count; ++i) {
        length = makeText();
    }
    stopCounting();
    (void)std::printf("%zu\n", length);
    return 0;
}
