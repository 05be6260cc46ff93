/*
 * The platform watchdog: a service that ends a process which has stopped feeding it.
 */
#ifndef PLATFORM_WATCHDOG_H
#define PLATFORM_WATCHDOG_H

#ifdef __cplusplus
extern "C" {
#endif

/** How the daemon registers and feeds. */
enum {
    WATCHDOG_PERIOD_SECONDS = 60,     /**< silence after which the process counts as hung */
    WATCHDOG_FEED_MILLISECONDS = 5000 /**< the daemon's own interval */
};

/**
 * Register the calling process. Called once, after the main loop exists and before it runs: a
 * platform that wants to know when a service is ready may take it for that.
 * @param period  WATCHDOG_PERIOD_SECONDS
 * @return 0 on success; ignored by the daemon
 */
int smart_deadlock_register_watchdog_service(int period);

/**
 * Feed the watchdog: the main loop is alive. Called every WATCHDOG_FEED_MILLISECONDS; must not
 * block.
 * @return 0 on success; ignored by the daemon
 */
int smart_deadlock_watchdog_notify(void);

#ifdef __cplusplus
}
#endif

#endif
