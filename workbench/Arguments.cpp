// The command line of the workbench: parsing, and the test that each folder can be a stick.
#include "Arguments.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <dirent.h>

#include <glib.h>

#include "Text.h"

namespace workbench {

namespace {

constexpr const char* summary =
    "A television with a real portmeld inside, in your browser: open the address that is printed.\n"
    "Each FOLDER is plugged in as a USB stick with that content; without one, a sample stick with "
    "a\n"
    "photo. Shown are the pop-ups of the TV, the applications it launches with what they are "
    "given,\n"
    "what the daemon knows and logs, and what it says on the bus.";

constexpr const char* description =
    "A scenario is a text file of steps and expectations. With --replay FILE --headless its steps "
    "are\n"
    "printed with \"ok\" or \"not ok\"; the exit status is 0 when all expectations held, 1 when "
    "one\n"
    "did not, 2 when the file cannot be read.\n"
    "\n"
    "With --terminal the TV is shown here. Single keys drive it; ? lists them. From a pipe the "
    "same\n"
    "keys are read, white space means nothing, each key waits until the one before has had its "
    "effect,\n"
    "and the end of the input switches the TV off:\n"
    "\n"
    "  printf '1 p' | portmeld-workbench --terminal ~/Pictures\n"
    "\n"
    "presses the first button of the pop-up, then pulls the stick. NO_COLOR=1 leaves colours out.";

constexpr int highestPort = 65535;

using OptionContext = std::unique_ptr<GOptionContext, decltype(&g_option_context_free)>;
using OwnedText = std::unique_ptr<char, decltype(&g_free)>;

StickWish stickOf(const char* folder) {
    using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;
    std::unique_ptr<char, decltype(&std::free)> absolute(realpath(folder, nullptr), std::free);
    if (!absolute || !Folder(opendir(absolute.get()), closedir)) {
        const std::string reason = g_strerror(errno);
        throw ArgumentsError("\"" + printable(folder) + "\" cannot be a stick: " + reason);
    }
    const std::string name = std::filesystem::path(absolute.get()).filename();
    return {absolute.get(), name.empty() ? "Whole disk" : name};
}

/// The process works in a folder of its own later.
std::string absolute(const char* file) {
    return file == nullptr ? "" : std::filesystem::absolute(file).string();
}

void checkCombination(const Arguments& arguments) {
    if (arguments.isHeadless && arguments.replay.empty()) {
        throw ArgumentsError("--headless goes with --replay FILE");
    }
    if (arguments.isTerminal &&
        (arguments.port != 0 || !arguments.replay.empty() || !arguments.record.empty())) {
        throw ArgumentsError("--port, --replay and --record do not go with --terminal");
    }
}

}  // namespace

Arguments readArguments(int argc, char** argv) {
    char* language = nullptr;
    char* page = nullptr;
    char* replay = nullptr;
    char* record = nullptr;
    char** folders = nullptr;
    int port = 0;
    gboolean terminal = FALSE;
    gboolean bare = FALSE;
    gboolean headless = FALSE;
    gboolean version = FALSE;
    const GOptionEntry entries[] = {
        {"language", 'l', 0, G_OPTION_ARG_STRING, &language, "Menu language of the TV, such as de",
         "CODE"},
        {"terminal", 't', 0, G_OPTION_ARG_NONE, &terminal, "Show the TV here, not in a browser",
         nullptr},
        {"port", 'p', 0, G_OPTION_ARG_INT, &port, "Port of the page, when it matters", "NUMBER"},
        {"bare", 'b', 0, G_OPTION_ARG_NONE, &bare, "Plug nothing in", nullptr},
        {"replay", 0, 0, G_OPTION_ARG_FILENAME, &replay, "Replay a scenario", "FILE"},
        {"headless", 0, 0, G_OPTION_ARG_NONE, &headless,
         "Replay at once, without a page, and end with it", nullptr},
        {"record", 0, 0, G_OPTION_ARG_FILENAME, &record,
         "Record what is done in the page as a scenario", "FILE"},
        // For those who work on the page.
        {"page", 0, G_OPTION_FLAG_HIDDEN, G_OPTION_ARG_FILENAME, &page,
         "Take the page from this folder", "FOLDER"},
        {"version", 0, 0, G_OPTION_ARG_NONE, &version, "Tell the version and end", nullptr},
        {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &folders, nullptr, "[FOLDER...]"},
        {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
    const OptionContext context(g_option_context_new(nullptr), g_option_context_free);
    g_option_context_set_summary(context.get(), summary);
    g_option_context_set_description(context.get(), description);
    g_option_context_add_main_entries(context.get(), entries, nullptr);

    GError* error = nullptr;
    const bool understood = g_option_context_parse(context.get(), &argc, &argv, &error) != FALSE;
    const std::unique_ptr<GError, decltype(&g_error_free)> ownedError(error, g_error_free);
    const OwnedText ownedLanguage(language, g_free);
    const OwnedText ownedPage(page, g_free);
    const OwnedText ownedReplay(replay, g_free);
    const OwnedText ownedRecord(record, g_free);
    const std::unique_ptr<char*, decltype(&g_strfreev)> ownedFolders(folders, g_strfreev);
    if (!understood) {
        throw ArgumentsError(std::string(error->message) + "; --help tells what there is");
    }
    Arguments arguments;
    arguments.language = language == nullptr ? "" : language;
    arguments.versionOnly = version != FALSE;
    arguments.isTerminal = terminal != FALSE;
    arguments.isBare = bare != FALSE;
    arguments.isHeadless = headless != FALSE;
    arguments.pageFolder = absolute(page);
    arguments.replay = absolute(replay);
    arguments.record = absolute(record);
    if (port < 0 || port > highestPort) {
        throw ArgumentsError("there is no port " + std::to_string(port));
    }
    arguments.port = static_cast<unsigned>(port);
    checkCombination(arguments);
    if (folders != nullptr && !arguments.replay.empty()) {
        throw ArgumentsError("--replay plugs in what its scenario says, and no FOLDER");
    }
    for (char** folder = folders; folder != nullptr && *folder != nullptr; ++folder) {
        arguments.sticks.push_back(stickOf(*folder));
    }
    return arguments;
}

}  // namespace workbench
