// Two streams, and who reads them.
#include "Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include <glib.h>

#include "Failure.h"
#include "Text.h"

namespace ctl {

namespace {

/// A text in the encoding of a terminal that shows another one than UTF-8.
std::string inTerminalsEncoding(const std::string& text) {
    const char* encoding = nullptr;
    (void)g_get_charset(&encoding);
    const std::unique_ptr<char, decltype(&g_free)> converted(
        g_convert_with_fallback(text.data(), static_cast<gssize>(text.size()), encoding, "UTF-8",
                                "?", nullptr, nullptr, nullptr),
        g_free);
    return converted != nullptr ? converted.get() : "?";
}

}  // namespace

bool outputIsTerminal() {
    static const bool answer = isatty(STDOUT_FILENO) == 1;
    return answer;
}

bool terminalIsForeign() {
    return outputIsTerminal() && g_get_charset(nullptr) == FALSE;
}

void writeLine(const std::string& text) {
    const std::string line = (terminalIsForeign() ? inTerminalsEncoding(text) : text) + '\n';
    if (std::fwrite(line.data(), 1, line.size(), stdout) == line.size() &&
        std::fflush(stdout) == 0) {
        return;
    }
    if (errno == EPIPE) {
        throw ReaderGone();
    }
    throw Failure(Status::Failed, "cannot write the answer to standard output: " +
                                      std::generic_category().message(errno));
}

void writeValue(const std::string& text) {
    writeLine(outputIsTerminal() ? printable(text) : text);
}

void writeJson(const Json& value) {
    writeLine(jsonText(value, terminalIsForeign()));
}

void writeError(const std::string& message) {
    const std::string line = printable("portmeldctl: " + message);
    const bool foreign = isatty(STDERR_FILENO) == 1 && g_get_charset(nullptr) == FALSE;
    (void)std::fprintf(stderr, "%s\n", (foreign ? inTerminalsEncoding(line) : line).c_str());
}

}  // namespace ctl
