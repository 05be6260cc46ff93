// "setting get|set|watch", on the settings store of a Linux machine: files, no bus and no daemon. Other
// televisions keep their settings elsewhere; there SettingCommandsLeftOut.cpp takes this file's place.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include <glib.h>

#include "Commands.h"
#include "Failure.h"
#include "Interruption.h"
#include "Output.h"
#include "PathWatch.h"
#include "settings/SettingsStore.h"

namespace ctl {

namespace {

using machine::SettingReading;
using machine::SettingsStore;
using Outcome = SettingReading::Outcome;

constexpr const char* WHO_MAY = "; root and members of the group portmeld may";

/// Throws Failure for what is no key, and where a bus was named: who does so means another machine.
const std::string& keyOf(const Options& options) {
    if (!options.bus.empty()) {
        throw Failure(Status::Usage, "setting: --bus " + options.bus +
                                         ": settings are files of this machine, on no bus");
    }
    const std::string& key = options.words[0];
    if (!SettingsStore::isKey(key)) {
        throw Failure(Status::Usage, "setting: \"" + key +
                                         "\" is no key; one is db/NAME or memory/NAME, see " +
                                         "portmeld-settings(5)");
    }
    return key;
}

/// Whether this user may not do with a path what he wants; for one that does not exist, with the
/// innermost folder above it that does.
bool isForbidden(std::string path, int wanted) {
    while (faccessat(AT_FDCWD, path.c_str(), wanted, AT_EACCESS) != 0) {
        const std::size_t slash = path.rfind('/');
        if (errno != ENOENT || slash == 0 || slash == std::string::npos) {
            return errno == EACCES || errno == EPERM || errno == EROFS;
        }
        path.erase(slash);
    }
    return false;
}

/// The value, or nothing when the setting is not set. Throws Failure for one that cannot be read.
std::optional<std::string> valueOf(const SettingsStore& store, const std::string& key) {
    SettingReading reading = store.read(key);
    if (reading.outcome == Outcome::Failed) {
        const bool forbidden = isForbidden(store.pathOf(key), R_OK);
        throw Failure(forbidden ? Status::NoPermission : Status::Failed,
                      "the setting " + key + ": " + reading.text + (forbidden ? WHO_MAY : ""));
    }
    return reading.outcome == Outcome::Found ? std::optional(reading.text) : std::nullopt;
}

Json settingJson(const std::string& key, const std::optional<std::string>& value) {
    return JsonMembers().with("key", jsonString(key)).with("value", jsonString(value)).done();
}

/// Tells of a setting whenever it is another one.
class Watch {
public:
    explicit Watch(const Options& options)
        : json_(options.json),
          key_(keyOf(options)),
          watch_(store_.pathOf(key_), [this] { changed_ = true; }) {
        watchForInterruption();
    }

    /// Never returns.
    [[noreturn]] void run() {
        while (true) {
            if (std::exchange(changed_, false)) {
                look();
            }
            throwIfInterrupted();
            (void)g_main_context_iteration(nullptr, TRUE);
        }
    }

private:
    void look() {
        try {
            const std::optional<std::string> value = valueOf(store_, key_);
            fault_.clear();
            if (!told_ || last_ != value) {
                told_ = true;
                last_ = value;
                tell(value);
            }
        } catch (const Failure& failure) {
            // It may be well again after the next change.
            if (fault_ != failure.what()) {
                fault_ = failure.what();
                writeError(fault_);
            }
        }
    }

    void tell(const std::optional<std::string>& value) const {
        if (json_) {
            writeJson(settingJson(key_, value));
        } else if (value) {
            writeValue(*value);
        } else {
            writeLine("(not set)");
        }
    }

    bool json_;
    std::string key_;
    SettingsStore store_;
    bool changed_ = true;  ///< there is something to look at
    bool told_ = false;
    std::optional<std::string> last_;
    std::string fault_;
    machine::PathWatch watch_;
};

}  // namespace

void settingGet(const Options& options) {
    const std::string& key = keyOf(options);
    const SettingsStore store;
    const std::optional<std::string> value = valueOf(store, key);
    if (!value) {
        const std::string trouble = store.troubleOfFolder(key);
        throw Failure(Status::Failed, "the setting " + key + " is not set" +
                                          (trouble.empty() ? "" : ": " + trouble));
    }
    if (options.json) {
        writeJson(settingJson(key, value));
    } else {
        writeValue(*value);
    }
}

void settingSet(const Options& options) {
    const std::string& key = keyOf(options);
    const std::string& value = options.words[1];
    const SettingsStore store;
    if (const std::string fault = store.write(key, value); !fault.empty()) {
        const std::string path = store.pathOf(key);
        const bool forbidden = isForbidden(path.substr(0, path.rfind('/')), W_OK | X_OK);
        throw Failure(forbidden ? Status::NoPermission : Status::Failed,
                      "the setting " + key + ": " + fault + (forbidden ? WHO_MAY : ""));
    }
    if (options.json) {
        writeJson(settingJson(key, value));
    }
}

void settingWatch(const Options& options) {
    try {
        Watch(options).run();
    } catch (const Interrupted&) {
        // The way to end it.
    }
}

}  // namespace ctl
