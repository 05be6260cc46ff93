// Being told of changes of settings. One watch of the file system a key, whoever many listen.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Listeners.h"

namespace machine {

class PathWatch;

class SettingsWatches {
public:
    /// The one of this process.
    static SettingsWatches& get();

    SettingsWatches();
    ~SettingsWatches();
    SettingsWatches(const SettingsWatches&) = delete;
    SettingsWatches& operator=(const SettingsWatches&) = delete;

    /// Told of the new value; nothing when the key was removed or cannot be read.
    using Changed = std::function<void(const std::optional<std::string>& value)>;

    /// Call `changed` on the default main context, later, each time the value is another one from now
    /// on; several changes in quick succession may become one call. It may add and remove listeners,
    /// itself included. Neither the key nor its folders need exist.
    /// @return a number for remove(), or 0 for what is no key
    unsigned add(const std::string& key, Changed changed);

    /// No call begins after the return. Numbers that are not in use are harmless.
    void remove(unsigned number);

private:
    struct Key {
        std::unique_ptr<PathWatch> watch;
        std::optional<std::string> value;
        Listeners<const std::optional<std::string>&> listeners;
    };
    void look(const std::string& key);

    std::map<std::string, Key> keys_;
    unsigned lastNumber_ = 0;
};

}  // namespace machine
