// What ends a command before it is done: SIGINT, SIGTERM, SIGHUP, or the end of whoever reads its output.
// A command that waits looks here whenever something woke it, so that it can take its leave of the daemon.
#pragma once

namespace ctl {

/// From now on the signals no longer end the process; they, and a pipe on standard output whose reader
/// went away, wake the default main context instead. Call it before waiting on that context.
void watchForInterruption();

/// Throws Interrupted or ReaderGone when something has come since watchForInterruption().
void throwIfInterrupted();

}  // namespace ctl
