// Lines for the platform log, and reports for the usage statistics.
//
// Every line carries the source file, function and line number in front. What is logged at which
// priority and in which words is relied upon by people and tools that read TV logs, misspellings
// included.
#pragma once

#include <cstddef>
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

/// Whether info lines are to be seen, as far as the platform tells. Lines need not ask: walks do that are
/// made for their lines alone.
inline bool MMInfoIsShown() {
    return dlog_is_shown == nullptr || dlog_is_shown(DLOG_PRIORITY_INFO) != 0;
}

/// Room for any line number.
constexpr std::size_t MM_MOST_DIGITS = 10;

/// What stands in front of a message, made while compiling: "FILE: FUNCTION(LINE) > ", and behind it, where
/// there is a mark, "MARK[FUNCTION:LINE] ".
template <std::size_t SIZE>
struct SMMPrefix {
    char szText[SIZE] = {};
    std::size_t nLength = 0;

    constexpr void Append(const char* pText) {
        for (; *pText != '\0'; ++pText) {
            szText[nLength++] = *pText;
        }
    }
    constexpr void Append(int nNumber) {
        char szDigits[MM_MOST_DIGITS + 1] = {};
        char* pDigit = szDigits + MM_MOST_DIGITS;
        for (; nNumber > 0; nNumber /= 10) {
            *--pDigit = static_cast<char>('0' + nNumber % 10);
        }
        Append(pDigit);
    }
};

/// The bytes that such a prefix has at most.
constexpr std::size_t MMPrefixSize(const char* file, const char* function, const char* mark) {
    using Length = std::char_traits<char>;
    const std::size_t nPlace = Length::length(function) + MM_MOST_DIGITS + sizeof(": () > ");
    return Length::length(MMBaseName(file)) + Length::length(mark) + 2 * nPlace;
}

template <std::size_t SIZE>
constexpr SMMPrefix<SIZE> MMMakePrefix(const char* file,
                                       const char* function,
                                       int line,
                                       const char* mark) {
    SMMPrefix<SIZE> stPrefix;
    stPrefix.Append(MMBaseName(file));
    stPrefix.Append(": ");
    stPrefix.Append(function);
    stPrefix.Append("(");
    stPrefix.Append(line);
    stPrefix.Append(") > ");
    if (*mark != '\0') {
        stPrefix.Append(mark);
        stPrefix.Append("[");
        stPrefix.Append(function);
        stPrefix.Append(":");
        stPrefix.Append(line);
        stPrefix.Append("] ");
    }
    return stPrefix;
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

#define MM_PLAIN_T_(prio, mark, fmt) MM_PRINT_(prio, MM_PREFIX_(""), "%s" fmt, mmPrefix.szText)
#define MM_PLAIN_A_(prio, mark, fmt, ...) \
    MM_PRINT_(prio, MM_PREFIX_(""), "%s" fmt, mmPrefix.szText, __VA_ARGS__)
#define MM_MARKED_T_(prio, mark, fmt) \
    MM_PRINT_(prio, MM_PREFIX_(mark), "%s" fmt "\033[0m", mmPrefix.szText)
#define MM_MARKED_A_(prio, mark, fmt, ...) \
    MM_PRINT_(prio, MM_PREFIX_(mark), "%s" fmt "\033[0m", mmPrefix.szText, __VA_ARGS__)

// One argument for all that stands in front of a message: most lines are dropped, and what they cost is
// the handing over of their arguments.
#define MM_PREFIX_(mark) \
    MMMakePrefix<MMPrefixSize(__FILE__, __func__, mark)>(__FILE__, __func__, __LINE__, mark)

#define MM_PRINT_(prio, prefix, fmt, ...)                                           \
    do {                                                                            \
        static constexpr auto mmPrefix = prefix;                                    \
        (void)__dlog_print(DLOG_BUFFER_SYSTEM, prio, "PORTMELD", fmt, __VA_ARGS__); \
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
