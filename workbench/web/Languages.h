// The languages that the pop-ups can have: those with a catalogue, and what each is called in itself.
#pragma once

#include <string>

#include "Json.h"

namespace workbench {

/// The languages with a catalogue below the folder `catalogues`, by name, as the protocol has them.
Json languagesIn(const std::string& catalogues);

}  // namespace workbench
