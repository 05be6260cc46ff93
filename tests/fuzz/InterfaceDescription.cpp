// The interface description beside the daemon: the input is the whole file. The bus service loads it, puts
// its object on the bus when it names one, and ends.
#include <string>

#include "Harness.h"
#include "Television.h"

namespace {

using fuzz::require;

struct Unref {
    void operator()(GDBusNodeInfo* node) const { g_dbus_node_info_unref(node); }
};
using Description = std::unique_ptr<GDBusNodeInfo, Unref>;

Description parsed(const std::string& xml) {
    return Description(g_dbus_node_info_new_for_xml(xml.c_str(), nullptr));
}

bool namesAnObject(const GDBusNodeInfo& node) {
    return node.path != nullptr && g_variant_is_object_path(node.path) != FALSE &&
           node.interfaces != nullptr && *node.interfaces != nullptr &&
           g_dbus_is_interface_name((*node.interfaces)->name) != FALSE;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string xml = fuzz::wholeText(data, size);
    const Description node = parsed(xml.substr(0, xml.find('\0')));
    fuzz::Television television;
    require(television.serve(xml) == (node != nullptr),
            "there is a service exactly where there is a description", xml);
    require(television.bus.hasObject() == (node != nullptr && namesAnObject(*node)),
            "there is an object exactly where one can be named", xml);
    return 0;
}
