// The words of a line of a scenario: taking a line apart, and putting a word so that it stays one.
#include "Words.h"

#include <glib.h>

namespace workbench {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

char byteAt(const std::string& line, std::size_t percent) {
    const int high = percent + 1 < line.size() ? g_ascii_xdigit_value(line[percent + 1]) : -1;
    const int low = percent + 2 < line.size() ? g_ascii_xdigit_value(line[percent + 2]) : -1;
    if (high < 0 || low < 0) {
        throw ScenarioError("a percent sign is followed by two hexadecimal digits");
    }
    return static_cast<char>(high * 16 + low);
}

}  // namespace

std::vector<Word> wordsOf(const std::string& line) {
    std::vector<Word> words;
    std::size_t i = 0;
    while (true) {
        while (i < line.size() && isBlank(line[i])) {
            ++i;
        }
        if (i == line.size() || line[i] == '#') {
            return words;
        }
        Word word{"", line[i] == '"'};
        bool quoted = false;
        for (; i < line.size() && (quoted || !isBlank(line[i])); ++i) {
            if (line[i] == '"') {
                quoted = !quoted;
            } else if (line[i] == '%') {
                word.text += byteAt(line, i);
                i += 2;
            } else {
                word.text += line[i];
            }
        }
        if (quoted) {
            throw ScenarioError("a quote is not closed");
        }
        words.push_back(word);
    }
}

std::string asWord(const std::string& text) {
    std::string word;
    bool needsQuotes = text.empty() || text.front() == '#' || text == "=" || text == "~";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '%' || byte < ' ' || byte == 0x7F) {
            constexpr const char* digits = "0123456789ABCDEF";
            word += '%';
            word += digits[byte >> 4U];
            word += digits[byte & 0xFU];
        } else {
            needsQuotes = needsQuotes || isBlank(c);
            word += c;
        }
    }
    return needsQuotes ? '"' + word + '"' : word;
}

}  // namespace workbench
