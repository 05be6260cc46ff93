// Asking UDisks2 to mount what nobody has mounted. What a mount leads to is seen in the mount table, not
// here.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

#include "UsbDevice.h"

namespace machine {

class Mounter {
public:
    /// @param isWanted  asked again when an answer comes: whether the device with this node is still
    ///                  attached and not mounted, so that nobody is told of the failed mount of a stick that
    ///                  is gone
    explicit Mounter(std::function<bool(const std::string& devname)> isWanted);
    ~Mounter();
    Mounter(const Mounter&) = delete;
    Mounter& operator=(const Mounter&) = delete;

    /// Ask for a mount, unless the settings key "db/portmeld/automount" is off or the device holds no file
    /// system. Without UDisks2 nothing happens; one that does not know the device yet is asked again, and one
    /// that ended instead of answering, once. A failure is logged with its cause and what to do.
    void mount(const UsbDevice& device);

private:
    struct Request;
    using RequestPointer = std::unique_ptr<Request>;
    static void connected(GObject* source, GAsyncResult* result, void* data);
    static void answered(GObject* source, GAsyncResult* result, void* data);
    static int askedAgain(void* data);
    static int complained(void* data);
    static void later(RequestPointer request, GSourceFunc then);
    static void ask(RequestPointer request);

    std::function<bool(const std::string&)> isWanted_;
    /// Whoever holds it weakly knows whether the mounter is still there.
    std::shared_ptr<Mounter*> self_ = std::make_shared<Mounter*>(this);
};

/// The object of a block device in UDisks2: its kernel name, every byte that is no ASCII letter or digit
/// as "_" and two hexadecimal digits.
std::string udisksObject(const std::string& devname);

/// Why a mount failed and what to do, in words for whoever reads the log.
///
/// @param errorName   D-Bus error name, "" when there was none
/// @param message     what UDisks2, mount(8) or the kernel said
std::string mountFailure(const UsbDevice& device,
                         const std::string& errorName,
                         const std::string& message);

}  // namespace machine
