// The D-Bus interface org.freedesktop.UDisks2.Filesystem on the system bus.
#include "Mounter.h"

#include <platform/settings.h>

#include "Journal.h"

namespace machine {

namespace {

constexpr const char* AUTOMOUNT_KEY = "db/portmeld/automount";
constexpr const char* UDISKS = "org.freedesktop.UDisks2";

/// A large file system may be checked before it is mounted.
constexpr int ANSWER_MILLISECONDS = 120'000;

/// UDisks2 looks at a new device itself before it knows it, and after its own start at all of them.
constexpr unsigned MOST_ATTEMPTS = 5;
constexpr unsigned NEXT_ATTEMPT_MILLISECONDS = 1'000;

bool isOn() {
    int on = 1;
    return vconf_get_bool(AUTOMOUNT_KEY, &on) != 0 || on != 0;
}

}  // namespace

/// A mount that is asked for; owned by whatever is under way.
struct Mounter::Request {
    std::weak_ptr<Mounter*> mounter;
    UsbDevice device;
    unsigned attempts = 0;
    bool lostOnce = false;  ///< UDisks2 ended instead of answering
    std::string errorName;  ///< of the last failure
    std::string errorText;

    /// Whether anybody is still interested.
    bool isWanted() const {
        const std::shared_ptr<Mounter*> alive = mounter.lock();
        return alive != nullptr && (*alive)->isWanted_(*device.devname);
    }
};

Mounter::Mounter(std::function<bool(const std::string& devname)> isWanted)
    : isWanted_(std::move(isWanted)) {}

Mounter::~Mounter() = default;

void Mounter::mount(const UsbDevice& device) {
    if (device.mountable && device.devname && isOn()) {
        ask(std::make_unique<Request>(Request{self_, device, 0, false, {}, {}}));
    }
}

void Mounter::ask(RequestPointer request) {
    // Never cancelled: the connection is the whole process's, and others wait for it too.
    g_bus_get(G_BUS_TYPE_SYSTEM, nullptr, connected, request.release());
}

void Mounter::connected(GObject*, GAsyncResult* result, void* data) {
    RequestPointer request(static_cast<Request*>(data));
    g_autoptr(GError) error = nullptr;
    g_autoptr(GDBusConnection) bus = g_bus_get_finish(result, &error);
    if (bus == nullptr || !request->isWanted()) {
        return;
    }
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "auth.no_user_interaction",
                          g_variant_new_boolean(TRUE));
    const std::string object = udisksObject(*request->device.devname);
    ++request->attempts;
    g_dbus_connection_call(bus, UDISKS, object.c_str(), "org.freedesktop.UDisks2.Filesystem",
                           "Mount", g_variant_new("(a{sv})", &options), G_VARIANT_TYPE("(s)"),
                           G_DBUS_CALL_FLAGS_NONE, ANSWER_MILLISECONDS, nullptr, answered,
                           request.release());
}

void Mounter::answered(GObject* source, GAsyncResult* result, void* data) {
    RequestPointer request(static_cast<Request*>(data));
    g_autoptr(GError) error = nullptr;
    g_autoptr(GVariant) reply =
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
    if (reply != nullptr) {
        return;
    }
    g_autofree char* remote = g_dbus_error_get_remote_error(error);
    const std::string name = remote != nullptr ? remote : "";
    const bool nobodyThere = g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
                             g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER);
    if ((nobodyThere && !request->lostOnce) ||
        name == "org.freedesktop.UDisks2.Error.AlreadyMounted" || !request->isWanted()) {
        return;
    }
    const bool notKnownYet = g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_OBJECT) ||
                             g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_INTERFACE) ||
                             g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD);
    g_dbus_error_strip_remote_error(error);
    if (!nobodyThere) {
        request->errorName = name;
        request->errorText = error->message;
    }
    // One that ended may have been started anew. What it does not outlive twice is asked no more.
    const bool lost = g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY);
    const bool mayComeYet = notKnownYet || nobodyThere || (lost && !request->lostOnce);
    const bool again = mayComeYet && request->attempts < MOST_ATTEMPTS;
    request->lostOnce = request->lostOnce || lost;
    // The failure may be the pull itself, of which udev has yet to tell.
    later(std::move(request), again ? askedAgain : complained);
}

void Mounter::later(RequestPointer request, GSourceFunc then) {
    GSource* const source = g_timeout_source_new(NEXT_ATTEMPT_MILLISECONDS);
    g_source_set_callback(source, then, request.release(), nullptr);
    g_source_attach(source, nullptr);
    g_source_unref(source);
}

int Mounter::complained(void* data) {
    const RequestPointer request(static_cast<Request*>(data));
    if (request->isWanted()) {
        const UsbDevice& device = request->device;
        report(Priority::Warning, mountFailure(device, request->errorName, request->errorText),
               {{"PORTMELD_DEVICE", *device.devname},
                {"PORTMELD_FILE_SYSTEM", device.fileSystemName},
                {"PORTMELD_ERROR", request->errorName},
                {"PORTMELD_ERROR_TEXT", request->errorText}});
    }
    return G_SOURCE_REMOVE;
}

int Mounter::askedAgain(void* data) {
    ask(RequestPointer(static_cast<Request*>(data)));
    return G_SOURCE_REMOVE;
}

std::string udisksObject(const std::string& devname) {
    std::string object = "/org/freedesktop/UDisks2/block_devices/";
    for (const char character : devname.substr(devname.find_last_of('/') + 1)) {
        if (g_ascii_isalnum(character)) {
            object += character;
        } else {
            g_autofree char* escaped =
                g_strdup_printf("_%02x", static_cast<unsigned char>(character));
            object += escaped;
        }
    }
    return object;
}

}  // namespace machine
