// How the C library is brought to a language without a locale: messages get a locale other than
// "C", whichever there is, and the variable LANGUAGE then says which catalogues to take.
#include "CatalogueBinding.h"

#include <libintl.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <initializer_list>

#ifdef __GLIBC__
extern "C" {
/// The C library's counter of changes: texts found before it was raised are looked up anew.
extern int _nl_msg_cat_cntr;
}
#endif

namespace platform {

namespace {

constexpr const char* FALLBACK = "en";
constexpr std::size_t LONGEST_LANGUAGE = 64;

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isLanguageCharacter(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.' || c == '@';
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
    // The C library takes these two for "no translation".
    if (name == "C" || name == "POSIX") {
        return {};
    }
    const std::string modifier = language.substr(at);
    return modifier.find('.') == std::string::npos ? name + modifier : std::string();
}

/// Give messages a locale in which LANGUAGE counts.
bool leaveTheCLocale(const std::string& language) {
    for (const std::string& locale :
         {std::string("C.UTF-8"), language + ".UTF-8", std::string("en_US.UTF-8"), language}) {
        if (std::setlocale(LC_MESSAGES, locale.c_str()) != nullptr) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string catalogueList(const std::string& menuLanguage) {
    const std::string name = withoutCodeset(menuLanguage);
    return name.empty() || name == FALLBACK ? FALLBACK : name + ":" + FALLBACK;
}

bool bindCatalogue(const char* domain,
                   const char* folder,
                   const std::string& menuLanguage,
                   CatalogueBinder bind) {
    if (domain == nullptr || *domain == '\0' || folder == nullptr) {
        return false;
    }
    const std::string list = catalogueList(menuLanguage);
    const bool located = leaveTheCLocale(list.substr(0, list.find(':')));
    (void)std::setlocale(LC_NUMERIC, "C");
    const bool chosen = setenv("LANGUAGE", list.c_str(), 1) == 0;
    const bool bound =
        bind(domain, folder) != nullptr && bind_textdomain_codeset(domain, "UTF-8") != nullptr;
#ifdef __GLIBC__
    ++_nl_msg_cat_cntr;
#endif
    return located && chosen && bound;
}

}  // namespace platform
