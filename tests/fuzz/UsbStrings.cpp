// The texts that a device brings, through the whole daemon: a stick, or a camera, and a second one of the
// same product come, are asked for, browsed and pulled. The input is one byte of switches and then, ended by
// NULs: manufacturer, product, serial number, label as udev writes it, what the mount folder is called,
// and the device's path.
#include <algorithm>

#include "Harness.h"
#include "StrictJson.h"
#include "Television.h"
#include "UdevText.h"

namespace {

using fuzz::JsonMembers;
using fuzz::require;
using simulated::UsbDevice;

constexpr int CLIENT = 7;
constexpr const char* SENDER = ":1.42";

// The switches of the first byte.
constexpr unsigned IS_CAMERA = 1;
constexpr unsigned EMPTY_IS_NULL = 2;
constexpr unsigned COMPANION_RUNS = 4;

UsbDevice deviceOf(const std::vector<std::string>& texts, unsigned switches) {
    const auto text = [&](std::size_t index) -> std::optional<std::string> {
        std::string found = index < texts.size() ? texts[index] : "";
        if (found.empty() && (switches & EMPTY_IS_NULL) != 0) {
            return std::nullopt;
        }
        return found;
    };
    UsbDevice device;
    device.usbClass = (switches & IS_CAMERA) != 0 ? USB_CLASS_STILL_IMAGE : USB_CLASS_MASS_STORAGE;
    device.manufacturer = text(0);
    device.product = text(1);
    device.serial = text(2);
    device.partlabel = machine::decodeUdev(text(3).value_or(""));
    // The scan is told to fail: whatever folder this names is not walked.
    device.mountpath = "/media/" + text(4).value_or("");
    device.devpath = text(5).value_or("");
    return device;
}

/// As a JSON text of the daemon holds it.
std::string written(const std::optional<std::string>& text) {
    std::string result = fuzz::validText(text.value_or(""));
    for (std::size_t at = 0; (at = result.find('\x1f', at)) != std::string::npos;) {
        result.replace(at, 1, "\xef\xbf\xbd");
    }
    return result;
}

/// A bus would take the signal: it survives the way into bytes and back.
void requireMessage(const FakeBus::Signal& signal) {
    g_autoptr(GDBusMessage) message = g_dbus_message_new_signal(
        signal.path.c_str(), signal.interface.c_str(), signal.name.c_str());
    g_dbus_message_set_destination(message, signal.destination.c_str());
    g_dbus_message_set_body(message, g_variant_new("(s)", signal.json.c_str()));
    gsize size = 0;
    g_autofree guchar* bytes =
        g_dbus_message_to_blob(message, &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr);
    require(bytes != nullptr, "a signal can be sent", signal.json);
    g_autoptr(GDBusMessage) received =
        g_dbus_message_new_from_blob(bytes, size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr);
    require(received != nullptr, "a signal can be received", signal.json);
    require(signal.json == g_dbus_message_get_arg0(received), "a signal arrives as it was sent",
            signal.json);
}

void requireSignal(const FakeBus::Signal& signal, const UsbDevice& device) {
    require(signal.destination == SENDER, "signals go to the client", signal.destination);
    requireMessage(signal);
    const JsonMembers members = fuzz::requireObject(signal.json, "a signal's JSON");
    require(members.size() == 19, "a signal tells 19 members", signal.json);
    const std::string product = written(device.product);
    require(requireJsonText(members, "/Manufacturer") == written(device.manufacturer),
            "the manufacturer arrives", signal.json);
    require(requireJsonText(members, "/Product") == product, "the product arrives", signal.json);
    require(requireJsonText(members, "/Serial") == written(device.serial),
            "the serial number arrives", signal.json);
    require(requireJsonText(members, "/Mountpath") == written(device.mountpath),
            "the mount path arrives", signal.json);
    require(requireJsonText(members, "/DevicePath") == written(device.devpath),
            "the device's path arrives", signal.json);
    const std::string name = requireJsonText(members, "/DisplayName");
    require(name == product || name == product + "(2&#x202d;)",
            "the name shown is the product's, numbered at most", name);
}

/// A decoder undoes what udev's encoder does, whatever the bytes.
void requireDecoding(const std::string& text) {
    std::string encoded;
    for (const char byte : text) {
        g_autofree char* escape = g_strdup_printf("\\x%02x", static_cast<unsigned char>(byte));
        encoded += escape;
    }
    require(machine::decodeUdev(encoded) == text, "an encoded text comes back", encoded);
    require(machine::decodeUdev(text).size() <= text.size(), "decoding never lengthens", text);
}

void attach(simulated::SimulatedTv& tv, simulated::DeviceId id, bool camera) {
    tv.ports().announce(id, USB_ACTION_ADDED);
    if (!camera) {
        tv.ports().announce(id, USB_ACTION_MOUNTED);
    }
    tv.settle();
}

void run(const UsbDevice& device, bool companion) {
    fuzz::Television television;
    simulated::SimulatedTv& tv = television.tv;
    const bool camera = device.usbClass == USB_CLASS_STILL_IMAGE;
    tv.journal().order("csf_check_device_v2", simulated::Fault::Fails);
    require(television.serve(fuzz::installedDescription()), "the bus service starts");
    television.bus.call(SENDER, "Connect", g_variant_new("(si)", "fuzz", CLIENT));

    const simulated::DeviceId first = tv.ports().insert(device);
    attach(tv, first, camera);
    require(tv.screen().history().size() == 1, "a device brings a pop-up");
    tv.screen().press(0);
    tv.settle();
    tv.applications().setRunning("org.norvane.lumet", companion);
    const simulated::DeviceId second = tv.ports().insert(device);
    attach(tv, second, camera);

    television.bus.call(SENDER, "RequesAll", g_variant_new("(i)", CLIENT));
    television.bus.call(SENDER, "GetDeviceListByFsType", g_variant_new("(ii)", CLIENT, -1));
    tv.ports().pull(first);
    tv.settle();
    tv.ports().pull(second);
    tv.settle();

    // A camera is known by its serial number: the second one is the first.
    const std::size_t listed = camera ? 1 : 2;
    const std::vector<FakeBus::Signal> signals = television.bus.takeSignals();
    require(signals.size() == 3 * listed, "each device is told of twice, and of its removal",
            std::to_string(signals.size()));
    for (const FakeBus::Signal& signal : signals) {
        requireSignal(signal, device);
    }
    for (const simulated::Popup& popup : tv.screen().history()) {
        fuzz::requireShowable(popup);
    }
    require(!tv.applications().launches().empty(), "Browse launches an application");
    for (const simulated::Launch& launch : tv.applications().launches()) {
        fuzz::requireValidLaunch(launch);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const unsigned switches = data[0];
    const std::vector<std::string> texts = fuzz::texts(data + 1, size - 1);
    std::for_each(texts.begin(), texts.end(), requireDecoding);
    run(deviceOf(texts, switches), (switches & COMPANION_RUNS) != 0);
    return 0;
}
