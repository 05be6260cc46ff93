/*
 * Usage statistics: anonymous records of what viewers do with a feature. C++ only, since the
 * platform offers a class.
 */
#ifndef PLATFORM_USAGE_STATISTICS_H
#define PLATFORM_USAGE_STATISTICS_H

#include <string>

/** The services that report. */
enum KPI_APP_TYPE : int {
    KPI_APP_USB = 3 /**< this daemon */
};

/** What was done. The three without a meaning here are never sent. */
enum KPI_LOG_TYPE : int {
    KPI_LOG_USB_NOTIFICATION_SHOWN = 29, /**< a connection pop-up was launched */
    KPI_LOG_USB_BROWSER_LAUNCHED = 30, /**< the content browser was launched; text "USB" or "PTP" */
    KPI_LOG_USB_BROWSE_CANCELLED = 31, /**< "Cancel" on a browse pop-up */
    KPI_LOG_USB_TIMED_OUT = 32,        /**< a pop-up was left to time out */
    KPI_LOG_USB_33 = 33,
    KPI_LOG_USB_34 = 34,
    KPI_LOG_USB_35 = 35,
    KPI_LOG_USB_PLAY_PRESSED = 36,  /**< "Play" on a play pop-up */
    KPI_LOG_USB_PLAY_CANCELLED = 37 /**< "Cancel" on a play pop-up */
};

/**
 * The statistics logger. A record is handed over and forgotten: nothing may block, nothing is
 * retried, results are ignored by the daemon.
 */
class CKPILogService {
public:
    CKPILogService();
    virtual ~CKPILogService();
    CKPILogService(const CKPILogService&) = delete;
    CKPILogService& operator=(const CKPILogService&) = delete;

    /** Say who reports; called once, before the first record. @return 0 on success */
    int SetKPILogServiceconfInfo(KPI_APP_TYPE type);

    /**
     * Send one record.
     * @param type    what was done
     * @param first   detail, may be ""
     * @param second  always ""
     * @param third   always ""
     * @return 0 when the record was taken
     */
    int SendKPILog(KPI_LOG_TYPE type, std::string first, std::string second, std::string third);
};

#endif
