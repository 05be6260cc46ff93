/*
 * The USB library: which storage devices and cameras are attached, what they are, and hot-plug
 * events.
 *
 * A mass-storage handle (class 8) names one partition, or a whole disk that holds a file system
 * without a partition table: each is a device of its own. A camera handle (class 6) names the camera.
 *
 * Handles come from three places, and the daemon releases each in one way:
 *   - an event (usb_set_connected_cb): free_usb_device_h(), once, before the callback returns - except
 *     that it keeps off a handle that came without an action;
 *   - a walk (usb_mass_storage_foreach): free_usb_device_h(), once, in the callback;
 *   - an enumeration (usb_device_get_device_list): never one by one, only with the whole list.
 * Properties may be read until then. None of the functions below opens a device node or blocks.
 */
#ifndef PLATFORM_USB_H
#define PLATFORM_USB_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** One attached device, as it was when the handle was given out. */
typedef struct usb_device_s usb_device_s;

/** The result of one enumeration. */
typedef struct usb_device_list_s usb_device_list_s;

/** USB interface classes that the daemon handles; events of any other are ignored. */
enum {
    USB_CLASS_STILL_IMAGE = 6, /**< PTP cameras */
    USB_CLASS_MASS_STORAGE = 8 /**< sticks, disks, card readers */
};

/** File systems, as usb_mass_storage_get_filesystem_type() tells them. */
enum {
    USB_FILESYSTEM_FAT = 0,
    USB_FILESYSTEM_EXFAT = 1,
    USB_FILESYSTEM_EXT4 = 2, /**< ext2 and ext3 too */
    USB_FILESYSTEM_NTFS = 3,
    USB_FILESYSTEM_UNKNOWN =
        99 /**< anything else, or unreadable: a disk with it counts as damaged */
};

/** Kinds of disk, as usb_mass_storage_get_disk_type() tells them; others are possible. */
enum {
    USB_DISK_ATA = 0,
    USB_DISK_USB = 1,
    USB_DISK_UNKNOWN = 99 /**< events of such a mass-storage device are ignored */
};

/** Actions of an event. */
#define USB_ACTION_ADDED "added"
#define USB_ACTION_MOUNTED "mounted"
#define USB_ACTION_REMOVED "removed"

/**
 * Something was plugged in, mounted or pulled out. Comes on the default main context, never from
 * inside a call of this header, and not after usb_device_fini(). "mounted" comes only after "added" of
 * the same device. A "removed" handle still answers what it was: class, disk type, node name, serial,
 * product. Setting the callback replays nothing: devices that are there already are found by listing.
 *
 * @param device     the callee's to release with free_usb_device_h()
 * @param action     USB_ACTION_ADDED, USB_ACTION_MOUNTED or USB_ACTION_REMOVED; borrowed
 * @param user_data  as registered
 */
typedef void (*usb_connected_callback_fn)(usb_device_s* device, char* action, void* user_data);

/**
 * One step of a walk.
 * @param device     the callee's to release with free_usb_device_h()
 * @param user_data  as given to the walk
 * @return true to go on
 */
typedef bool (*usb_foreach_callback_fn)(usb_device_s* device, void* user_data);

/** Start the library. 0 on success; ignored by the daemon. */
int usb_device_init(void);

/** Stop it: no event comes any more. 0 on success; ignored by the daemon. */
int usb_device_fini(void);

/** Set the one event callback of this process. 0 on success; ignored by the daemon. */
int usb_set_connected_cb(usb_connected_callback_fn cb, void* user_data);

/** Clear it; harmless after usb_device_fini(). 0 on success; ignored by the daemon. */
int usb_unset_connected_cb(void);

/**
 * List the attached devices of one class: those that were there before the start, those that are not
 * mounted (yet), and the device of the event that is just being handled.
 * @param usb_class  USB_CLASS_MASS_STORAGE or USB_CLASS_STILL_IMAGE
 * @param list       receives the list, to be released with usb_device_free_device_list(); may be an
 *                   empty one; untouched on failure
 * @return 0 on success
 */
int usb_device_get_device_list(int usb_class, usb_device_list_s** list);

/**
 * The first device of a list, or start again.
 * @param device  borrowed from the list, never null; untouched on failure
 * @return 0 on success; anything else when the list is empty
 */
int usb_device_list_get_first(usb_device_list_s* list, usb_device_s** device);

/** The next device. 0 on success; anything else after the last. */
int usb_device_list_get_next(usb_device_list_s* list, usb_device_s** device);

/** Release a list with all its handles. 0 on success; ignored by the daemon. */
int usb_device_free_device_list(usb_device_list_s* list);

/** Interface class, e.g. USB_CLASS_MASS_STORAGE. */
int usb_device_get_class(usb_device_s* device);
/** Interface sub-class. */
int usb_device_get_sub_class(usb_device_s* device);
/** Interface protocol. */
int usb_device_get_protocol(usb_device_s* device);
/** idVendor of the device descriptor. */
int usb_device_get_vendor_id(usb_device_s* device);
/** idProduct of the device descriptor. */
int usb_device_get_product_id(usb_device_s* device);
/** Bus number. */
int usb_device_get_bus(usb_device_s* device);
/** Address on the bus. */
int usb_device_get_address(usb_device_s* device);
/** The library's own number of the device. */
int usb_device_get_number(usb_device_s* device);

/*
 * Strings: borrowed until the handle is released; null where the device has none (the daemon then
 * stores ""). The bytes are the device's own: they need be neither UTF-8 nor printable.
 */
/** Manufacturer. */
const char* usb_device_get_manufacturer(usb_device_s* device);
/** Product, as shown to viewers. */
const char* usb_device_get_product(usb_device_s* device);
/** Device node, e.g. "/dev/sda1": the identity of a mass-storage device, unique while attached. */
const char* usb_device_get_devname(usb_device_s* device);
/** Path of the device in the system's device tree. */
const char* usb_device_get_devpath(usb_device_s* device);
/** Folder where it is mounted, or null. Exactly the bytes of the path. */
const char* usb_device_get_mountpath(usb_device_s* device);
/** Serial number: the identity of a camera. */
const char* usb_device_get_serial(usb_device_s* device);
/** Label of the partition or file system. */
const char* usb_device_get_partlabel(usb_device_s* device);

/**
 * File system, one of USB_FILESYSTEM_...; USB_FILESYSTEM_UNKNOWN for a camera. Must be right from
 * "added" on: the daemon counts a device once, by what it first hears, and a mass-storage device that
 * was ever unknown counts as damaged for as long as it is listed.
 */
int usb_mass_storage_get_filesystem_type(usb_device_s* device);
/** Kind of disk, one of USB_DISK_... or another value; asked of cameras too. */
int usb_mass_storage_get_disk_type(usb_device_s* device);

/**
 * Call cb for every attached mass-storage device, mounted or not, now, one after the other. (The one
 * function of the contract whose callback comes before its return.)
 * @return 0 on success; ignored by the daemon
 */
int usb_mass_storage_foreach(usb_foreach_callback_fn cb, void* user_data);

/** Release the handle of an event or a walk. */
void free_usb_device_h(usb_device_s* device);

#ifdef __cplusplus
}
#endif

#endif
