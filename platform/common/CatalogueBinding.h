// Binding the message catalogue to the menu language. The C library chooses a catalogue by locale,
// and a television knows its menu language only: no locale of that language need be installed.
#pragma once

#include <string>

namespace platform {

/// The catalogues to look into for a menu language such as "de_DE", "pt-BR" or "sr_RS.utf8@latin":
/// a list as the environment variable LANGUAGE takes it, with "en" at its end. Just "en" for a
/// language that is empty or that no language could be named (folders, control characters, endless
/// texts).
std::string catalogueList(const std::string& menuLanguage);

/// A function like bindtextdomain().
using CatalogueBinder = char* (*)(const char* domain, const char* folder);

/// From the return on, dgettext() answers for `domain` in the menu language, as UTF-8, from the
/// catalogues below `folder`. May be called again for another language at any time; what was looked
/// up before is forgotten. Sets LANGUAGE and the locale of messages; LC_NUMERIC becomes "C", other
/// categories stay.
///
/// @param bind  takes the place of bindtextdomain() when that is watched by somebody else
/// @return whether it worked; if not, messages are their ids
bool bindCatalogue(const char* domain,
                   const char* folder,
                   const std::string& menuLanguage,
                   CatalogueBinder bind);

}  // namespace platform
