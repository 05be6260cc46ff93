// The bus of FakeBus.h, and the functions of GIO that lead to it.
#include "FakeBus.h"

#include <utility>

#include "SimulatedTv.h"

FakeBus* FakeBus::current_ = nullptr;

namespace {

simulated::CallJournal& journal() {
    return simulated::SimulatedTv::current().journal();
}

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

/// Any object will do where nobody looks inside.
template <class T>
T* standIn() {
    return reinterpret_cast<T*>(g_object_new(G_TYPE_OBJECT, nullptr));
}

}  // namespace

FakeBus::FakeBus() : connection_(standIn<GDBusConnection>()) {
    current_ = this;
}

FakeBus::~FakeBus() {
    current_ = nullptr;
    g_object_unref(connection_);
}

FakeBus::Outcome FakeBus::call(const std::string& sender,
                               const char* method,
                               GVariant* parameters) {
    g_autoptr(GVariant) values =
        g_variant_ref_sink(parameters != nullptr ? parameters : g_variant_new("()"));
    auto* invocation = standIn<GDBusMethodInvocation>();
    GWeakRef left;
    g_weak_ref_init(&left, invocation);
    reply_.reset();
    vtable_.method_call(connection_, sender.c_str(), path_.c_str(), interface_.c_str(), method,
                        values, invocation, objectData_);
    g_autoptr(GObject) still = static_cast<GObject*>(g_weak_ref_get(&left));
    g_weak_ref_clear(&left);
    return {reply_, still == nullptr};
}

std::vector<FakeBus::Signal> FakeBus::takeSignals() {
    return std::exchange(signals_, {});
}

unsigned FakeBus::ownName(GBusType type,
                          const char* name,
                          GBusNameOwnerFlags flags,
                          GBusAcquiredCallback acquired,
                          GBusNameAcquiredCallback nameAcquired,
                          GBusNameLostCallback nameLost,
                          void* userData) {
    journal().called("g_bus_own_name",
                     std::string(type == G_BUS_TYPE_SYSTEM ? "system" : "another bus") + ", " +
                         quoted(name) + ", " + std::to_string(flags));
    busAcquired_ = acquired;
    nameAcquired_ = nameAcquired;
    nameLost_ = nameLost;
    userData_ = userData;
    return ownerId;
}

void FakeBus::unownName(unsigned id) {
    journal().called("g_bus_unown_name", std::to_string(id));
}

unsigned FakeBus::registerObject(const char* path,
                                 GDBusInterfaceInfo* interface,
                                 const GDBusInterfaceVTable* vtable,
                                 void* userData,
                                 GError** error) {
    journal().called("g_dbus_connection_register_object",
                     quoted(path) + ", " + quoted(interface->name));
    if (registerError) {
        g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_EXISTS, registerError->c_str());
    }
    if (registrationId != 0) {
        path_ = path;
        interface_ = interface->name;
        vtable_ = *vtable;
        objectData_ = userData;
    }
    return registrationId;
}

bool FakeBus::emitSignal(Signal signal, GError** error) {
    journal().called("g_dbus_connection_emit_signal", quoted(signal.destination) + ", " +
                                                          quoted(signal.path) + ", " +
                                                          quoted(signal.interface) + ", " +
                                                          quoted(signal.name) + ", " + signal.json);
    if (emitError) {
        g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_CLOSED, emitError->c_str());
        return false;
    }
    signals_.push_back(std::move(signal));
    return true;
}

void FakeBus::returnValue(GDBusMethodInvocation* invocation, GVariant* parameters) {
    g_autoptr(GVariant) values =
        g_variant_ref_sink(parameters != nullptr ? parameters : g_variant_new("()"));
    g_autofree char* text = g_variant_print(values, FALSE);
    journal().called("g_dbus_method_invocation_return_value", text);
    reply_ = text;
    g_object_unref(invocation);
}

