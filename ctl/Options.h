// The command line: which command is meant, what it was given, and the options of all commands. What a
// command does with them is its own affair.
#pragma once

#include <string>
#include <vector>

namespace ctl {

struct Command;

struct Options {
    bool json = false;
    std::string bus;         ///< address; "": the system bus
    int clientId = 0;        ///< chosen for this process unless given
    double timeout = 10;     ///< seconds, for each answer of the daemon
    std::string fileSystem;  ///< as typed, checked; "": not given
    bool cameras = false;
    double interval = 2;  ///< seconds
    /// Behind the command's name: as many as the command takes, valid UTF-8.
    std::vector<std::string> words;
};

/// What is to be done.
struct Request {
    const Command* command = nullptr;  ///< null: `text` answers all that was asked for
    Options options;
    std::string text;
};

/// Read the command line. Throws Failure for one that cannot be followed.
Request readCommandLine(int argc, char** argv);

}  // namespace ctl
