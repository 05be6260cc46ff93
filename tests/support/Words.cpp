// Reading and taking apart the lines of Words.h.
#include "Words.h"

#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include <glib-unix.h>

Words wordsOf(const std::string& line) {
    Words words;
    const std::unique_ptr<char*, void (*)(char**)> encoded(g_strsplit(line.c_str(), " ", -1),
                                                           g_strfreev);
    for (char** word = encoded.get(); *word != nullptr; ++word) {
        const std::unique_ptr<char, void (*)(void*)> decoded(g_uri_unescape_string(*word, nullptr),
                                                             g_free);
        if (decoded == nullptr) {
            throw std::invalid_argument(std::string("cannot decode '") + *word + "'");
        }
        words.emplace_back(decoded.get());
    }
    return words;
}

int integer(const std::string& word) {
    int value = 0;
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    if (error != std::errc() || stop != end) {
        throw std::invalid_argument("'" + word + "' is no number");
    }
    return value;
}

void printLine(const std::string& line) {
    std::fprintf(stdout, "%s\n", line.c_str());
    std::fflush(stdout);
}

CommandInput::CommandInput(std::function<std::string(const std::string&)> answer,
                           std::function<void()> ended)
    : answer_(std::move(answer)),
      ended_(std::move(ended)),
      source_(g_unix_fd_add(STDIN_FILENO,
                            static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
                            reinterpret_cast<GUnixFDSourceFunc>(readable),
                            this)) {}

CommandInput::~CommandInput() {
    if (source_ != 0) {
        g_source_remove(source_);
    }
}

int CommandInput::readable(int descriptor, int, void* self) {
    auto& input = *static_cast<CommandInput*>(self);
    std::array<char, 4096> bytes{};
    const ssize_t count = read(descriptor, bytes.data(), bytes.size());
    if (count <= 0) {
        input.source_ = 0;
        input.ended_();
        return G_SOURCE_REMOVE;
    }
    input.take(std::string(bytes.data(), static_cast<std::size_t>(count)));
    return G_SOURCE_CONTINUE;
}

void CommandInput::take(const std::string& bytes) {
    pending_ += bytes;
    for (std::size_t end = pending_.find('\n'); end != std::string::npos;
         end = pending_.find('\n')) {
        const std::string line = pending_.substr(0, end);
        pending_.erase(0, end + 1);
        printLine(answer_(line));
    }
}
