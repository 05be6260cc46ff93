// The demands, the cutting, and the surroundings that make a run the same everywhere.
#include "Harness.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <glib.h>

namespace {

[[noreturn]] void end(const char* what, const std::string& seen) {
    g_autofree char* printable = g_strescape(seen.c_str(), nullptr);
    // Not through stderr, which a harness may have turned elsewhere.
    (void)dprintf(STDERR_FILENO, "\nfuzz: %s%s%s\n", what, seen.empty() ? "" : ": ", printable);
    std::abort();
}

/// GLib would end the process by a trap, of which the fuzzer does not hear.
GLogWriterOutput endOnComplaint(GLogLevelFlags level,
                                const GLogField* fields,
                                gsize count,
                                void* /*data*/) {
    if ((level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING)) != 0) {
        g_autofree char* line = g_log_writer_format_fields(level, fields, count, FALSE);
        end("GLib complains", line);
    }
    return G_LOG_WRITER_HANDLED;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    setenv("TZ", "UTC0", 1);
    g_log_set_writer_func(endOnComplaint, nullptr, nullptr);
    return 0;
}

namespace fuzz {

void require(bool holds, const char* demand, const std::string& seen) {
    if (!holds) {
        end((std::string("does not hold: ") + demand).c_str(), seen);
    }
}

void requireText(const std::string& text, const char* whose) {
    const bool valid =
        g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
    require(valid, (std::string(whose) + " is valid UTF-8").c_str(), text);
}

std::string wholeText(const std::uint8_t* data, std::size_t size) {
    return size == 0 ? std::string() : std::string(reinterpret_cast<const char*>(data), size);
}

std::string cText(const std::uint8_t* data, std::size_t size) {
    const std::string text = wholeText(data, size);
    return text.substr(0, std::min(text.find('\0'), text.size()));
}

std::vector<std::string> texts(const std::uint8_t* data, std::size_t size) {
    const std::string whole = wholeText(data, size);
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end = whole.find('\0'); end != std::string::npos;
         end = whole.find('\0', start)) {
        pieces.push_back(whole.substr(start, end - start));
        start = end + 1;
    }
    pieces.push_back(whole.substr(start));
    return pieces;
}

std::string validText(const std::string& text) {
    g_autofree char* valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    return valid;
}

bool isLike(const std::string& text, const char* pattern) {
    return g_regex_match_simple(pattern, text.c_str(), G_REGEX_RAW, GRegexMatchFlags{}) != FALSE;
}

void writeFile(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary);
    file << content;
    file.close();
    require(!file.fail(), "a file of the harness can be written", path);
}

}  // namespace fuzz
