// What the daemon offers on the bus, as its interface description says: methods, their arguments, and how
// to write a call of one for the bus and for a terminal.
#pragma once

#include <memory>
#include <string>

#include <gio/gio.h>

#include "Json.h"

namespace workbench {

constexpr const char* daemonBusName = "com.norvane.portmeld";
constexpr const char* daemonObject = "/com/norvane/portmeld";
constexpr const char* daemonInterface = "com.norvane.portmeld";

struct VariantDeleter {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, VariantDeleter>;

/// A value of the bus as JSON; null for null. What JSON cannot hold is told as text.
Json jsonOf(GVariant* value);

class BusInterface {
public:
    /// Reads a description. Throws std::runtime_error.
    explicit BusInterface(const std::string& file);

    /// Whether there is such a method, and whether it answers.
    bool has(const std::string& member) const { return find(member) != nullptr; }
    static bool isAnswered(const std::string& member);

    /// The type of a method's arguments, such as "(si)".
    std::string signatureOf(const std::string& member) const;

    /// Arguments of a call from a JSON array. Throws OrderError when they do not fit.
    Variant arguments(const std::string& member, const Json& array) const;

    /// A JSON array from words, each read as the method's argument. Throws OrderError.
    Json argumentsFromWords(const std::string& member, const std::vector<std::string>& words) const;

    /// The call as a command for a terminal. Throws OrderError.
    std::string commandLine(const std::string& address,
                            const std::string& member,
                            const Json& array) const;

private:
    struct NodeDeleter {
        void operator()(GDBusNodeInfo* node) const { g_dbus_node_info_unref(node); }
    };
    const GDBusMethodInfo* find(const std::string& member) const;
    const GDBusMethodInfo& known(const std::string& member) const;
    std::unique_ptr<GDBusNodeInfo, NodeDeleter> node_;
};

}  // namespace workbench
