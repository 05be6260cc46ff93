// The bus of this television alone: its configuration, its process, its end.
#include "PrivateBus.h"

#include <cerrno>
#include <csignal>
#include <memory>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gio/gio.h>

namespace workbench {

namespace {

using OwnedText = std::unique_ptr<char, decltype(&g_free)>;

constexpr int startMilliseconds = 10000;

/// Everybody who can reach the socket may do everything, listening in included; the folder that it
/// lies in keeps other users out.
constexpr const char* configurationFormat =
    "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
    " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
    "<busconfig>\n"
    "  <type>session</type>\n"
    "  <listen>%s</listen>\n"
    "  <auth>EXTERNAL</auth>\n"
    "  <policy context=\"default\">\n"
    "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
    "    <allow eavesdrop=\"true\"/>\n"
    "    <allow own=\"*\"/>\n"
    "  </policy>\n"
    "</busconfig>\n";

/// In the child: away from the terminal, its signals (Ctrl-C is for the workbench) and its screen, and
/// not longer alive than the parent.
void leaveTerminalAndFollowParent(void* log) {
    setsid();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    dup2(*static_cast<int*>(log), STDERR_FILENO);
}

std::runtime_error failure(const std::string& reason) {
    return std::runtime_error("no private bus: " + reason);
}

void throwIf(GError* error) {
    if (error != nullptr) {
        const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
        throw failure(error->message);
    }
}

}  // namespace

PrivateBus::PrivateBus(const std::string& folder) {
    const OwnedText path(g_dbus_address_escape_value((folder + "/bus").c_str()), g_free);
    address_ = std::string("unix:path=") + path.get();
    const OwnedText text(g_markup_printf_escaped(configurationFormat, address_.c_str()), g_free);
    const std::string configuration = folder + "/bus.conf";
    GError* error = nullptr;
    g_file_set_contents(configuration.c_str(), text.get(), -1, &error);
    throwIf(error);
    start(configuration, folder + "/bus.log");
    g_setenv("DBUS_SYSTEM_BUS_ADDRESS", address_.c_str(), TRUE);
}

PrivateBus::~PrivateBus() {
    end();
}

void PrivateBus::start(const std::string& configuration, const std::string& log) {
    const std::string option = "--config-file=" + configuration;
    const char* const arguments[] = {"dbus-daemon", option.c_str(),      "--nofork", "--nopidfile",
                                     "--nosyslog",  "--print-address=1", nullptr};
    int complaints = open(log.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    int output = -1;
    GError* error = nullptr;
    g_spawn_async_with_pipes(
        nullptr, const_cast<char**>(arguments), nullptr,
        static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD),
        leaveTerminalAndFollowParent, &complaints, &process_, nullptr, &output, nullptr, &error);
    close(complaints);
    throwIf(error);
    const bool listens = isListening(output);
    close(output);
    if (!listens) {
        end();
        char* complaint = nullptr;
        g_file_get_contents(log.c_str(), &complaint, nullptr, nullptr);
        const OwnedText owned(complaint, g_free);
        throw failure(std::string("dbus-daemon did not start. ") +
                      (complaint == nullptr ? "" : g_strchomp(complaint)));
    }
}

/// It listens once it has printed its address, and has failed when it closes its output instead.
bool PrivateBus::isListening(int output) {
    pollfd readable{output, POLLIN, 0};
    char printed = '\0';
    return poll(&readable, 1, startMilliseconds) == 1 && read(output, &printed, 1) == 1;
}

void PrivateBus::end() {
    kill(process_, SIGTERM);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
    g_spawn_close_pid(process_);
}

}  // namespace workbench
