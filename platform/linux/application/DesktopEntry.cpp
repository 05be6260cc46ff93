// Reading desktop entries. GIO's own reader leaves out applications whose program this process may not
// execute, which in a sandbox is all of them.
#include "DesktopEntry.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include <gio/gio.h>

#include "RegularFile.h"

namespace machine {

namespace {

const std::string ENDING = ".desktop";
/// NAME_MAX of limits.h, which holds for every file system that data folders are kept on.
constexpr std::size_t LONGEST_FILE_NAME = 255;
/// Where programs are when PATH does not say, as execvp(3) has it.
constexpr const char* USUAL_PATH = "/bin:/usr/bin";

/// Larger files are no desktop entries; those with all languages have some tens of KiB.
constexpr std::size_t LARGEST_ENTRY = std::size_t{1024} * 1024;

/// An entry's one group.
class Entry {
public:
    explicit Entry(GKeyFile* file) : file_(file) {}

    std::string text(const char* key) const {
        g_autofree char* value = g_key_file_get_string(file_, GROUP, key, nullptr);
        return value != nullptr ? value : "";
    }
    /// By two steps: g_key_file_get_locale_string() leaks where a value has a wrong escape.
    std::string textInLanguage(const char* key) const {
        g_autofree char* language = g_key_file_get_locale_for_key(file_, GROUP, key, nullptr);
        const std::string translated =
            language != nullptr ? text((std::string(key) + "[" + language + "]").c_str()) : "";
        return translated.empty() ? text(key) : translated;
    }
    bool isTrue(const char* key) const {
        return g_key_file_get_boolean(file_, GROUP, key, nullptr) != FALSE;
    }

private:
    static constexpr const char* GROUP = G_KEY_FILE_DESKTOP_GROUP;
    GKeyFile* file_;
};

/// The folders of desktop entries, the most important first.
std::vector<std::string> entryFolders() {
    std::vector<std::string> folders = {g_get_user_data_dir()};
    for (const char* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder) {
        folders.emplace_back(*folder);
    }
    for (std::string& folder : folders) {
        folder += "/applications/";
    }
    return folders;
}

/// The names, relative to a folder, of the files whose id is this one: a dash stands for itself, or for
/// the slash of a folder below.
std::vector<std::string> fileNames(const std::string& id) {
    std::string name = id + ENDING;
    std::vector<std::string> names = {name};
    for (std::size_t dash = name.find('-'); dash != std::string::npos;
         dash = name.find('-', dash + 1)) {
        name[dash] = '/';
        names.push_back(name);
    }
    return names;
}

/// Read a file that anybody may have put there; what is no regular file is not waited for.
bool load(GKeyFile* entry, const std::string& path) {
    const platform::Descriptor file = platform::openWithoutWaiting(path);
    std::string text;
    return file && isRegular(file) && readAtMost(file, LARGEST_ENTRY, text) == 0 &&
           text.size() <= LARGEST_ENTRY &&
           g_key_file_load_from_data(entry, text.data(), text.size(), G_KEY_FILE_NONE, nullptr) !=
               FALSE;
}

bool isProgram(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           (status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
}

/// The absolute path of a program, found as execvp(3) finds it; "" when it is not installed.
std::string programPath(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return name.front() == '/' && isProgram(name) ? name : "";
    }
    const char* const path = g_getenv("PATH");
    g_auto(GStrv) folders = g_strsplit(path != nullptr ? path : USUAL_PATH, ":", -1);
    for (char** folder = folders; *folder != nullptr; ++folder) {
        std::string program = std::string(*folder) + "/" + name;
        if (**folder == '/' && isProgram(program)) {
            return program;
        }
    }
    return "";
}

/// One argument without field codes ("%f"), with "%%" as "%"; nothing when it was but a field code.
std::optional<std::string> withoutFieldCodes(const std::string& argument) {
    std::string plain;
    bool removed = false;
    for (std::size_t at = 0; at < argument.size(); ++at) {
        if (argument[at] != '%') {
            plain += argument[at];
            continue;
        }
        ++at;
        if (at < argument.size() && argument[at] == '%') {
            plain += '%';
        } else {
            removed = true;
        }
    }
    if (removed && plain.empty()) {
        return std::nullopt;
    }
    return plain;
}

std::vector<std::string> commandOf(const std::string& exec) {
    std::vector<std::string> command = argumentsOf(exec);
    if (command.empty()) {
        return {};
    }
    command.front() = programPath(command.front());
    return command.front().empty() ? std::vector<std::string>() : command;
}

std::optional<DesktopEntry> usable(const Entry& found, const std::string& id) {
    const std::string tried = found.text("TryExec");
    if (found.text("Type") != G_KEY_FILE_DESKTOP_TYPE_APPLICATION || found.isTrue("Hidden") ||
        (!tried.empty() && programPath(tried).empty())) {
        return std::nullopt;
    }
    DesktopEntry entry;
    entry.name = found.textInLanguage("Name");
    if (entry.name.empty()) {
        entry.name = id;
    }
    entry.busActivatable = found.isTrue("DBusActivatable");
    entry.command = commandOf(found.text("Exec"));
    entry.folder = found.text("Path");
    if (!entry.busActivatable && entry.command.empty()) {
        return std::nullopt;
    }
    return entry;
}

}  // namespace

bool isApplicationId(const std::string& id) {
    return !id.empty() && id.size() + ENDING.size() <= LONGEST_FILE_NAME && id.front() != '.' &&
           g_utf8_validate(id.data(), static_cast<gssize>(id.size()), nullptr) != FALSE &&
           std::none_of(id.begin(), id.end(),
                        [](char byte) { return byte == '/' || g_ascii_iscntrl(byte) != FALSE; });
}

std::vector<std::string> argumentsOf(const std::string& exec) {
    int count = 0;
    g_auto(GStrv) words = nullptr;
    if (g_shell_parse_argv(exec.c_str(), &count, &words, nullptr) == FALSE) {
        return {};
    }
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) {
        if (auto argument = withoutFieldCodes(words[i])) {
            arguments.push_back(std::move(*argument));
        }
    }
    return arguments;
}

std::optional<DesktopEntry> findDesktopEntry(const std::string& id) {
    g_autoptr(GKeyFile) file = g_key_file_new();
    const std::vector<std::string> names = fileNames(id);
    for (const std::string& folder : entryFolders()) {
        for (const std::string& name : names) {
            if (load(file, folder + name)) {
                return usable(Entry(file), id);
            }
        }
    }
    return std::nullopt;
}

}  // namespace machine