// What the linker puts in place of GIO's functions. Without a FakeBus they are GIO's.
extern "C" {
unsigned __real_g_bus_own_name(GBusType,
                               const char*,
                               GBusNameOwnerFlags,
                               GBusAcquiredCallback,
                               GBusNameAcquiredCallback,
                               GBusNameLostCallback,
                               void*,
                               GDestroyNotify);
unsigned __wrap_g_bus_own_name(GBusType,
                               const char*,
                               GBusNameOwnerFlags,
                               GBusAcquiredCallback,
                               GBusNameAcquiredCallback,
                               GBusNameLostCallback,
                               void*,
                               GDestroyNotify);
void __real_g_bus_unown_name(unsigned);
void __wrap_g_bus_unown_name(unsigned);
unsigned __real_g_dbus_connection_register_object(GDBusConnection*,
                                                  const char*,
                                                  GDBusInterfaceInfo*,
                                                  const GDBusInterfaceVTable*,
                                                  void*,
                                                  GDestroyNotify,
                                                  GError**);
unsigned __wrap_g_dbus_connection_register_object(GDBusConnection*,
                                                  const char*,
                                                  GDBusInterfaceInfo*,
                                                  const GDBusInterfaceVTable*,
                                                  void*,
                                                  GDestroyNotify,
                                                  GError**);
gboolean __real_g_dbus_connection_emit_signal(
    GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*, GError**);
gboolean __wrap_g_dbus_connection_emit_signal(
    GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*, GError**);
void __real_g_dbus_method_invocation_return_value(GDBusMethodInvocation*, GVariant*);
void __wrap_g_dbus_method_invocation_return_value(GDBusMethodInvocation*, GVariant*);

unsigned __wrap_g_bus_own_name(GBusType type,
                               const char* name,
                               GBusNameOwnerFlags flags,
                               GBusAcquiredCallback acquired,
                               GBusNameAcquiredCallback nameAcquired,
                               GBusNameLostCallback nameLost,
                               void* userData,
                               GDestroyNotify destroy) {
    FakeBus* bus = FakeBus::current();
    return bus != nullptr
               ? bus->ownName(type, name, flags, acquired, nameAcquired, nameLost, userData)
               : __real_g_bus_own_name(type, name, flags, acquired, nameAcquired, nameLost,
                                       userData, destroy);
}

void __wrap_g_bus_unown_name(unsigned id) {
    FakeBus* bus = FakeBus::current();
    bus != nullptr ? bus->unownName(id) : __real_g_bus_unown_name(id);
}

unsigned __wrap_g_dbus_connection_register_object(GDBusConnection* connection,
                                                  const char* path,
                                                  GDBusInterfaceInfo* interface,
                                                  const GDBusInterfaceVTable* vtable,
                                                  void* userData,
                                                  GDestroyNotify destroy,
                                                  GError** error) {
    FakeBus* bus = FakeBus::current();
    return bus != nullptr ? bus->registerObject(path, interface, vtable, userData, error)
                          : __real_g_dbus_connection_register_object(
                                connection, path, interface, vtable, userData, destroy, error);
}

gboolean __wrap_g_dbus_connection_emit_signal(GDBusConnection* connection,
                                              const char* destination,
                                              const char* path,
                                              const char* interface,
                                              const char* name,
                                              GVariant* parameters,
                                              GError** error) {
    FakeBus* bus = FakeBus::current();
    if (bus == nullptr) {
        return __real_g_dbus_connection_emit_signal(connection, destination, path, interface, name,
                                                    parameters, error);
    }
    const char* json = nullptr;
    g_variant_get(parameters, "(&s)", &json);
    return bus->emitSignal({destination, path, interface, name, json, parameters}, error);
}

void __wrap_g_dbus_method_invocation_return_value(GDBusMethodInvocation* invocation,
                                                  GVariant* parameters) {
    FakeBus* bus = FakeBus::current();
    bus != nullptr ? bus->returnValue(invocation, parameters)
                   : __real_g_dbus_method_invocation_return_value(invocation, parameters);
}
}
