// Taking a mountinfo table apart, line by line, and finding a device in it.
#include "MountTable.h"

#include <string_view>

namespace machine {

namespace {

bool isOctal(char character) {
    return character >= '0' && character <= '7';
}

/// Undo the kernel's escapes: a backslash and three octal digits, for blank, tab, line feed, backslash
/// and '#'.
std::string unescape(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && at + 3 < text.size() && text[at + 1] <= '3' &&
            isOctal(text[at + 1]) && isOctal(text[at + 2]) && isOctal(text[at + 3])) {
            plain += static_cast<char>((text[at + 1] - '0') * 64 + (text[at + 2] - '0') * 8 +
                                       (text[at + 3] - '0'));
            at += 3;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

/// Cut a text at every separator: pieces of it, one more than there are separators. Fields are separated by
/// a single blank and nothing else: any other byte may stand in a path.
void split(std::string_view text, char separator, std::vector<std::string_view>& pieces) {
    pieces.clear();
    std::size_t start = 0;
    for (std::size_t end = text.find(separator); end != std::string_view::npos;
         end = text.find(separator, start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    pieces.push_back(text.substr(start));
}

/// @param fields  of one line
std::optional<Mount> parseLine(const std::vector<std::string_view>& fields) {
    // id parent major:minor root point options [optional...] - type source superoptions
    std::size_t separator = 6;
    while (separator < fields.size() && fields[separator] != "-") {
        ++separator;
    }
    if (separator + 2 >= fields.size()) {
        return std::nullopt;
    }
    return Mount{std::string(fields[2]), unescape(fields[3]), unescape(fields[4]),
                 unescape(fields[separator + 1]), unescape(fields[separator + 2])};
}

bool isNamed(const Mount& mount, const std::string& devname) {
    const bool hasDevice = mount.deviceNumber.compare(0, 2, "0:") != 0;
    const bool isAnybodys = mount.type.compare(0, 5, "fuse.") == 0;
    return mount.source == devname && !hasDevice && !isAnybodys;
}

}  // namespace

MountTable parseMountTable(const std::string& text) {
    MountTable table;
    std::vector<std::string_view> lines;
    std::vector<std::string_view> fields;
    split(text, '\n', lines);
    table.reserve(lines.size());
    for (const std::string_view line : lines) {
        split(line, ' ', fields);
        if (auto mount = parseLine(fields)) {
            table.push_back(std::move(*mount));
        }
    }
    return table;
}

std::optional<std::string> mountPointOf(const MountTable& table,
                                        const std::string& devname,
                                        const std::string& deviceNumber) {
    std::optional<std::string> found;
    for (const Mount& mount : table) {
        if (mount.deviceNumber != deviceNumber && !isNamed(mount, devname)) {
            continue;
        }
        if (mount.root == "/") {
            return mount.point;
        }
        if (!found) {
            found = mount.point;
        }
    }
    return found;
}

}  // namespace machine
