// What the daemon offers on the bus: reading the description, and turning arguments into what travels.
#include "BusInterface.h"

#include <algorithm>
#include <stdexcept>

#include "Order.h"
#include "Text.h"

namespace workbench {

namespace {

using OwnedText = std::unique_ptr<char, decltype(&g_free)>;
using OwnedError = std::unique_ptr<GError, decltype(&g_error_free)>;

std::string typeOf(const GDBusMethodInfo& method) {
    std::string type = "(";
    for (GDBusArgInfo** argument = method.in_args; argument != nullptr && *argument != nullptr;
         ++argument) {
        type += (*argument)->signature;
    }
    return type + ")";
}

/// One word as the type of an argument wants it.
Json valueOf(const std::string& word, const std::string& type) {
    if (type == "i") {
        const std::optional<int> number = wholeNumber(word);
        if (!number) {
            throw OrderError("\"" + printable(word) + "\" is no number of 32 bits");
        }
        return *number;
    }
    if (type == "b") {
        if (word != "yes" && word != "no") {
            throw OrderError("\"" + printable(word) + "\" is neither yes nor no");
        }
        return word == "yes";
    }
    return word;
}

}  // namespace

Json jsonOf(GVariant* value) {
    return value == nullptr ? Json::array() : Json(json_gvariant_serialize(value));
}

BusInterface::BusInterface(const std::string& file) {
    char* text = nullptr;
    GError* error = nullptr;
    g_file_get_contents(file.c_str(), &text, nullptr, &error);
    const OwnedText ownedText(text, g_free);
    if (error == nullptr) {
        node_.reset(g_dbus_node_info_new_for_xml(text, &error));
    }
    if (error != nullptr) {
        const OwnedError ownedError(error, g_error_free);
        throw std::runtime_error(std::string("no interface description: ") + error->message);
    }
}

const GDBusMethodInfo* BusInterface::find(const std::string& member) const {
    GDBusInterfaceInfo* const interface =
        g_dbus_node_info_lookup_interface(node_.get(), daemonInterface);
    return interface == nullptr ? nullptr
                                : g_dbus_interface_info_lookup_method(interface, member.c_str());
}

const GDBusMethodInfo& BusInterface::known(const std::string& member) const {
    const GDBusMethodInfo* const method = find(member);
    if (method == nullptr) {
        throw OrderError("the daemon has no method \"" + printable(member) + "\"");
    }
    return *method;
}

bool BusInterface::isAnswered(const std::string& member) {
    return member != "GetDeviceInfo" && member != "LaunchPopup" && member != "SwitchToContent";
}

std::string BusInterface::signatureOf(const std::string& member) const {
    return typeOf(known(member));
}

Variant BusInterface::arguments(const std::string& member, const Json& array) const {
    const std::string type = typeOf(known(member));
    const std::size_t wanted = g_variant_type_n_items(G_VARIANT_TYPE(type.c_str()));
    if (array.size() != wanted) {
        throw OrderError(member + " takes " + std::to_string(wanted) + " arguments");
    }
    if (wanted == 0) {
        return Variant(g_variant_ref_sink(g_variant_new("()")));
    }
    const std::string are = "the arguments of " + member + " are " + type + ": ";
    // What is out of range would be cut down in silence, and a text be taken for the number in it.
    for (std::size_t i = 0; i < wanted; ++i) {
        const Json value = array.at(i);
        if (type[i + 1] == 'i' &&
            !(value.isNumber() && wholeNumber(std::to_string(value.number())))) {
            throw OrderError(are + printable(value.written()) + " is no number of 32 bits");
        }
    }
    GError* error = nullptr;
    GVariant* const variant = json_gvariant_deserialize(array.node(), type.c_str(), &error);
    if (variant == nullptr) {
        const OwnedError owned(error, g_error_free);
        throw OrderError(are + error->message);
    }
    return Variant(g_variant_ref_sink(variant));
}

Json BusInterface::argumentsFromWords(const std::string& member,
                                      const std::vector<std::string>& words) const {
    const GDBusMethodInfo& method = known(member);
    Json array = Json::array();
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (method.in_args == nullptr || method.in_args[i] == nullptr) {
            throw OrderError(member + " takes " + std::to_string(i) + " arguments");
        }
        array.add(valueOf(words[i], method.in_args[i]->signature));
    }
    return array;
}

std::string BusInterface::commandLine(const std::string& address,
                                      const std::string& member,
                                      const Json& array) const {
    const Variant values = arguments(member, array);
    const auto quoted = [](const char* text) {
        const OwnedText shell(g_shell_quote(text), g_free);
        return std::string(shell.get());
    };
    std::string line = "gdbus call --address " + quoted(address.c_str()) + " --dest " +
                       daemonBusName + " --object-path " + daemonObject + " --method " +
                       daemonInterface + "." + member;
    if (!isAnswered(member)) {
        line += " --timeout 1";
    }
    line += g_variant_n_children(values.get()) > 0 ? " --" : "";
    for (gsize i = 0; i < g_variant_n_children(values.get()); ++i) {
        const Variant value(g_variant_get_child_value(values.get(), i));
        const OwnedText text(g_variant_print(value.get(), FALSE), g_free);
        const bool plain = g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING) == FALSE;
        line += " " + (plain ? std::string(text.get()) : quoted(text.get()));
    }
    return line;
}

}  // namespace workbench
