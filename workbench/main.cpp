// Entry of the workbench: the order in which its parts are made, and what a failure looks like.
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

#include <unistd.h>

#include "Arguments.h"
#include "LastWill.h"
#include "PrivateBus.h"
#include "Session.h"
#include "SimulatedTv.h"
#include "Stage.h"
#include "Terminal.h"
#include "TvFacts.h"
#include "WebSession.h"

namespace workbench {

namespace {

constexpr int wrongUse = 2;

const StickWish sampleStick = {WORKBENCH_SAMPLES "/one-photo", "Sample Stick"};

int run(Arguments arguments) {
    lastWill::write();
    // Whoever reads along may leave; that is noticed when writing.
    std::signal(SIGPIPE, SIG_IGN);

    const Stage stage(WORKBENCH_RESOURCES);
    const std::string language = arguments.language.empty() ? "en" : arguments.language;
    if (!stage.hasLanguage(language)) {
        throw ArgumentsError("there are no texts in the language \"" + language + "\"");
    }
    const PrivateBus bus(stage.folder());
    simulated::SimulatedTv tv;
    tv.settings().set(languageKey, language.c_str());
    tv.clock().setRate(1);
    if (!arguments.isTerminal) {
        WebSession session(tv, stage, bus.address(), arguments);
        return session.run();
    }
    if (arguments.sticks.empty() && !arguments.isBare) {
        arguments.sticks.push_back(sampleStick);
    }
    Terminal terminal(STDOUT_FILENO, isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0);
    Session session(tv, terminal, STDIN_FILENO, bus.address(), arguments.sticks);
    return session.run();
}

void complain(const std::exception& error) {
    static_cast<void>(std::fprintf(stderr, "portmeld-workbench: %s\n", error.what()));
}

}  // namespace

}  // namespace workbench

int main(int argc, char** argv) {
    using workbench::Arguments;
    using workbench::ArgumentsError;
    try {
        const Arguments arguments = workbench::readArguments(argc, argv);
        if (arguments.versionOnly) {
            static_cast<void>(std::puts("portmeld-workbench " WORKBENCH_VERSION));
            return 0;
        }
        return workbench::run(arguments);
    } catch (const ArgumentsError& error) {
        workbench::complain(error);
        return workbench::wrongUse;
    } catch (const std::exception& error) {
        workbench::complain(error);
        return 1;
    }
}
