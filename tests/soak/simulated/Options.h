// The command line of the endurance program.
#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace soak {

struct Options {
    std::uint64_t seed = 1;
    long cycles = 1'000;              ///< so often something is pulled
    std::uint64_t steps = 0;          ///< or so many steps instead; 0: cycles count
    std::set<std::uint64_t> only;     ///< leave out all steps but these; empty: none is left out
    std::uint64_t restEvery = 1'000;  ///< steps between two measurements of memory
    std::string stepFile;             ///< receives the number of the present step; "": nobody asks
    std::string resources;            ///< folder of the built catalogues and interface description
};

/// Reads "--name value" pairs. Throws std::invalid_argument for anything else.
Options readOptions(int argc, char** argv);

}  // namespace soak
