/*
 * Device power: notices of wake-up, power-off and state changes of the TV.
 *
 * Callbacks come on the default main context, never from inside a call of this header. The daemon
 * subscribes each of the three once at start-up and takes notice of nothing else.
 */
#ifndef PLATFORM_POWER_H
#define PLATFORM_POWER_H

#ifdef __cplusplus
extern "C" {
#endif

/** Power states that the daemon tells apart. */
enum {
    DEVICE_POWER_STATE_NORMAL = 0, /**< in use */
    DEVICE_POWER_STATE_STANDBY = 2 /**< standby: nobody is watching */
};

/**
 * Options of a power-off notice. The two whole values are notices without consequence for the
 * daemon; in any other value the one bit tells that the TV is really going off.
 */
enum {
    DEVICE_POWEROFF_OPTION_13 = 13,
    DEVICE_POWEROFF_OPTION_14 = 14,
    DEVICE_POWEROFF_BIT_OFF = 0x40000000 /**< bit 30 */
};

/**
 * A power notice.
 * @param value      wake-up: the reason (only logged); power-off: the option; state change: the state
 * @param user_data  as subscribed
 * @return ignored by the platform
 */
typedef int (*device_power_callback_fn)(int value, void* user_data);

/** Subscribe to wake-ups. Result logged; 0 on success. */
int device_power_subscribe_wakeup(device_power_callback_fn cb, void* user_data);
/** Subscribe to power-off notices. Result logged; 0 on success. */
int device_power_subscribe_poweroff(device_power_callback_fn cb, void* user_data);
/** Subscribe to power state changes. Result logged; 0 on success. */
int device_power_subscribe_state_changed(device_power_callback_fn cb, void* user_data);

/** End a subscription; no call of cb begins after the return. Result logged; 0 on success. */
int device_power_unsubscribe_wakeup(device_power_callback_fn cb);
/** End a subscription; no call of cb begins after the return. Result ignored. */
int device_power_unsubscribe_poweroff(device_power_callback_fn cb);
/** End a subscription; no call of cb begins after the return. Result ignored. */
int device_power_unsubscribe_state_changed(device_power_callback_fn cb);

#ifdef __cplusplus
}
#endif

#endif
