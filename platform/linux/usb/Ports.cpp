// What happens at the ports, told in the order of the rules.
#include "Ports.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "Journal.h"
#include "UsbIdentity.h"

namespace machine {

namespace {

// A look at every device of the machine takes longer than all else at the start, and whoever waits for the
// daemon waits for its name on the bus.
constexpr unsigned LOOK_AROUND_MILLISECONDS = 100;
constexpr unsigned TABLE_READ_AGAIN_MILLISECONDS = 1'000;
constexpr unsigned WAKE_UP_MILLISECONDS = 5'000;
constexpr unsigned OTHERS_MOUNT_FIRST_MILLISECONDS = 2'000;

/// Where devices for viewers are found.
constexpr const char* SUBSYSTEMS[] = {"block", "usb"};

std::string subsystemOf(GUdevDevice* device) {
    const char* name = g_udev_device_get_subsystem(device);
    return name != nullptr ? name : "";
}

std::optional<UsbDevice> identify(GUdevDevice* device) {
    return subsystemOf(device) == "block" ? massStorage(device) : camera(device);
}

/// The folder in sysfs above a partition's: its disk's.
std::string above(const std::string& path) {
    return path.substr(0, path.find_last_of('/'));
}

/// Whether a disk is still there, with a medium in it: an empty slot has no size.
bool holdsMedium(const std::string& disk) {
    g_autofree char* size = nullptr;
    return g_file_get_contents((disk + "/size").c_str(), &size, nullptr, nullptr) != FALSE &&
           g_ascii_strtoull(size, nullptr, 10) > 0;
}

bool isBelow(const std::string& path, const std::string& folder) {
    return path.compare(0, folder.size() + 1, folder + "/") == 0;
}

}  // namespace

Ports::Ports()
    : mounts_([this] { mountsChanged(); }),
      mounter_([this](const std::string& devname) { return wantsMount(devname); }),
      start_(g_timeout_source_new(LOOK_AROUND_MILLISECONDS)) {
    g_source_set_callback(start_, lookAroundDue, this, nullptr);
    g_source_attach(start_, nullptr);
}

Ports::~Ports() {
    g_source_destroy(start_);
    g_source_unref(start_);
    if (client_ != nullptr) {
        g_signal_handler_disconnect(client_, handler_);
        g_object_unref(client_);
    }
    for (const auto& port : ports_) {
        stopWaiting(*port);
    }
}

void Ports::setListener(Listener listener) {
    if (listener) {
        lookAround();
    }
    listener_ = std::move(listener);
}

std::vector<UsbDevice> Ports::devices(int usbClass) {
    lookAround();
    std::vector<UsbDevice> found;
    for (const auto& port : ports_) {
        if (port->device.usbClass == usbClass) {
            found.push_back(port->device);
        }
    }
    return found;
}

void Ports::sleep(bool sleeps) {
    asleep_ = sleeps;
    if (sleeps) {
        return;
    }
    settledAt_ = g_get_monotonic_time() + gint64{WAKE_UP_MILLISECONDS} * 1000;
    for (const auto& port : ports_) {
        if (port->leaving) {
            holdBack(*port);
        }
    }
}

/// Listen, and find what is there already; only the first time.
void Ports::lookAround() {
    if (client_ != nullptr) {
        return;
    }
    g_source_destroy(start_);
    // Listening begins first: what comes in between is seen twice, not never.
    static constexpr const char* HEARD[] = {"block", "usb/usb_interface", nullptr};
    lostEvents_.emplace([this] { lookAgain(); });
    client_ = g_udev_client_new(HEARD);
    handler_ = g_signal_connect(client_, "uevent", G_CALLBACK(happened), this);
    for (const char* subsystem : SUBSYSTEMS) {
        enumerate(subsystem);
    }
}

int Ports::lookAroundDue(void* self) {
    static_cast<Ports*>(self)->lookAround();
    return G_SOURCE_REMOVE;
}

void Ports::enumerate(const char* subsystem) {
    GList* const found = g_udev_client_query_by_subsystem(client_, subsystem);
    for (GList* item = found; item != nullptr; item = item->next) {
        GUdevDevice* const device = G_UDEV_DEVICE(item->data);
        auto identity = identify(device);
        // A camera may have two interfaces of the kind.
        if (identity && findNamesake(*identity) == nullptr) {
            add(g_udev_device_get_sysfs_path(device), std::move(*identity), false);
        }
    }
    g_list_free_full(found, g_object_unref);
}

void Ports::happened(GUdevClient*, char* action, GUdevDevice* device, void* self) {
    auto& ports = *static_cast<Ports*>(self);
    const std::string what = action;
    if (what == "remove") {
        ports.gone(g_udev_device_get_sysfs_path(device));
    } else if (what == "add" || what == "change") {
        ports.seen(g_udev_device_get_sysfs_path(device), identify(device),
                   g_strcmp0(g_udev_device_get_property(device, "DISK_MEDIA_CHANGE"), "1") == 0);
    }
}

/// A device as udev knows it now; nothing when it is none for viewers.
void Ports::seen(const std::string& path, std::optional<UsbDevice> device, bool mediumChanged) {
    Port* const known = find(path);
    const bool isReadable = device && !device->fileSystemName.empty();
    if (known != nullptr && known->device.mountpath && !isReadable && holdsMedium(diskOf(*known))) {
        return;  // udev could not read what is in use: it stays what it was
    }
    if (!device) {
        if (known != nullptr) {
            remove(*known);  // a card was taken out, a disk was partitioned
        }
        return;
    }
    if (known != nullptr &&
        (sameDevice(known->device, *device) || (known->device.mountpath && !mediumChanged))) {
        refresh(*known, path, std::move(*device));
        return;
    }
    if (known != nullptr) {
        remove(*known);
    } else if (Port* const namesake = findNamesake(*device)) {
        if (sameDevice(namesake->device, *device)) {
            refresh(*namesake, path, std::move(*device));
            return;
        }
        remove(*namesake);  // the name has been given to something else
    }
    add(path, std::move(*device), listener_ != nullptr);
}

/// A device has left the system.
void Ports::gone(const std::string& path) {
    const bool settling = asleep_ || g_get_monotonic_time() < settledAt_;
    if (!settling) {
        // With the disk go the partitions that might have come back.
        for (std::size_t i = 0; i < ports_.size();) {
            if (ports_[i]->leaving && isBelow(ports_[i]->path, path)) {
                remove(*ports_[i]);
                i = 0;  // whoever was told may have changed much
            } else {
                ++i;
            }
        }
    }
    Port* const port = find(path);
    if (port == nullptr) {
        return;
    }
    if (settling || (port->device.number > 0 && holdsMedium(diskOf(*port)))) {
        port->leaving = true;
        holdBack(*port);
    } else {
        remove(*port);
    }
}

void Ports::lookAgain() {
    report(Priority::Notice, "events of udev were lost; the devices are looked for anew", {});
    std::vector<std::string> missing;
    for (const auto& port : ports_) {
        if (!port->leaving && access(port->path.c_str(), F_OK) != 0) {
            missing.push_back(port->path);
        }
    }
    for (const std::string& path : missing) {
        gone(path);
    }
    for (const char* subsystem : SUBSYSTEMS) {
        GList* const found = g_udev_client_query_by_subsystem(client_, subsystem);
        for (GList* item = found; item != nullptr; item = item->next) {
            GUdevDevice* const device = G_UDEV_DEVICE(item->data);
            constexpr bool MAY_BE_ANOTHER = true;
            seen(g_udev_device_get_sysfs_path(device), identify(device), MAY_BE_ANOTHER);
        }
        g_list_free_full(found, g_object_unref);
    }
}

/// Tell of a removal later, unless the device comes back. A sleeping machine waits for its wake-up.
void Ports::holdBack(Port& port) {
    if (asleep_) {
        stopWaiting(port);
        return;
    }
    const gint64 rest = (settledAt_ - g_get_monotonic_time()) / 1000;
    wait(port,
         std::max(static_cast<unsigned>(std::max<gint64>(rest, 0)), TABLE_READ_AGAIN_MILLISECONDS),
         staysAway);
}

void Ports::add(const std::string& path, UsbDevice device, bool told) {
    auto port = std::make_unique<Port>();
    port->device = std::move(device);
    port->path = path;
    port->told = told;
    UsbDevice& added = port->device;
    std::optional<std::string> mountpath;
    if (added.usbClass == USB_CLASS_MASS_STORAGE) {
        mountpath = mountPointOf(mounts_.table(), *added.devname, added.deviceNumber);
        if (!mountpath) {
            port->mountDue = true;
            wait(*port, OTHERS_MOUNT_FIRST_MILLISECONDS, mountWanted);
        }
    }
    if (!told) {
        added.mountpath = std::move(mountpath);
        ports_.push_back(std::move(port));
        return;
    }
    const UsbDevice beforeItsMount = added;
    added.mountpath = std::move(mountpath);
    const UsbDevice now = added;
    ports_.push_back(std::move(port));
    tell(beforeItsMount, USB_ACTION_ADDED);
    if (now.mountpath) {
        tell(now, USB_ACTION_MOUNTED);
    }
}

void Ports::remove(const Port& port) {
    const auto place = std::find_if(ports_.begin(), ports_.end(),
                                    [&](const auto& each) { return each.get() == &port; });
    const std::unique_ptr<Port> removed = std::move(*place);
    ports_.erase(place);
    stopWaiting(*removed);
    tell(removed->device, USB_ACTION_REMOVED);
}

/// The same device, as it is now.
void Ports::refresh(Port& port, const std::string& path, UsbDevice device) {
    device.mountpath = port.device.mountpath;
    port.device = std::move(device);
    port.path = path;
    if (port.leaving) {
        port.leaving = false;
        stopWaiting(port);
        if (port.mountDue) {
            wait(port, OTHERS_MOUNT_FIRST_MILLISECONDS, mountWanted);
        }
        mountsChanged();
    }
}

void Ports::mountsChanged() {
    std::vector<UsbDevice> mounted;
    for (const auto& port : ports_) {
        UsbDevice& device = port->device;
        if (device.usbClass != USB_CLASS_MASS_STORAGE || port->leaving) {
            continue;
        }
        auto now = mountPointOf(mounts_.table(), *device.devname, device.deviceNumber);
        const bool news = now && !device.mountpath;
        port->mountDue = port->mountDue && !now;
        device.mountpath = std::move(now);
        if (news && port->told) {
            mounted.push_back(device);
        }
    }
    for (const UsbDevice& device : mounted) {
        tell(device, USB_ACTION_MOUNTED);
    }
}

void Ports::tell(const UsbDevice& device, const char* action) {
    if (listener_) {
        const Listener listener = listener_;  // it may be replaced meanwhile
        listener(device, action);
    }
}

// ---- waiting

/// Call `expired` for a port later, in place of what it waited for before.
void Ports::wait(Port& port, unsigned milliseconds, GSourceFunc expired) {
    stopWaiting(port);
    port.wait = g_timeout_source_new(milliseconds);
    g_source_set_callback(port.wait, expired, new std::pair<Ports*, Port*>(this, &port),
                          [](void* pair) { delete static_cast<std::pair<Ports*, Port*>*>(pair); });
    g_source_attach(port.wait, nullptr);
}

void Ports::stopWaiting(Port& port) {
    if (port.wait != nullptr) {
        g_source_destroy(port.wait);
        g_source_unref(std::exchange(port.wait, nullptr));
    }
}

int Ports::mountWanted(void* waiting) {
    const auto [ports, port] = *static_cast<std::pair<Ports*, Port*>*>(waiting);
    if (port->mountDue) {
        port->mountDue = false;
        ports->mounter_.mount(port->device);
    }
    return G_SOURCE_REMOVE;
}

int Ports::staysAway(void* waiting) {
    const auto [ports, port] = *static_cast<std::pair<Ports*, Port*>*>(waiting);
    ports->remove(*port);
    return G_SOURCE_REMOVE;
}

// ---- finding

Ports::Port* Ports::find(const std::string& path) {
    const auto found = std::find_if(ports_.begin(), ports_.end(), [&](const auto& port) {
        return port->path == path && !port->leaving;
    });
    return found != ports_.end() ? found->get() : nullptr;
}

/// The device that is, or was until a moment ago, where this one is: of the same node, or the camera at
/// the same port.
Ports::Port* Ports::findNamesake(const UsbDevice& device) {
    const auto found = std::find_if(ports_.begin(), ports_.end(), [&](const auto& port) {
        return port->device.usbClass == device.usbClass &&
               (device.usbClass == USB_CLASS_MASS_STORAGE ? port->device.devname == device.devname
                                                          : port->device.port == device.port);
    });
    return found != ports_.end() ? found->get() : nullptr;
}

bool Ports::wantsMount(const std::string& devname) const {
    return std::any_of(ports_.begin(), ports_.end(), [&](const auto& port) {
        return port->device.devname == devname && !port->leaving && !port->device.mountpath;
    });
}

std::string Ports::diskOf(const Port& port) {
    return port.device.number > 0 ? above(port.path) : port.path;
}

}  // namespace machine
