// From a language to the names of catalogues.
//
// For each name of a list the C library looks at the name, then at the language alone ("de_AT", "de"),
// and only then at the next name: a neighbour that is to come before the language alone must stand in
// front.
#include "CatalogueList.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

namespace platform {

namespace {

constexpr const char* FALLBACK = "en";
constexpr std::size_t LONGEST_LANGUAGE = 64;
constexpr std::size_t LONGEST_SCRIPT = 4;

/// Most languages of a person that are looked at.
constexpr std::size_t MOST_LANGUAGES = 16;

using Names = std::vector<std::string>;

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isLanguageCharacter(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.' || c == '@';
}

/// The C library's names for "no translation".
bool isNoLanguage(const std::string& name) {
    return name.empty() || name == "C" || name == "POSIX";
}

/// Language, country and modifier, without the character set ("de_DE.utf8@euro": "de_DE@euro"); ""
/// when it cannot be a language.
std::string withoutCodeset(const std::string& language) {
    if (language.empty() || language.size() > LONGEST_LANGUAGE || !isLetter(language[0]) ||
        !std::all_of(language.begin(), language.end(), isLanguageCharacter)) {
        return {};
    }
    const std::size_t at = std::min(language.find('@'), language.size());
    std::string name = language.substr(0, std::min(language.find('.'), at));
    std::replace(name.begin(), name.end(), '-', '_');
    if (isNoLanguage(name)) {
        return {};
    }
    const std::string modifier = language.substr(at);
    return modifier.find('.') == std::string::npos ? name + modifier : std::string();
}

/// "zh_Hant_TW@x" in its parts.
struct Parts {
    std::string language;
    std::string script;
    std::string territory;
    std::string modifier;  ///< with its "@"

    explicit Parts(const std::string& name) {
        const std::size_t at = std::min(name.find('@'), name.size());
        modifier = name.substr(at);
        std::string rest = name.substr(0, at);
        language = takeFirst(rest);
        const std::size_t length = std::min(rest.find('_'), rest.size());
        if (length == LONGEST_SCRIPT &&
            std::all_of(rest.begin(), rest.begin() + LONGEST_SCRIPT, isLetter)) {
            script = takeFirst(rest);
        }
        territory = rest;
    }

    /// As the C library names it, which knows no scripts.
    std::string name() const {
        return language + (territory.empty() ? "" : "_" + territory) + modifier;
    }

private:
    static std::string takeFirst(std::string& rest) {
        const std::size_t end = std::min(rest.find('_'), rest.size());
        std::string first = rest.substr(0, end);
        rest.erase(0, std::min(end + 1, rest.size()));
        return first;
    }
};

/// Chinese is written in two scripts; the territory tells which when the name does not.
Names chinese(const Parts& parts) {
    const std::string& territory = parts.territory;
    const bool traditional = territory == "TW" || territory == "HK" || territory == "MO";
    if (parts.script == "Hant" && !traditional) {
        return {"zh_TW"};
    }
    if (territory.empty() || (parts.script == "Hans" && traditional)) {
        return {"zh_CN"};
    }
    if (territory == "HK") {
        return {"zh_HK", "zh_TW"};
    }
    if (territory == "MO") {
        return {"zh_MO", "zh_HK", "zh_TW"};
    }
    if (territory == "SG") {
        return {"zh_SG", "zh_CN"};
    }
    if (territory == "MY") {
        return {"zh_MY", "zh_SG", "zh_CN"};
    }
    return {parts.name()};
}

bool isAmericanSpanish(const Parts& parts) {
    constexpr std::array countries = {"AR", "BO", "CL", "CO", "CR", "CU", "DO", "EC", "GT", "HN",
                                      "NI", "PA", "PE", "PR", "PY", "SV", "US", "UY", "VE"};
    return parts.language == "es" &&
           std::find(countries.begin(), countries.end(), parts.territory) != countries.end();
}

/// Codes of a language that is also known, or whose readers are also served, by another.
Names otherNames(const std::string& language) {
    struct Other {
        const char* code;
        const char* name;
    };
    constexpr std::array others = {
        Other{"no", "nb"},       Other{"nn", "nb"},     Other{"iw", "he"},
        Other{"in", "id"},       Other{"tl", "fil"},    Other{"mo", "ro"},
        Other{"prs", "fa"},      Other{"cmn", "zh_CN"}, Other{"cnr", "sr@latin"},
        Other{"sh", "sr@latin"}, Other{"yue", "zh_HK"}};
    const auto* found = std::find_if(others.begin(), others.end(),
                                     [&](const Other& other) { return language == other.code; });
    return found != others.end() ? Names{found->name} : Names{};
}

/// The names for one language, best first; none for what is no language.
Names namesFor(const std::string& language) {
    const std::string cleaned = withoutCodeset(language);
    if (cleaned.empty()) {
        return {};
    }
    Parts parts(cleaned);
    if (parts.language == "zh") {
        return chinese(parts);
    }
    if (parts.language == "sr" && parts.script == "Latn") {
        parts.modifier = "@latin";
    }
    if (isAmericanSpanish(parts)) {
        return {"es_419", parts.name()};
    }
    Names names = {parts.name()};
    const Names others = otherNames(parts.language);
    names.insert(names.end(), others.begin(), others.end());
    return names;
}

/// Names as a list; what stands behind English is never reached.
std::string listOf(const Names& names) {
    std::string list;
    for (const std::string& name : names) {
        if (name == FALLBACK) {
            break;
        }
        list += name + ':';
    }
    return list + FALLBACK;
}

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

std::string catalogueList(const std::string& menuLanguage) {
    return listOf(namesFor(menuLanguage));
}

EnvironmentLanguages languagesOfTheEnvironment() {
    return {variable("LANGUAGE"), variable("LC_ALL"), variable("LC_MESSAGES"), variable("LANG")};
}

std::string catalogueList(const EnvironmentLanguages& languages) {
    std::string locale = languages.lang;
    for (const std::string* stronger : {&languages.lcMessages, &languages.lcAll}) {
        if (!stronger->empty()) {
            locale = *stronger;
        }
    }
    if (isNoLanguage(locale)) {
        return FALLBACK;  // LANGUAGE does not count then
    }
    std::string rest = languages.language.empty() ? locale : languages.language;
    Names all;
    for (std::size_t count = 0; count < MOST_LANGUAGES && !rest.empty(); ++count) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const Names names = namesFor(rest.substr(0, end));
        all.insert(all.end(), names.begin(), names.end());
        rest.erase(0, std::min(end + 1, rest.size()));
    }
    return listOf(all);
}

}  // namespace platform
