// The file of a recording: appending to it.
#include "RecordFile.h"

#include <cerrno>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

#include <glib.h>

namespace workbench {

RecordFile::RecordFile(const std::string& path)
    : path_(path),
      file_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666)) {
    if (file_ < 0) {
        throw std::runtime_error(path + ": " + g_strerror(errno));
    }
}

RecordFile::~RecordFile() {
    if (file_ >= 0) {
        static_cast<void>(close(file_));
    }
}

std::string RecordFile::follow(const std::string& text) {
    while (file_ >= 0 && written_ < text.size()) {
        const ssize_t count = write(file_, text.data() + written_, text.size() - written_);
        if (count >= 0) {
            written_ += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            std::string reason = path_ + ": " + g_strerror(errno);
            static_cast<void>(close(file_));
            file_ = -1;
            return reason;
        }
    }
    return "";
}

}  // namespace workbench
