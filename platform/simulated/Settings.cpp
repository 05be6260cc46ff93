// Values, watches, and the notices that bring the two together.
#include "Settings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "SimulatedTv.h"

/// A key with its value, for as long as a callback runs. Without a value it is no string.
struct keynode_s {
    std::optional<std::string> name;
    std::optional<std::string> text;
};

namespace simulated {

namespace {

constexpr int OK = 0;
constexpr int ERROR = -1;

std::optional<std::string> optionalText(const char* text) {
    return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

}  // namespace

void Settings::set(const std::string& key, Value value) {
    std::vector<Watch> watches;
    std::copy_if(watches_.begin(), watches_.end(), std::back_inserter(watches),
                 [&](const Watch& watch) { return watch.key == key; });
    const auto* text = std::get_if<std::string>(&value);
    notifyLater(watches, key, text != nullptr ? std::optional(*text) : std::nullopt);
    values_[key] = std::move(value);
}

void Settings::unset(const std::string& key) {
    values_.erase(key);
}

const Settings::Value* Settings::get(const std::string& key) const {
    const auto found = values_.find(key);
    return found != values_.end() ? &found->second : nullptr;
}

std::vector<std::string> Settings::watched() const {
    std::vector<std::string> keys;
    for (const Watch& watch : watches_) {
        keys.push_back(watch.key);
    }
    return keys;
}

void Settings::sendNotice(const char* key, const char* value) {
    notifyLater(watches_, optionalText(key), optionalText(value));
}

void Settings::notifyLater(const std::vector<Watch>& watches,
                           const std::optional<std::string>& name,
                           const std::optional<std::string>& text) {
    for (const Watch& watch : watches) {
        tv_.post([this, number = watch.number, node = keynode_s{name, text}]() mutable {
            deliver(number, node);
        });
    }
}

void Settings::deliver(std::uint64_t number, keynode_s& node) {
    const auto watch = std::find_if(watches_.begin(), watches_.end(), [&](const Watch& candidate) {
        return candidate.number == number;
    });
    if (watch == watches_.end()) {
        return;
    }
    nodes_.push_back(&node);
    watch->callback(&node, watch->userData);
    nodes_.erase(std::remove(nodes_.begin(), nodes_.end(), &node), nodes_.end());
}

// ---- the contract

int Settings::getBool(const char* key, int* out) const {
    const Value* value = key != nullptr ? get(key) : nullptr;
    const bool* stored = value != nullptr ? std::get_if<bool>(value) : nullptr;
    if (stored == nullptr || out == nullptr) {
        return ERROR;
    }
    *out = *stored ? 1 : 0;
    return OK;
}

int Settings::getInt(const char* key, int* out) const {
    const Value* value = key != nullptr ? get(key) : nullptr;
    const int* stored = value != nullptr ? std::get_if<int>(value) : nullptr;
    if (stored == nullptr || out == nullptr) {
        return ERROR;
    }
    *out = *stored;
    return OK;
}

char* Settings::getString(const char* key) const {
    const Value* value = key != nullptr ? get(key) : nullptr;
    const auto* stored = value != nullptr ? std::get_if<std::string>(value) : nullptr;
    return stored != nullptr ? strdup(stored->c_str()) : nullptr;
}

int Settings::watch(const char* key, vconf_callback_fn callback, void* userData) {
    if (key == nullptr || callback == nullptr) {
        return ERROR;
    }
    watches_.push_back({key, callback, userData, ++lastNumber_});
    return OK;
}

int Settings::ignore(const char* key, vconf_callback_fn callback) {
    if (key == nullptr) {
        return ERROR;
    }
    watches_.erase(std::remove_if(watches_.begin(), watches_.end(),
                                  [&](const Watch& watch) {
                                      return watch.key == key && watch.callback == callback;
                                  }),
                   watches_.end());
    return OK;
}

bool Settings::isLive(const char* function, const keynode_s* node) {
    const bool live = std::find(nodes_.begin(), nodes_.end(), node) != nodes_.end();
    if (!live) {
        tv_.journal().breach(std::string(function) + ": the node is not alive");
    }
    return live;
}

char* Settings::nodeName(keynode_s* node) {
    return isLive("vconf_keynode_get_name", node) && node->name ? node->name->data() : nullptr;
}

char* Settings::nodeText(keynode_s* node) {
    return isLive("vconf_keynode_get_str", node) && node->text ? node->text->data() : nullptr;
}

}  // namespace simulated
