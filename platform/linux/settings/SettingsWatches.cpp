// From "something happened to the file" to "the value is another one".
#include "SettingsWatches.h"

#include "PathWatch.h"
#include "Settings.h"

namespace machine {

SettingsWatches& SettingsWatches::get() {
    static SettingsWatches watches;
    return watches;
}

SettingsWatches::SettingsWatches() = default;
SettingsWatches::~SettingsWatches() = default;

unsigned SettingsWatches::add(const std::string& key, Changed changed) {
    const std::string path = settingsStore().pathOf(key);
    if (path.empty()) {
        return 0;
    }
    const unsigned number = ++lastNumber_;
    Key& watched = keys_[key];
    watched.listeners.add(number, std::move(changed));
    if (watched.watch == nullptr) {
        // The watch first: a change that happens before the look is seen twice, not missed.
        watched.watch = std::make_unique<PathWatch>(path, [this, key] { look(key); });
        watched.value = settingText(key);
    }
    return number;
}

void SettingsWatches::remove(unsigned number) {
    for (auto each = keys_.begin(); each != keys_.end(); ++each) {
        if (each->second.listeners.remove(number)) {
            if (each->second.listeners.empty()) {
                keys_.erase(each);
            }
            return;
        }
    }
}

void SettingsWatches::look(const std::string& key) {
    const auto found = keys_.find(key);
    if (found == keys_.end()) {
        return;
    }
    const std::optional<std::string> value = settingText(key);
    if (value != found->second.value) {
        found->second.value = value;
        found->second.listeners.tell(value);
    }
}

}  // namespace machine
