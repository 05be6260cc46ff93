// Settings: the input is a key, a line feed and the bytes of its file. Any key is tried for whether it
// stays below its folder; the bytes are read as the text, the number and the truth of one fixed key.
#include "settings/Settings.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <glib.h>

#include "Harness.h"

namespace {

using fuzz::require;
using machine::SettingReading;
using machine::SettingsStore;

constexpr const char* KEY = "memory/portmeld/fuzzed";
constexpr const char* FILE_OF_KEY = "root/run/portmeld/memory/portmeld/fuzzed";

/// What is written to standard error while it lives.
class Complaints {
public:
    Complaints() : errors_(stderr) { stderr = open_memstream(&text_, &size_); }
    ~Complaints() { close(); }
    Complaints(const Complaints&) = delete;
    Complaints& operator=(const Complaints&) = delete;

    std::string take() {
        (void)std::fflush(stderr);
        return {text_, size_};
    }

private:
    void close() {
        (void)std::fclose(stderr);
        stderr = errors_;
        std::free(text_);
    }

    FILE* errors_;
    char* text_ = nullptr;
    std::size_t size_ = 0;
};

/// A file of a key lies below the folder of all keys, and no name on the way is hidden.
void requireContained(const std::string& key) {
    const SettingsStore store("state", "runtime");
    const std::string path = store.pathOf(key);
    require(SettingsStore::isKey(key) == !path.empty(), "a key has a file", key);
    if (path.empty()) {
        require(store.read(key).outcome == SettingReading::Outcome::Failed, "no key, no value",
                key);
        require(!store.write(key, "x").empty(), "no key is written", key);
        return;
    }
    require(path.rfind("state/", 0) == 0 || path.rfind("runtime/", 0) == 0,
            "a file lies below its folder", path);
    require(path.find("/.") == std::string::npos && path.find("//") == std::string::npos &&
                path.find('\0') == std::string::npos && path.back() != '/',
            "a file's names are plain ones", path);
}

bool isValue(const std::string& bytes) {
    return !bytes.empty() && bytes.size() <= SettingsStore::LARGEST_FILE &&
           g_utf8_validate(bytes.data(), static_cast<gssize>(bytes.size()), nullptr) != FALSE;
}

void requireText(const std::string& bytes) {
    const std::optional<std::string> text = machine::settingText(KEY);
    require(text.has_value() == isValue(bytes), "a value is valid UTF-8 of a sensible size", bytes);
    if (!text) {
        return;
    }
    require(*text == bytes || *text + "\n" == bytes, "a value is its file", *text);
    require(bytes.back() != '\n' || *text + "\n" == bytes, "a last line feed is not its own",
            *text);
    const SettingsStore store("state", "runtime");
    const std::string fault = store.write(KEY, *text);
    require(fault.empty() == (text->size() < SettingsStore::LARGEST_FILE),
            "a value can be written unless it is too long", fault);
    if (fault.empty()) {
        const SettingReading reading = store.read(KEY);
        require(reading.outcome == SettingReading::Outcome::Found && reading.text == *text,
                "a written value is read again", reading.text);
    }
}

void requireNumber(const std::optional<std::string>& text) {
    const std::optional<int> number = machine::settingNumber(KEY);
    bool wanted = text && text->size() < 100 && fuzz::isLike(*text, "^-?[0-9]+\\z");
    long long value = 0;
    if (wanted) {
        value = std::strtoll(text->c_str(), nullptr, 10);
        wanted = value == static_cast<int>(value);
    }
    // Zeros in front are taken, however many.
    require(number.has_value() == wanted || (text && text->size() >= 100),
            "a number is a decimal one of 32 bits", text.value_or(""));
    require(!number || !wanted || *number == value, "a number is what it says", text.value_or(""));
}

void requireTruth(const std::optional<std::string>& text) {
    const std::optional<bool> truth = machine::settingTruth(KEY);
    const bool yes = text == "1" || text == "true";
    const bool no = text == "0" || text == "false";
    require(truth.has_value() == (yes || no) && truth.value_or(false) == yes,
            "a truth is one of four words", text.value_or(""));
}

/// Every complaint is one harmless line.
void requireHarmless(const std::string& said) {
    fuzz::requireText(said, "what is said of a setting");
    require(said.empty() || said.back() == '\n', "a complaint ends its line", said);
    for (std::size_t start = 0; start < said.size(); start = said.find('\n', start) + 1) {
        require(said.compare(start, 10, "portmeld: ") == 0, "a complaint is one line", said);
    }
    require(std::none_of(said.begin(), said.end(),
                         [](char byte) { return byte != '\n' && g_ascii_iscntrl(byte) != FALSE; }),
            "a complaint moves no cursor", said);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input = fuzz::wholeText(data, size);
    const std::size_t end = std::min(input.find('\n'), input.size());
    const std::string bytes = input.substr(std::min(end + 1, input.size()));
    fuzz::writeFile(FILE_OF_KEY, bytes);
    std::string said;
    {
        Complaints complaints;
        requireContained(input.substr(0, end));
        requireText(bytes);
        const std::optional<std::string> text = machine::settingText(KEY);
        requireNumber(text);
        requireTruth(text);
        said = complaints.take();
    }
    requireHarmless(said);
    return 0;
}
