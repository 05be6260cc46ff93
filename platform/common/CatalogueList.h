// Which message catalogues a language means, and in which order: a pure matter of names. Nothing is
// looked up and nothing is set here.
#pragma once

#include <string>

namespace platform {

/// The catalogues to look into for a menu language such as "de_DE", "pt-BR", "zh-Hant-TW" or
/// "sr_RS.utf8@latin": a list as the environment variable LANGUAGE takes it, with "en" at its end. In
/// between stand other names of the language, and neighbours that its readers understand: "nb" for "no",
/// "es_419" for the Spanish of America. Just "en" for a language that is empty or that no language could
/// be named (folders, control characters, endless texts).
std::string catalogueList(const std::string& menuLanguage);

/// What a person's environment says of his languages: the variables of these names, "" when unset.
struct EnvironmentLanguages {
    std::string language;    ///< LANGUAGE
    std::string lcAll;       ///< LC_ALL
    std::string lcMessages;  ///< LC_MESSAGES
    std::string lang;        ///< LANG
};

/// As they are now. Binding a catalogue changes LANGUAGE.
EnvironmentLanguages languagesOfTheEnvironment();

/// The catalogues for a person without a menu: those that setlocale(3) and gettext(3) choose by his
/// environment, and their neighbours, with "en" at the end.
std::string catalogueList(const EnvironmentLanguages& languages);

}  // namespace platform
