// A connection to the private bus, made without waiting: the workbench shares the daemon's thread.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

namespace workbench {

struct ObjectDeleter {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using Connection = std::unique_ptr<GDBusConnection, ObjectDeleter>;

/// Cancels what is under way when its owner goes.
class Cancellable {
public:
    Cancellable() : cancellable_(g_cancellable_new()) {}
    ~Cancellable() { g_cancellable_cancel(cancellable_.get()); }
    Cancellable(const Cancellable&) = delete;
    Cancellable& operator=(const Cancellable&) = delete;
    GCancellable* get() const { return cancellable_.get(); }

private:
    std::unique_ptr<GCancellable, ObjectDeleter> cancellable_;
};

/// Connects to the bus at an address. `done` gets the connection, or null and the reason; it is not called
/// when that was cancelled.
void connectToBus(const std::string& address,
                  const Cancellable& cancellable,
                  std::function<void(Connection, const std::string&)> done);

/// Calls a method; `done` gets the reply (lent), or null and the error (lent). A time-out in milliseconds,
/// -1 for the usual one. Not called when that was cancelled.
void callOnBus(GDBusConnection* connection,
               const char* destination,
               const char* path,
               const char* interface,
               const char* member,
               GVariant* arguments,
               int timeout,
               const Cancellable& cancellable,
               std::function<void(GVariant*, const GError*)> done);

}  // namespace workbench
