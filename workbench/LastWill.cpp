// What is put right even when the process ends in a crash: handlers for fatal signals, which restore
// the terminal only, and for uncaught exceptions, which can do everything.
#include "LastWill.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace workbench::lastWill {

namespace {

constexpr int fatalSignals[] = {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL};

volatile std::sig_atomic_t terminal = -1;
termios terminalSettings;
std::string folder;
struct sigaction formerActions[NSIG];

void restoreNow() {
    const int file = terminal;
    terminal = -1;
    if (file >= 0) {
        tcsetattr(file, TCSANOW, &terminalSettings);
        // Nothing is left to be done if the terminal is gone as well.
        [[maybe_unused]] const ssize_t written = ::write(file, "\n", 1);
    }
}

void onFatalSignal(int signal, siginfo_t* cause, void*) {
    restoreNow();
    sigaction(signal, &formerActions[signal], nullptr);
    // A faulting instruction is repeated and abort() goes on; only a signal from outside needs help.
    if (cause->si_code == SI_USER) {
        raise(signal);
    }
}

[[noreturn]] void onTerminate() {
    restoreNow();
    std::string reason = "an error without a description";
    if (const std::exception_ptr exception = std::current_exception()) {
        try {
            std::rethrow_exception(exception);
        } catch (const std::exception& error) {
            reason = error.what();
        } catch (...) {
            reason = "an exception of an unknown kind";
        }
    }
    static_cast<void>(std::fprintf(stderr, "portmeld ended the process, as it would on a TV: %s\n",
                                   reason.c_str()));
    if (!folder.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::abort();
}

}  // namespace

void write() {
    struct sigaction action {};
    action.sa_sigaction = onFatalSignal;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    for (const int signal : fatalSignals) {
        sigaction(signal, &action, &formerActions[signal]);
    }
    std::set_terminate(onTerminate);
}

void restoreTerminal(int file, const termios& settings) {
    terminalSettings = settings;
    terminal = file;
}

void forgetTerminal() {
    terminal = -1;
}

void removeFolder(const std::string& path) {
    folder = path;
}

void forgetFolder() {
    folder.clear();
}

}  // namespace workbench::lastWill
