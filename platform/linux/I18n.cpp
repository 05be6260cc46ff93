// The catalogue in the menu language of the settings or, while nobody has set one, in the language of
// the person whose session this is.
#include <libintl.h>
#include <platform/i18n.h>

#include <optional>
#include <string>

#include "CatalogueBinding.h"
#include "CatalogueList.h"
#include "settings/Settings.h"

namespace {

constexpr const char* LANGUAGE_KEY = "db/menu_widget/language";

/// As it was when the process started: binding a catalogue changes the environment.
const std::string& languagesOfThePerson() {
    static const std::string languages =
        platform::catalogueList(platform::languagesOfTheEnvironment());
    return languages;
}

}  // namespace

extern "C" int appcore_set_i18n(const char* domain, const char* dir) {
    const std::string& ofThePerson = languagesOfThePerson();
    const std::optional<std::string> language = machine::settingText(LANGUAGE_KEY);
    const bool bound = platform::bindCatalogues(
        domain, dir,
        language && !language->empty() ? platform::catalogueList(*language) : ofThePerson,
        bindtextdomain);
    return bound ? 0 : -1;
}
