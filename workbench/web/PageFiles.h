// The files of the page: compiled into the program, or read from a folder in which somebody works on them.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <gio/gio.h>

namespace workbench {

struct PageFile {
    std::shared_ptr<GBytes> bytes;
    std::string type;  ///< as the header Content-Type has it
};

class PageFiles {
public:
    /// "" for the files in the program, else a folder.
    explicit PageFiles(std::string folder) : folder_(std::move(folder)) {}

    /// The file at a path of the server such as "/app.js"; "/" is the page itself.
    std::optional<PageFile> find(const std::string& path) const;

private:
    std::string folder_;
};

/// A picture of the machine; none when it is missing, no regular file, of more than 1 MiB, or no picture.
std::optional<PageFile> pictureAt(const std::string& path);

}  // namespace workbench
