// portmeld-open APPLICATION-ID: stands in for an application that the daemon launches, and hands what it
// was to show or play to the user's default application. The launch data are in the environment.
#include <cstdio>
#include <optional>
#include <string>

#include <glib.h>

#include "DefaultApplication.h"
#include "Notice.h"
#include "Subject.h"

namespace {

constexpr const char* VARIABLE = "PORTMELD_LAUNCH_DATA";

/// How the program ends; docs/applications.md tells people.
enum Status { OPENED = 0, NOT_STARTED = 1, REFUSED = 2, NOTHING_OPENS_IT = 3 };

/// One line, whatever the names in it are made of.
int say(Status status, const std::string& application, const std::string& what) {
    g_autofree char* line = g_utf8_make_valid((application + ": " + what).c_str(), -1);
    for (char* byte = line; *byte != '\0'; ++byte) {
        if (g_ascii_iscntrl(*byte) != FALSE) {
            *byte = ' ';
        }
    }
    std::fprintf(stderr, "portmeld-open: %s\n", line);
    return status;
}

/// The launch data, taken out of the environment: they are nothing for the application that comes.
std::optional<std::string> takeLaunchData() {
    const char* const value = g_getenv(VARIABLE);
    std::optional<std::string> json =
        value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    g_unsetenv(VARIABLE);
    return json;
}

int handle(const std::string& application) {
    const auto subject = handlers::subjectOf(application, takeLaunchData());
    if (!subject) {
        return OPENED;
    }
    const handlers::Application opener = handlers::defaultApplication(*subject);
    if (opener == nullptr) {
        handlers::tellThatNothingOpens(subject->kind);
        return say(NOTHING_OPENS_IT, application,
                   "no default application opens " + subject->addresses.front() +
                       "; install one, or choose one with 'xdg-mime default'");
    }
    const std::string error = handlers::open(opener, *subject);
    if (!error.empty()) {
        return say(NOT_STARTED, application,
                   std::string(g_app_info_get_name(opener.get())) + " does not start: " + error);
    }
    return OPENED;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: portmeld-open APPLICATION-ID\n");
        return REFUSED;
    }
    try {
        return handle(argv[1]);
    } catch (const handlers::Refusal& refusal) {
        return say(REFUSED, argv[1], refusal.what());
    }
}
