// The functions of <platform/settings.h>. What a value is and when it has changed is decided by Settings
// and SettingsWatches.
#include <platform/settings.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "Settings.h"
#include "SettingsWatches.h"

/// A key with its value, for as long as a callback runs. A key that is unset has none.
struct keynode_s {
    std::string name;
    std::optional<std::string> text;
};

namespace {

constexpr int OK = 0;
constexpr int ERROR = -1;

struct Watch {
    std::string key;
    vconf_callback_fn callback;
    unsigned number;
};

std::vector<Watch>& watches() {
    static std::vector<Watch> all;
    return all;
}

}  // namespace

extern "C" {

int vconf_get_bool(const char* key, int* val) {
    const std::optional<bool> value =
        key != nullptr && val != nullptr ? machine::settingTruth(key) : std::nullopt;
    if (!value) {
        return ERROR;
    }
    *val = *value ? 1 : 0;
    return OK;
}

int vconf_get_int(const char* key, int* val) {
    const std::optional<int> value =
        key != nullptr && val != nullptr ? machine::settingNumber(key) : std::nullopt;
    if (!value) {
        return ERROR;
    }
    *val = *value;
    return OK;
}

char* vconf_get_str(const char* key) {
    const std::optional<std::string> value =
        key != nullptr ? machine::settingText(key) : std::nullopt;
    return value ? strdup(value->c_str()) : nullptr;
}

int vconf_notify_key_changed(const char* key, vconf_callback_fn cb, void* user_data) {
    if (key == nullptr || cb == nullptr) {
        return ERROR;
    }
    const unsigned number = machine::SettingsWatches::get().add(
        key, [name = std::string(key), cb, user_data](const std::optional<std::string>& value) {
            keynode_s node{name, value};
            cb(&node, user_data);
        });
    if (number == 0) {
        (void)machine::settingText(key);  // says why it cannot be a key
        return ERROR;
    }
    watches().push_back({key, cb, number});
    return OK;
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn cb) {
    if (key == nullptr) {
        return ERROR;
    }
    std::vector<Watch>& all = watches();
    const auto first = std::stable_partition(all.begin(), all.end(), [&](const Watch& watch) {
        return watch.key != key || watch.callback != cb;
    });
    std::for_each(first, all.end(),
                  [](const Watch& watch) { machine::SettingsWatches::get().remove(watch.number); });
    all.erase(first, all.end());
    return OK;
}

char* vconf_keynode_get_name(keynode_s* node) {
    return node != nullptr ? node->name.data() : nullptr;
}

char* vconf_keynode_get_str(keynode_s* node) {
    return node != nullptr && node->text ? node->text->data() : nullptr;
}

}  // extern "C"
