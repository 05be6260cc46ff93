/*
 * The settings store: a key-value store shared by the TV's processes, with change notices.
 *
 * Keys are paths. Those below "db/" survive a restart, those below "memory/" do not. The daemon
 * only reads; it uses these keys:
 *
 *   "db/menu_widget/language"                         string  the menu language, e.g. "de_DE"
 *   "db/menu/support/use_mode"                        int     1 = shop mode, anything else = home
 *   "db/floorreel/demo_mode"                          int     -1 forbids the internal demo
 *   "memory/portmeld/removed_dlna_device"             string  name of a media server that went away
 *   "memory/portmeld/removed_dlna_device_icon_path"   string  picture of that server
 */
#ifndef PLATFORM_SETTINGS_H
#define PLATFORM_SETTINGS_H

#ifdef __cplusplus
extern "C" {
#endif

/** One key with its new value, as handed to a change callback. Lives as long as that call. */
typedef struct keynode_s keynode_s;

/**
 * A watched key has changed. Comes on the default main context, never from inside a call of this
 * header. Reading the key in the callback, or later, gives the new value (the daemon does so). A write
 * of the value that the key already has may or may not be reported; an unset key may be reported too.
 *
 * @param node       the key; borrowed, valid until the callback returns
 * @param user_data  as registered
 */
typedef void (*vconf_callback_fn)(keynode_s* node, void* user_data);

/**
 * Read a boolean.
 * @param key  the key
 * @param val  set to 1 (true) or 0 (false) on success, left as it was on failure
 * @return 0 on success; anything else when the key is unset, of another type or unreadable
 */
int vconf_get_bool(const char* key, int* val);

/**
 * Read an integer.
 * @param key  the key
 * @param val  set on success, left as it was on failure
 * @return 0 on success; anything else when the key is unset, of another type or unreadable
 */
int vconf_get_int(const char* key, int* val);

/**
 * Read a string.
 * @param key  the key
 * @return a copy from malloc() that the caller releases with free(); null when the key is unset, of
 *         another type or unreadable
 */
char* vconf_get_str(const char* key);

/**
 * Watch a key. A key that does not exist yet can be watched: its creation is its first change.
 * @param key        the key
 * @param cb         called for each change from now on
 * @param user_data  handed to cb
 * @return 0 on success; the daemon logs the value and goes on whatever it is
 */
int vconf_notify_key_changed(const char* key, vconf_callback_fn cb, void* user_data);

/**
 * Stop watching: no call of cb for this key begins after the return, not even for a change that
 * happened before. Harmless when the pair is not watched.
 * @return 0 on success; ignored by the daemon
 */
int vconf_ignore_key_changed(const char* key, vconf_callback_fn cb);

/** The key's name; borrowed from the node, may be null. */
char* vconf_keynode_get_name(keynode_s* node);

/** The new value of a string key; borrowed from the node, null when the value is no string. */
char* vconf_keynode_get_str(keynode_s* node);

#ifdef __cplusplus
}
#endif

#endif
