// The file of a recording. It grows by whole lines only, so that whatever ends the program leaves a
// scenario behind.
#pragma once

#include <cstddef>
#include <string>

namespace workbench {

class RecordFile {
public:
    /// Makes the file, or empties it. Throws std::runtime_error with the reason.
    explicit RecordFile(const std::string& path);
    ~RecordFile();
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    /// Writes what of a text is not in the file yet; the text only ever grows, by whole lines. "", or why
    /// it failed; nothing more is written then.
    std::string follow(const std::string& text);

private:
    std::string path_;
    int file_;
    std::size_t written_ = 0;
};

}  // namespace workbench
