// What a person who operates this TV knows of it: languages, applications, and reading its settings.
#include "TvFacts.h"

#include <algorithm>
#include <map>
#include <variant>

namespace workbench {

namespace {

/// Time enough for every start-up timer; a daemon that takes no events after it never will.
constexpr std::int64_t longestStartUp = 60000;

}  // namespace

const std::vector<Language>& languages() {
    static const std::vector<Language> choice = {
        {"en", "English"},      {"de", "Deutsch"}, {"fr", "Français"}, {"es", "Español"},
        {"pt_BR", "Português"}, {"pl", "Polski"},  {"tr", "Türkçe"},   {"ru", "Русский"},
        {"ar", "العربية"},      {"hi", "हिन्दी"},   {"th", "ไทย"},      {"ja", "日本語"},
        {"ko", "한국어"},       {"zh_CN", "中文"},
    };
    return choice;
}

bool isRightToLeft(const std::string& code) {
    // Of the languages that there are texts in.
    const std::string language = code.substr(0, code.find_first_of("_-@."));
    return language == "ar" || language == "fa" || language == "he" || language == "ur";
}

std::string languageCodeOf(simulated::SimulatedTv& tv) {
    const simulated::Settings::Value* const value = tv.settings().get(languageKey);
    const auto* const code = value == nullptr ? nullptr : std::get_if<std::string>(value);
    return code == nullptr ? "" : *code;
}

std::string languageNameOf(simulated::SimulatedTv& tv) {
    std::string code = languageCodeOf(tv);
    for (const Language& language : languages()) {
        if (code == language.code) {
            return language.name;
        }
    }
    return code;
}

bool isInShopMode(simulated::SimulatedTv& tv) {
    const simulated::Settings::Value* const value = tv.settings().get(useModeKey);
    return value != nullptr && *value == simulated::Settings::Value(useModeShop);
}

std::int64_t skipStartUp(simulated::SimulatedTv& tv) {
    const std::int64_t start = tv.clock().now();
    while (!tv.ports().listening() && tv.clock().now() - start < longestStartUp) {
        const auto timers = tv.clock().timers();
        if (timers.empty()) {
            break;
        }
        tv.advance(std::max<std::int64_t>(timers.front().due - tv.clock().now(), 0));
    }
    return tv.clock().now() - start;
}

std::string applicationName(const std::string& id) {
    static const std::map<std::string, std::string> names = {
        {companionId, "companion application"},  {"org.norvane.floorreel", "internal demo player"},
        {"org.norvane.picreel", "photo player"}, {"org.norvane.shopreel", "demo player"},
        {"org.norvane.vidreel", "video player"}, {"org.quillon.folian", "content browser"},
    };
    const auto known = names.find(id);
    return known == names.end() ? id : known->second;
}

}  // namespace workbench
