// The settings of this process's machine: read with their types, and a line in the log for a key that
// holds what it should not. Files are SettingsStore's affair, changes SettingsWatches'.
#pragma once

#include <optional>
#include <string>

#include "SettingsStore.h"

namespace machine {

/// The store that this process reads.
const SettingsStore& settingsStore();

/// The text of a key; nothing when it is unset or cannot be read.
///
/// What cannot be read is told in one warning that names the key, the cause and the remedy; it is not
/// told again until the cause is another one, or the key was well in between. That nobody has set a key
/// is no fault. That a whole folder of keys is missing or forbidden is one, once.
std::optional<std::string> settingText(const std::string& key);

/// The whole number of a key: decimal, within 32 bits. Nothing, and a warning as above, for others.
std::optional<int> settingNumber(const std::string& key);

/// The truth value of a key: 1 or true, 0 or false. Nothing, and a warning as above, for others.
std::optional<bool> settingTruth(const std::string& key);

/// Warn about a key that holds a readable text which makes no sense to its reader; as above.
/// @param text     what the key holds; only its beginning is told
/// @param instead  what it is not and what to write instead, in English: "is no number; write one"
void complainOfSetting(const std::string& key, const std::string& text, const std::string& instead);

}  // namespace machine
