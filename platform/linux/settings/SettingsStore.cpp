// Which file a key is, and what can be wrong with one.
#include "SettingsStore.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <system_error>
#include <utility>

#include <glib.h>

#include "RegularFile.h"

#ifndef PORTMELD_PATH_PREFIX
#define PORTMELD_PATH_PREFIX ""
#endif

namespace machine {

namespace {

using Outcome = SettingReading::Outcome;

constexpr const char* STATE_FOLDER = PORTMELD_PATH_PREFIX "/var/lib/portmeld/db";
constexpr const char* RUNTIME_FOLDER = PORTMELD_PATH_PREFIX "/run/portmeld/memory";

constexpr const char* STATE_ROOT = "db/";
constexpr const char* RUNTIME_ROOT = "memory/";

constexpr const char* NO_KEY = "that is no key; it must be db/NAME or memory/NAME";

bool beginsWith(const std::string& text, const char* start) {
    return text.compare(0, std::strlen(start), start) == 0;
}

std::string causeOf(int error) {
    return std::generic_category().message(error);
}

SettingReading failed(std::string cause) {
    return {Outcome::Failed, std::move(cause)};
}

/// Why bytes cannot be a file's; "" for those that can.
std::string flawOf(const std::string& bytes) {
    if (bytes.size() > SettingsStore::LARGEST_FILE) {
        return "longer than 64 KiB; write a shorter value";
    }
    if (bytes.find('\0') != std::string::npos) {
        return "a NUL byte in it; write text";
    }
    if (g_utf8_validate(bytes.data(), static_cast<gssize>(bytes.size()), nullptr) == FALSE) {
        return "not valid UTF-8; write it in that encoding";
    }
    return {};
}

}  // namespace

SettingsStore::SettingsStore() : SettingsStore(STATE_FOLDER, RUNTIME_FOLDER) {}

SettingsStore::SettingsStore(std::string state, std::string runtime)
    : state_(std::move(state)), runtime_(std::move(runtime)) {}

bool SettingsStore::isKey(const std::string& key) {
    if (!(beginsWith(key, STATE_ROOT) || beginsWith(key, RUNTIME_ROOT)) ||
        key.find('\0') != std::string::npos) {
        return false;
    }
    std::size_t start = key.find('/') + 1;
    while (true) {
        const std::size_t end = std::min(key.find('/', start), key.size());
        if (end == start || end - start > NAME_MAX || key[start] == '.') {
            return false;
        }
        if (end == key.size()) {
            return true;
        }
        start = end + 1;
    }
}

const std::string* SettingsStore::folderOf(const std::string& key) const {
    return isKey(key) ? &(beginsWith(key, STATE_ROOT) ? state_ : runtime_) : nullptr;
}

std::string SettingsStore::pathOf(const std::string& key) const {
    const std::string* const folder = folderOf(key);
    return folder != nullptr ? *folder + key.substr(key.find('/')) : std::string();
}

/// The folder of a key's file. @param key  one that is a key
SettingFolder SettingsStore::open(const std::string& key, SettingFolder::Missing missing) const {
    return {*folderOf(key), key.substr(key.find('/') + 1), missing};
}

SettingReading SettingsStore::read(const std::string& key) const {
    const std::string path = pathOf(key);
    if (path.empty()) {
        return failed(NO_KEY);
    }
    const platform::Descriptor file = platform::openWithoutWaiting(path);
    if (!file) {
        if (errno == ENOENT || errno == ENOTDIR) {
            return {};
        }
        return failed("cannot open " + path + ": " + causeOf(errno));
    }
    if (!isRegular(file)) {
        return failed(path + " is not a regular file; remove it and write the value to a file");
    }
    std::string text;
    if (const int error = readAtMost(file, LARGEST_FILE, text)) {
        return failed("cannot read " + path + ": " + causeOf(error));
    }
    if (text.empty()) {
        return failed(path + " is empty: half written? write the value, or remove it");
    }
    if (const std::string flaw = flawOf(text); !flaw.empty()) {
        return failed(path + ": " + flaw);
    }
    if (text.back() == '\n') {
        text.pop_back();
    }
    return {Outcome::Found, std::move(text)};
}

std::string SettingsStore::write(const std::string& key, const std::string& value) const {
    const std::string path = pathOf(key);
    if (path.empty()) {
        return NO_KEY;
    }
    const std::string bytes = value + '\n';
    if (const std::string flaw = flawOf(bytes); !flaw.empty()) {
        return "cannot write the value: " + flaw;
    }
    const SettingFolder folder = open(key, SettingFolder::Missing::Make);
    const std::string fault = folder.fault().empty()
                                  ? folder.replace(bytes, beginsWith(key, STATE_ROOT))
                                  : folder.fault();
    return fault.empty() ? fault : "cannot write " + path + ": " + fault;
}

std::string SettingsStore::remove(const std::string& key) const {
    const std::string path = pathOf(key);
    if (path.empty()) {
        return NO_KEY;
    }
    const SettingFolder folder = open(key, SettingFolder::Missing::Leave);
    if (folder.isMissing()) {
        return {};
    }
    const std::string fault = folder.fault().empty() ? folder.remove() : folder.fault();
    return fault.empty() ? fault : "cannot remove " + path + ": " + fault;
}

std::string SettingsStore::troubleOfFolder(const std::string& key) const {
    const std::string* const folder = folderOf(key);
    if (folder == nullptr) {
        return {};
    }
    if (faccessat(AT_FDCWD, (*folder + "/.").c_str(), X_OK, AT_EACCESS) == 0) {
        return {};
    }
    return "cannot use the folder " + *folder + ": " + causeOf(errno);
}

}  // namespace machine
