// What one launch is to say: which application, and the extra data in the order in which they were set.
// Also the two forms in which an application gets the data. Not here: finding and starting it.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>

namespace machine {

struct LaunchRequest {
    /// The environment variable in which a program finds its extra data.
    static constexpr const char* VARIABLE = "PORTMELD_LAUNCH_DATA";
    /// The kernel takes no entry of so many bytes, or more, without its end (MAX_ARG_STRLEN, execve(2)).
    static constexpr std::size_t LONGEST_ENVIRONMENT_ENTRY = 131072;

    /// Names the desktop entry and, for an application that has one, its bus name.
    std::string applicationId;
    /// Keys and values. What was set last stands last, also when the key was there before: the data of
    /// all launches accumulate, and by their order an application can tell the newer from the older.
    std::vector<std::pair<std::string, std::string>> extraData;

    /// Set a value, replacing an earlier one of the same key; bytes that are no UTF-8 are replaced.
    void set(const char* key, const char* value);

    /// The data as one JSON object of strings, in order, on one line, without any control character.
    std::string json() const;

    /// VARIABLE=json().
    std::string environmentEntry() const;

    /// The data as a D-Bus dictionary of strings, a{ss}, in order; a floating reference.
    GVariant* dictionary() const;
};

}  // namespace machine
