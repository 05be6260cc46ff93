// GLib's option parser in two rounds, as options may stand before the command and behind it: the first
// ends at the command's name, the second knows the command's own options as well.
#include "Options.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>

#include <gio/gio.h>
#include <unistd.h>

#include "Commands.h"
#include "Device.h"
#include "Failure.h"

namespace ctl {

namespace {

using Strings = std::vector<std::string>;
using Context = std::unique_ptr<GOptionContext, decltype(&g_option_context_free)>;

constexpr const char* PROGRAM = "portmeldctl";

/// Plus the process id: far from the small numbers that applications choose.
constexpr int FIRST_CLIENT_ID = 0x50000000;

constexpr double SHORTEST_TIMEOUT = 0.001;
constexpr double SHORTEST_INTERVAL = 0.1;
constexpr double LONGEST_TIME = 86400;

constexpr std::int64_t NO_CLIENT_ID = std::numeric_limits<std::int64_t>::max();

[[noreturn]] void refuse(const std::string& message) {
    throw Failure(Status::Usage, message);
}

/// What one round of parsing finds, in the types of the parser.
class Round {
public:
    explicit Round(const OwnOptions& own) {
        entries_ = {
            {"json", 0, 0, G_OPTION_ARG_NONE, &json_, "Answer in JSON, each answer on one line",
             nullptr},
            {"bus", 0, 0, G_OPTION_ARG_FILENAME, &bus_, "Where the daemon is (the system bus)",
             "ADDRESS"},
            {"client-id", 0, 0, G_OPTION_ARG_INT64, &clientId_,
             "The daemon's clients have a number each (one made of the process id)", "N"},
            {"timeout", 0, 0, G_OPTION_ARG_DOUBLE, &timeout_,
             "How long to wait for each answer (10)", "SECONDS"},
            {"version", 0, 0, G_OPTION_ARG_NONE, &version_, "Show the version", nullptr},
            {"help", 'h', 0, G_OPTION_ARG_NONE, &help_, "Show this page", nullptr},
        };
        if (own.fileSystem) {
            entries_.push_back({"fs", 0, 0, G_OPTION_ARG_STRING, &fileSystem_,
                                "Only devices with this file system: fat, exfat, ext4 or ntfs",
                                "NAME"});
        }
        if (own.cameras) {
            entries_.push_back(
                {"cameras", 0, 0, G_OPTION_ARG_NONE, &cameras_, "Only cameras", nullptr});
        }
        if (own.interval) {
            entries_.push_back({"interval", 0, 0, G_OPTION_ARG_DOUBLE, &interval_,
                                "How often to ask for new devices (2)", "SECONDS"});
        }
        terminated_ = entries_;
        terminated_.push_back({});
        g_option_context_set_help_enabled(context_.get(), FALSE);
        g_option_context_add_main_entries(context_.get(), terminated_.data(), nullptr);
    }
    ~Round() {
        g_free(bus_);
        g_free(fileSystem_);
    }
    Round(const Round&) = delete;
    Round& operator=(const Round&) = delete;

    /// Stop at the first word that is no option.
    void stopAtWord() { g_option_context_set_strict_posix(context_.get(), TRUE); }

    /// Take the options out of some words; the others stay, without the program's name.
    void parse(Strings& words) {
        std::vector<char*> given = {g_strdup(PROGRAM)};
        for (const std::string& word : words) {
            given.push_back(g_strdup(word.c_str()));
        }
        given.push_back(nullptr);
        auto** const copy =
            static_cast<char**>(g_memdup2(given.data(), given.size() * sizeof(char*)));
        g_auto(GStrv) arguments = copy;
        g_autoptr(GError) error = nullptr;
        if (g_option_context_parse_strv(context_.get(), &arguments, &error) == FALSE) {
            refuse(error->message);
        }
        words.assign(arguments + 1, arguments + g_strv_length(arguments));
    }

    /// Whether a word is an option whose value is the next word.
    bool wantsValue(const std::string& word) const {
        return std::any_of(entries_.begin(), entries_.end(), [&](const GOptionEntry& entry) {
            return entry.arg != G_OPTION_ARG_NONE && word == std::string("--") + entry.long_name;
        });
    }

