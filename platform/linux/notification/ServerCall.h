// One asynchronous D-Bus method call whose answer is a function. Nothing here knows what is called.
#pragma once

#include <functional>

#include <gio/gio.h>

namespace machine {

/// What is called, and of which type the answer must be. All texts are borrowed for the call's
/// return.
struct ServerMethod {
    const char* destination;
    const char* path;
    const char* interface;
    const char* name;
    const char* answerType;  ///< as a GVariant type, for example "(u)"
};

/// The answer, or null and why there is none; both borrowed.
using ServerAnswer = std::function<void(GVariant* answer, const GError* error)>;

/// Call a method; nothing is started on the bus for it.
/// @param arguments     a tuple, or null; a floating reference is taken
/// @param milliseconds  after which an error is the answer; -1 = the bus library's own limit (25
/// s), G_MAXINT = none
/// @param scope         the answer does not come, not even as an error, after it was cancelled
void callServer(GDBusConnection* connection,
                const ServerMethod& method,
                GVariant* arguments,
                int milliseconds,
                GCancellable* scope,
                ServerAnswer answer);

}  // namespace machine
