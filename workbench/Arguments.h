// The command line of the workbench: what it accepts, and what was asked for.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace workbench {

/// A stick to be plugged in: a folder of this machine, and the product name that it shows.
struct StickWish {
    std::string folder;  ///< absolute
    std::string product;
};

struct Arguments {
    std::vector<StickWish> sticks;
    std::string language;     ///< of the TV; "" when none was asked for
    bool isTerminal = false;  ///< the terminal form, not the page
    unsigned port = 0;        ///< of the page; 0: a free one
    std::string pageFolder;   ///< the page's files; "": those in the program
    bool isBare = false;      ///< nothing is plugged in at the beginning
    std::string replay;       ///< a scenario to be replayed; "" for none
    bool isHeadless = false;  ///< no page: the TV is switched off after the scenario
    std::string record;       ///< file for what is done, as a scenario; "" for none
    bool versionOnly = false;
};

/// A command line that cannot be followed; the text says why.
struct ArgumentsError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads the command line. Ends the process for --help. Without a folder the sticks are empty.
/// Throws ArgumentsError.
Arguments readArguments(int argc, char** argv);

}  // namespace workbench
