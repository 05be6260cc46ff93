// Standard output and standard error: lines that are harmless, in the terminal's own encoding, and a
// write that fails never goes unnoticed.
#pragma once

#include <string>

#include "Json.h"

namespace ctl {

/// Whether people read along. What is no terminal (a pipe, a file) always gets UTF-8.
bool outputIsTerminal();

/// Whether a terminal is there that shows other characters than Unicode's; it gets "?" for those that
/// it lacks.
bool terminalIsForeign();

/// Write one line at once. Harmful characters have to be out of it already: see printable().
/// Throws ReaderGone when a pipe's other end was closed, Failure for other faults.
void writeLine(const std::string& text);

/// Write one line as it is, whatever it holds, to what is no terminal; a printable() one to a terminal.
void writeValue(const std::string& text);

/// Write a value as JSON, on one line.
void writeJson(const Json& value);

/// Write "portmeldctl: ..." and nothing else on a line of standard error.
void writeError(const std::string& message);

}  // namespace ctl
