// The TV's USB ports: what is plugged in, and the events that plugging, mounting and pulling cause.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <platform/usb.h>

namespace simulated {

class SimulatedTv;

/// Everything that the USB library can tell of a device. An unset text is null.
struct UsbDevice {
    int usbClass = USB_CLASS_MASS_STORAGE;
    int subClass = 6;
    int protocol = 80;
    int vendorId = 0x0781;
    int productId = 0x5567;
    int bus = 1;
    int address = 0;
    int number = 0;
    int fileSystem = USB_FILESYSTEM_FAT;
    int disk = USB_DISK_USB;
    std::optional<std::string> manufacturer = "Acme";
    std::optional<std::string> product = "Stick";
    std::optional<std::string> devname;
    std::optional<std::string> devpath;
    std::optional<std::string> mountpath;
    std::optional<std::string> serial = "0001";
    std::optional<std::string> partlabel;
};

/// A device that is, or was, plugged in. Small and copyable; 0 is none.
using DeviceId = int;

class Ports {
public:
    explicit Ports(SimulatedTv& tv);
    ~Ports();
    Ports(const Ports&) = delete;
    Ports& operator=(const Ports&) = delete;

    // ---- as a person does it

    // Events reach the daemon later, on the main context, in the order in which they came about;
    // what happens while it does not listen it never hears of.

    /// Plug in a stick whose content is `folder`: "added", then it mounts there: "mounted". While
    /// the daemon takes "added" it is not mounted yet. `like` gives its properties; an unset node
    /// name and path, and an address and number of 0, are filled in.
    DeviceId plug(const std::string& folder, const UsbDevice& like = UsbDevice{});

    /// Plug in a disk with several partitions, one folder each: every "added", then every
    /// "mounted".
    std::vector<DeviceId> plugDisk(const std::vector<std::string>& folders,
                                   const UsbDevice& like = UsbDevice{});

    /// Plug in a PTP camera: "added". Sub-class, protocol, file system and disk become a camera's
    /// where `like` left them a stick's.
    DeviceId plugCamera(UsbDevice like = UsbDevice{});

    /// Pull it out: it is gone, "removed".
    void pull(DeviceId device);

    // ---- step by step

    /// Present from now on; no event. Fills in what is unset (node name, path, address, number).
    DeviceId insert(UsbDevice device);
    /// Gone from now on; no event.
    void vanish(DeviceId device);
    /// What had vanished or was pulled is present again, with the properties of device(); no event.
    void comeBack(DeviceId device);
    /// Its file system is mounted at `folder` from now on; no event.
    void setMounted(DeviceId device, const std::string& folder);
    /// Mount it: setMounted() and "mounted".
    void mount(DeviceId device, const std::string& folder);
    /// An event about a device as it is now (or was last), whatever the action.
    void announce(DeviceId device, const std::string& action);
    /// An event with a null action or a null handle: what a broken library might send.
    void announceNullAction(DeviceId device);
    void announceNullDevice(const std::string& action);

    /// What a device is; works after it was pulled too. May be changed: the next handle shows it.
    UsbDevice& device(DeviceId device);

    /// Present devices in order of plugging.
    std::vector<DeviceId> present() const;

    /// Whether the daemon takes events.
    bool listening() const { return callback_ != nullptr && running_; }

    // ---- the contract

    int init();
    int fini();
    int setCallback(usb_connected_callback_fn callback, void* userData);
    int unsetCallback();
    int list(int usbClass, usb_device_list_s** out);
    int listFirst(usb_device_list_s* list, usb_device_s** out);
    int listNext(usb_device_list_s* list, usb_device_s** out);
    int listFree(usb_device_list_s* list);
    int forEach(usb_foreach_callback_fn callback, void* userData);
    void free(usb_device_s* handle);
    /// The device behind a handle for a getter; null (and a breach) when the handle is not alive.
    const UsbDevice* read(const char* function, usb_device_s* handle);
    /// The device behind any handle as the journal names it.
    std::string nameOf(const usb_device_s* handle) const;
    /// Notes a breach for each list that was never freed.
    void checkLeaks();

private:
    struct Slot {
        DeviceId id;
        UsbDevice device;
        bool present;
    };
    Slot& slot(DeviceId device);
    DeviceId insertAs(UsbDevice device, const std::string& disk, int partition);
    void mountLater(DeviceId device, const std::string& folder);
    void post(std::optional<UsbDevice> device, std::optional<std::string> action);
    void deliver(const std::optional<UsbDevice>& device, const std::optional<std::string>& action);
    std::string nextDiskNode();
    std::unique_ptr<usb_device_s> makeHandle(const UsbDevice& device) const;
    usb_device_s* giveOut(const UsbDevice& device);
    bool isGivenOut(const usb_device_s* handle) const;
    void retire(usb_device_s* handle);
    const usb_device_s* find(const usb_device_s* handle) const;
    usb_device_list_s* findList(const char* function, const usb_device_list_s* list);

    SimulatedTv& tv_;
    std::deque<Slot> slots_;                                 // references to devices stay valid
    std::vector<std::unique_ptr<usb_device_s>> handles_;     // alive, of events and walks
    std::vector<std::unique_ptr<usb_device_list_s>> lists_;  // alive
    // Dead handles are kept a while, so that no new one has the address of one that a breach is
    // about.
    std::deque<std::unique_ptr<usb_device_s>> retired_;
    usb_connected_callback_fn callback_ = nullptr;
    void* userData_ = nullptr;
    bool running_ = false;
    int nextId_ = 1;
    int nextDisk_ = 0;
};

}  // namespace simulated
