// The least program that shows a pop-up for a stick: libgudev, the mount table, and one call of the
// notification server. When udev tells of a partition on USB that the mount table names, it asks for the
// pop-up that the daemon shows for the same stick, and does nothing else: no list, no clients, no content
// scan, no settings, no log, nobody is told of what went.
#include <memory>
#include <string>

#include <fcntl.h>
#include <gio/gio.h>
#include <gudev/gudev.h>
#include <unistd.h>

namespace {

std::string mountTable() {
    std::string text;
    const int descriptor = open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    char bytes[16384];
    for (ssize_t count; (count = read(descriptor, bytes, sizeof bytes)) > 0;) {
        text.append(bytes, static_cast<std::size_t>(count));
    }
    close(descriptor);
    return text;
}

/// Whether a partition is mounted, by its number or its name.
bool isMounted(GUdevDevice* device) {
    const std::string table = mountTable();
    const std::string number = std::string(" ") + g_udev_device_get_property(device, "MAJOR") +
                               ":" + g_udev_device_get_property(device, "MINOR") + " ";
    const std::string source = std::string(" ") + g_udev_device_get_device_file(device) + " ";
    return table.find(number) != std::string::npos || table.find(source) != std::string::npos;
}

void happened(GUdevClient*, const char* action, GUdevDevice* device, gpointer bus) {
    if (g_strcmp0(action, "add") != 0 ||
        g_strcmp0(g_udev_device_get_devtype(device), "partition") != 0 ||
        g_strcmp0(g_udev_device_get_property(device, "ID_BUS"), "usb") != 0 || !isMounted(device)) {
        return;
    }
    g_autoptr(GUdevDevice) usb =
        g_udev_device_get_parent_with_subsystem(device, "usb", "usb_device");
    const char* const product =
        usb != nullptr ? g_udev_device_get_sysfs_attr(usb, "product") : nullptr;
    g_autofree char* title =
        g_strdup_printf("New device connected: %s", product != nullptr ? product : "?");
    const char* const actions[] = {"0", "Browse", "1", "Cancel", nullptr};
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&hints, "{sv}", "desktop-entry", g_variant_new_string("popup-floor"));
    g_dbus_connection_call(
        G_DBUS_CONNECTION(bus), "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
        "org.freedesktop.Notifications", "Notify",
        g_variant_new("(susss^asa{sv}i)", "popup-floor", 0U, "drive-removable-media-usb", title,
                      "Would you like to browse it?", actions, &hints, 30'000),
        nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

}  // namespace

int main() {
    g_autoptr(GError) error = nullptr;
    g_autoptr(GDBusConnection) bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (bus == nullptr) {
        g_printerr("no session bus: %s\n", error->message);
        return 1;
    }
    const char* const subsystems[] = {"block", nullptr};
    g_autoptr(GUdevClient) client = g_udev_client_new(subsystems);
    g_signal_connect(client, "uevent", G_CALLBACK(happened), bus);
    g_print("ready\n");
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