    /// Lay what was found over what was there before. Throws Failure for senseless values.
    void applyTo(Options& options) const {
        options.json = options.json || json_ != FALSE;
        options.cameras = cameras_ != FALSE;
        if (bus_ != nullptr) {
            if (*bus_ == '\0' || g_dbus_is_supported_address(bus_, nullptr) == FALSE) {
                refuse("--bus " + std::string(bus_) + ": not a bus's address; one is for example " +
                       "unix:path=/run/dbus/system_bus_socket");
            }
            options.bus = bus_;
        }
        if (clientId_ != NO_CLIENT_ID) {
            if (clientId_ < std::numeric_limits<int>::min() ||
                clientId_ > std::numeric_limits<int>::max()) {
                refuse("--client-id " + std::to_string(clientId_) +
                       ": not a number of 32 bits; choose a smaller one");
            }
            options.clientId = static_cast<int>(clientId_);
        }
        applySeconds("--timeout", timeout_, SHORTEST_TIMEOUT, options.timeout);
        applySeconds("--interval", interval_, SHORTEST_INTERVAL, options.interval);
        if (fileSystem_ != nullptr) {
            if (fileSystemNumber(fileSystem_) < 0) {
                refuse("--fs " + std::string(fileSystem_) +
                       ": not the name of a file system; give " + fileSystemNames());
            }
            options.fileSystem = fileSystem_;
        }
        if (options.cameras && !options.fileSystem.empty()) {
            refuse("--fs and --cameras exclude each other; cameras have no file system");
        }
    }

    bool helpWanted() const { return help_ != FALSE; }
    bool versionWanted() const { return version_ != FALSE; }
    GOptionContext* context() const { return context_.get(); }

private:
    static void applySeconds(const char* name, double given, double shortest, double& seconds) {
        if (given == NOT_GIVEN) {
            return;
        }
        if (!(given >= shortest && given <= LONGEST_TIME)) {  // not a number is neither
            g_autofree char* text = g_strdup_printf("%s %g: give seconds from %g to %g", name,
                                                    given, shortest, LONGEST_TIME);
            refuse(text);
        }
        seconds = given;
    }

    static constexpr double NOT_GIVEN = std::numeric_limits<double>::max();

