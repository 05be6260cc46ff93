// The causes of failed mounts, in words.
#include <initializer_list>

#include "Mounter.h"

namespace machine {

namespace {

bool holds(const std::string& text, std::initializer_list<const char*> words) {
    for (const char* word : words) {
        if (text.find(word) != std::string::npos) {
            return true;
        }
    }
    return false;
}

std::string cause(const UsbDevice& device,
                  const std::string& errorName,
                  const std::string& message) {
    if (holds(errorName, {"NotAuthorized", "AccessDenied"})) {
        return "not authorised; the user who runs portmeld must be in the group \"portmeld\", or "
               "be "
               "allowed org.freedesktop.udisks2.filesystem-mount by polkit";
    }
    if (holds(errorName, {"Timeout", "TimedOut", "NoReply"})) {
        return "UDisks2 has not answered";
    }
    // What mount(8), ntfs-3g and the kernel say; they are not translated for a daemon.
    if (holds(message, {"unknown filesystem type"})) {
        return "this machine cannot mount the file system " + device.fileSystemName +
               "; install its kernel module or FUSE program";
    }
    const bool unclean = holds(message, {"unclean file system", "hibernated", "volume is dirty",
                                         "not shut down cleanly", "unclean"});
    const bool refused =
        holds(message, {"wrong fs type", "bad superblock", "can't read superblock"});
    if (device.fileSystem == USB_FILESYSTEM_NTFS && (unclean || refused)) {
        return "the NTFS volume was not removed safely from Windows, or Windows is hibernated on "
               "it; "
               "plug it into Windows and shut that down, or run ntfsfix";
    }
    if (unclean || refused) {
        return "the file system " + device.fileSystemName +
               " is damaged, or in a form that this machine does not know; run fsck on it";
    }
    return message.empty() ? "no reason was given" : message;
}

}  // namespace

std::string mountFailure(const UsbDevice& device,
                         const std::string& errorName,
                         const std::string& message) {
    return "cannot mount " + device.devname.value_or("?") + " (" +
           device.product.value_or("a device without a name") +
           "): " + cause(device, errorName, message);
}

}  // namespace machine
