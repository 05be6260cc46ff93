// What the Linux machine itself has to say (a failed mount, a missing server), and where log lines end
// up: in the system journal with fields when a service manager runs the process, else on standard
// error. The daemon's own lines come through <platform/log.h> and use the same sink.
#pragma once

#include <initializer_list>
#include <string>

namespace machine {

/// syslog(3) priorities.
enum class Priority { Error = 3, Warning = 4, Notice = 5, Info = 6, Debug = 7 };

/// One journal field: an upper-case name such as "PORTMELD_DEVICE", any bytes as its value; of more than 64 KiB, or
/// of less where the journal's socket takes no more, the rest is cut off.
struct JournalField {
    const char* name;
    std::string value;
};

/// Write one line to the journal, or to standard error. Never waits for the journal: a line that it does
/// not take at once is lost, and the next one that it takes comes after one that says how many were. Never
/// blocks on anything but standard error. Lines of Priority::Debug go to the journal only, which is asked
/// for them when they are wanted.
///
/// @param message  one line of text; bytes that are no UTF-8 and control characters are made harmless
void report(Priority priority,
            const std::string& message,
            std::initializer_list<JournalField> fields = {});

/// The same for a line that somebody has asked for: whatever its priority, it is written.
void writeLine(Priority priority,
               const std::string& message,
               std::initializer_list<JournalField> fields = {});

/// Whether standard error is a stream of the journal (JOURNAL_STREAM of systemd.exec(5) names it) and
/// the journal's socket is there.
bool journalIsThere();

}  // namespace machine