    gboolean json_ = FALSE;
    gboolean help_ = FALSE;
    gboolean version_ = FALSE;
    gboolean cameras_ = FALSE;
    char* bus_ = nullptr;
    char* fileSystem_ = nullptr;
    gint64 clientId_ = NO_CLIENT_ID;
    double timeout_ = NOT_GIVEN;
    double interval_ = NOT_GIVEN;
    std::vector<GOptionEntry> entries_;
    std::vector<GOptionEntry> terminated_;
    Context context_{g_option_context_new(nullptr), g_option_context_free};
};

/// The help as the parser makes it, without the line feed at its end.
std::string helpOf(const Round& round,
                   const std::string& usage,
                   const std::string& summary,
                   const std::string& description) {
    g_set_prgname(usage.c_str());
    g_option_context_set_summary(round.context(), summary.c_str());
    g_option_context_set_description(round.context(), description.c_str());
    g_autofree char* help = g_option_context_get_help(round.context(), TRUE, nullptr);
    std::string text = help;
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

std::string callOf(const Command& command) {
    const std::string parameters = command.parameters;
    return command.name + (parameters.empty() ? std::string() : ' ' + parameters);
}

/// One line for each command whose name begins so.
std::string listOf(const std::string& beginning) {
    std::string text;
    for (const Command& command : commands()) {
        if (std::string(command.name).compare(0, beginning.size(), beginning) == 0) {
            text += "  " + callOf(command) + '\n';
            text += "      " + std::string(command.summary) + '\n';
        }
    }
    text.pop_back();
    return text;
}

const char* exitStatuses() {
    return "Exit status: 0 done; 1 failed; 2 wrong command line; 3 no bus or no daemon;\n"
           "4 no permission; 5 no answer in time; 6 the daemon ended instead of answering.\n"
           "\n"
           "\"portmeldctl COMMAND --help\" tells of one command, portmeldctl(1) of all.";
}

std::string mainHelp(const Round& round) {
    return helpOf(
        round, std::string(PROGRAM) + " COMMAND",
        "Shows and changes what portmeld, the daemon for USB devices, knows.\n\nCommands:\n" +
            listOf(""),
        exitStatuses());
}

std::string groupHelp(const std::string& group) {
    const Round round{OwnOptions()};
    return helpOf(round, std::string(PROGRAM) + ' ' + group, "Commands:\n" + listOf(group + ' '),
                  exitStatuses());
}

std::string commandHelp(const Round& round, const Command& command) {
    const std::string details = command.details;
    return helpOf(round, std::string(PROGRAM) + ' ' + callOf(command),
                  command.summary + (details.empty() ? std::string(".") : ".\n" + details), "");
}

/// The verbs of a group: "add, get, clear"; "" when there is no such group.
std::string verbsOf(const std::string& group) {
    std::string verbs;
    for (const Command& command : commands()) {
        const std::string name = command.name;
        if (name.compare(0, group.size() + 1, group + ' ') == 0) {
            verbs += (verbs.empty() ? "" : ", ") + name.substr(group.size() + 1);
        }
    }
    return verbs;
}

const Command* commandNamed(const std::string& name) {
    for (const Command& command : commands()) {
        if (name == command.name) {
            return &command;
        }
    }
    return nullptr;
}

/// Take the name of a command from the beginning of the words. Null: help for the group was asked for.
const Command* takeCommand(Strings& words) {
    if (words.empty()) {
        refuse("no command given");
    }
    const std::string first = words.front();
    if (const Command* const command = commandNamed(first)) {
        words.erase(words.begin());
        return command;
    }
    const std::string verbs = verbsOf(first);
    if (verbs.empty()) {
        refuse('"' + first + "\" is no command");
    }
    const std::string second = words.size() > 1 ? words[1] : std::string();
    if (second == "--help" || second == "-h") {
        return nullptr;
    }
    const Command* const command = commandNamed(first + ' ' + second);
    if (command == nullptr) {
        refuse(second.empty() ? first + ": give one of " + verbs
                              : first + ": \"" + second + "\" is none of " + verbs);
    }
    words.erase(words.begin(), words.begin() + 2);
    return command;
}

/// Where options end for good: at "--", or at a negative number that is no option's value.
std::size_t endOfOptions(const Round& round, const Strings& words) {
    std::size_t end = 0;
    bool isValue = false;
    for (; end < words.size(); ++end) {
        const std::string& word = words[end];
        const bool negative =
            word.size() > 1 && word[0] == '-' && g_ascii_isdigit(word[1]) != FALSE;
        if (!isValue && (word == "--" || negative)) {
            break;
        }
        isValue = !isValue && round.wantsValue(word);
    }
    return end;
}

/// Take the options out of the words behind a command's name; what stays are its parameters.
void takeOptions(Round& round, Strings& words) {
    const auto end = words.begin() + static_cast<std::ptrdiff_t>(endOfOptions(round, words));
    const bool marked = end != words.end() && *end == "--";
    const Strings parameters(end + (marked ? 1 : 0), words.end());
    words.erase(end, words.end());
    round.parse(words);
    words.insert(words.end(), parameters.begin(), parameters.end());
}

void checkParameters(const Command& command, const Strings& words) {
    const std::string name = command.name;
    for (const std::string& word : words) {
        if (g_utf8_validate(word.data(), static_cast<gssize>(word.size()), nullptr) == FALSE) {
            refuse(name + ": \"" + word +
                   "\" is not valid UTF-8; give it in that encoding, a URL percent-encoded");
        }
    }
    if (words.size() < command.fewest) {
        refuse(name + ": something is missing: " + callOf(command));
    }
    if (words.size() > command.most) {
        refuse(name + ": \"" + words[command.most] + "\" is one too many: " + callOf(command));
    }
}

const char* versionText() {
    return "portmeldctl " PORTMELDCTL_VERSION;
}

}  // namespace

Request readCommandLine(int argc, char** argv) {
    Strings words(argv + std::min(argc, 1), argv + argc);
    Request request;
    request.options.clientId = FIRST_CLIENT_ID + static_cast<int>(getpid());

    Round before{OwnOptions()};
    before.stopAtWord();
    before.parse(words);
    if (before.helpWanted() || before.versionWanted()) {
        request.text = before.helpWanted() ? mainHelp(before) : versionText();
        return request;
    }
    before.applyTo(request.options);

    const std::string group = words.empty() ? "" : words.front();
    const Command* const command = takeCommand(words);
    if (command == nullptr) {
        request.text = groupHelp(group);
        return request;
    }
    Round behind(command->own);
    takeOptions(behind, words);
    if (behind.helpWanted() || behind.versionWanted()) {
        request.text = behind.helpWanted() ? commandHelp(behind, *command) : versionText();
        return request;
    }
    behind.applyTo(request.options);
    checkParameters(*command, words);
    request.command = command;
    request.options.words = words;
    return request;
}

}  // namespace ctl
