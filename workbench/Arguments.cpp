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
    "A television in this terminal, with a real portmeld inside: each FOLDER is plugged in as a "
    "USB\n"
    "stick with that content; without one, a sample stick with a photo. Shown are the pop-ups of "
    "the\n"
    "TV, the applications it launches with what they are given, and what a client on the bus "
    "hears.";

constexpr const char* description =
    "On a terminal single keys drive the TV; ? lists them. From a pipe the same keys are read, "
    "white\n"
    "space means nothing, each key waits until the one before has had its effect, and the end of "
    "the\n"
    "input switches the TV off:\n"
    "\n"
    "  printf '1 p' | portmeld-workbench ~/Pictures\n"
    "\n"
    "presses the first button of the pop-up, then pulls the stick. NO_COLOR=1 leaves colours out.";

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

}  // namespace

Arguments readArguments(int argc, char** argv) {
    char* language = nullptr;
    char** folders = nullptr;
    gboolean version = FALSE;
    const GOptionEntry entries[] = {
        {"language", 'l', 0, G_OPTION_ARG_STRING, &language, "Menu language of the TV, such as de",
         "CODE"},
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
    const std::unique_ptr<char*, decltype(&g_strfreev)> ownedFolders(folders, g_strfreev);
    if (!understood) {
        throw ArgumentsError(std::string(error->message) + "; --help tells what there is");
    }
    Arguments arguments;
    arguments.language = language == nullptr ? "" : language;
    arguments.versionOnly = version != FALSE;
    for (char** folder = folders; folder != nullptr && *folder != nullptr; ++folder) {
        arguments.sticks.push_back(stickOf(*folder));
    }
    return arguments;
}

}  // namespace workbench
