// The TV's settings store, in memory, with change notices.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <platform/settings.h>

namespace simulated {

class SimulatedTv;

class Settings {
public:
    using Value = std::variant<bool, int, std::string>;

    explicit Settings(SimulatedTv& tv) : tv_(tv) {}

    /// Set a key; who watches it is told (later, on the main context), a value that stays equal
    /// included.
    void set(const std::string& key, Value value);
    void set(const std::string& key, bool value) { set(key, Value(value)); }
    void set(const std::string& key, int value) { set(key, Value(value)); }
    void set(const std::string& key, const char* value) { set(key, Value(std::string(value))); }
    /// Forget a key. Nobody is told.
    void unset(const std::string& key);

    const Value* get(const std::string& key) const;

    /// Keys being watched, in the order of registration.
    std::vector<std::string> watched() const;

    /// Hand a change notice for `key` to every watcher, whatever it watches, with a node whose name
    /// or value may be null: what a broken store might send.
    void sendNotice(const char* key, const char* value);

    // ---- the contract

    int getBool(const char* key, int* out) const;
    int getInt(const char* key, int* out) const;
    char* getString(const char* key) const;
    int watch(const char* key, vconf_callback_fn callback, void* userData);
    int ignore(const char* key, vconf_callback_fn callback);
    /// What a node holds; null (and a breach) for one whose callback has returned.
    char* nodeName(keynode_s* node);
    char* nodeText(keynode_s* node);

private:
    struct Watch {
        std::string key;
        vconf_callback_fn callback;
        void* userData;
        std::uint64_t number;  // never used twice: a new watch does not get an older one's notices
    };
    void notifyLater(const std::vector<Watch>& watches,
                     const std::optional<std::string>& name,
                     const std::optional<std::string>& text);
    void deliver(std::uint64_t number, keynode_s& node);
    bool isLive(const char* function, const keynode_s* node);
    SimulatedTv& tv_;
    std::map<std::string, Value> values_;
    std::vector<Watch> watches_;
    std::vector<const keynode_s*> nodes_;  // of the callbacks under way
    std::uint64_t lastNumber_ = 0;
};

}  // namespace simulated
