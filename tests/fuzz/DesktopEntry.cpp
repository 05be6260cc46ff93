// Desktop entries: the input is a whole one, as somebody may have put it among the user's. Its text is also
// tried as an Exec line and as an application's id.
#include "application/DesktopEntry.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include <glib.h>

#include "Harness.h"

namespace {

using fuzz::require;
using machine::DesktopEntry;

constexpr const char* ID = "org.example.Fuzzed";

/// GLib asks for these once.
bool setFolders() {
    const std::string here = std::filesystem::current_path().string();
    return g_setenv("XDG_DATA_HOME", (here + "/data").c_str(), TRUE) != FALSE &&
           g_setenv("XDG_DATA_DIRS", (here + "/none").c_str(), TRUE) != FALSE &&
           g_setenv("PATH", "/usr/bin:/bin", TRUE) != FALSE;
}

void requireUsable(const DesktopEntry& entry) {
    require(!entry.name.empty(), "an application has a name");
    fuzz::requireText(entry.name, "an application's name");
    fuzz::requireText(entry.folder, "an application's folder");
    require(entry.busActivatable || !entry.command.empty(), "an application can be started");
    if (!entry.command.empty()) {
        const std::string& program = entry.command.front();
        struct stat status {};
        require(program.front() == '/' && stat(program.c_str(), &status) == 0 &&
                    S_ISREG(status.st_mode) && (status.st_mode & 0111) != 0,
                "a program is one", program);
    }
    for (const std::string& argument : entry.command) {
        fuzz::requireText(argument, "an argument");
    }
}

/// The arguments, quoted and with each "%" doubled, are the same arguments.
void requireArguments(const std::string& exec) {
    const std::vector<std::string> arguments = machine::argumentsOf(exec);
    std::string quoted;
    std::size_t length = 0;
    for (const std::string& argument : arguments) {
        std::string doubled;
        for (const char byte : argument) {
            doubled += std::string(byte == '%' ? 2 : 1, byte);
        }
        g_autofree char* word = g_shell_quote(doubled.c_str());
        quoted += std::string(word) + " ";
        length += argument.size();
    }
    require(length <= exec.size(), "nothing is added to an Exec line", exec);
    require(machine::argumentsOf(quoted) == arguments, "arguments come back from their line",
            quoted);
    int count = 0;
    g_auto(GStrv) words = nullptr;
    if (exec.find('%') == std::string::npos &&
        g_shell_parse_argv(exec.c_str(), &count, &words, nullptr) != FALSE) {
        require(arguments == std::vector<std::string>(words, words + count),
                "a line without field codes is a shell's", exec);
    }
}

void requireId(const std::string& id) {
    if (machine::isApplicationId(id)) {
        fuzz::requireText(id, "an application's id");
        require(id.find('/') == std::string::npos && id.front() != '.' && id.size() < 256,
                "an application's id is a file's name", id);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool set = setFolders();
    require(set, "the folders of desktop entries can be set");
    const std::string text = fuzz::wholeText(data, size);
    fuzz::writeFile(std::string("data/applications/") + ID + ".desktop", text);
    if (const auto entry = machine::findDesktopEntry(ID)) {
        requireUsable(*entry);
    }
    requireArguments(fuzz::cText(data, size));
    for (std::size_t at = text.find("\nExec="); at != std::string::npos;
         at = text.find("\nExec=", at + 1)) {
        const std::string line = text.substr(at + 6, text.find('\n', at + 1) - at - 6);
        requireArguments(line.substr(0, line.find('\0')));
    }
    requireId(text);
    return 0;
}
