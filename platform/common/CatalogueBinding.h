// Binding the message catalogue to the menu language. The C library chooses a catalogue by locale,
// and a television knows its menu language only: no locale of that language need be installed. Which
// catalogues a language means is decided by CatalogueList.
#pragma once

#include <string>

namespace platform {

/// A function like bindtextdomain().
using CatalogueBinder = char* (*)(const char* domain, const char* folder);

/// From the return on, dgettext() answers for `domain` from the first of some catalogues below `folder`
/// that knows the text, as UTF-8. May be called again with other catalogues at any time; what was looked
/// up before is forgotten. Sets LANGUAGE and the locale of messages; LC_NUMERIC becomes "C", other
/// categories stay.
///
/// @param list  from catalogueList()
/// @param bind  takes the place of bindtextdomain() when that is watched by somebody else
/// @return whether it worked; if not, messages are their ids
bool bindCatalogues(const char* domain,
                    const char* folder,
                    const std::string& list,
                    CatalogueBinder bind);

}  // namespace platform
