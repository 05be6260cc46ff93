// Writing to the journal, or to standard error where there is none.
#include "Journal.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include <glib.h>

namespace machine {

namespace {

/// Where the journal takes entries in its native protocol (systemd.io/JOURNAL_NATIVE_PROTOCOL).
/// sd_journal_sendv() would wait there for a journal that is stopped, and the main loop with it.
constexpr const char* JOURNAL_SOCKET = "/run/systemd/journal/socket";

/// Longer values are cut, and shorter still when the socket takes no entry of that size.
constexpr std::size_t LONGEST_VALUE = std::size_t{64} * 1024;
constexpr std::size_t LONGEST_VALUE_AT_LEAST = std::size_t{1024};

/// Lines that the journal did not take since it last took one.
std::atomic<unsigned> lost{0};

bool look() {
    const char* const stream = g_getenv("JOURNAL_STREAM");
    struct stat errors {};
    if (stream == nullptr || fstat(STDERR_FILENO, &errors) != 0) {
        return false;
    }
    const std::string mine = std::to_string(errors.st_dev) + ":" + std::to_string(errors.st_ino);
    return mine == stream && access(JOURNAL_SOCKET, F_OK) == 0;
}

/// One line of valid UTF-8: what would move a terminal's cursor or break the line is a blank.
std::string harmless(const std::string& text) {
    g_autofree char* valid = g_utf8_make_valid(text.c_str(), static_cast<gssize>(text.size()));
    std::string line = valid;
    for (char& byte : line) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x20 || value == 0x7F) {
            byte = ' ';
        }
    }
    return line;
}

/// At most so many bytes, and no part of a character at the end.
std::string cut(const std::string& text, std::size_t longest) {
    std::size_t end = std::min(text.size(), longest);
    while (end > 0 && end < text.size() &&
           (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return text.substr(0, end);
}

/// A value that may have line feeds follows its size, 64 bits in little-endian order.
void append(std::string& entry, const JournalField& field, std::size_t longest) {
    const std::string value = cut(field.value, longest);
    entry += field.name;
    if (value.find('\n') == std::string::npos) {
        entry += '=';
    } else {
        const std::uint64_t size = GUINT64_TO_LE(std::uint64_t{value.size()});
        char bytes[sizeof size];
        std::memcpy(bytes, &size, sizeof size);
        entry += '\n';
        entry.append(bytes, sizeof size);
    }
    entry += value + '\n';
}

/// Hand an entry to the journal, unless it would have to be waited for.
/// @return 0, or the error number
int sendEntry(const std::string& entry) {
    static const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, JOURNAL_SOCKET, sizeof address.sun_path - 1);
    const ssize_t sent = sendto(descriptor, entry.data(), entry.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                                reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return sent >= 0 ? 0 : errno;
}

bool toJournal(Priority priority,
               const std::string& line,
               const std::vector<JournalField>& fields) {
    int error = EMSGSIZE;
    for (std::size_t longest = LONGEST_VALUE;
         error == EMSGSIZE && longest >= LONGEST_VALUE_AT_LEAST; longest /= 2) {
        std::string entry;
        append(entry, {"MESSAGE", line}, longest);
        append(entry, {"PRIORITY", std::to_string(static_cast<int>(priority))}, longest);
        append(entry, {"SYSLOG_IDENTIFIER", "portmeld"}, longest);
        for (const JournalField& field : fields) {
            append(entry, field, longest);
        }
        error = sendEntry(entry);
    }
    return error == 0;
}

/// Whether nothing is left to be said of lost lines.
bool tellOfLostLines() {
    const unsigned count = lost.exchange(0);
    if (count == 0 ||
        toJournal(Priority::Warning,
                  "lines that the journal did not take are missing here: " + std::to_string(count),
                  {})) {
        return true;
    }
    lost += count;
    return false;
}

}  // namespace

bool journalIsThere() {
    static const bool there = look();
    return there;
}

void report(Priority priority,
            const std::string& message,
            std::initializer_list<JournalField> fields) {
    if (priority != Priority::Debug || journalIsThere()) {
        writeLine(priority, message, fields);
    }
}

void writeLine(Priority priority,
               const std::string& message,
               std::initializer_list<JournalField> fields) {
    const std::string line = harmless(message);
    if (!journalIsThere()) {
        std::fprintf(stderr, "portmeld: %s\n", line.c_str());
        return;
    }
    // What goes through after others did not is told where they are missing.
    if (!tellOfLostLines() || !toJournal(priority, line, fields)) {
        ++lost;
    }
}

}  // namespace machine
