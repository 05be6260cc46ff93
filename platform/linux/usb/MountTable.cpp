// Taking a mountinfo table apart, line by line, and finding a device in it.
#include "MountTable.h"

namespace machine {

namespace {

bool isOctal(char character) {
    return character >= '0' && character <= '7';
}

/// Undo the kernel's escapes: a backslash and three octal digits, for blank, tab, line feed, backslash
/// and '#'.
std::string unescape(const std::string& text) {
    std::string plain;
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

/// Fields are separated by a single blank and nothing else: any other byte may stand in a path.
std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end = text.find(separator); end != std::string::npos;
         end = text.find(separator, start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::optional<Mount> parseLine(const std::string& line) {
    // id parent major:minor root point options [optional...] - type source superoptions
    const std::vector<std::string> fields = split(line, ' ');
    std::size_t separator = 6;
    while (separator < fields.size() && fields[separator] != "-") {
        ++separator;
    }
    if (separator + 2 >= fields.size()) {
        return std::nullopt;
    }
    return Mount{fields[2], unescape(fields[3]), unescape(fields[4]),
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
    for (const std::string& line : split(text, '\n')) {
        if (auto mount = parseLine(line)) {
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
