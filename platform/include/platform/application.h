/*
 * Applications: asking whether one runs, and launching one with extra data.
 *
 * The daemon launches through a single handle for its whole life, so extra data accumulate: a launch
 * carries every key that was ever added, each with its latest value. All functions here are called on the
 * plug path: none may wait for another process. It launches or asks after:
 *
 *   "org.norvane.lumet"      companion UI application     "org.norvane.shopreel"   demo player
 *   "org.quillon.folian"     content browser              "org.norvane.floorreel"  internal demo player
 *   "org.norvane.vidreel"    video player                 "org.norvane.picreel"    photo player
 */
#ifndef PLATFORM_APPLICATION_H
#define PLATFORM_APPLICATION_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

struct app_control_s;
/** A launch request under construction. Every function below answers a null handle with an error. */
typedef struct app_control_s* app_control_h;

/**
 * Make an empty launch request.
 * @param handle  receives the request, to be released with app_control_destroy(); untouched on failure
 * @return 0 on success. On failure the daemon runs on without ever taking a USB event.
 */
int app_control_create(app_control_h* handle);

/** Release a request. 0 on success; ignored by the daemon. */
int app_control_destroy(app_control_h handle);

/**
 * Choose the application.
 * @param id  application id; "" is allowed (the launch that follows then fails quietly); copied
 * @return 0 on success; ignored by the daemon
 */
int app_control_set_app_id(app_control_h handle, const char* id);

/**
 * Add one value for the application. Replaces an earlier value of the key, keeps all other keys.
 * @param key    plain ASCII; copied
 * @param value  valid UTF-8; copied
 * @return 0 on success; ignored by the daemon
 */
int app_control_add_extra_data(app_control_h handle, const char* key, const char* value);

/**
 * Launch the application, or hand the request to it when it runs. Returns at once: starting happens
 * later, and its failure is reported to nobody. The handle can be used again.
 * @param reply_cb   always null: no reply is wanted
 * @param user_data  always null
 * @return 0 when the request was taken; ignored by the daemon
 */
int app_control_send_launch_request(app_control_h handle, void* reply_cb, void* user_data);

/**
 * Ask whether an application runs. Must be cheap: it is asked on the plug path.
 * @param app_id   application id
 * @param running  set on success, left as it was on failure (the daemon presets false)
 * @return 0 on success; ignored by the daemon
 */
int app_manager_is_running(const char* app_id, bool* running);

/** Ask the same of the launch daemon. Non-zero = running; 0 = not running or unknown. */
int aul_app_is_running(const char* app_id);

#ifdef __cplusplus
}
#endif

#endif
