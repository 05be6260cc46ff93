// What a person who operates this TV knows of it: languages, applications, and reading its settings.
#include "TvFacts.h"

#include <map>
#include <variant>

namespace workbench {

const std::vector<Language>& languages() {
    static const std::vector<Language> choice = {
        {"en", "English"},      {"de", "Deutsch"}, {"fr", "Français"}, {"es", "Español"},
        {"pt_BR", "Português"}, {"pl", "Polski"},  {"tr", "Türkçe"},   {"ru", "Русский"},
        {"ar", "العربية"},      {"hi", "हिन्दी"},   {"th", "ไทย"},      {"ja", "日本語"},
        {"ko", "한국어"},       {"zh_CN", "中文"},
    };
    return choice;
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
