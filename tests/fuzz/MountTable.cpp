// The kernel's table of mounts: the input is the whole text of one.
#include "usb/MountTable.h"

#include <algorithm>
#include <cstdlib>

#include <glib.h>

#include "Harness.h"

namespace {

using fuzz::require;
using machine::Mount;
using machine::MountTable;

/// As the kernel writes it.
std::string escaped(const std::string& text) {
    static constexpr char DIGITS[] = "01234567";
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::string(" \t\n\\#").find(character) == std::string::npos) {
            result += character;
        } else {
            result += {'\\', DIGITS[byte / 64], DIGITS[byte / 8 % 8], DIGITS[byte % 8]};
        }
    }
    return result;
}

std::string lineOf(const Mount& mount) {
    return "36 35 " + mount.deviceNumber + " " + escaped(mount.root) + " " + escaped(mount.point) +
           " rw,noatime shared:1 master:2 - " + escaped(mount.type) + " " + escaped(mount.source) +
           " rw,errors=continue\n";
}

/// What the kernel meant: three octal digits behind a backslash are a byte.
std::string plain(const char* field) {
    static GRegex* const escape =
        g_regex_new(R"(\\([0-3][0-7][0-7]))", G_REGEX_RAW, GRegexMatchFlags{}, nullptr);
    const auto putByte = [](const GMatchInfo* match, GString* result, gpointer) -> gboolean {
        g_autofree char* digits = g_match_info_fetch(match, 1);
        g_string_append_c(result, static_cast<char>(std::strtol(digits, nullptr, 8)));
        return FALSE;
    };
    g_autofree char* text =
        g_regex_replace_eval(escape, field, -1, 0, GRegexMatchFlags{}, putByte, nullptr, nullptr);
    return text;
}

/// The fields of a line stand where the kernel puts them.
void requireFields(const std::string& line, const Mount& mount) {
    if (line.find('\0') != std::string::npos || line.find("\\000") != std::string::npos) {
        return;  // none of the kernel's, and no C string
    }
    g_auto(GStrv) fields = g_strsplit(line.c_str(), " ", -1);
    require(mount.deviceNumber == fields[2] && mount.root == plain(fields[3]) &&
                mount.point == plain(fields[4]),
            "the fields of a mount are those of its line", line);
}

bool equal(const Mount& one, const Mount& other) {
    return one.deviceNumber == other.deviceNumber && one.root == other.root &&
           one.point == other.point && one.type == other.type && one.source == other.source;
}

void requireEqual(const MountTable& one, const MountTable& other, const char* demand) {
    require(std::equal(one.begin(), one.end(), other.begin(), other.end(), equal), demand);
}

/// What is found for a device is a mount of it, and a whole one where there is one.
void requireFound(const MountTable& table, const Mount& device) {
    const auto point = mountPointOf(table, device.source, device.deviceNumber);
    require(point.has_value(), "a mounted device is found", device.source);
    const bool whole = std::any_of(table.begin(), table.end(), [&](const Mount& mount) {
        return mount.deviceNumber == device.deviceNumber && mount.root == "/";
    });
    const bool isOne = std::any_of(table.begin(), table.end(), [&](const Mount& mount) {
        return mount.point == *point && (!whole || mount.root == "/") &&
               (mount.deviceNumber == device.deviceNumber || mount.source == device.source);
    });
    require(isOne, "what is found is a mount of the device", *point);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzz::wholeText(data, size);
    const MountTable table = machine::parseMountTable(text);
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    require(table.size() <= lines, "a line is one mount at most");

    std::string rewritten;
    MountTable byLine;
    for (const Mount& mount : table) {
        rewritten += lineOf(mount);
        requireFound(table, mount);
    }
    requireEqual(machine::parseMountTable(rewritten), table, "a mount comes back from its line");

    // Each line says the same alone.
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = text.substr(start, end - start);
        const MountTable one = machine::parseMountTable(line);
        if (!one.empty()) {
            requireFields(line, one.front());
        }
        byLine.insert(byLine.end(), one.begin(), one.end());
        start = end + 1;
    }
    requireEqual(byLine, table, "a line does not depend on the others");
    const std::string absent = "not in this table";
    const bool isAbsent = text.find(absent) == std::string::npos;
    require(!isAbsent || !mountPointOf(table, absent, absent), "what is not mounted is not found");
    return 0;
}
