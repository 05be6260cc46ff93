// What a person who operates this TV knows of it: its settings, its companion application, its
// languages, how long it takes to start. Names that the platform gives; nothing of the daemon.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SimulatedTv.h"

namespace workbench {

/// Settings keys.
constexpr const char* languageKey = "db/menu_widget/language";
constexpr const char* useModeKey = "db/menu/support/use_mode";
constexpr const char* demoModeKey = "db/floorreel/demo_mode";
constexpr const char* dlnaNameKey = "memory/portmeld/removed_dlna_device";
constexpr const char* dlnaIconKey = "memory/portmeld/removed_dlna_device_icon_path";
constexpr int useModeHome = 0;
constexpr int useModeShop = 1;

/// The application that hears of devices itself when it runs.
constexpr const char* companionId = "org.norvane.lumet";

/// One of the TV context's bits that ask services to keep quiet.
constexpr int distractionFreeBit = 0x80;

/// How often the daemon feeds the watchdog, in milliseconds.
constexpr std::int64_t watchdogInterval = 5000;

struct Language {
    const char* code;
    const char* name;  ///< in itself
};

/// A choice of menu languages to go through.
const std::vector<Language>& languages();

/// Whether a language is written from right to left.
bool isRightToLeft(const std::string& code);

/// The TV's language: its code, and its name in itself where that is known.
std::string languageCodeOf(simulated::SimulatedTv& tv);
std::string languageNameOf(simulated::SimulatedTv& tv);

bool isInShopMode(simulated::SimulatedTv& tv);

/// Lets the time pass at once in which a freshly started daemon takes no events of the USB ports; returns
/// how many milliseconds that was. It may still take none after it.
std::int64_t skipStartUp(simulated::SimulatedTv& tv);

/// "photo player" for its id; the id itself for an application that is not known here.
std::string applicationName(const std::string& id);

}  // namespace workbench
