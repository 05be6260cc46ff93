// A client of the daemon, as any application on the TV is one: it registers on the bus, asks for the
// devices and hears the signals. It shares the daemon's thread, so that it never waits for an answer.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gio/gio.h>

#include "Loop.h"

namespace workbench {

class BusClient {
public:
    struct Listener {
        /// Registered with the daemon; what the bus calls this client.
        std::function<void(const std::string& uniqueName)> ready;
        /// It cannot be reached, or a call failed.
        std::function<void(const std::string& reason)> failed;
        /// A signal of the daemon's, with the text that it carries.
        std::function<void(const std::string& signal, const std::string& text)> heard;
    };

    /// The number that this client picked for itself.
    static constexpr int clientId = 1;
    static constexpr const char* daemonName = "com.norvane.portmeld";
    static constexpr const char* objectPath = "/com/norvane/portmeld";

    explicit BusClient(Listener listener);
    ~BusClient();
    BusClient(const BusClient&) = delete;
    BusClient& operator=(const BusClient&) = delete;

    /// Connect to the bus, wait for the daemon to appear on it, register.
    void start(const std::string& address);

    /// Ask the daemon for all its devices: they are heard as signals before isBusy() ends.
    void requestAll();

    /// Send something back and forth: what the daemon sent before is heard before isBusy() ends.
    void catchUp();

    /// Whether an answer is awaited.
    bool isBusy() const { return awaited_ > 0; }
    /// Whether it is registered.
    bool isReady() const { return ready_; }

private:
    struct ObjectDeleter {
        void operator()(gpointer object) const { g_object_unref(object); }
    };
    using Answer = void (BusClient::*)();

    void call(const char* interface, const char* method, GVariant* arguments, Answer answer);
    void registered();
    void nothing() {}
    void fail(const std::string& reason);

    static void onConnected(GObject*, GAsyncResult* result, gpointer data);
    static void onAnswer(GObject*, GAsyncResult* result, gpointer data);
    static void onAppeared(GDBusConnection*, const char* name, const char* owner, gpointer data);
    static void onSignal(GDBusConnection*,
                         const char* sender,
                         const char* path,
                         const char* interface,
                         const char* signal,
                         GVariant* arguments,
                         gpointer data);

    Listener listener_;
    std::unique_ptr<GCancellable, ObjectDeleter> cancellable_;
    std::unique_ptr<GDBusConnection, ObjectDeleter> connection_;
    Source patience_;
    unsigned watch_ = 0;
    unsigned subscription_ = 0;
    int awaited_ = 0;
    bool ready_ = false;
};

}  // namespace workbench
