/*
 * The notification service: pop-ups with a title, a body, pictures and up to two buttons, and the
 * three ways in which they come back: a button, a time-out, or being hidden.
 *
 * Callbacks come on the default main context, never from inside a call of this header. Showing must
 * not wait for whoever draws the pop-up.
 */
#ifndef PLATFORM_NOTIFICATION_H
#define PLATFORM_NOTIFICATION_H

#ifdef __cplusplus
#include <cstddef>
#include <cstdint>
#else
#include <stddef.h>
#include <stdint.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Kinds of pop-up: the record's item type, and the first argument of two callbacks. */
enum {
    NOTIFICATION_ITEM_PLAY_FILE = 0,   /**< "Play" / "Cancel" for the one media file of a device */
    NOTIFICATION_ITEM_BROWSE = 1,      /**< "Browse" / "Cancel" for a device */
    NOTIFICATION_ITEM_DISCONNECTED = 2 /**< a device went away; no buttons */
};

/** The constant words and time-out values that the daemon writes. */
enum {
    NOTIFICATION_WORD_0 = 1,
    NOTIFICATION_WORD_4 = 1,
    NOTIFICATION_WORD_8 = 2,
    NOTIFICATION_TIMEOUT_CONNECTION = 30, /**< pop-ups with buttons */
    NOTIFICATION_TIMEOUT_REMOVAL = 3      /**< removal notices */
};

/**
 * One pop-up. 22 words of 32 bits on the 32-bit targets; zero-filled, then the words named here are
 * filled. Texts are NUL-terminated UTF-8, plain (no markup), borrowed until add_notification_data()
 * returns. A null text or path means: none.
 */
typedef struct NotificationRecord {
    int32_t nWord0;               /**< offset  0: NOTIFICATION_WORD_0 */
    int32_t nWord4;               /**< offset  4: NOTIFICATION_WORD_4 */
    int32_t nWord8;               /**< offset  8: NOTIFICATION_WORD_8 */
    const char* pSender;          /**< offset 12: "portmeld" */
    int32_t nItemType;            /**< offset 16: one of NOTIFICATION_ITEM_... */
    int32_t nReserved20;          /**< offset 20: 0 */
    int32_t nTimeout;             /**< offset 24: NOTIFICATION_TIMEOUT_..., in the service's unit */
    int32_t nReserved28;          /**< offset 28: 0 */
    const char* pTitle;           /**< offset 32 */
    const char* pBody;            /**< offset 36 */
    const char* pSourceIcon;      /**< offset 40: path of a picture, or null */
    int32_t nReserved44;          /**< offset 44: 0 */
    int32_t nReserved48;          /**< offset 48: 0 */
    int32_t nReserved52;          /**< offset 52: 0 */
    int32_t nButtonCount;         /**< offset 56: 0 or 2 */
    int32_t nReserved60;          /**< offset 60: 0 */
    const char* pFirstButton;     /**< offset 64: label, or null */
    const char* pSecondButton;    /**< offset 68: label, or null */
    int32_t nReserved72;          /**< offset 72: 0 */
    const char* pFirstButtonIcon; /**< offset 76: path of a picture, or null */
    const char* pSecondButtonIcon; /**< offset 80: path of a picture, or null */
    int32_t nReserved84;           /**< offset 84: 0 */
} NotificationRecord;

/**
 * A button was pressed.
 * @param item_type     the pop-up's item type
 * @param button_index  0 = first button, anything else = another
 * @param user_data     as registered
 */
typedef void (*notification_button_callback_fn)(int item_type, int button_index, void* user_data);

/** A pop-up stood until its time-out. @param item_type the pop-up's item type */
typedef void (*notification_timeout_callback_fn)(int item_type, void* user_data);

/**
 * A pop-up was hidden before its time-out: by the viewer, or by something that took its place. A button
 * press is no hiding.
 * @param text  not used by the daemon, may be null
 */
