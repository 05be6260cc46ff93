// How a command can end other than well: the exit statuses, and the exceptions that carry one up to
// main(). What was wrong is told in one line by whoever throws.
#pragma once

#include <stdexcept>
#include <string>

namespace ctl {

/// Exit statuses; portmeldctl(1) documents them.
enum class Status {
    Ok = 0,
    Failed = 1,        ///< the request failed, for a reason that none of the others names
    Usage = 2,         ///< the command line cannot be followed
    NoDaemon = 3,      ///< no bus, or nobody on it owns the daemon's name
    NoPermission = 4,  ///< the bus or a file refuses this user
    TimedOut = 5,      ///< no answer within the time-out
    DaemonEnded = 6    ///< the daemon was there, and was gone before it answered
};

/// A request that failed. The text says what happened, with what value, and what to do.
struct Failure : std::runtime_error {
    Failure(Status why, const std::string& message) : std::runtime_error(message), status(why) {}
    Status status;
};

/// SIGINT, SIGTERM or SIGHUP came while a command waited.
struct Interrupted {
    int signal;
};

/// Whoever read standard output has seen enough.
struct ReaderGone {};

}  // namespace ctl
