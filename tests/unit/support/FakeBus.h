// The bus under the bus service, in place of GIO's functions, which the linker hands over with
// --wrap: what the service asks of the bus stands in the TV's journal among its other calls, and a
// test plays the bus and its peers. Nothing here starts a bus or knows what a method means.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gio/gio.h>

class FakeBus {
public:
    /// A signal as one peer would receive it.
    struct Signal {
        std::string destination;
        std::string path;
        std::string interface;
        std::string name;
        std::string json;
        const GVariant* parameters;  ///< only to be compared
    };

    /// What became of a call.
    struct Outcome {
        std::optional<std::string> reply;  ///< values as text, "()" for none; unset: never answered
        bool invocationEnded;              ///< nothing of the call is left
    };

    /// The bus of the process while it lives; there is one at a time.
    FakeBus();
    ~FakeBus();
    FakeBus(const FakeBus&) = delete;
    FakeBus& operator=(const FakeBus&) = delete;

    static FakeBus* current() { return current_; }

    unsigned ownerId = 1;                      ///< what a request for a name gives
    unsigned registrationId = 1;               ///< what a registration gives; 0 to refuse
    std::optional<std::string> registerError;  ///< told with a refused registration
    std::optional<std::string> emitError;      ///< lets every signal fail

    /// The connection that the service gets; never looked into.
    GDBusConnection* connection() const { return connection_; }

    // ---- as the bus

    void acquireBus() { busAcquired_(connection_, "com.norvane.portmeld", userData_); }
    void acquireName() { nameAcquired_(connection_, "com.norvane.portmeld", userData_); }
    void loseName() { nameLost_(nullptr, "com.norvane.portmeld", userData_); }

    // ---- as a peer

    /// Whether an object was registered.
    bool hasObject() const { return vtable_.method_call != nullptr; }
    /// Call a method of the object. Takes `parameters` over; null for none.
    Outcome call(const std::string& sender, const char* method, GVariant* parameters = nullptr);
    /// Signals sent since the last look.
    std::vector<Signal> takeSignals();

    // ---- for the functions that are handed over

    unsigned ownName(GBusType type,
                     const char* name,
                     GBusNameOwnerFlags flags,
                     GBusAcquiredCallback acquired,
                     GBusNameAcquiredCallback nameAcquired,
                     GBusNameLostCallback nameLost,
                     void* userData);
    void unownName(unsigned id);
    unsigned registerObject(const char* path,
                            GDBusInterfaceInfo* interface,
                            const GDBusInterfaceVTable* vtable,
                            void* userData,
                            GError** error);
    bool emitSignal(Signal signal, GError** error);
    void returnValue(GDBusMethodInvocation* invocation, GVariant* parameters);

private:
    static FakeBus* current_;
    GDBusConnection* connection_;
    GBusAcquiredCallback busAcquired_ = nullptr;
    GBusNameAcquiredCallback nameAcquired_ = nullptr;
    GBusNameLostCallback nameLost_ = nullptr;
    void* userData_ = nullptr;
    GDBusInterfaceVTable vtable_ = {};
    void* objectData_ = nullptr;
    std::string path_;
    std::string interface_;
    std::optional<std::string> reply_;
    std::vector<Signal> signals_;
};
