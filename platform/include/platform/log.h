/*
 * The platform log: one printf-style function. This is all that the daemon knows about where its
 * lines go; it always writes to the system buffer, with one of three priorities, under one tag.
 */
#ifndef PLATFORM_LOG_H
#define PLATFORM_LOG_H

#ifdef __cplusplus
extern "C" {
#endif

/** The log buffers that the daemon writes to. */
enum {
    DLOG_BUFFER_SYSTEM = 2 /**< lines of system services */
};

/** The priorities that the daemon uses; the platform may know more. */
enum {
    DLOG_PRIORITY_DEBUG = 3, /**< entry traces and values */
    DLOG_PRIORITY_INFO =
        4, /**< what the daemon does and decides, each step of a list walk included */
    DLOG_PRIORITY_WARNING = 5 /**< something was missing, refused or failed */
};

/**
 * Write one line to the platform log. Lines of info and warning carry colour escapes ("\\033[32m" to
 * "\\033[0m"), and some messages a line feed before the last of them: a platform may drop both.
 *
 * The platform drops lines below its own threshold, and should do so before it formats anything:
 * the daemon logs each step of a list walk and pays only for this call when the line is dropped,
 * and not even for that where dlog_is_shown() tells it.
 * A line may hold text of a device (a product name, a path): any bytes but NUL, of any length.
 *
 * @param buf   log buffer, always DLOG_BUFFER_SYSTEM
 * @param prio  DLOG_PRIORITY_DEBUG, DLOG_PRIORITY_INFO or DLOG_PRIORITY_WARNING
 * @param tag   always "PORTMELD"
 * @param fmt   printf format; never text that came from a device or a catalogue
 * @return ignored by the daemon; 0 or more for a line that was taken or dropped on purpose,
 *         negative for a failure
 */
#if defined(__GNUC__)
__attribute__((format(printf, 4, 5)))
#endif
int __dlog_print(int buf, int prio, const char* tag, const char* fmt, ...);

/**
 * Whether lines of a priority are taken now. Optional: a platform may leave it out, and is then given
 * every line. Where it says no, the daemon leaves out the walks through the device list that it would
 * make for their lines alone; any other line still comes.
 *
 * @param prio  one of the priorities
 * @return 0 when such a line would be dropped
 */
#if defined(__GNUC__)
__attribute__((weak))
#endif
int dlog_is_shown(int prio);

#ifdef __cplusplus
}
#endif

#endif
