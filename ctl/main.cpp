// portmeldctl: talks to the daemon over the bus, and to the settings of a Linux machine. Here is only how
// a command's end becomes the process's.
#include <clocale>
#include <csignal>
#include <exception>
#include <string>

#include "Commands.h"
#include "Failure.h"
#include "Options.h"
#include "Output.h"

namespace {

using ctl::Status;

/// Where the command line itself is told to be wrong, the help is one step away.
std::string withHint(const ctl::Failure& failure) {
    return failure.status == Status::Usage
               ? std::string(failure.what()) + "; \"portmeldctl --help\" tells more"
               : failure.what();
}

int run(int argc, char** argv) {
    try {
        const ctl::Request request = ctl::readCommandLine(argc, argv);
        if (request.command == nullptr) {
            ctl::writeLine(request.text);
        } else {
            request.command->run(request.options);
        }
        return static_cast<int>(Status::Ok);
    } catch (const ctl::Failure& failure) {
        ctl::writeError(withHint(failure));
        return static_cast<int>(failure.status);
    } catch (const ctl::Interrupted& interrupted) {
        return 128 + interrupted.signal;
    } catch (const ctl::ReaderGone&) {
        return static_cast<int>(Status::Ok);
    } catch (const std::exception& unforeseen) {
        ctl::writeError(unforeseen.what());
        return static_cast<int>(Status::Failed);
    }
}

}  // namespace

int main(int argc, char** argv) {
    // Only for the terminal's encoding: messages are English, and numbers have a point.
    (void)std::setlocale(LC_CTYPE, "");
    // A reader that went away is a write that fails; the daemon is still told goodbye.
    (void)std::signal(SIGPIPE, SIG_IGN);
    return run(argc, argv);
}
