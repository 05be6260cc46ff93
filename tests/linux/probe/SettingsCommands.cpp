// What a test can ask of the settings: the contract's functions, and the store beneath them as another
// program would use it.
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>

#include <platform/settings.h>

#include "Probe.h"
#include "settings/SettingsStore.h"

namespace {

using machine::SettingReading;
using machine::SettingsStore;

/// What a number is set to before it is read: a failed read must leave it alone.
constexpr int UNTOUCHED = -77;

Json numberRead(int (*get)(const char*, int*), const std::string& key) {
    int value = UNTOUCHED;
    const int status = get(key.c_str(), &value);
    if ((status != 0) != (value == UNTOUCHED)) {
        throw std::logic_error("the status says something else than the value");
    }
    return status == 0 ? number(value) : nothing();
}

std::optional<std::string> optionalText(const char* borrowed) {
    return borrowed != nullptr ? std::optional<std::string>(borrowed) : std::nullopt;
}

void tellChange(const char* listener, keynode_s* node) {
    JsonMembers members;
    printEvent("setting", members.with("listener", text(std::string(listener)))
                              .with("key", text(optionalText(vconf_keynode_get_name(node))))
                              .with("value", text(optionalText(vconf_keynode_get_str(node)))));
}

void first(keynode_s* node, void*) {
    tellChange("first", node);
}

void second(keynode_s* node, void*) {
    tellChange("second", node);
}

/// Ends itself and "second" when it is called.
void last(keynode_s* node, void*) {
    tellChange("last", node);
    const std::string key = vconf_keynode_get_name(node);
    (void)vconf_ignore_key_changed(key.c_str(), last);
    (void)vconf_ignore_key_changed(key.c_str(), second);
}

vconf_callback_fn listener(const std::string& name) {
    if (name == "first") {
        return first;
    }
    return name == "second" ? second : last;
}

/// Every value that a key had while it was read so many times; null for each failed read.
Json valuesSeen(const std::string& key, int times) {
    std::set<std::optional<std::string>> seen;
    for (int i = 0; i < times; ++i) {
        const SettingReading reading = SettingsStore().read(key);
        seen.insert(reading.outcome == SettingReading::Outcome::Found ? std::optional(reading.text)
                                                                      : std::nullopt);
    }
    return list(seen, [](const auto& value) { return text(value); });
}

}  // namespace

ProbeCommands settingsCommands() {
    return {
        {"get-int", 1, 1,  // KEY -> the number, or null
         [](const Words& words) { return numberRead(vconf_get_int, words[1]); }},
        {"get-bool", 1, 1,  // KEY -> 0, 1 or null
         [](const Words& words) { return numberRead(vconf_get_bool, words[1]); }},
        {"get-str", 1, 1,  // KEY -> the text, or null
         [](const Words& words) {
             const std::unique_ptr<char, void (*)(void*)> value(vconf_get_str(words[1].c_str()),
                                                                std::free);
             return text(optionalText(value.get()));
         }},
        {"watch", 2, 2,  // KEY first|second|last -> status; events "setting"
         [](const Words& words) {
             return number(vconf_notify_key_changed(words[1].c_str(), listener(words[2]), nullptr));
         }},
        {"ignore", 2, 2,  // KEY first|second|last -> status
         [](const Words& words) {
             return number(vconf_ignore_key_changed(words[1].c_str(), listener(words[2])));
         }},
        {"store-write", 2, 2,  // KEY VALUE -> "", or the fault
         [](const Words& words) { return text(SettingsStore().write(words[1], words[2])); }},
        {"store-remove", 1, 1,  // KEY -> "", or the fault
         [](const Words& words) { return text(SettingsStore().remove(words[1])); }},
        {"store-write-forever", 2, 2,  // KEY VALUE -> only the fault
         [](const Words& words) {
             std::string fault;
             while (fault.empty()) {
                 fault = SettingsStore().write(words[1], words[2]);
             }
             return text(fault);
         }},
        {"store-values-seen", 2, 2,  // KEY TIMES -> every value
         [](const Words& words) { return valuesSeen(words[1], integer(words[2])); }},
    };
}
