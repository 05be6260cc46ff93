/*
 * The content scan: looks through a mounted device for media files, in the background, and reports
 * the case that the daemon cares for: exactly one media file on the whole device.
 */
#ifndef PLATFORM_CONTENT_SCAN_H
#define PLATFORM_CONTENT_SCAN_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A running scan. Belongs to the platform; see csf_stop_checking_device_v2(). */
typedef struct CCSFDeviceCheckHandle CCSFDeviceCheckHandle;

/** What a scan reports. The platform may report other values, which the daemon ignores. */
#ifdef __cplusplus
enum csf_event_e : int {
#else
typedef enum csf_event_e {
#endif
    CSF_EVENT_SINGLE_MEDIA = 25 /**< the device holds exactly one media file: see the callback */
#ifdef __cplusplus
};
#else
} csf_event_e;
#endif

/** Values of "MEDIA_TYPE" in a result; any other value is a file that no player is known for. */
enum { CSF_MEDIA_PHOTO = 2, CSF_MEDIA_VIDEO = 3, CSF_MEDIA_MUSIC = 5 };

/**
 * A scan has something to tell; CSF_EVENT_SINGLE_MEDIA at most once. Comes on the default main context, after csf_check_device_v2() has
 * returned, and not after the scan was stopped.
 *
 * With CSF_EVENT_SINGLE_MEDIA `json` is one JSON object, UTF-8, with these members:
 *   "MEDIA_TYPE"     int     CSF_MEDIA_PHOTO, CSF_MEDIA_VIDEO, CSF_MEDIA_MUSIC
 *   "DISPLAY_NAME"   string  the file's name as shown, extension included
 *   "FILE_PATH"      string  its absolute path
 *   "SIZE"           int     bytes, at most 2^31 - 1 (photo; others may have it)
 *   "MODIFIED_TIME"  int     seconds since 1970-01-01 UTC, 32 bits (photo and video)
 *   "TITLE", "ARTIST", "ALBUM"  string  tags of a music file, "" where unknown
 *
 * @param user_data  as given to csf_check_device_v2()
 * @param handle     the scan
 * @param event      CSF_EVENT_SINGLE_MEDIA, or a value that is ignored
 * @param json       borrowed until the return; may be null with other events
 * @return true when the result was taken; the platform need not care
 */
typedef bool (*csf_check_callback_fn)(void* user_data,
                                      CCSFDeviceCheckHandle* handle,
                                      csf_event_e event,
                                      const char* json);

/**
 * Start to look through a device. Returns at once: the walk must not hold up the main loop.
 *
 * @param mount_path  folder where the device is mounted; copied
 * @param cb          receives the result
 * @param user_data   handed to cb
 * @param handle      receives the scan, written before the return; untouched on failure. The daemon
 *                    keeps the value until its next scan and may hand it to
 *                    csf_stop_checking_device_v2() long after the scan has ended.
 * @return 0 on success; ignored by the daemon
 */
int csf_check_device_v2(const char* mount_path,
                        csf_check_callback_fn cb,
                        void* user_data,
                        CCSFDeviceCheckHandle** handle);

/**
 * Stop a scan: its callback is not called any more.
 * @param handle  any value that csf_check_device_v2() ever gave out, or null. Null, a finished scan
 *                and one that was stopped before are harmless: the handle is looked up, never
 *                followed, so its memory may long be gone.
 * @return 0 on success; ignored by the daemon
 */
int csf_stop_checking_device_v2(CCSFDeviceCheckHandle* handle);

#ifdef __cplusplus
}
#endif

#endif
