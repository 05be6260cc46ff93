// The ports of the machine: which devices are attached and mounted, and in what order that is told. Who a
// device is lives in UsbIdentity; mounting, in Mounter.
//
// The rules:
//   1. "added" when a device is first seen with its identity settled; "mounted" when the mount table
//      first names it after that, at once if it names it already; "removed" when its block device or
//      interface has gone.
//   2. What was there at the start is listed and never told. What was not told as "added" is not told as
//      "mounted".
//   3. A partition that goes while its disk stays may be a partition table that is read again: its removal
//      is held back for a second. If the same partition comes back meanwhile, nothing is told.
//   4. After a sleep the kernel finds all devices anew: from the moment in which the machine goes to sleep
//      until five seconds after its wake-up every removal is held back like that.
//   5. Another file system under the same name is another device: "removed", "added". So it is when the
//      device is mounted only if the medium was changed: a mounted one may become hard to read.
//   6. When events were lost, what is there is compared with what is listed, and told as if it had happened
//      then.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gudev/gudev.h>

#include "LostEvents.h"
#include "MountMonitor.h"
#include "Mounter.h"
#include "UsbDevice.h"

namespace machine {

class Ports {
public:
    Ports();
    ~Ports();
    Ports(const Ports&) = delete;
    Ports& operator=(const Ports&) = delete;

    /// What is told of a device: one of the actions of <platform/usb.h>. Called on the default main
    /// context, and by no function of this class that others call. An empty listener hears nothing.
    using Listener = std::function<void(const UsbDevice& device, const char* action)>;
    void setListener(Listener listener);

    /// The attached devices of one class, in the order in which they came.
    std::vector<UsbDevice> devices(int usbClass);

    /// The machine goes to sleep, or wakes up: see rule 4.
    void sleep(bool sleeps);

private:
    struct Port {
        UsbDevice device;
        std::string path;         ///< sysfs
        bool told = false;        ///< that it was added
        GSource* wait = nullptr;  ///< until a mount is asked for, or until a removal is told
        bool leaving = false;     ///< its removal is held back
        bool mountDue = false;    ///< nobody has mounted it yet, nor was anybody asked to
    };
    using Attached = std::vector<std::unique_ptr<Port>>;

    void lookAround();
    static int lookAroundDue(void* self);
    static void happened(GUdevClient* client, char* action, GUdevDevice* device, void* self);
    void enumerate(const char* subsystem);
    void seen(const std::string& path, std::optional<UsbDevice> device, bool mediumChanged);
    void gone(const std::string& path);
    void lookAgain();
    void add(const std::string& path, UsbDevice device, bool told);
    void remove(const Port& port);
    void refresh(Port& port, const std::string& path, UsbDevice device);
    void mountsChanged();
    void tell(const UsbDevice& device, const char* action);
    void wait(Port& port, unsigned milliseconds, GSourceFunc expired);
    static void stopWaiting(Port& port);
    void holdBack(Port& port);
    static int mountWanted(void* waiting);
    static int staysAway(void* waiting);
    Port* find(const std::string& path);
    Port* findNamesake(const UsbDevice& device);
    bool wantsMount(const std::string& devname) const;
    static std::string diskOf(const Port& port);

    MountMonitor mounts_;
    Mounter mounter_;
    GSource* start_;                 ///< until the first look around
    GUdevClient* client_ = nullptr;  ///< from then on
    gulong handler_ = 0;
    std::optional<LostEvents> lostEvents_;  ///< from then on
    Listener listener_;
    Attached ports_;
    bool asleep_ = false;
    gint64 settledAt_ = 0;  ///< monotonic microseconds
};

}  // namespace machine
