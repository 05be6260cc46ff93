// What the daemon did to the platform: every call of the contract with its arguments and every log
// line, in one order; the faults that a test has ordered; and the breaches of the contract that the
// daemon committed.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace simulated {

/// A log line, taken apart.
struct LogLine {
    int priority;          ///< 3 debug, 4 info, 5 warning
    std::string tag;       ///< "PORTMELD"
    std::string file;      ///< source file without folder
    std::string function;  ///< function that logged
    int line;              ///< line number
    std::string message;   ///< the message part, without prefix and colours
    std::string text;      ///< the line as it was printed
    bool wellFormed;       ///< prefix and colours are those of its priority
};

/// Take a line apart that the daemon printed.
LogLine parseLogLine(int priority, const std::string& tag, const std::string& text);

/// How a contract function fails when it is told to.
enum class Fault {
    /// Returns an error (functions that return a number), nothing is done or written. A handle that
    /// was to be released counts as released all the same.
    Fails,
    /// Returns null (functions that return a pointer).
    ReturnsNull
};

class CallJournal {
public:
    /// One entry: a call ("usb_device_get_device_list(8)") or, with `log` set, a log line.
    struct Entry {
        std::string function;
        std::string text;
        std::optional<LogLine> log;
    };

    // ---- reading

    /// Position now, for `since`.
    std::size_t mark() const { return dropped_ + entries_.size(); }

    /// Calls since a mark, as "function(argument, argument)": texts in double quotes, null as null,
    /// devices as <node or serial>; callbacks, user data and out pointers are left out, and so are
    /// handles of lists, launches, scans and settings that are not null. A notification is its item
    /// type alone: Screen::history() has the rest. The property getters of the USB library and log
    /// lines are left out too.
    std::vector<std::string> calls(std::size_t since = 0) const;

    /// The same with the property getters.
    std::vector<std::string> allCalls(std::size_t since = 0) const;

    /// How often a function was called.
    std::size_t count(const std::string& function, std::size_t since = 0) const;

    /// Log lines since a mark, least priority first to be listed.
    std::vector<LogLine> log(std::size_t since = 0, int leastPriority = 3) const;

    /// Messages of log lines of info and above (or another least priority).
    std::vector<std::string> messages(std::size_t since = 0, int leastPriority = 4) const;

    /// Whether a line with exactly this message and priority was logged.
    bool logged(int priority, const std::string& message, std::size_t since = 0) const;

    /// Everything in its order: calls as calls() gives them, log lines of info as "I message",
    /// warnings as "W message", debug lines as "D message".
    std::vector<std::string> story(std::size_t since = 0, int leastPriority = 4) const;

    const std::deque<Entry>& entries() const { return entries_; }

    /// Keep at most this many entries, the newest (0: all, the start value).
    void setLimit(std::size_t limit);

    /// A function called for every log line as it comes.
    void setLogSink(void (*sink)(const LogLine&, void*), void* data);

    // ---- faults

    /// Let a contract function fail, the next `times` times it is called (-1: until cleared).
    void order(const std::string& function, Fault fault, int times = -1);
    void clearFaults();

    /// Names of all functions that faults can be ordered for, with the kind that fits each.
    static const std::vector<std::pair<std::string, Fault>>& faultable();

    // ---- breaches

    /// What the daemon did against the contract (a handle freed twice, read after it was freed,
    /// never freed, ...): empty when all is well.
    const std::vector<std::string>& breaches() const { return breaches_; }

    // ---- for the parts of the TV

    void called(const std::string& function, const std::string& arguments);
    void logLine(int priority, const char* tag, const std::string& text);
    /// The fault to act out for this call, if one is ordered (consumes one of its times).
    std::optional<Fault> fault(const std::string& function);
    void breach(std::string text);

private:
    void append(Entry entry);
    void trim();
    template <class Take>
    void each(std::size_t since, const Take& take) const;
    struct Ordered {
        Fault fault;
        int times;
    };
    std::deque<Entry> entries_;
    std::size_t dropped_ = 0;
    std::size_t limit_ = 0;
    std::map<std::string, Ordered> faults_;
    std::vector<std::string> breaches_;
    void (*sink_)(const LogLine&, void*) = nullptr;
    void* sinkData_ = nullptr;
};

}  // namespace simulated
