// The list of all commands: how each is called, what help tells of it, and the function that carries it
// out. The functions live in one file for each group; each throws what Failure.h tells, and prints its
// answer itself.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Options.h"

namespace ctl {

/// Options that only some commands have.
struct OwnOptions {
    bool fileSystem = false;
    bool cameras = false;
    bool interval = false;
};

struct Command {
    const char* name;        ///< one word, or a group and a verb
    const char* parameters;  ///< for people
    const char* summary;     ///< one line
    const char* details;     ///< more lines, or ""
    std::size_t fewest;      ///< parameters
    std::size_t most;
    OwnOptions own;
    void (*run)(const Options& options);
};

/// All of them, in the order of the help.
const std::vector<Command>& commands();

void list(const Options& options);
void count(const Options& options);
void watch(const Options& options);
void popups(const Options& options);
void musicAdd(const Options& options);
void musicGet(const Options& options);
void musicClear(const Options& options);
void settingGet(const Options& options);
void settingSet(const Options& options);
void settingWatch(const Options& options);

}  // namespace ctl