typedef void (*notification_hide_callback_fn)(char* text, void* user_data);

/**
 * Connect to the service.
 * @param sender  "portmeld"
 * @param flags   always 0
 * @return 0 on success; ignored by the daemon
 */
int init_notification_data_manager(const char* sender, int flags);

/**
 * Show a pop-up. Copies every text before it returns.
 *
 * Which pop-up stays visible when one is shown over another is the service's affair. A pop-up with
 * buttons that was replaced sends no callback any more. A removal notice that was replaced or covered
 * still reports its time-out, or that it was hidden: until one of the two comes the daemon shows no
 * further removal notice. That holds for one that was refused, too: better report it as hidden.
 * @param record  borrowed until the return
 * @return 0 = shown (or on its way); anything else: this pop-up will not be seen. The daemon logs the
 *         failure and goes on.
 */
int add_notification_data(NotificationRecord* record);

/** Set the one button callback of this process. 0 on success; ignored by the daemon. */
int register_notification_button_callback(notification_button_callback_fn cb, void* user_data);

/** Set the one time-out callback of this process. 0 on success; ignored by the daemon. */
int register_notification_timeout_callback(notification_timeout_callback_fn cb, void* user_data);

/** Set the one hide callback of this process (spelled as the platform spells it). 0 on success. */
int register_notofication_hide_callback(notification_hide_callback_fn cb, void* user_data);

/** Disconnect: no callback begins after the return. 0 on success; ignored by the daemon. */
int close_notification_data_manager(void);

#ifdef __cplusplus
}
#endif

/* The layout that TVs have: 88 bytes, and every member where the service looks for it. */
#ifdef __cplusplus
#define PLATFORM_STATIC_ASSERT static_assert
#else
#define PLATFORM_STATIC_ASSERT _Static_assert
#endif
PLATFORM_STATIC_ASSERT(sizeof(void*) != 4 || sizeof(NotificationRecord) == 88, "88 bytes");
#define PLATFORM_ASSERT_OFFSET(member, offset)                                                     \
    PLATFORM_STATIC_ASSERT(sizeof(void*) != 4 || offsetof(NotificationRecord, member) == (offset), \
                           #member)
PLATFORM_ASSERT_OFFSET(nWord0, 0);
PLATFORM_ASSERT_OFFSET(nWord4, 4);
PLATFORM_ASSERT_OFFSET(nWord8, 8);
PLATFORM_ASSERT_OFFSET(pSender, 12);
PLATFORM_ASSERT_OFFSET(nItemType, 16);
PLATFORM_ASSERT_OFFSET(nReserved20, 20);
PLATFORM_ASSERT_OFFSET(nTimeout, 24);
PLATFORM_ASSERT_OFFSET(nReserved28, 28);
PLATFORM_ASSERT_OFFSET(pTitle, 32);
PLATFORM_ASSERT_OFFSET(pBody, 36);
PLATFORM_ASSERT_OFFSET(pSourceIcon, 40);
PLATFORM_ASSERT_OFFSET(nReserved44, 44);
PLATFORM_ASSERT_OFFSET(nReserved48, 48);
PLATFORM_ASSERT_OFFSET(nReserved52, 52);
PLATFORM_ASSERT_OFFSET(nButtonCount, 56);
PLATFORM_ASSERT_OFFSET(nReserved60, 60);
PLATFORM_ASSERT_OFFSET(pFirstButton, 64);
PLATFORM_ASSERT_OFFSET(pSecondButton, 68);
PLATFORM_ASSERT_OFFSET(nReserved72, 72);
PLATFORM_ASSERT_OFFSET(pFirstButtonIcon, 76);
PLATFORM_ASSERT_OFFSET(pSecondButtonIcon, 80);
PLATFORM_ASSERT_OFFSET(nReserved84, 84);
#undef PLATFORM_ASSERT_OFFSET
#undef PLATFORM_STATIC_ASSERT

#endif
