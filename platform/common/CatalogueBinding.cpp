// How the C library is brought to a language without a locale: messages get a locale other than
// "C", whichever there is, and the variable LANGUAGE then says which catalogues to take.
#include "CatalogueBinding.h"

#include <libintl.h>

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

bool bindCatalogues(const char* domain,
                    const char* folder,
                    const std::string& list,
                    CatalogueBinder bind) {
    if (domain == nullptr || *domain == '\0' || folder == nullptr) {
        return false;
    }
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
