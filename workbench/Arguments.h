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
    std::string language;  ///< of the TV; "" when none was asked for
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
