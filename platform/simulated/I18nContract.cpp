// The message catalogue in the TV's menu language, and the two functions of the C library that the
// daemon calls for it: the linker routes them here, so that they stand in the journal.
#include <libintl.h>
#include <platform/i18n.h>

#include "CatalogueBinding.h"
#include "CatalogueList.h"
#include "ContractCall.h"

using simulated::contractCall;
using simulated::journalTexts;
using simulated::SimulatedTv;

extern "C" {

char* __real_bindtextdomain(const char* domain, const char* folder);
char* __wrap_bindtextdomain(const char* domain, const char* folder);
char* __real_dgettext(const char* domain, const char* id);
char* __wrap_dgettext(const char* domain, const char* id);

int appcore_set_i18n(const char* domain, const char* dir) {
    return contractCall(__func__, journalTexts(domain, dir), [&](SimulatedTv& tv) {
        const auto* value = tv.settings().get("db/menu_widget/language");
        const auto* language = value != nullptr ? std::get_if<std::string>(value) : nullptr;
        const std::string list =
            platform::catalogueList(language != nullptr ? *language : std::string());
        const bool bound = platform::bindCatalogues(domain, dir, list, __real_bindtextdomain);
        return bound ? 0 : simulated::CALL_FAILED;
    });
}

char* __wrap_bindtextdomain(const char* domain, const char* folder) {
    const bool fails = SimulatedTv::current().enter("bindtextdomain", journalTexts(domain, folder));
    return fails ? nullptr : __real_bindtextdomain(domain, folder);
}

char* __wrap_dgettext(const char* domain, const char* id) {
    const bool fails = SimulatedTv::current().enter("dgettext", journalTexts(domain, id));
    return fails ? nullptr : __real_dgettext(domain, id);
}

}  // extern "C"
