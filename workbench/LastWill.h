// What is put right even when the process ends in a crash: the terminal's settings and the temporary
// folder. The daemon may end the process as it would on a TV, by an exception that nothing catches.
#pragma once

#include <string>

#include <termios.h>

namespace workbench::lastWill {

/// From now on a crash is followed by putting right what was named to the functions below.
void write();

/// Give a terminal these settings back.
void restoreTerminal(int file, const termios& settings);
/// Its settings were restored in the normal way.
void forgetTerminal();

/// Remove a folder with all that is in it.
void removeFolder(const std::string& path);
/// It was removed in the normal way.
void forgetFolder();

}  // namespace workbench::lastWill
