// Types of values, and the complaints: one for each fault, however often the key is read.
#include "Settings.h"

#include <charconv>
#include <map>
#include <utility>

#include "Journal.h"

namespace machine {

namespace {

using Outcome = SettingReading::Outcome;

/// What was last said about a key or a folder.
std::map<std::string, std::string>& complaints() {
    static std::map<std::string, std::string> all;
    return all;
}

/// Longest beginning of a value that is told, in bytes.
constexpr std::size_t LONGEST_QUOTATION = 60;

void complain(const std::string& subject, const std::string& message, const std::string& key) {
    std::string& last = complaints()[subject];
    if (last != message) {
        last = message;
        report(Priority::Warning, message, {{"PORTMELD_SETTING", key}});
    }
}

void complainOfKey(const std::string& key, const std::string& cause) {
    complain(key, "the setting " + key + " is not taken: " + cause, key);
}

void isWell(const std::string& subject) {
    complaints().erase(subject);
}

/// Say why there is no text: a fault of the whole folder comes before one of the key.
void explain(const std::string& key, const std::string& folder, const SettingReading& reading) {
    const bool unset = reading.outcome == Outcome::Unset;
    // Nobody need have written a key of the running machine since it started.
    const std::string trouble =
        unset && folder != "db/" ? std::string() : settingsStore().troubleOfFolder(key);
    if (!trouble.empty()) {
        complain(folder, trouble + "; the settings in it count as unset", key);
    } else if (unset) {
        isWell(key);
    } else {
        complainOfKey(key, reading.text);
    }
}

/// A text of which it is not known yet whether it makes sense.
std::optional<std::string> readableText(const std::string& key) {
    const std::string folder = key.substr(0, key.find('/') + 1);
    SettingReading reading = settingsStore().read(key);
    if (reading.outcome != Outcome::Found) {
        explain(key, folder, reading);
        return std::nullopt;
    }
    isWell(folder);
    return std::move(reading.text);
}

}  // namespace

const SettingsStore& settingsStore() {
    static const SettingsStore store;
    return store;
}

std::optional<std::string> settingText(const std::string& key) {
    std::optional<std::string> text = readableText(key);
    if (text) {
        isWell(key);
    }
    return text;
}

std::optional<int> settingNumber(const std::string& key) {
    const std::optional<std::string> text = readableText(key);
    if (!text) {
        return std::nullopt;
    }
    int number = 0;
    const char* const end = text->data() + text->size();
    const auto [stop, error] = std::from_chars(text->data(), end, number);
    if (error != std::errc() || stop != end) {
        complainOfSetting(key, *text, "is no whole number of 32 bits; write one");
        return std::nullopt;
    }
    isWell(key);
    return number;
}

std::optional<bool> settingTruth(const std::string& key) {
    const std::optional<std::string> text = readableText(key);
    if (!text) {
        return std::nullopt;
    }
    const bool yes = *text == "1" || *text == "true";
    if (!yes && *text != "0" && *text != "false") {
        complainOfSetting(key, *text, "is neither 0, 1, false nor true; write one of them");
        return std::nullopt;
    }
    isWell(key);
    return yes;
}

void complainOfSetting(const std::string& key,
                       const std::string& text,
                       const std::string& instead) {
    const bool cut = text.size() > LONGEST_QUOTATION;
    complainOfKey(key,
                  "\"" + text.substr(0, LONGEST_QUOTATION) + (cut ? "...\" " : "\" ") + instead);
}

}  // namespace machine
