// The daemon as seen from the bus: one connection, calls that wait for their answer within a time-out,
// signals in their order, and every way in which that fails in words. What the methods mean is the
// commands' affair.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "Options.h"

namespace ctl {

struct VariantDeleter {
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
struct ObjectDeleter {
    void operator()(void* object) const { g_object_unref(object); }
};

using Values = std::unique_ptr<GVariant, VariantDeleter>;

/// Every function may throw Failure; Interrupted and ReaderGone as soon as one of them has come.
class Bus {
public:
    /// Connects, and looks whether the daemon is there. It is never started by asking for it.
    explicit Bus(const Options& options);

    /// Has the daemon forget the client id if registered() was called, without waiting for its answer.
    ~Bus();
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    /// Call a method of the daemon and wait for what it answers.
    /// @param method      a literal
    /// @param parameters  a tuple, taken over; null when the method has none
    /// @param answer      the type of the answer, a tuple
    Values call(const char* method, GVariant* parameters, const char* answer = "()");

    /// The same for a method that registers the caller under the client id, its first argument: signals
    /// come from then on, and those that belong to the answer have come at the return.
    /// @param argument  the second argument, where there is one
    Values callAsClient(const char* method,
                        std::optional<int> argument = std::nullopt,
                        const char* answer = "()");

    struct Signal {
        std::string name;
        std::string text;  ///< its one argument
    };

    /// The signals since the last look, in their order.
    std::vector<Signal> takeSignals();

    /// Wait until there are signals, at most for so long. Fails when the daemon or the bus ends.
    void waitForSignals(double seconds);

private:
    struct Pending;

    void connect();
    void findDaemon();
    void subscribe();
    void disconnect();
    static void waitFor(Pending& pending);
    void askForOwner(Pending& pending);
    bool daemonIsStillThere();
    [[noreturn]] void explain(const std::string& method, const GError* error);

    static void signalled(GDBusConnection* connection,
                          const char* sender,
                          const char* path,
                          const char* interface,
                          const char* signal,
                          GVariant* parameters,
                          void* self);
    static void ownerChanged(GDBusConnection* connection,
                             const char* sender,
                             const char* path,
                             const char* interface,
                             const char* signal,
                             GVariant* parameters,
                             void* self);

    std::string address_;
    int clientId_;
    double timeout_;
    std::unique_ptr<GDBusConnection, ObjectDeleter> connection_;
    std::string daemon_;  ///< its unique name
    unsigned subscriptions_[2] = {0, 0};
    bool registered_ = false;
    bool daemonLeft_ = false;
    std::vector<Signal> signals_;
};

}  // namespace ctl
