// Plugging, mounting and pulling, and the events that come of it. What the daemon does with handles
// and lists is answered in PortsContract.cpp.
#include "Ports.h"

#include <cstdio>
#include <cstdlib>

#include "SimulatedTv.h"
#include "UsbHandles.h"

namespace simulated {

Ports::Ports(SimulatedTv& tv) : tv_(tv) {}

Ports::~Ports() = default;

// ---- as a person does it

DeviceId Ports::plug(const std::string& folder, const UsbDevice& like) {
    return plugDisk({folder}, like).front();
}

std::vector<DeviceId> Ports::plugDisk(const std::vector<std::string>& folders,
                                      const UsbDevice& like) {
    const std::string disk = nextDiskNode();
    std::vector<DeviceId> devices;
    for (std::size_t i = 0; i < folders.size(); ++i) {
        UsbDevice partition = like;
        if (i > 0) {
            // One disk, but each partition has a node and a number of its own.
            partition.address = device(devices.front()).address;
            partition.number = 0;
            partition.devname.reset();
            partition.devpath.reset();
        }
        partition.mountpath.reset();
        devices.push_back(insertAs(std::move(partition), disk, static_cast<int>(i) + 1));
        announce(devices.back(), USB_ACTION_ADDED);
    }
    for (std::size_t i = 0; i < folders.size(); ++i) {
        mountLater(devices[i], folders[i]);
    }
    return devices;
}

DeviceId Ports::plugCamera(UsbDevice like) {
    like.usbClass = USB_CLASS_STILL_IMAGE;
    // What was left as a stick has it becomes as a camera has it.
    const UsbDevice stick;
    const auto replace = [&](int UsbDevice::*member, int number) {
        if (like.*member == stick.*member) {
            like.*member = number;
        }
    };
    replace(&UsbDevice::subClass, 1);
    replace(&UsbDevice::protocol, 1);
    replace(&UsbDevice::fileSystem, USB_FILESYSTEM_UNKNOWN);
    replace(&UsbDevice::disk, USB_DISK_UNKNOWN);
    const DeviceId camera = insert(std::move(like));
    announce(camera, USB_ACTION_ADDED);
    return camera;
}

void Ports::pull(DeviceId device) {
    vanish(device);
    announce(device, USB_ACTION_REMOVED);
}

// ---- step by step

DeviceId Ports::insert(UsbDevice device) {
    const std::string disk =
        device.usbClass == USB_CLASS_MASS_STORAGE ? nextDiskNode() : std::string();
    return insertAs(std::move(device), disk, 1);
}

DeviceId Ports::insertAs(UsbDevice device, const std::string& disk, int partition) {
    const DeviceId id = nextId_++;
    if (!device.devname && !disk.empty()) {
        device.devname = disk + std::to_string(partition);
    }
    device.address = device.address != 0 ? device.address : id;
    device.number = device.number != 0 ? device.number : id;
    if (!device.devpath) {
        device.devpath = "/devices/usb" + std::to_string(device.bus) + "/" +
                         std::to_string(device.bus) + "-" + std::to_string(device.address) + "/" +
                         std::to_string(partition);
    }
    slots_.push_back({id, std::move(device), true});
    return id;
}

void Ports::vanish(DeviceId device) {
    slot(device).present = false;
}

void Ports::comeBack(DeviceId device) {
    slot(device).present = true;
}

void Ports::setMounted(DeviceId device, const std::string& folder) {
    slot(device).device.mountpath = folder;
}

void Ports::mount(DeviceId device, const std::string& folder) {
    setMounted(device, folder);
    announce(device, USB_ACTION_MOUNTED);
}

/// Mounting takes a moment: "added" arrives before it. A device that is pulled first never mounts.
void Ports::mountLater(DeviceId device, const std::string& folder) {
    if (!listening()) {
        setMounted(device, folder);
        return;
    }
    tv_.post([this, device, folder] {
        if (slot(device).present) {
            setMounted(device, folder);
            deliver(slot(device).device, USB_ACTION_MOUNTED);
        }
    });
}

void Ports::announce(DeviceId device, const std::string& action) {
    post(slot(device).device, action);
}

void Ports::announceNullAction(DeviceId device) {
    post(slot(device).device, std::nullopt);
}

void Ports::announceNullDevice(const std::string& action) {
    post(std::nullopt, action);
}

UsbDevice& Ports::device(DeviceId device) {
    return slot(device).device;
}

std::vector<DeviceId> Ports::present() const {
    std::vector<DeviceId> devices;
    for (const Slot& slot : slots_) {
        if (slot.present) {
            devices.push_back(slot.id);
        }
    }
    return devices;
}

Ports::Slot& Ports::slot(DeviceId device) {
    // Devices are numbered from 1 in the order of plugging and never forgotten.
    if (device < 1 || device >= nextId_) {
        (void)std::fprintf(stderr, "simulated TV: no device %d was ever plugged in\n", device);
        std::abort();
    }
    return slots_[static_cast<std::size_t>(device) - 1];
}

std::string Ports::nextDiskNode() {
    // sda ... sdz, sdaa ... as the kernel names them
    std::string letters;
    for (int rest = ++nextDisk_; rest > 0; rest = (rest - 1) / 26) {
        letters.insert(letters.begin(), static_cast<char>('a' + (rest - 1) % 26));
    }
    return "/dev/sd" + letters;
}

// ---- events

void Ports::post(std::optional<UsbDevice> device, std::optional<std::string> action) {
    if (listening()) {
        tv_.post([this, device = std::move(device), action = std::move(action)] {
            deliver(device, action);
        });
    }
}

void Ports::deliver(const std::optional<UsbDevice>& device,
                    const std::optional<std::string>& action) {
    if (!listening()) {
        return;
    }
    usb_device_s* handle = device ? giveOut(*device) : nullptr;
    std::string text = action.value_or("");
    callback_(handle, action ? text.data() : nullptr, userData_);
    if (handle == nullptr || !isGivenOut(handle)) {
        return;
    }
    if (action) {
        tv_.journal().breach("event \"" + *action + "\": the handle of " + nameOf(handle) +
                             " was not freed");
    }
    retire(handle);
}

}  // namespace simulated
