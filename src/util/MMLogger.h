// Lines for the platform log, and reports for the usage statistics.
//
// Every line carries the source file, function and line number in front. What is logged at which
// priority and in which words is relied upon by people and tools that read TV logs, misspellings
// included.
#pragma once

#include <memory>
#include <string>

#include <platform/log.h>
#include <platform/usage_statistics.h>

/// A file's name without its folders, found while compiling.
constexpr const char* MMBaseName(const char* path) {
    const char* name = path;
    for (const char* p = path; *p != '\0'; ++p) {
        if (*p == '/') {
            name = p + 1;
        }
    }
    return name;
}

/// A C string for "%s": null becomes "(null)", whatever the C library does with it.
inline const char* MMText(const char* text) {
    return text != nullptr ? text : "(null)";
}

// MM_DEBUG("") logs an entry trace (prefix only), MM_DEBUG("text %d", n) a value; MM_INFO and
// MM_WARN likewise, in the colours of their priority. The format is a literal (it is joined with
// the prefix while compiling): text of devices and catalogues is only ever an argument.
#define MM_DEBUG(...) MM_PICK_(MM_PLAIN_, __VA_ARGS__)(DLOG_PRIORITY_DEBUG, "", __VA_ARGS__)
#define MM_INFO(...) \
    MM_PICK_(MM_MARKED_, __VA_ARGS__)(DLOG_PRIORITY_INFO, "\033[32m[INFO]", __VA_ARGS__)
#define MM_WARN(...) \
    MM_PICK_(MM_MARKED_, __VA_ARGS__)(DLOG_PRIORITY_WARNING, "\033[33m[WARN]", __VA_ARGS__)

#define MM_PLAIN_T_(prio, mark, fmt) \
    MM_PRINT_(prio, "%s: %s(%d) > " mark fmt, MMBaseName(__FILE__), __func__, __LINE__)
#define MM_PLAIN_A_(prio, mark, fmt, ...) \
    MM_PRINT_(prio, "%s: %s(%d) > " mark fmt, MMBaseName(__FILE__), __func__, __LINE__, __VA_ARGS__)
#define MM_MARKED_T_(prio, mark, fmt)                                                              \
    MM_PRINT_(prio, "%s: %s(%d) > " mark "[%s:%d] " fmt "\033[0m", MMBaseName(__FILE__), __func__, \
              __LINE__, __func__, __LINE__)
#define MM_MARKED_A_(prio, mark, fmt, ...)                                                         \
    MM_PRINT_(prio, "%s: %s(%d) > " mark "[%s:%d] " fmt "\033[0m", MMBaseName(__FILE__), __func__, \
              __LINE__, __func__, __LINE__, __VA_ARGS__)

#define MM_PRINT_(prio, fmt, file, ...)                                                     \
    do {                                                                                    \
        static constexpr const char* mmFile = file;                                         \
        (void)__dlog_print(DLOG_BUFFER_SYSTEM, prio, "PORTMELD", fmt, mmFile, __VA_ARGS__); \
    } while (false)

// Chooses the form with (A_) or without (T_) arguments: C++17 has no way to drop the comma before
// an empty __VA_ARGS__. Up to 15 arguments.
#define MM_PICK_(form, ...)                                                                       \
    MM_PICK_16TH_(__VA_ARGS__, form##A_, form##A_, form##A_, form##A_, form##A_, form##A_,        \
                  form##A_, form##A_, form##A_, form##A_, form##A_, form##A_, form##A_, form##A_, \
                  form##A_, form##T_, )
#define MM_PICK_16TH_(a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, a13, a14, a15, a16, name, \
                      ...)                                                                         \
    name

/// What a viewer did with USB content; each is reported to the usage statistics as the kind 28
/// higher.
enum USB_LOG_TYPE : int {
    USB_LOG_NOTIFICATION_SHOWN = 1,  ///< a connection pop-up was launched
    USB_LOG_BROWSER_LAUNCHED = 2,    ///< the content browser was launched
    USB_LOG_BROWSE_CANCELLED = 3,    ///< "Cancel" on a browse pop-up
    USB_LOG_TIMED_OUT = 4,           ///< a pop-up timed out
    USB_LOG_5 = 5,                   ///< never reported
    USB_LOG_6 = 6,                   ///< never reported
    USB_LOG_7 = 7,                   ///< never reported
    USB_LOG_PLAY_PRESSED = 8,        ///< "Play" on a play pop-up
    USB_LOG_PLAY_CANCELLED = 9       ///< "Cancel" on a play pop-up
};

/// Reports what viewers did to the platform's usage statistics. Process-wide, made on first use.
class CMMLogService {
public:
    CMMLogService() = default;
    virtual ~CMMLogService() = default;
    CMMLogService(const CMMLogService&) = delete;
    CMMLogService& operator=(const CMMLogService&) = delete;

    /// The one instance; made, with its logger, when there is none.
    static CMMLogService* Get();

    /// Make the platform's logger and tell it who reports.
    void Create();

    /// Give up the logger and the one instance (which may be this object: do not touch it
    /// afterwards).
    void Destroy();

    /// Report one event. `type` outside 1 to 9 reports nothing; without a logger only a warning is
    /// logged. Nothing is queued or retried.
    void OnSelectUSBCommand(USB_LOG_TYPE type, std::string text);

private:
    std::unique_ptr<CKPILogService> m_pKPILogService;
    static CMMLogService* m_pLoggerInstance;
};
